#include "tools/glazelhost/media/safe_output.h"

#include "tests/tools/glazelhost/media/scratch_folder.h"

#include <gtest/gtest.h>

#include <string>

namespace GlazelHost
{

namespace
{

void Write(ByteWriter& writer, const std::string& text)
{
    writer.Write(reinterpret_cast<const std::byte*>(text.data()), text.size());
}

} // namespace

TEST(SafeOutput, AFileHasItsNameOnlyAfterTheCommit)
{
    const ScratchFolder folder;
    const auto output = OpenSafeOutput(folder / "a.bin", false);
    Write(*output, "one ");
    Write(*output, "two");
    EXPECT_EQ(folder.Content("a.bin"), "(not there)");
    output->Commit();
    EXPECT_EQ(folder.Content("a.bin"), "one two");
    EXPECT_EQ(folder.Names().size(), 1U);
}

TEST(SafeOutput, AnOutputThatIsGivenUpLeavesNothing)
{
    const ScratchFolder folder;
    {
        const auto output = OpenSafeOutput(folder / "a.bin", false);
        Write(*output, "half");
    }
    EXPECT_TRUE(folder.Names().empty());
}

TEST(SafeOutput, AnOldFileStaysUntilTheNewOneIsWhole)
{
    const ScratchFolder folder;
    folder.Put("a.bin", "old");
    {
        const auto givenUp = OpenSafeOutput(folder / "a.bin", true);
        Write(*givenUp, "half");
    }
    EXPECT_EQ(folder.Content("a.bin"), "old");
    const auto output = OpenSafeOutput(folder / "a.bin", true);
    Write(*output, "new");
    EXPECT_EQ(folder.Content("a.bin"), "old");
    output->Commit();
    EXPECT_EQ(folder.Content("a.bin"), "new");
    EXPECT_EQ(folder.Names().size(), 1U);
}

TEST(SafeOutput, AnExistingFileIsAnErrorWithoutOverwriteAndStaysAsItIs)
{
    const ScratchFolder folder;
    folder.Put("a.bin", "old");
    const std::string error = ErrorOf([&] { OpenSafeOutput(folder / "a.bin", false); });
    EXPECT_TRUE(Says(error, (folder / "a.bin") + ": it exists already")) << error;
    EXPECT_EQ(folder.Content("a.bin"), "old");
    EXPECT_EQ(folder.Names().size(), 1U);
}

TEST(SafeOutput, AFileThatAppearsMeanwhileIsNotReplacedWithoutOverwrite)
{
    const ScratchFolder folder;
    const auto output = OpenSafeOutput(folder / "a.bin", false);
    Write(*output, "mine");
    folder.Put("a.bin", "theirs");
    EXPECT_TRUE(Says(ErrorOf([&] { output->Commit(); }), "it cannot get its name"));
    EXPECT_EQ(folder.Content("a.bin"), "theirs");
    EXPECT_EQ(folder.Names().size(), 1U);
}

TEST(SafeOutput, AFolderThatDoesNotExistIsNamed)
{
    const ScratchFolder folder;
    const std::string error = ErrorOf([&] { OpenSafeOutput(folder / "no\\where\\a.bin", true); });
    EXPECT_TRUE(Says(error, "the folder " + (folder / "no\\where\\") + " does not exist")) << error;
}

TEST(SafeOutput, AFolderInPlaceOfTheFileIsAnErrorEvenWithOverwrite)
{
    const ScratchFolder folder;
    ASSERT_TRUE(::CreateDirectoryA((folder / "sub").c_str(), nullptr));
    EXPECT_TRUE(Says(ErrorOf([&] { OpenSafeOutput(folder / "sub", true); }), "this is a folder"));
    ASSERT_TRUE(::RemoveDirectoryA((folder / "sub").c_str()));
}

TEST(SafeOutput, SeveralOutputsOfOneFolderDoNotMeet)
{
    const ScratchFolder folder;
    const auto a = OpenSafeOutput(folder / "a", false);
    const auto b = OpenSafeOutput(folder / "b", false);
    Write(*a, "A");
    Write(*b, "B");
    b->Commit();
    a->Commit();
    EXPECT_EQ(folder.Content("a"), "A");
    EXPECT_EQ(folder.Content("b"), "B");
}

TEST(SafeOutput, LargeWritesArriveWhole)
{
    const ScratchFolder folder;
    const std::string large(100'000'000, 'x');
    const auto output = OpenSafeOutput(folder / "a", false);
    Write(*output, large);
    output->Commit();
    EXPECT_TRUE(folder.Content("a") == large);
}

TEST(SafeOutput, NamesBeyondTheOldLimitOfPathsWork)
{
    const ScratchFolder folder;
    const std::string name(200, 'n');
    const auto output = OpenSafeOutput(folder / name, false);
    Write(*output, "long");
    output->Commit();
    ASSERT_EQ(folder.Names().size(), 1U);
    EXPECT_EQ(folder.Names().front().size(), 200U);
}

} // namespace GlazelHost
