#include "tools/glazelhost/io/windows_path.h"

#include "tools/glazelhost/host_error.h"

#include <windows.h>

namespace
{

// From here on the system wants the form that switches its limit off. Below MAX_PATH by the length
// of a temporary name, which is put beside the file.
constexpr std::size_t kLongPath = MAX_PATH - 48;

std::wstring WideOf(const std::string& path)
{
    const auto length = static_cast<int>(path.size());
    const int wideLength =
        ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path.data(), length, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(wideLength), L'\0');
    ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path.data(), length, wide.data(),
                          wideLength);
    return wide;
}

std::wstring FullPathOf(const std::wstring& path)
{
    std::wstring full(::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(
        ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

} // namespace

std::wstring WindowsPath(const std::string& path)
{
    std::wstring wide = WideOf(path);
    if (wide.empty() || wide.find(L'\0') != std::wstring::npos)
    {
        throw HostError('"' + path.substr(0, path.find('\0')) + '"', "this is not a file name",
                        "check the path", ExitCode::WrongUsage);
    }
    if (wide.size() < kLongPath || wide.starts_with(L"\\\\"))
    {
        return wide;
    }
    const std::wstring full = FullPathOf(wide);
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
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
