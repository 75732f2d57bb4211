#include "tools/glazelhost/host/windows_text.h"

#include "platform/dxtransform/dxtrans.h"

#include <array>
#include <cstdio>
#include <memory>

namespace
{

// The system's own table has other words for these numbers, since another component shares them.
struct TransformResult
{
    HRESULT result;
    const char* text;
};
constexpr std::array kTransformResults{
    TransformResult{DXTERR_UNINITIALIZED, "not set up yet"},
    TransformResult{DXTERR_ALREADY_INITIALIZED, "already set up"},
    TransformResult{DXTERR_UNSUPPORTED_FORMAT, "unsupported pixel format"},
    TransformResult{DXTERR_COPYRIGHT_IS_INVALID, "invalid copyright"},
    TransformResult{DXTERR_INVALID_BOUNDS, "bounds outside the surface"},
    TransformResult{DXTERR_INVALID_FLAGS, "invalid flags"},
    TransformResult{DXTERR_OUTOFSTACK, "out of stack"},
};

struct LocalMemoryDeleter
{
    void operator()(wchar_t* memory) const noexcept { ::LocalFree(memory); }
};

// Empty when the system has no words for it.
std::string SystemText(DWORD code)
{
    wchar_t* found = nullptr;
    const DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
        nullptr, code, 0, reinterpret_cast<wchar_t*>(&found), 0, nullptr);
    const std::unique_ptr<wchar_t, LocalMemoryDeleter> owner(found);
    std::wstring_view text(found != nullptr ? found : L"", length);
    const auto last = text.find_last_not_of(L" .\r\n");
    return Utf8(text.substr(0, last == std::wstring_view::npos ? 0 : last + 1));
}

std::string Hexadecimal(HRESULT result)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08lX", static_cast<unsigned long>(result));
    return text.data();
}

} // namespace

std::wstring Wide(std::string_view utf8)
{
    const int length = static_cast<int>(utf8.size());
    std::wstring wide(static_cast<std::size_t>(
                          ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0)),
                      L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(),
                          static_cast<int>(wide.size()));
    return wide;
}

std::string Utf8(std::wstring_view wide)
{
    const int length = static_cast<int>(wide.size());
    std::string utf8(static_cast<std::size_t>(::WideCharToMultiByte(CP_UTF8, 0, wide.data(), length,
                                                                    nullptr, 0, nullptr, nullptr)),
                     '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), length, utf8.data(),
                          static_cast<int>(utf8.size()), nullptr, nullptr);
    return utf8;
}

std::string WindowsErrorText(DWORD error)
{
    const std::string words = SystemText(error);
    const std::string number = "Windows error " + std::to_string(error);
    return words.empty() ? number : words + " (" + number + ")";
}

std::string ResultText(HRESULT result)
{
    for (const TransformResult& row : kTransformResults)
    {
        if (row.result == result)
        {
            return std::string(row.text) + " (" + Hexadecimal(result) + ")";
        }
    }
    const std::string words = SystemText(static_cast<DWORD>(result));
    return words.empty() ? "result " + Hexadecimal(result)
                         : words + " (" + Hexadecimal(result) + ")";
}
