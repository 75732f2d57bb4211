#include "tools/glazelhost/media/windows_path.h"

#include "support/win32/long_path.h"
#include "support/win32/utf8.h"
#include "tools/glazelhost/host_error.h"

#include <utility>

namespace GlazelHost
{

std::wstring WindowsPath(const std::string& path)
{
    std::wstring wide = Wide(path, MB_ERR_INVALID_CHARS);
    if (wide.empty() || wide.find(L'\0') != std::wstring::npos)
    {
        throw HostError('"' + path.substr(0, path.find('\0')) + '"', "this is not a file name",
                        "check the path", ExitCode::WrongUsage);
    }
    return LongPath(std::move(wide));
}

std::string FolderOf(const std::string& path)
{
    const auto separator = path.find_last_of("/\\");
    if (separator != std::string::npos)
    {
        return path.substr(0, separator + 1);
    }
    const bool onDrive = path.size() > 1 && path[1] == ':'; // "D:a.png"
    return onDrive ? path.substr(0, 2) : ".";
}

} // namespace GlazelHost
