#include "tools/glazelhost/commands/frame_clock.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

TEST(FrameClock, AnEffectFindsTheIndexAgainAtEveryUsualRate)
{
    for (const double rate : {8.0, 12.5, 24000.0 / 1001.0, 24.0, 25.0, 30000.0 / 1001.0, 30.0, 50.0,
                              60000.0 / 1001.0, 60.0, 120.0, 1000.0})
    {
        for (std::int64_t index = 0; index < 1'000'000; index += index < 5000 ? 1 : 997)
        {
            const auto time = static_cast<double>(FrameTime(index, rate));
            ASSERT_EQ(static_cast<std::int64_t>(time * 1e-7 * rate + 0.5), index) << rate;
        }
    }
}

TEST(FrameClock, TimesAreInUnitsOf100Nanoseconds)
{
    EXPECT_EQ(FrameTime(25, 25.0), 10'000'000);
    EXPECT_EQ(FrameTime(1, 24000.0 / 1001.0), 417'083);
}

TEST(FrameClock, WithoutARateEveryFrameIsAtTheStart)
{
    EXPECT_EQ(FrameTime(7, 0.0), 0);
    EXPECT_EQ(FrameTime(7, -1.0), 0);
}

} // namespace GlazelHost
