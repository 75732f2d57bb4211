// What the system says of an error number.
#pragma once

#include "support/win32/utf8.h"

#include <windows.h>

#include <memory>
#include <string>
#include <string_view>

// Without the final stop; "" when the system has no words for it. Also for an HRESULT.
inline std::string SystemText(DWORD error)
{
    struct LocalMemoryDeleter
    {
        void operator()(wchar_t* memory) const noexcept { ::LocalFree(memory); }
    };
    wchar_t* found = nullptr;
    const DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, error, 0, reinterpret_cast<wchar_t*>(&found), 0, nullptr);
    const std::unique_ptr<wchar_t, LocalMemoryDeleter> owner(found);
    const std::wstring_view text(found != nullptr ? found : L"", length);
    const auto last = text.find_last_not_of(L" .\r\n");
    return Utf8(text.substr(0, last == std::wstring_view::npos ? 0 : last + 1));
}
