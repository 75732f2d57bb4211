#include "effect/frame_number.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

TEST(FrameNumber, TimeZeroOrNoRateGivesFrameZero)
{
    EXPECT_EQ(FrameNumber(0, 25.0), 0);
    EXPECT_EQ(FrameNumber(123456789, 0.0), 0);
}

TEST(FrameNumber, EveryFrameOfAnHourGetsItsOwnNumberAtBroadcastRates)
{
    for (const double rate : {24000.0 / 1001.0, 25.0, 30000.0 / 1001.0, 50.0, 60000.0 / 1001.0})
    {
        for (std::int32_t frame = 0; frame < static_cast<std::int32_t>(3600 * rate); ++frame)
        {
            const auto time = static_cast<std::int64_t>(frame / rate * 1e7); // cut, as hosts do
            ASSERT_EQ(FrameNumber(time, rate), frame) << rate;
        }
    }
}

TEST(FrameNumber, IsCutTowardsZeroAfterAddingHalfAFrame)
{
    EXPECT_EQ(FrameNumber(4'999'999, 1.0), 0);
    EXPECT_EQ(FrameNumber(5'000'000, 1.0), 1);
    EXPECT_EQ(FrameNumber(-14'000'000, 1.0), 0) << "-1.4 + 0.5 = -0.9";
    EXPECT_EQ(FrameNumber(-16'000'000, 1.0), -1) << "-1.6 + 0.5 = -1.1";
}

TEST(FrameNumber, BeyondThirtyTwoBitsTheNearestNumberIsGiven)
{
    EXPECT_EQ(FrameNumber(std::numeric_limits<std::int64_t>::max(), 1000.0), INT32_MAX);
    EXPECT_EQ(FrameNumber(std::numeric_limits<std::int64_t>::min(), 1000.0), INT32_MIN);
    EXPECT_EQ(FrameNumber(1, std::nan("")), 0);
}
