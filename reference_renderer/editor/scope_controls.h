// What belongs to the scopes below the picture besides the scope: a button for each kind, with a
// tip that says its key, and the line that says what the pixel under the pointer is.
#pragma once

#include "reference_renderer/editor/editor_layout.h"
#include "reference_renderer/editor/editor_theme.h"

#include <array>
#include <optional>
#include <string>

#include <windows.h>

namespace ReferenceRenderer
{

// The keys of the kinds, one after the other.
inline constexpr WPARAM kFirstScopeKey = VK_F2;

// The kind that a WM_COMMAND asks for.
std::optional<ScopeKind> ScopeOfCommand(int id) noexcept;

// Window thread. The windows are their parent's and go with it.
class ScopeControls
{
public:
    ScopeControls() noexcept = default;
    ScopeControls(const ScopeControls&) = delete;
    ScopeControls& operator=(const ScopeControls&) = delete;

    // False when the system refuses a window.
    bool Create(HWND parent, const EditorTheme& theme);
    void Place(const EditorLayout& layout) noexcept;
    void SetTheme(const EditorTheme& theme) noexcept;
    void ShowChosen() noexcept; // another button is the chosen one
    void ShowPixel(const std::wstring& text);

private:
    HWND Child(HWND parent, const wchar_t* className, const wchar_t* text, DWORD style,
               int id) noexcept;
    bool CreateTips(HWND parent);

    std::array<HWND, kScopeKinds> m_buttons{};
    HWND m_pixel = nullptr;
    HWND m_tips = nullptr;
    std::wstring m_pixelText;
};

} // namespace ReferenceRenderer
