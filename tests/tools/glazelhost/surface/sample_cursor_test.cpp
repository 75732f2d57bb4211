#include "tools/glazelhost/surface/sample_cursor.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <vector>

namespace GlazelHost
{

namespace
{

constexpr Sample kMark{9, 9, 9, 255};

// Red says the column, green the row.
Sample At(int x, int y)
{
    return {0, static_cast<std::uint8_t>(y), static_cast<std::uint8_t>(x), 255};
}

// An 8 x 6 surface whose samples name their place, with a cursor on columns 2 to 6, rows 1 to 4.
class Cursor
{
public:
    explicit Cursor(bool bottomUp = false, SurfaceFormat format = SurfaceFormat::Straight8)
        : grid({8, 6, format, bottomUp}), cursor(grid, {2, 1, 7, 5}, log)
    {
        for (int y = 0; y < 6; ++y)
        {
            for (int x = 0; x < 8; ++x)
            {
                const Sample sample = At(x, y);
                StoreSamples(grid.At(x, y), format, false, {&sample, 1});
            }
        }
    }

    Sample Pixel(int x, int y) const
    {
        Sample sample;
        LoadSamples(grid.At(x, y), grid.Layout().format, false, {&sample, 1});
        return sample;
    }

    // Whether every sample outside the locked area still names its place.
    bool OutsideIsUntouched() const
    {
        for (int y = 0; y < 6; ++y)
        {
            for (int x = 0; x < 8; ++x)
            {
                const bool inside = x >= 2 && x < 7 && y >= 1 && y < 5;
                if (!inside && Pixel(x, y) != At(x, y))
                {
                    return false;
                }
            }
        }
        return grid.GuardsAreIntact();
    }

    PixelGrid grid;
    ContractLog log;
    SampleCursor cursor;
};

} // namespace

TEST(SampleCursor, StartsAtTheTopLeftOfTheLockedArea)
{
    for (const bool bottomUp : {false, true})
    {
        Cursor test(bottomUp);
        std::array<Sample, 2> samples{};
        test.cursor.Read(samples, false);
        EXPECT_EQ(samples[0], At(2, 1));
        EXPECT_EQ(samples[1], At(3, 1));
    }
}

TEST(SampleCursor, MovesAlongTheRowAndToAbsolutePlaces)
{
    Cursor test;
    std::array<Sample, 1> sample{};
    test.cursor.MoveTo(3, 2);
    test.cursor.MoveBy(-2);
    test.cursor.Read(sample, false);
    EXPECT_EQ(sample[0], At(3, 3));
}

TEST(SampleCursor, ReadingPastTheRowsEndGivesWhatIsInsideAndIsNoted)
{
    Cursor test;
    std::vector<Sample> samples(4, kMark);
    test.cursor.MoveTo(3, 0);
    test.cursor.Read(samples, false);
    EXPECT_EQ(samples, (std::vector{At(5, 1), At(6, 1), kMark, kMark}));
    EXPECT_EQ(test.log.CountOf(Violation::OutsideLock), 1u);
}

TEST(SampleCursor, ReadingBeforeTheRowsStartGivesWhatIsInsideAndIsNoted)
{
    Cursor test;
    std::vector<Sample> samples(3, kMark);
    test.cursor.MoveBy(-2);
    test.cursor.Read(samples, false);
    EXPECT_EQ(samples, (std::vector{kMark, kMark, At(2, 1)}));
    EXPECT_EQ(test.log.CountOf(Violation::OutsideLock), 1u);
}

TEST(SampleCursor, WritingOutsideTheLockedAreaNeverHappens)
{
    for (const bool bottomUp : {false, true})
    {
        Cursor test(bottomUp);
        const std::vector<Sample> row(20, kMark);
        for (const std::int64_t y : {std::int64_t{-1}, std::int64_t{4}, std::int64_t{1} << 40})
        {
            test.cursor.MoveTo(0, y);
            test.cursor.Write(row, false);
        }
        test.cursor.MoveTo(-7, 0);
        test.cursor.Write(row, false);
        EXPECT_TRUE(test.OutsideIsUntouched());
        EXPECT_EQ(test.Pixel(2, 1), kMark);
        EXPECT_EQ(test.log.CountOf(Violation::OutsideLock), 4u);
    }
}

TEST(SampleCursor, TheCurrentRunIsThereOnlyWhenItIsWhollyInside)
{
    Cursor test;
    EXPECT_EQ(test.cursor.CurrentRun(5), test.grid.At(2, 1));
    EXPECT_EQ(test.cursor.CurrentRun(6), nullptr);
    EXPECT_EQ(test.log.CountOf(Violation::OutsideLock), 1u);
    test.cursor.MoveTo(5, 0);
    EXPECT_EQ(test.cursor.CurrentPixel(), nullptr);
}

TEST(SampleCursor, AnUnpackedRectangleSkipsThePaddingSamplesAfterEachRow)
{
    Cursor test;
    std::vector<Sample> buffer(3 * 5, kMark);
    test.cursor.ReadRect({buffer.data(), false, {1, 1, 3, 4}, 3});
    for (int y = 0; y < 3; ++y)
    {
        const auto row = static_cast<std::size_t>(y) * 5;
        EXPECT_EQ(buffer[row], At(3, 2 + y));
        EXPECT_EQ(buffer[row + 1], At(4, 2 + y));
        EXPECT_EQ(buffer[row + 2], kMark);
    }
    EXPECT_EQ(test.log.Summary(), "");
}

TEST(SampleCursor, APackedRectangleIsTheMirrorOfAnUnpackedOne)
{
    Cursor test;
    std::vector<Sample> buffer;
    for (int index = 0; index < 7; ++index)
    {
        buffer.push_back(Sample{static_cast<std::uint8_t>(index), 0, 0, 255});
    }
    test.cursor.WriteRect({buffer.data(), false, {1, 1, 3, 3}, 3});
    EXPECT_EQ(test.Pixel(3, 2), buffer[0]);
    EXPECT_EQ(test.Pixel(4, 2), buffer[1]);
    EXPECT_EQ(test.Pixel(3, 3), buffer[5]);
    EXPECT_EQ(test.Pixel(4, 3), buffer[6]);
    EXPECT_TRUE(test.OutsideIsUntouched());
    EXPECT_EQ(test.log.Summary(), "");
}

TEST(SampleCursor, ARectangleThatSticksOutIsCutOnEverySide)
{
    Cursor test;
    std::vector<Sample> buffer(9 * 8);
    for (std::size_t index = 0; index < buffer.size(); ++index)
    {
        buffer[index] = Sample{static_cast<std::uint8_t>(index), 0, 0, 255};
    }
    test.cursor.WriteRect({buffer.data(), false, {-2, -2, 7, 6}, 0});
    EXPECT_TRUE(test.OutsideIsUntouched());
    EXPECT_EQ(test.Pixel(2, 1), buffer[2 * 9 + 2]);
    EXPECT_EQ(test.Pixel(6, 4), buffer[5 * 9 + 6]);
    EXPECT_GT(test.log.CountOf(Violation::OutsideLock), 0u);
}

TEST(SampleCursor, ANegativePaddingOverlapsTheRowsOfTheBuffer)
{
    Cursor test;
    std::vector<Sample> buffer(4, kMark);
    test.cursor.ReadRect({buffer.data(), false, {0, 0, 3, 2}, -2});
    EXPECT_EQ(buffer, (std::vector{At(2, 1), At(2, 2), At(3, 2), At(4, 2)}));
}

TEST(SampleCursor, ADescriptionThatMakesNoSenseTouchesNothing)
{
    Cursor test;
    std::vector<Sample> buffer(25, kMark);
    constexpr int kFar = std::numeric_limits<int>::max();
    constexpr int kFarBack = std::numeric_limits<int>::min();
    test.cursor.WriteRect({buffer.data(), false, {3, 0, 1, 2}, 0});
    test.cursor.WriteRect({buffer.data(), false, {0, 3, 1, 2}, 0});
    test.cursor.WriteRect({buffer.data(), false, {0, 0, 3, 2}, -4});
    test.cursor.WriteRect({buffer.data(), false, {kFarBack, 0, kFar, 1}, 0});
    test.cursor.FillRect({0, kFarBack, 1, kFar}, kMark, false);
    EXPECT_EQ(test.log.CountOf(Violation::BadDescriptor), 5u);
    test.cursor.ReadRect({nullptr, false, {0, 0, 1, 1}, 0});
    EXPECT_EQ(test.log.CountOf(Violation::NullBuffer), 1u);
    EXPECT_TRUE(test.OutsideIsUntouched());
    EXPECT_EQ(test.Pixel(2, 1), At(2, 1));
}

TEST(SampleCursor, FillingReplacesOrBlends)
{
    Cursor test(false, SurfaceFormat::Premultiplied8);
    const Sample half{0, 0, 100, 128};
    test.cursor.FillRect({0, 0, 1, 1}, half, false);
    test.cursor.FillRect({1, 0, 2, 1}, half, true);
    Sample sample;
    LoadSamples(test.grid.At(2, 1), SurfaceFormat::Premultiplied8, true, {&sample, 1});
    EXPECT_EQ(sample, half);
    LoadSamples(test.grid.At(3, 1), SurfaceFormat::Premultiplied8, true, {&sample, 1});
    EXPECT_EQ(sample, Over(half, At(3, 1)));
    EXPECT_TRUE(test.OutsideIsUntouched());
}

TEST(SampleCursor, BlendingAnArrayIsCutAtTheArea)
{
    Cursor test;
    const std::vector<Sample> tops(4, Sample{0, 0, 0, 255});
    test.cursor.MoveTo(3, 3);
    test.cursor.Blend(tops);
    EXPECT_EQ(test.Pixel(5, 4), (Sample{0, 0, 0, 255}));
    EXPECT_EQ(test.Pixel(6, 4), (Sample{0, 0, 0, 255}));
    EXPECT_TRUE(test.OutsideIsUntouched());
    EXPECT_EQ(test.log.CountOf(Violation::OutsideLock), 1u);
}

} // namespace GlazelHost
