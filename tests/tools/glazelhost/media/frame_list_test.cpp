#include "tools/glazelhost/media/frame_list.h"

#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

namespace GlazelHost
{

namespace
{

std::vector<std::int64_t> FramesWithin(const FrameList& list, std::int64_t end)
{
    std::vector<std::int64_t> frames;
    for (auto frame = list.NextAfter(0); frame && *frame <= end; frame = list.NextAfter(*frame))
    {
        frames.push_back(*frame);
    }
    return frames;
}

std::string RefusalOf(const std::string& text)
{
    try
    {
        FrameList::Parse(text);
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::WrongUsage);
        return error.what();
    }
    return "accepted";
}

} // namespace

TEST(FrameList, RangesNumbersAndStepsNameEachFrameOnceInOrder)
{
    const FrameList list = FrameList::Parse("20-26x2, 5,1-3,2-4");
    EXPECT_EQ(FramesWithin(list, 100), (std::vector<std::int64_t>{1, 2, 3, 4, 5, 20, 22, 24, 26}));
    EXPECT_EQ(list.CountWithin(1, 100), 9);
    EXPECT_EQ(list.CountWithin(0, 22), 7);
    EXPECT_EQ(list.CountWithin(4, 22), 4);
    EXPECT_EQ(list.First(), 1);
}

TEST(FrameList, AStepThatMissesTheEndStopsBeforeIt)
{
    const FrameList list = FrameList::Parse("1-10x4");
    EXPECT_EQ(FramesWithin(list, 100), (std::vector<std::int64_t>{1, 5, 9}));
    EXPECT_EQ(list.Last(), 9);
    EXPECT_EQ(list.CountWithin(1, 8), 2);
    EXPECT_EQ(list.CountWithin(5, 9), 2);
    EXPECT_EQ(list.CountWithin(6, 8), 0);
    EXPECT_EQ(list.CountWithin(10, 20), 0);
}

TEST(FrameList, ContainsAgreesWithTheListedFrames)
{
    const FrameList list = FrameList::Parse("3-9x3,4");
    for (const std::int64_t frame : {3, 4, 6, 9})
    {
        EXPECT_TRUE(list.Contains(frame)) << frame;
    }
    for (const std::int64_t frame : {-1, 0, 1, 2, 5, 7, 8, 10, 12})
    {
        EXPECT_FALSE(list.Contains(frame)) << frame;
    }
    EXPECT_FALSE(list.Contains(std::numeric_limits<std::int64_t>::min()));
}

TEST(FrameList, WithoutAListEveryFrameCountsAndThereIsNoLast)
{
    const FrameList all;
    EXPECT_TRUE(all.Contains(1));
    EXPECT_TRUE(all.Contains(123456789));
    EXPECT_FALSE(all.Last().has_value());
    EXPECT_TRUE(all.Contains(0));
    EXPECT_EQ(all.CountWithin(1, 5'000'000'000), 5'000'000'000);
}

TEST(FrameList, ARangeWithoutAnEndGoesOnWithItsStep)
{
    const FrameList list = FrameList::Parse("1,10-x5");
    EXPECT_EQ(FramesWithin(list, 22), (std::vector<std::int64_t>{1, 10, 15, 20}));
    EXPECT_FALSE(list.Last().has_value());
    EXPECT_FALSE(list.NextAfter(std::numeric_limits<std::int64_t>::max() - 1).has_value());
}

TEST(FrameList, NumbersOfFilesAreTakenAsLongAsTheyMayBe)
{
    const FrameList list = FrameList::Parse("0,1001-1003,20261121235959");
    EXPECT_TRUE(list.Contains(0));
    EXPECT_EQ(list.First(), 0);
    EXPECT_EQ(list.CountWithin(1001, 1100), 3);
    EXPECT_EQ(list.Last(), 20261121235959);
    EXPECT_EQ(FrameList::Parse("0-999999999999999999x7").CountWithin(3, 14), 2);
}

TEST(FrameList, NothingFollowsTheLastFrame)
{
    const FrameList list = FrameList::Parse("7");
    EXPECT_EQ(list.NextAfter(0), 7);
    EXPECT_FALSE(list.NextAfter(7).has_value());
}

TEST(FrameList, NonsenseIsWrongUsageAndQuoted)
{
    for (const std::string text : {"",
                                   ",",
                                   "1,",
                                   ",1",
                                   "a",
                                   "1-b",
                                   "-5",
                                   "5-1",
                                   "-",
                                   "--3",
                                   "1-5x0",
                                   "1-5x",
                                   "1--5",
                                   "1x2",
                                   "5x2",
                                   "1-5x2x2",
                                   "1.5",
                                   "+3",
                                   "1-5x-1",
                                   "99999999999999999999",
                                   "1000000000000000000",
                                   " ",
                                   "1 2"})
    {
        EXPECT_NE(RefusalOf(text), "accepted") << '"' << text << '"';
    }
    EXPECT_NE(RefusalOf("1,5-2,7").find("\"5-2\""), std::string::npos);
}

TEST(FrameList, RandomTextIsParsedOrRefusedAndNeverRunsAway)
{
    constexpr unsigned kSeed = 20241;
    std::mt19937 random(kSeed);
    const std::string letters = "0123456789-,x 9";
    for (int round = 0; round < 20000; ++round)
    {
        std::string text;
        for (auto length = random() % 12; length > 0; --length)
        {
            text += letters[random() % letters.size()];
        }
        try
        {
            const FrameList list = FrameList::Parse(text);
            std::int64_t count = 0;
            for (const std::int64_t frame : FramesWithin(list, 300))
            {
                ASSERT_TRUE(list.Contains(frame)) << text;
                ++count;
            }
            ASSERT_EQ(list.CountWithin(1, 300), count) << text;
        }
        catch (const HostError& error)
        {
            ASSERT_EQ(error.Code(), ExitCode::WrongUsage) << text << " seed " << kSeed;
        }
    }
}

} // namespace GlazelHost
