#include "tools/glazelhost/page/unix_shell.h"

#include "support/win32/utf8.h"
#include "tools/glazelhost/media/windows_path.h"

#include <windows.h>

namespace GlazelHost
{

std::optional<std::string> UnixCommand()
{
    constexpr DWORD kLongest = 4096;
    std::wstring command(kLongest, L'\0');
    const DWORD length = ::GetEnvironmentVariableW(L"GLAZEL_COMMAND", command.data(), kLongest);
    if (!HasUnixPaths() || length == 0 || length >= kLongest)
    {
        return std::nullopt;
    }
    command.resize(length);
    return Utf8(command);
}

} // namespace GlazelHost
