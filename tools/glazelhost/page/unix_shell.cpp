#include "tools/glazelhost/page/unix_shell.h"

#include "support/win32/utf8.h"

#include <windows.h>

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

} // namespace

std::optional<std::string> UnixCommand()
{
    constexpr DWORD kLongest = 4096;
    std::wstring command(kLongest, L'\0');
    const DWORD length = ::GetEnvironmentVariableW(L"GLAZEL_COMMAND", command.data(), kLongest);
    if (UnixFileNames() == nullptr || length == 0 || length >= kLongest)
    {
        return std::nullopt;
    }
    command.resize(length);
    return Utf8(command);
}

std::string UnixPath(const std::string& path)
{
    const auto nameOf = UnixFileNames();
    const auto free = [](char* name) { ::HeapFree(::GetProcessHeap(), 0, name); };
    const std::unique_ptr<char, decltype(free)> name(
        nameOf == nullptr ? nullptr : nameOf(Wide(path).c_str()));
    return name ? name.get() : path;
}

} // namespace GlazelHost
