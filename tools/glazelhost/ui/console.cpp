#include "tools/glazelhost/ui/console.h"

#include "support/win32/utf8.h"
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

// False with the thread's last error set.
bool WriteBytes(HANDLE handle, std::string_view text) noexcept
{
    while (!text.empty())
    {
        DWORD written = 0;
        if (!::WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr))
        {
            return false;
        }
        text.remove_prefix(written);
    }
    return true;
}

bool WriteText(HANDLE handle, std::string_view text)
{
    if (!IsConsole(handle))
    {
        return WriteBytes(handle, text);
    }
    const std::wstring wide = Wide(text);
    DWORD written = 0;
    return ::WriteConsoleW(handle, wide.data(), static_cast<DWORD>(wide.size()), &written,
                           nullptr) != FALSE;
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
    if (!WriteText(::GetStdHandle(STD_OUTPUT_HANDLE), text))
    {
        throw HostError("standard output", WindowsErrorText(::GetLastError()),
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
