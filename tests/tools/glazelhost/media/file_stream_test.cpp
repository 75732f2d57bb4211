#include "tools/glazelhost/media/file_stream.h"

#include "support/win32/utf8.h"
#include "tests/tools/glazelhost/media/scratch_folder.h"
#include "tools/glazelhost/media/windows_path.h"

#include <gtest/gtest.h>

#include <string>

namespace GlazelHost
{

namespace
{

std::string Text(const std::vector<std::byte>& bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// A pipe whose end `which` is a standard stream of this process for as long as this lives.
class StandardPipe
{
public:
    explicit StandardPipe(DWORD which) : m_which(which), m_before(::GetStdHandle(which))
    {
        HANDLE readEnd = nullptr;
        HANDLE writeEnd = nullptr;
        EXPECT_TRUE(::CreatePipe(&readEnd, &writeEnd, nullptr, 0));
        const bool input = which == STD_INPUT_HANDLE;
        m_standard.reset(input ? readEnd : writeEnd);
        m_other.reset(input ? writeEnd : readEnd);
        ::SetStdHandle(which, m_standard.get());
    }
    ~StandardPipe() { ::SetStdHandle(m_which, m_before); }
    StandardPipe(const StandardPipe&) = delete;
    StandardPipe& operator=(const StandardPipe&) = delete;

    HANDLE Other() const noexcept { return m_other.get(); }
    void CloseOther() { m_other.reset(INVALID_HANDLE_VALUE); }
    void Put(const std::string& text) const
    {
        DWORD count = 0;
        EXPECT_TRUE(::WriteFile(m_other.get(), text.data(), static_cast<DWORD>(text.size()), &count,
                                nullptr));
    }

private:
    DWORD m_which;
    HANDLE m_before;
    FileHandle m_standard;
    FileHandle m_other;
};

} // namespace

TEST(FileStream, AFileGivesItsBytesAndKnowsItsSize)
{
    const ScratchFolder folder;
    const std::string content("a\r\nb\x1a\0c", 7); // nothing that a text mode would let pass
    folder.Put("a", content);
    EXPECT_EQ(Text(ReadWholeFile(folder / "a")), content);
    EXPECT_EQ(Text(ReadFirstBytes(folder / "a", 3)), content.substr(0, 3));
    EXPECT_EQ(Text(ReadFirstBytes(folder / "a", 100)), content);
    EXPECT_EQ(OpenFileReader(folder / "a")->Size(), 7U);
}

TEST(FileStream, SkippingInAFileStopsAtItsEnd)
{
    const ScratchFolder folder;
    folder.Put("a", "0123456789");
    const auto reader = OpenFileReader(folder / "a");
    std::byte one{};
    EXPECT_EQ(reader->Skip(4), 4U);
    EXPECT_EQ(reader->Read(&one, 1), 1U);
    EXPECT_EQ(one, std::byte{'4'});
    EXPECT_EQ(reader->Skip(100), 5U);
    EXPECT_EQ(reader->Skip(1), 0U);
    EXPECT_EQ(reader->Read(&one, 1), 0U);
}

TEST(FileStream, WhatIsNotThereOrIsAFolderIsAnErrorThatNamesIt)
{
    const ScratchFolder folder;
    EXPECT_TRUE(Says(ErrorOf([&] { OpenFileReader(folder / "none"); }),
                     (folder / "none") + ": it cannot be opened: "));
    ASSERT_TRUE(::CreateDirectoryA((folder / "sub").c_str(), nullptr));
    EXPECT_TRUE(Says(ErrorOf([&] { OpenFileReader(folder / "sub"); }), "this is a folder"));
    ASSERT_TRUE(::RemoveDirectoryA((folder / "sub").c_str()));
}

TEST(FileStream, NamesThatNoFileCanHaveAreWrongUsage)
{
    for (const std::string& path : {std::string(), std::string("a\0b", 3), std::string("\xff\xfe")})
    {
        EXPECT_TRUE(Says(ErrorOf([&] { WindowsPath(path); }), "not a file name"));
    }
}

TEST(FileStream, NamesInEveryScriptReachTheSystem)
{
    EXPECT_TRUE(WindowsPath("f\xc3\xbcr \xe6\x98\xa0.png").ends_with(L"f\u00fcr \u6620.png"));
}

TEST(FileStream, PathsOfWindowsStayAsTheyAreAndThoseOfUnixAreFoundByTheirExactName)
{
    for (const std::string path : {R"(C:\a\B.png)", "C:B.png", R"(\\server\a.png)", R"(\\?\C:\B)"})
    {
        EXPECT_EQ(WindowsPath(path), Wide(path));
    }
    const bool isUnix = HasUnixPaths();
    for (const std::string path : {R"(/a\../B.png)", R"(z:/a\../B.png)"})
    {
        EXPECT_EQ(WindowsPath(path), isUnix ? LR"(\\?\unix/a/../B.png)" : Wide(path));
    }
    const std::wstring relative = WindowsPath("a/B.png");
    EXPECT_TRUE(relative.ends_with(L"a/B.png"));
    EXPECT_EQ(relative.starts_with(LR"(\\?\unix/)"), isUnix);
}

TEST(FileStream, TheFolderOfAPathKeepsItsSeparator)
{
    EXPECT_EQ(FolderOf("a/b/c.png"), "a/b/");
    EXPECT_EQ(FolderOf("a\\c.png"), "a\\");
    EXPECT_EQ(FolderOf("/c.png"), "/");
    EXPECT_EQ(FolderOf("c.png"), ".");
    EXPECT_EQ(FolderOf("D:c.png"), "D:");
}

TEST(FileStream, StandardInputIsReadToTheEndOfThePipe)
{
    StandardPipe pipe(STD_INPUT_HANDLE);
    const auto input = OpenStandardInput();
    EXPECT_FALSE(input->Size().has_value());
    pipe.Put(std::string("ab\r\n\x1a", 5));
    std::byte bytes[16];
    EXPECT_EQ(input->Read(bytes, sizeof bytes), 5U); // what there is, without waiting for more
    EXPECT_EQ(bytes[2], std::byte{'\r'});
    pipe.Put("cdef");
    pipe.CloseOther();
    EXPECT_EQ(input->Skip(3), 3U);
    EXPECT_EQ(ReadFully(*input, bytes, sizeof bytes), 1U);
    EXPECT_EQ(bytes[0], std::byte{'f'});
    EXPECT_EQ(input->Read(bytes, sizeof bytes), 0U);
}

TEST(FileStream, StandardOutputCarriesEveryByteAsItIs)
{
    const StandardPipe pipe(STD_OUTPUT_HANDLE);
    const std::string content("a\nb\x1a\0", 5);
    const auto output = OpenStandardOutput();
    output->Write(reinterpret_cast<const std::byte*>(content.data()), content.size());
    output->Commit();
    char read[16] = {};
    DWORD count = 0;
    ASSERT_TRUE(::ReadFile(pipe.Other(), read, sizeof read, &count, nullptr));
    EXPECT_EQ(std::string(read, count), content);
}

TEST(FileStream, AReaderThatWentAwayIsAClearError)
{
    StandardPipe pipe(STD_OUTPUT_HANDLE);
    pipe.CloseOther();
    const auto output = OpenStandardOutput();
    const std::byte one{};
    EXPECT_TRUE(Says(ErrorOf([&] { output->Write(&one, 1); }),
                     "standard output: the program that reads it closed the pipe"));
}

TEST(FileStream, WithoutAStandardStreamTheErrorSaysSo)
{
    const HANDLE before = ::GetStdHandle(STD_INPUT_HANDLE);
    ::SetStdHandle(STD_INPUT_HANDLE, nullptr);
    EXPECT_TRUE(Says(ErrorOf([] { OpenStandardInput(); }), "standard input: there is none"));
    ::SetStdHandle(STD_INPUT_HANDLE, before);
}

} // namespace GlazelHost
