// Paths as the system takes them, from the UTF-8 of the interfaces.
#pragma once

#include <string>

namespace GlazelHost
{

// Also for paths of more than 260 characters. Under Wine a Unix path, absolute or not, names what
// has exactly that name there, as it does for other programs. Throws HostError for an empty path,
// one that is not UTF-8, and one with a zero character.
std::wstring WindowsPath(const std::string& path);

// Whether Wine runs this program.
bool HasUnixPaths() noexcept;

// `path` as programs beside Wine name the file there; `path` itself where that cannot be said.
std::string UnixPath(const std::string& path);

// The folder that holds `path`, with its separator; "." when the path names none.
std::string FolderOf(const std::string& path);

} // namespace GlazelHost
