#include "tools/glazelhost/ui/console.h"

#include "support/win32/utf8.h"
#include "support/win32/whole_transfer.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/windows_text.h"

#include <windows.h>

#include <chrono>
#include <string>

namespace GlazelHost
{

namespace
{

bool IsConsole(HANDLE handle) noexcept
{
    DWORD mode = 0;
    return ::GetConsoleMode(handle, &mode) != FALSE;
}

// The system's error, or ERROR_SUCCESS.
DWORD WriteText(HANDLE handle, std::string_view text)
{
    if (!IsConsole(handle))
    {
        return WriteWhole(handle, text.data(), text.size());
    }
    const std::wstring wide = Wide(text);
    DWORD written = 0;
    return ::WriteConsoleW(handle, wide.data(), static_cast<DWORD>(wide.size()), &written,
                           nullptr) != FALSE
               ? ERROR_SUCCESS
               : ::GetLastError();
}

} // namespace

void WriteStandardError(std::string_view text) noexcept
{
    try
    {
        WriteText(::GetStdHandle(STD_ERROR_HANDLE), text);
    }
    catch (...)
    {
        return; // out of memory: the exit code still tells
    }
}

void WriteStandardOutput(std::string_view text)
{
    const DWORD error = WriteText(::GetStdHandle(STD_OUTPUT_HANDLE), text);
    if (error != ERROR_SUCCESS)
    {
        throw HostError("standard output", "writing failed: " + WindowsErrorText(error),
                        "check where it goes to");
    }
}

bool StandardErrorIsConsole() noexcept
{
    return IsConsole(::GetStdHandle(STD_ERROR_HANDLE));
}

int StandardErrorColumns() noexcept
{
    CONSOLE_SCREEN_BUFFER_INFO info{};
    const bool known =
        ::GetConsoleScreenBufferInfo(::GetStdHandle(STD_ERROR_HANDLE), &info) != FALSE;
    return known ? info.srWindow.Right - info.srWindow.Left + 1 : 80;
}

double SecondsNow() noexcept
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

} // namespace GlazelHost
