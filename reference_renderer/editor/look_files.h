// Look files that the user names: by the system's dialog, or by dropping them on the window.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

#include <shellapi.h>

namespace ReferenceRenderer
{

struct LookFileAnswer
{
    std::wstring path; // empty when there is none
    DWORD error = 0;   // why the dialog could not be shown, as CommDlgExtendedError says it; else 0
};

// Asks for one look file. Neither path nor error when the user cancels. Modal over `owner`.
LookFileAnswer AskForLookFile(HWND owner);

// The files that were dropped; gives `drop` back to the system.
std::vector<std::wstring> TakeDroppedFiles(HDROP drop);

// "C:\looks\warm.cube" -> "warm.cube" and "warm".
std::wstring_view FileNameOf(std::wstring_view path) noexcept;
std::wstring_view FileStemOf(std::wstring_view path) noexcept;

} // namespace ReferenceRenderer
