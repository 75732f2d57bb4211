#include "tools/glazelhost/plugin/library_file.h"

#include "support/win32/file_handle.h"
#include "support/win32/utf8.h"
#include "support/win32/whole_transfer.h"
#include "tools/glazelhost/one_line.h"
#include "tools/glazelhost/plugin/pe_image.h"
#include "tools/glazelhost/windows_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <set>
#include <sstream>
#include <utility>

namespace GlazelHost
{

namespace
{

constexpr DWORD kLongestPath = 32768; // in characters, with its terminator

// None when it cannot be read whole; the thread's last error then says why.
std::optional<std::vector<std::byte>> BytesOf(const std::string& path)
{
    const FileHandle file(::CreateFileW(Wide(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file.get() == INVALID_HANDLE_VALUE)
    {
        return std::nullopt;
    }
    constexpr LONGLONG kLargestLibrary = 1LL << 30;
    LARGE_INTEGER size{};
    if (!::GetFileSizeEx(file.get(), &size) || size.QuadPart > kLargestLibrary)
    {
        return std::nullopt;
    }
    std::vector<std::byte> bytes(static_cast<std::size_t>(size.QuadPart));
    std::size_t read = bytes.size();
    const DWORD error = ReadWhole(file.get(), bytes.data(), read);
    ::SetLastError(error != ERROR_SUCCESS ? error : ERROR_HANDLE_EOF);
    return error == ERROR_SUCCESS && read == bytes.size() ? std::optional(std::move(bytes))
                                                          : std::nullopt;
}

std::string FolderOf(const std::string& path)
{
    const auto separator = path.find_last_of("\\/");
    return separator == std::string::npos ? std::string() : path.substr(0, separator);
}

// Contracts that the loader resolves by itself; no file of that name need exist.
bool IsSystemContract(const std::string& name)
{
    const auto startsWith = [&name](const char* prefix) { return name.rfind(prefix, 0) == 0; };
    return startsWith("api-ms-") || startsWith("ext-ms-");
}

bool SystemFinds(const std::string& name)
{
    const LoadedLibrary found(
        ::LoadLibraryExW(Wide(name).c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    return static_cast<bool>(found) || ::GetModuleHandleW(Wide(name).c_str()) != nullptr;
}

// Walks the imports of `path`, and of those that lie in its folder, for names that nothing answers.
void CollectMissing(const std::string& path, std::set<std::string>& seen,
                    std::vector<std::string>& missing)
{
    const auto bytes = BytesOf(path);
    const auto image = bytes ? ReadPeImage(*bytes, PeLayout::File) : std::nullopt;
    if (!image)
    {
        return;
    }
    for (const ImportedLibrary& library : image->imports)
    {
        if (!seen.insert(library.name).second)
        {
            continue;
        }
        const std::string beside = FolderOf(path) + "\\" + library.name;
        if (FileExists(beside))
        {
            CollectMissing(beside, seen, missing);
        }
        else if (!IsSystemContract(library.name) && !SystemFinds(library.name))
        {
            missing.push_back(library.name);
        }
    }
}

// `image` becomes what the file holds when there is no problem.
LibraryState StateBeforeLoading(const std::string& path, PeImage& image)
{
    if (!FileExists(path))
    {
        return {LibraryProblem::NotFound, "there is no such file", "check the path", {}};
    }
    const auto bytes = BytesOf(path);
    if (!bytes)
    {
        return {LibraryProblem::NotALibrary,
                "it cannot be read: " + WindowsErrorText(::GetLastError()),
                "check the file and its access rights",
                {}};
    }
    auto read = ReadPeImage(*bytes, PeLayout::File);
    if (!read)
    {
        return {
            LibraryProblem::NotALibrary, "it is not a Windows DLL", "install the file again", {}};
    }
    if (read->machine != kMachineX64)
    {
        return {LibraryProblem::WrongMachine,
                "it is " + MachineName(read->machine) + " but this program is " +
                    MachineName(kMachineX64),
                "use the 64-bit (x64) one",
                {}};
    }
    image = std::move(*read);
    return {LibraryProblem::None, {}, {}, {}};
}

// The text that `call` writes into a buffer of a given size, whose length it answers.
template <typename Call>
std::string TextOf(Call&& call)
{
    std::wstring text(kLongestPath, L'\0');
    text.resize(call(text.data(), kLongestPath));
    return Utf8(text);
}

// Where LoadLibrary looks for a plain name, in its order. SearchPath has another: it looks in the
// current folder before the system's.
std::vector<std::string> SearchedFolders()
{
    const std::string windows = TextOf(::GetSystemWindowsDirectoryW);
    std::vector<std::string> folders{
        ProgramFolder(),
        TextOf(::GetSystemDirectoryW),
        windows + "\\system",
        windows,
        TextOf([](wchar_t* text, DWORD size) { return ::GetCurrentDirectoryW(size, text); }),
    };
    std::istringstream path(TextOf(
        [](wchar_t* text, DWORD size) { return ::GetEnvironmentVariableW(L"PATH", text, size); }));
    for (std::string folder; std::getline(path, folder, ';');)
    {
        if (!folder.empty())
        {
            folders.push_back(folder);
        }
    }
    return folders;
}

LibraryState StateAfterFailure(const std::string& path, DWORD error)
{
    std::set<std::string> seen;
    std::vector<std::string> missing;
    CollectMissing(path, seen, missing);
    if (!missing.empty())
    {
        return {LibraryProblem::MissingDependency,
                "it needs " + Joined(missing) +
                    ", which cannot be found: " + WindowsErrorText(error),
                "put the missing DLL beside it or on PATH", missing};
    }
    return {LibraryProblem::DoesNotLoad,
            "it does not load: " + WindowsErrorText(error),
            "install it again",
            {}};
}

} // namespace

LoadedLibrary::~LoadedLibrary()
{
    if (m_module != nullptr)
    {
        ::FreeLibrary(m_module);
    }
}

LoadedLibrary::LoadedLibrary(LoadedLibrary&& other) noexcept
    : m_module(std::exchange(other.m_module, nullptr))
{
}

LoadedLibrary& LoadedLibrary::operator=(LoadedLibrary&& other) noexcept
{
    std::swap(m_module, other.m_module);
    return *this;
}

LoadedLibrary LoadLibraryFile(const std::string& path, LibraryState& state)
{
    PeImage image;
    state = StateBeforeLoading(path, image);
    if (state.problem != LibraryProblem::None)
    {
        return {};
    }
    LoadedLibrary library(
        ::LoadLibraryExW(Wide(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    if (!library)
    {
        state = StateAfterFailure(path, ::GetLastError());
    }
    return library;
}

LoadedLibrary LoadLibraryByName(const std::string& name, std::string& path, LibraryState& state)
{
    LoadedLibrary library(::LoadLibraryW(Wide(name).c_str()));
    const DWORD error = ::GetLastError();
    if (library)
    {
        path = PathOfModule(library.Get());
        state = {LibraryProblem::None, {}, {}, {}};
        return library;
    }
    path = FirstFileOfName(name);
    PeImage image;
    state = StateBeforeLoading(path, image);
    if (state.problem == LibraryProblem::None)
    {
        state = StateAfterFailure(path, error);
    }
    return library;
}

std::vector<std::string> ExportsOfFile(const std::string& path, LibraryState& state)
{
    PeImage image;
    state = StateBeforeLoading(path, image);
    return std::move(image.exports);
}

std::string FirstFileOfName(const std::string& name)
{
    for (std::string& path : SearchedFolders())
    {
        path.append("\\").append(name);
        if (FileExists(path))
        {
            return FullPath(path);
        }
    }
    return {};
}

bool FileExists(const std::string& path)
{
    const DWORD attributes = ::GetFileAttributesW(Wide(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

std::string ProgramFolder()
{
    return FolderOf(PathOfModule(nullptr));
}

std::string FullPath(const std::string& path)
{
    std::wstring full(kLongestPath, L'\0');
    full.resize(::GetFullPathNameW(Wide(path).c_str(), kLongestPath, full.data(), nullptr));
    return full.empty() ? path : Utf8(full);
}

std::string PathOfModule(HMODULE module)
{
    std::wstring path(kLongestPath, L'\0');
    path.resize(::GetModuleFileNameW(module, path.data(), kLongestPath));
    return Utf8(path);
}

std::string FileVersion(const std::string& path)
{
    const std::wstring wide = Wide(path);
    const DWORD size = ::GetFileVersionInfoSizeW(wide.c_str(), nullptr);
    std::vector<std::byte> block(size);
    void* found = nullptr;
    UINT foundBytes = 0;
    if (size == 0 || !::GetFileVersionInfoW(wide.c_str(), 0, size, block.data()) ||
        !::VerQueryValueW(block.data(), L"\\", &found, &foundBytes) ||
        foundBytes < sizeof(VS_FIXEDFILEINFO))
    {
        return {};
    }
    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(found);
    const std::array parts{HIWORD(fixed->dwFileVersionMS), LOWORD(fixed->dwFileVersionMS),
                           HIWORD(fixed->dwFileVersionLS), LOWORD(fixed->dwFileVersionLS)};
    std::string version;
    for (const WORD part : parts)
    {
        version.append(version.empty() ? "" : ".").append(std::to_string(part));
    }
    return version;
}

} // namespace GlazelHost
