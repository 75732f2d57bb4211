// Look files that the user names: by the system's dialog, or by dropping them on the window.
#pragma once

#include <cstddef>
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

struct ExportAnswer
{
    std::wstring path;      // as it was typed; empty when there is none
    std::size_t format = 0; // the chosen one of kExportFormats
    DWORD error = 0;        // as in LookFileAnswer
};

// Asks where to write a look to, beginning with a file of that name. Does not ask whether a file
// may be replaced: which one it is depends on the format too. Modal over `owner`.
ExportAnswer AskWhereToExport(HWND owner, const std::wstring& name);
// Whether the user lets a file be replaced. Modal over `owner`.
bool MayReplace(HWND owner, const std::wstring& path);

// Asks for one look file. Neither path nor error when the user cancels. Modal over `owner`.
LookFileAnswer AskForLookFile(HWND owner);

// The files that were dropped; gives `drop` back to the system.
std::vector<std::wstring> TakeDroppedFiles(HDROP drop);

// "C:\looks\warm.cube" -> "warm.cube" and "warm".
std::wstring_view FileNameOf(std::wstring_view path) noexcept;
std::wstring_view FileStemOf(std::wstring_view path) noexcept;

} // namespace ReferenceRenderer
