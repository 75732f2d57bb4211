// Texts to and from the system: UTF-8 in programs, UTF-16 at their edge. All throw std::bad_alloc.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

// With MB_ERR_INVALID_CHARS a text that is not UTF-8 gives ""; without, its malformed parts become
// the replacement character.
inline std::wstring Wide(std::string_view utf8, DWORD flags = 0)
{
    const auto length = static_cast<int>(utf8.size());
    const int needed = ::MultiByteToWideChar(CP_UTF8, flags, utf8.data(), length, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(needed), L'\0');
    ::MultiByteToWideChar(CP_UTF8, flags, utf8.data(), length, wide.data(), needed);
    return wide;
}

inline std::string Utf8(std::wstring_view wide)
{
    const auto length = static_cast<int>(wide.size());
    const int needed =
        ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(needed), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data(), needed, nullptr, nullptr);
    return utf8;
}
