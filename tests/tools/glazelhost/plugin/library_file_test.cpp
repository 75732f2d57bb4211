#include "tools/glazelhost/plugin/library_file.h"

#include "support/win32/utf8.h"
#include "tools/glazelhost/windows_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

namespace GlazelHost
{

namespace
{

std::string TestLibrary(const std::string& name)
{
    return ProgramFolder() + "\\libraries\\" + name;
}

LibraryState StateOf(const std::string& path)
{
    LibraryState state;
    const LoadedLibrary library = LoadLibraryFile(path, state);
    EXPECT_EQ(static_cast<bool>(library), state.problem == LibraryProblem::None);
    return state;
}

// A file in the system's folder for temporary ones, deleted at the end.
class TemporaryFile
{
public:
    explicit TemporaryFile(const std::string& contents)
    {
        wchar_t folder[MAX_PATH] = L"";
        wchar_t name[MAX_PATH] = L"";
        ::GetTempPathW(MAX_PATH, folder);
        ::GetTempFileNameW(folder, L"gla", 0, name);
        m_path = Utf8(name);
        std::ofstream(m_path, std::ios::binary) << contents;
    }
    ~TemporaryFile() { ::DeleteFileW(Wide(m_path).c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

} // namespace

TEST(LibraryFile, AGoodLibraryLoadsTogetherWithWhatLiesBesideIt)
{
    const LibraryState state = StateOf(TestLibrary("needs_neighbour.dll"));
    EXPECT_EQ(state.problem, LibraryProblem::None);
    EXPECT_EQ(state.why, "");
}

TEST(LibraryFile, AMissingFileIsSaidToBeMissing)
{
    const LibraryState state = StateOf(TestLibrary("nowhere.dll"));
    EXPECT_EQ(state.problem, LibraryProblem::NotFound);
    EXPECT_EQ(state.why, "there is no such file");
}

TEST(LibraryFile, AFolderIsNoLibrary)
{
    EXPECT_EQ(StateOf(ProgramFolder()).problem, LibraryProblem::NotFound);
}

TEST(LibraryFile, ATextFileIsNoLibrary)
{
    const TemporaryFile file("not a program");
    const LibraryState state = StateOf(file.Path());
    EXPECT_EQ(state.problem, LibraryProblem::NotALibrary);
    EXPECT_EQ(state.why, "it is not a Windows DLL");
}

TEST(LibraryFile, AnEmptyFileIsNoLibrary)
{
    const TemporaryFile file("");
    EXPECT_EQ(StateOf(file.Path()).problem, LibraryProblem::NotALibrary);
}

TEST(LibraryFile, AThirtyTwoBitLibraryIsNamedAsSuch)
{
    std::ifstream good(TestLibrary("needs_neighbour.dll"), std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(good), {});
    ASSERT_GT(bytes.size(), 0x40u);
    std::uint32_t header = 0;
    bytes.copy(reinterpret_cast<char*>(&header), sizeof(header), 0x3C);
    bytes.replace(header + 4, 2, "\x4C\x01", 2);
    const TemporaryFile file(bytes);
    const LibraryState state = StateOf(file.Path());
    EXPECT_EQ(state.problem, LibraryProblem::WrongMachine);
    EXPECT_EQ(state.why, "it is 32-bit (x86) but this program is 64-bit (x64)");
}

TEST(LibraryFile, AMissingDependencyIsNamed)
{
    const LibraryState state = StateOf(TestLibrary("lonely\\needs_neighbour.dll"));
    EXPECT_EQ(state.problem, LibraryProblem::MissingDependency);
    EXPECT_EQ(state.missingLibraries, std::vector<std::string>{"neighbour.dll"});
    EXPECT_NE(state.why.find("neighbour.dll"), std::string::npos);
    EXPECT_NE(state.why.find("126"), std::string::npos) << state.why;
}

TEST(LibraryFile, ADependencyThatIsMissingOneStepFurtherIsNamed)
{
    const LibraryState state = StateOf(TestLibrary("lonely\\needs_needs_neighbour.dll"));
    EXPECT_EQ(state.problem, LibraryProblem::MissingDependency);
    EXPECT_EQ(state.missingLibraries, std::vector<std::string>{"neighbour.dll"});
}

TEST(LibraryFile, ALibraryThatRefusesToStartGetsTheSystemsWords)
{
    const LibraryState state = StateOf(TestLibrary("refuses.dll"));
    EXPECT_EQ(state.problem, LibraryProblem::DoesNotLoad);
    EXPECT_NE(state.why.find("Windows error"), std::string::npos) << state.why;
    EXPECT_NE(state.remedy, "");
}

TEST(LibraryFile, WhatALibraryExportsIsReadWithoutRunningIt)
{
    LibraryState state;
    ExportsOfFile(TestLibrary("refuses.dll"), state);
    EXPECT_EQ(state.problem, LibraryProblem::None) << "it refuses only to be loaded";
    const auto exports = ExportsOfFile("C:\\windows\\system32\\version.dll", state);
    EXPECT_EQ(std::ranges::count(exports, "VerQueryValueW"), 1);
    EXPECT_TRUE(ExportsOfFile(TestLibrary("nowhere.dll"), state).empty());
    EXPECT_EQ(state.problem, LibraryProblem::NotFound);
}

TEST(LibraryFile, APlainNameGetsTheLibraryThatIsLoadedAlready)
{
    const std::string file = TestLibrary("neighbour.dll");
    LibraryState state;
    const LoadedLibrary loaded = LoadLibraryFile(file, state);
    std::string path;
    const LoadedLibrary found = LoadLibraryByName("neighbour.dll", path, state);
    EXPECT_EQ(found.Get(), loaded.Get());
    EXPECT_EQ(path, file);
    EXPECT_EQ(state.problem, LibraryProblem::None);
}

TEST(LibraryFile, APlainNameThatNoFolderHasIsMissing)
{
    std::string path = "something";
    LibraryState state;
    EXPECT_FALSE(LoadLibraryByName("nowhere.dll", path, state));
    EXPECT_EQ(path, "");
    EXPECT_EQ(state.problem, LibraryProblem::NotFound);
}

TEST(LibraryFile, TheVersionIsThatOfTheFilesResource)
{
    EXPECT_NE(FileVersion("C:\\windows\\system32\\kernel32.dll"), "");
    EXPECT_EQ(FileVersion(TestLibrary("refuses.dll")), "");
    EXPECT_EQ(FileVersion("nowhere.dll"), "");
}

TEST(LibraryFile, TextsSurviveTheWayToTheSystemAndBack)
{
    const std::string text = "gr\xC3\xBCn \xE2\x82\xAC \xF0\x9F\x8E\x9E";
    EXPECT_EQ(Utf8(Wide(text)), text);
    EXPECT_EQ(Utf8(Wide("")), "");
}

TEST(LibraryFile, ErrorsAreInWordsWithTheirNumbers)
{
    EXPECT_NE(WindowsErrorText(ERROR_FILE_NOT_FOUND).find("(Windows error 2)"), std::string::npos);
    EXPECT_GT(WindowsErrorText(ERROR_FILE_NOT_FOUND).size(), 20u);
    EXPECT_EQ(WindowsErrorText(0xDEADBEEF), "Windows error 3735928559");
    EXPECT_NE(ResultText(E_INVALIDARG).find("(0x80070057)"), std::string::npos);
}

TEST(LibraryFile, TransformResultsHaveTheirOwnWords)
{
    EXPECT_EQ(ResultText(static_cast<HRESULT>(0x887A0005U)),
              "bounds outside the surface (0x887A0005)");
}

} // namespace GlazelHost
