// Paths of more characters than the system takes as they are.
#pragma once

#include <windows.h>

#include <string>

// The form of a path that switches the system's limit off, for one that is so long that it needs it
// and has it not.
inline std::wstring LongPath(std::wstring path)
{
    // By the length of a temporary name, which may be put beside the file.
    constexpr std::size_t kLongest = MAX_PATH - 48;
    if (path.size() < kLongest || path.starts_with(L"\\\\?\\") || path.starts_with(L"\\\\.\\"))
    {
        return path;
    }
    std::wstring full(::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(
        ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}
