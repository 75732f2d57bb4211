// A program of its own: once outputs were discarded, its process commits nothing any more.

#include "tools/glazelhost/media/safe_output.h"

#include "tests/tools/glazelhost/media/scratch_folder.h"

#include <gtest/gtest.h>

#include <string>

namespace GlazelHost
{

TEST(SafeOutput, DiscardingRemovesWhatIsUnfinishedAndStopsEveryLaterCommit)
{
    const ScratchFolder folder;
    {
        const auto output = OpenSafeOutput(folder / "a", false);
        output->Write(reinterpret_cast<const std::byte*>("half"), 4);
        DiscardUnfinishedOutputs();
        EXPECT_TRUE(Says(ErrorOf([&] { output->Commit(); }), "interrupted"));
        EXPECT_TRUE(Says(ErrorOf([&] { OpenSafeOutput(folder / "b", false); }), "interrupted"));
    }
    EXPECT_TRUE(folder.Names().empty());
}

} // namespace GlazelHost
