#include "tools/glazelhost/windows_text.h"

#include "platform/dxtransform/dxtrans.h"
#include "support/win32/system_text.h"

#include <array>
#include <cstdio>

namespace GlazelHost
{

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

std::string Hexadecimal(HRESULT result)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08lX", static_cast<unsigned long>(result));
    return text.data();
}

} // namespace

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

} // namespace GlazelHost
