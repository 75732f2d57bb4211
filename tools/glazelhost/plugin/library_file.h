// A DLL file before and after the attempt to load it: where it is, what it is for, and in words why
// it does not load. Tests: tests/tools/glazelhost/plugin/library_file_test.cpp.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace GlazelHost
{

// UTF-8 paths throughout.

// Frees the library at its end.
class LoadedLibrary
{
public:
    LoadedLibrary() = default;
    explicit LoadedLibrary(HMODULE module) noexcept : m_module(module) {}
    ~LoadedLibrary();
    LoadedLibrary(LoadedLibrary&& other) noexcept;
    LoadedLibrary& operator=(LoadedLibrary&& other) noexcept;
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    HMODULE Get() const noexcept { return m_module; }
    explicit operator bool() const noexcept { return m_module != nullptr; }
    // The library stays loaded for good.
    void Abandon() noexcept { m_module = nullptr; }

private:
    HMODULE m_module = nullptr;
};

enum class LibraryProblem
{
    None,
    NotFound,
    NotALibrary,       // unreadable, or no executable image
    WrongMachine,      // for another processor than this program
    MissingDependency, // a DLL that it imports cannot be found
    DoesNotLoad,       // for any other reason
};

struct LibraryState
{
    LibraryProblem problem = LibraryProblem::NotFound;
    std::string why;    // empty when there is no problem
    std::string remedy; // the same
    std::vector<std::string> missingLibraries;
};

// Loads `path` so that what it imports is found beside it. The state says how that went.
LoadedLibrary LoadLibraryFile(const std::string& path, LibraryState& state);
// Loads the library that a plug-in of this program gets for the plain `name`: one that is loaded
// already, or the first in the folders that the system searches. `path` becomes its file, or the
// first file of that name when it does not load, or empty when there is none.
LoadedLibrary LoadLibraryByName(const std::string& name, std::string& path, LibraryState& state);

// The names that a library exports, read from its file: nothing of it runs. The state says why
// there are none when it cannot be a library for this program.
std::vector<std::string> ExportsOfFile(const std::string& path, LibraryState& state);
// The file of a plain name in the first folder that the system searches and that has it, else
// empty.
std::string FirstFileOfName(const std::string& name);

bool FileExists(const std::string& path);
// Folder of this program, without a final separator.
std::string ProgramFolder();
// Absolute form of a path, which need not exist.
std::string FullPath(const std::string& path);
std::string PathOfModule(HMODULE module);
// "1.2.3.4" from the file's version resource; empty without one.
std::string FileVersion(const std::string& path);

} // namespace GlazelHost
