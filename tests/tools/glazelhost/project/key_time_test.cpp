#include "tools/glazelhost/project/key_time.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

namespace
{

constexpr std::int64_t kSecond = 1'000'000'000;

KeyTime Seconds(std::int64_t nanoseconds)
{
    return {KeyTime::Unit::Nanoseconds, nanoseconds};
}

KeyTime Frame(std::int64_t frame)
{
    return {KeyTime::Unit::Frames, frame};
}

} // namespace

TEST(KeyTimes, AreSecondsClockTimesOrFrames)
{
    EXPECT_EQ(ParseKeyTime("0"), Seconds(0));
    EXPECT_EQ(ParseKeyTime("2.5"), Seconds(5 * kSecond / 2));
    EXPECT_EQ(ParseKeyTime("0.000000001"), Seconds(1));
    EXPECT_EQ(ParseKeyTime("1:30"), Seconds(90 * kSecond));
    EXPECT_EQ(ParseKeyTime("01:02:03.250"), Seconds(3723 * kSecond + kSecond / 4));
    EXPECT_EQ(ParseKeyTime("100"), Seconds(100 * kSecond)) << "no colon, no limit of 59";
    EXPECT_EQ(ParseKeyTime("75:00"), Seconds(75 * 60 * kSecond));
    EXPECT_EQ(ParseKeyTime("48f"), Frame(48));
    EXPECT_EQ(ParseKeyTime("0f"), Frame(0));
}

TEST(KeyTimes, AnythingElseIsNone)
{
    for (const char* text : {"",
                             "f",
                             "-1",
                             "+1",
                             "1s",
                             "1.",
                             ".5",
                             "1.2.3",
                             "1:60",
                             "1:2:60",
                             "1:60:00",
                             "1:2:3:4",
                             "1:",
                             ":1",
                             "1.5f",
                             "-1f",
                             " 1",
                             "1 ",
                             "1e3",
                             "0x1",
                             "1:2.5:3",
                             "1.0000000001",
                             "1.-5",
                             "1000001",
                             "99999999999999999999",
                             "1000000001f",
                             "99999999999999999999f",
                             "nan",
                             "48F"})
    {
        EXPECT_EQ(ParseKeyTime(text), std::nullopt) << text;
    }
    EXPECT_NE(ParseKeyTime("1000000"), std::nullopt);
    EXPECT_NE(ParseKeyTime("1000000000f"), std::nullopt);
}

TEST(KeyTimes, TheShortestTextIsReadBackAsTheSameTime)
{
    for (const auto& [text, shortest] : {std::pair{"2.500", "2.5"},
                                         {"01:00:00.000", "3600"},
                                         {"0.000000001", "0.000000001"},
                                         {"10.050", "10.05"},
                                         {"0", "0"},
                                         {"007f", "7f"}})
    {
        const auto time = ParseKeyTime(text);
        ASSERT_TRUE(time) << text;
        EXPECT_EQ(TextOf(*time), shortest);
        EXPECT_EQ(ParseKeyTime(TextOf(*time)), time);
    }
}

TEST(KeyTimes, FramesDoNotDependOnTheRate)
{
    EXPECT_EQ(FramePosition(Frame(7), 24.0), 7.0);
    EXPECT_EQ(FramePosition(Frame(7), 0.0), 7.0);
}

TEST(KeyTimes, WholeFramesAreWholeAtEveryRate)
{
    for (const double rate : {24000.0 / 1001.0, 24.0, 25.0, 30000.0 / 1001.0, 60.0, 120.0, 12.5})
    {
        for (const std::int64_t frame : {0, 1, 2, 119, 120, 1001, 86399, 2'000'000})
        {
            // As people write it: milliseconds.
            const auto ms =
                static_cast<std::int64_t>(static_cast<double>(frame) * 1000.0 / rate + 0.5);
            EXPECT_EQ(FramePosition(Seconds(ms * 1'000'000), rate), static_cast<double>(frame))
                << rate << ' ' << frame;
        }
    }
}

TEST(KeyTimes, OtherTimesLieBetweenFrames)
{
    EXPECT_DOUBLE_EQ(FramePosition(Seconds(kSecond / 2), 25.0), 12.5);
    EXPECT_DOUBLE_EQ(FramePosition(Seconds(41'000'000), 24.0), 0.984);
    EXPECT_EQ(FramePosition(Seconds(42'000'000), 24.0), 1.0);
}

TEST(KeyTimes, FramesShorterThanAMillisecondAreAllWithinReach)
{
    EXPECT_EQ(FramePosition(Seconds(1'040'000), 10'000.0), 10.0);
}

} // namespace GlazelHost
