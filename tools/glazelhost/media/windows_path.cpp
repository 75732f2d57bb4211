#include "tools/glazelhost/media/windows_path.h"

#include "support/win32/long_path.h"
#include "support/win32/utf8.h"
#include "tools/glazelhost/host_error.h"

#include <algorithm>
#include <memory>

namespace GlazelHost
{

namespace
{

// Wine's own export: the name in the caller's heap, null when there is none.
using GetUnixFileName = char*(__cdecl*)(const wchar_t*);

GetUnixFileName UnixFileNames() noexcept
{
    return reinterpret_cast<GetUnixFileName>(reinterpret_cast<void*>(
        ::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
}

// On a drive Wine finds files without regard to case, although photo.png and PHOTO.PNG are two
// where it runs: one would be written in place of the other. This form of a path finds the exact
// name, and knows no reserved ones. For a path of Unix or of the drive that is all of it; others
// stay, and those that are longer than what Wine takes between two backslashes.
std::wstring ExactPath(const std::wstring& given)
{
    constexpr std::size_t kLongest = 200; // of 255, with a temporary name beside the file
    std::wstring path = given;
    if (!HasUnixPaths() || path.starts_with(L'\\'))
    {
        return path;
    }
    if (path.size() > 1 && path[1] == L':')
    {
        const std::string root = UnixPath(Utf8(path.substr(0, 2) + L'\\'));
        if (root != "/" || path.find_first_of(L"/\\") != 2)
        {
            return path;
        }
        path.erase(0, 2);
    }
    else if (!path.starts_with(L'/'))
    {
        path.insert(0, Wide(UnixPath(".")) + L'/');
    }
    std::ranges::replace(path, L'\\', L'/'); // beside the other one "." and ".." are no folders
    return path.size() > kLongest ? given : L"\\\\?\\unix" + path;
}

} // namespace

std::wstring WindowsPath(const std::string& path)
{
    std::wstring wide = Wide(path, MB_ERR_INVALID_CHARS);
    if (wide.empty() || wide.find(L'\0') != std::wstring::npos)
    {
        throw HostError('"' + path.substr(0, path.find('\0')) + '"', "this is not a file name",
                        "check the path", ExitCode::WrongUsage);
    }
    return LongPath(ExactPath(wide));
}

bool HasUnixPaths() noexcept
{
    return UnixFileNames() != nullptr;
}

std::string UnixPath(const std::string& path)
{
    const auto nameOf = UnixFileNames();
    const auto free = [](char* name) { ::HeapFree(::GetProcessHeap(), 0, name); };
    const std::unique_ptr<char, decltype(free)> name(
        nameOf == nullptr ? nullptr : nameOf(Wide(path).c_str()));
    return name ? name.get() : path;
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
