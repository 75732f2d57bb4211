#include "tools/glazelhost/project/compound_check.h"

#include "tests/tools/glazelhost/project/compound_sample.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace GlazelHost
{

using namespace CompoundSample;

TEST(CompoundChecks, AWholeDocumentIsSound)
{
    EXPECT_TRUE(Document().IsSound());
    EXPECT_TRUE(LooksCompound(Document().Bytes()));
}

TEST(CompoundChecks, OtherFilesAreNot)
{
    EXPECT_FALSE(IsSoundCompound({}));
    EXPECT_FALSE(LooksCompound({}));
    const std::vector<std::byte> zeros(4096);
    EXPECT_FALSE(IsSoundCompound(zeros));
    EXPECT_FALSE(LooksCompound(zeros));
}

TEST(CompoundChecks, AChainInACircleIsFound)
{
    Document document;
    document.Fat(kSectors - 1) = kLongStream;
    EXPECT_FALSE(document.IsSound());
    Document folders;
    folders.Fat(kFolderSector) = kFolderSector;
    EXPECT_FALSE(folders.IsSound());
    Document small;
    small.SmallFat(1) = 0;
    EXPECT_FALSE(small.IsSound());
}

TEST(CompoundChecks, AFolderThatHoldsItselfIsFound)
{
    Document child;
    child.Link(1, 2) = 1;
    EXPECT_FALSE(child.IsSound());
    Document sibling;
    sibling.Link(3, 0) = 2;
    EXPECT_FALSE(sibling.IsSound());
    Document outside;
    outside.Link(3, 0) = 4096;
    EXPECT_FALSE(outside.IsSound());
}

TEST(CompoundChecks, TwoStreamsInOneSectorAreFound)
{
    Document document;
    document.Start(3) = kSmallSectors;
    EXPECT_FALSE(document.IsSound());
}

TEST(CompoundChecks, AStreamLongerThanItsSectorsIsFound)
{
    Document long1;
    long1.Size(3) = 9 * kSector + 1;
    EXPECT_FALSE(long1.IsSound());
    Document small;
    small.Size(2) = 129;
    EXPECT_FALSE(small.IsSound());
    Document huge;
    huge.Size(3) = kFree;
    EXPECT_FALSE(huge.IsSound());
}

TEST(CompoundChecks, AListOfFatSectorsInACircleIsFound)
{
    Document document;
    document.Put<std::uint32_t>(68, kLongStream);
    document.Put<std::uint32_t>(72, kFree);
    EXPECT_FALSE(document.IsSound());
}

TEST(CompoundChecks, AFileThatIsCutIsFoundWhereverSomethingIsMissing)
{
    const std::vector<std::byte> bytes = Document().Bytes();
    for (std::size_t size = 0; size + kSector <= bytes.size(); ++size)
    {
        EXPECT_FALSE(IsSoundCompound(std::span(bytes).first(size))) << size;
    }
    EXPECT_TRUE(IsSoundCompound(std::span(bytes).first(bytes.size() - 5))) << "nothing is missing";
}

TEST(CompoundChecks, AnyNumberAtAnyPlaceIsJudgedAndNothingElseHappens)
{
    std::size_t refused = 0;
    for (std::size_t offset = 0; offset < 4 * kSector; offset += 2)
    {
        for (const std::uint32_t number : {0U, 1U, 4U, 12U, 13U, 0x7FFFFFFFU, kFat, kEnd, kFree})
        {
            Document document;
            document.Put(offset, number);
            refused += document.IsSound() ? 0U : 1U;
        }
    }
    EXPECT_GT(refused, 100U);
}

} // namespace GlazelHost
