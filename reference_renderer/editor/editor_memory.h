// What the editor keeps for its next opening, in the registry of the user. That it cannot be kept
// or read is never worth a word: the look itself is not part of it. Any thread.
#pragma once

#include "reference_renderer/editor/editor_control.h"

#include <cstddef>
#include <string>
#include <vector>

namespace ReferenceRenderer
{

inline constexpr std::size_t kMostRecentLooks = 10;

inline constexpr wchar_t kEditorKey[] = L"Software\\Glazel DX\\Look editor";
inline constexpr wchar_t kRecentValue[] = L"Recent looks"; // REG_MULTI_SZ, the newest first
inline constexpr wchar_t kViewValue[] = L"View";           // REG_DWORD, a View

// The look files that were imported or written last: whole paths, the newest first.
std::vector<std::wstring> RecentLooks();
// Puts the file first.
void RememberLook(const std::wstring& path);

// The view that was shown last, at first the one of light.
View LastView() noexcept;
void RememberView(View view) noexcept;

} // namespace ReferenceRenderer
