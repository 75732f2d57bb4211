#include "tools/glazelhost/ui/progress_text.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace GlazelHost
{

TEST(ProgressText, DurationsAreRoundedUpToSeconds)
{
    EXPECT_EQ(DurationText(0.0), "0:00");
    EXPECT_EQ(DurationText(0.1), "0:01");
    EXPECT_EQ(DurationText(59.5), "1:00");
    EXPECT_EQ(DurationText(754.0), "12:34");
    EXPECT_EQ(DurationText(3723.0), "1:02:03");
    EXPECT_EQ(DurationText(-5.0), "0:00");
}

TEST(ProgressText, WithoutAFrameThereIsNoSpeed)
{
    EXPECT_EQ(FramesPerSecond({0, 10, 5.0}), std::nullopt);
    EXPECT_EQ(SecondsLeft({0, 10, 5.0}), std::nullopt);
    EXPECT_EQ(FramesPerSecond({3, 10, 0.0}), std::nullopt);
}

TEST(ProgressText, TimeLeftFollowsFromTheSpeedSoFar)
{
    EXPECT_EQ(FramesPerSecond({50, 150, 2.0}), 25.0);
    EXPECT_EQ(SecondsLeft({50, 150, 2.0}), 4.0);
    EXPECT_EQ(SecondsLeft({50, std::nullopt, 2.0}), std::nullopt);
    EXPECT_EQ(SecondsLeft({160, 150, 2.0}), 0.0);
}

TEST(ProgressText, ABarFillsTheColumnsThatTheWordsLeave)
{
    EXPECT_EQ(BarLine({50, 100, 2.0}, 62),
              " 50% [======>     ] 50 of 100 frames, 25.0 frames/s, 0:02 left");
    EXPECT_EQ(BarLine({50, 100, 2.0}, 62).size(), 62u);
    EXPECT_LT(BarLine({50, 100, 2.0}, 500).size(), 100u);
}

TEST(ProgressText, AFinishedBarIsFull)
{
    EXPECT_EQ(BarLine({4, 4, 2.0}, 58),
              "100% [============] 4 of 4 frames, 2.0 frames/s, 0:00 left");
}

TEST(ProgressText, ANarrowTerminalGetsWordsOnlyAndNoMoreThanFit)
{
    EXPECT_EQ(BarLine({50, 100, 2.0}, 20), " 50% 50 of 100 frame");
    EXPECT_EQ(BarLine({50, 100, 2.0}, 0), "");
    EXPECT_EQ(BarLine({50, 100, 2.0}, -3), "");
}

TEST(ProgressText, AnUnknownLengthShowsNoShare)
{
    EXPECT_EQ(BarLine({50, std::nullopt, 2.0}, 80), "50 frames, 25.0 frames/s");
    EXPECT_EQ(PlainLine({1, std::nullopt, 2.0}), "1 frame, 0.5 frames/s");
}

TEST(ProgressText, APlainLineSaysCountShareSpeedAndTimeLeft)
{
    EXPECT_EQ(PlainLine({126, 300, 4.0}), "126 of 300 frames (42%), 31.5 frames/s, 0:06 left");
    EXPECT_EQ(PlainLine({0, 0, 0.0}), "0 of 0 frames (100%)");
}

TEST(ProgressText, MoreFramesThanExpectedStayAtAHundredPerCent)
{
    EXPECT_EQ(PlainLine({12, 10, 1.0}), "12 of 10 frames (100%), 12.0 frames/s, 0:00 left");
}

TEST(ProgressText, JsonHasNullForWhatIsNotKnown)
{
    const auto known = nlohmann::json::parse(JsonLine({126, 300, 4.0}));
    EXPECT_EQ(known.at("event"), "progress");
    EXPECT_EQ(known.at("frame"), 126);
    EXPECT_EQ(known.at("frames"), 300);
    EXPECT_EQ(known.at("framesPerSecond"), 31.5);
    EXPECT_EQ(known.at("secondsLeft"), 5.524);

    const auto unknown = nlohmann::json::parse(JsonLine({0, std::nullopt, 0.0}));
    EXPECT_TRUE(unknown.at("frames").is_null());
    EXPECT_TRUE(unknown.at("framesPerSecond").is_null());
    EXPECT_TRUE(unknown.at("secondsLeft").is_null());
}

} // namespace GlazelHost
