#include "effect/packed_walk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>

namespace
{

// The lowest sample that is read and the one behind the highest, by taking every step of the walk.
std::pair<std::int64_t, std::int64_t> SamplesRead(const Geometry::Rect& area,
                                                  const PackedWalk& walk)
{
    std::int64_t lowest = std::numeric_limits<std::int64_t>::max();
    std::int64_t end = std::numeric_limits<std::int64_t>::min();
    std::int64_t sample = walk.firstSample;
    for (std::int32_t y = 0; y < area.height; ++y)
    {
        lowest = std::min(lowest, sample);
        end = std::max(end, sample + area.width);
        sample += area.width + walk.rowPadding;
    }
    return {lowest, end};
}

} // namespace

TEST(PackedWalk, AWholeFrameIsTheBufferItself)
{
    const auto walk = WalkOver({0, 0, 8, 4}, 8, 4);
    ASSERT_TRUE(walk.has_value());
    EXPECT_TRUE(walk->isWholeFrame);
    EXPECT_EQ(walk->firstSample, 0);
    EXPECT_EQ(walk->rowPadding, 0);
    EXPECT_EQ(walk->samplesBefore, 0U);
    EXPECT_EQ(walk->samplesBehind, 0U);
}

TEST(PackedWalk, APartStartsAtItsPlaceAndIsPaddedByFourTimesTheDifference)
{
    const auto walk = WalkOver({1, 2, 6, 2}, 8, 4);
    ASSERT_TRUE(walk.has_value());
    EXPECT_FALSE(walk->isWholeFrame);
    EXPECT_EQ(walk->firstSample, 2 * 8 + 1);
    EXPECT_EQ(walk->rowPadding, (8 - 6) * 4);
}

TEST(PackedWalk, TheLeftHalfOfAFrameReadsFarBehindTheBuffer)
{
    const auto walk = WalkOver({0, 0, 960, 1080}, 1920, 1080);
    ASSERT_TRUE(walk.has_value());
    EXPECT_EQ(walk->samplesBefore, 0U);
    EXPECT_EQ(walk->samplesBehind, 1079U * (960 + 960 * 4) + 960 - 1920 * 1080);
}

TEST(PackedWalk, TheRoomIsWhatTheWalkReadsOutsideTheBuffer)
{
    for (const std::int32_t left : {-3, 0, 1, 7, 40})
    {
        for (const std::int32_t top : {-2, 0, 1, 3, 9})
        {
            for (const std::int32_t width : {1, 4, 7, 8, 9, 11, 20})
            {
                for (const std::int32_t height : {1, 2, 4, 5})
                {
                    const Geometry::Rect area{left, top, width, height};
                    const auto walk = WalkOver(area, 8, 4);
                    ASSERT_TRUE(walk.has_value());
                    const auto [lowest, end] = SamplesRead(area, *walk);
                    const auto before = static_cast<std::int64_t>(walk->samplesBefore);
                    const auto behind = static_cast<std::int64_t>(walk->samplesBehind);
                    EXPECT_EQ(before, std::max<std::int64_t>(0, -lowest))
                        << left << ' ' << top << ' ' << width << ' ' << height;
                    EXPECT_EQ(behind, std::max<std::int64_t>(0, end - 8 * 4))
                        << left << ' ' << top << ' ' << width << ' ' << height;
                }
            }
        }
    }
}

TEST(PackedWalk, NumbersThatDoNotFitGiveNone)
{
    constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();
    EXPECT_FALSE(WalkOver({0, 0, 1, 1}, kLargest, 1).has_value()) << "four times the difference";
    EXPECT_FALSE(WalkOver({0, 0, kLargest, 1}, kSmallest, 1).has_value()) << "the difference";
    EXPECT_TRUE(WalkOver({kSmallest, kSmallest, 1, 1}, 1, 1).has_value());
    EXPECT_TRUE(WalkOver({kLargest, kLargest, 1, kLargest}, kLargest / 4, 1).has_value());
    // So wide that the last row's first sample, or what is behind its last one, is the first number
    // beyond 64 bits.
    constexpr std::int32_t kDifference = kLargest / 4;
    constexpr std::int32_t kWidth = kLargest - kDifference;
    constexpr std::int64_t kStep = std::int64_t{kWidth} + 4 * kDifference;
    constexpr std::int64_t kLeft =
        std::numeric_limits<std::int64_t>::max() - kStep * (kLargest - std::int64_t{1});
    constexpr Geometry::Rect kLast{kLeft % kLargest, kLeft / kLargest, kWidth, kLargest};
    Geometry::Rect fits = kLast;
    fits.top -= 1;
    EXPECT_TRUE(WalkOver(fits, kLargest, 1).has_value());
    EXPECT_FALSE(WalkOver(kLast, kLargest, 1).has_value()) << "its end does not fit";
    Geometry::Rect beyond = kLast;
    beyond.top += 1;
    EXPECT_FALSE(WalkOver(beyond, kLargest, 1).has_value()) << "nor its start";
}

TEST(PackedWalk, AnEmptyPartReadsNothing)
{
    for (const Geometry::Rect& area : {Geometry::Rect{50, 50, 0, 3}, {50, 50, 3, 0}, {3, 0, 8, 0}})
    {
        const auto walk = WalkOver(area, 8, 4);
        ASSERT_TRUE(walk.has_value());
        EXPECT_EQ(walk->samplesBefore, 0U) << area.left << ' ' << area.width;
        EXPECT_EQ(walk->samplesBehind, 0U) << area.left << ' ' << area.width;
    }
}
