// Look files that the user names: by the system's dialog, or by dropping them on the window.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

#include <shellapi.h>

// Asks for one look file. Empty when the user cancels. Modal over `owner`.
std::wstring AskForLookFile(HWND owner);

// The files that were dropped; gives `drop` back to the system.
std::vector<std::wstring> TakeDroppedFiles(HDROP drop);

// "C:\looks\warm.cube" -> "warm.cube" and "warm".
std::wstring_view FileNameOf(std::wstring_view path) noexcept;
std::wstring_view FileStemOf(std::wstring_view path) noexcept;
