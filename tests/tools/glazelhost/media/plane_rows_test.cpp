#include "tools/glazelhost/media/plane_rows.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace GlazelHost
{

namespace
{

constexpr std::size_t kMost = 40; // more than is taken at once, and a rest

// Samples that differ from each other, with room in front so that a row may lie at any address.
template <typename Sample>
std::vector<Sample> Different(std::size_t count)
{
    std::vector<Sample> samples(count);
    std::iota(samples.begin(), samples.end(), Sample{1});
    return samples;
}

template <typename Sample>
void ExpectRowsToMatch(std::size_t pixels, std::size_t shift, bool hasAlpha, Sample opaque)
{
    const std::vector<Sample> planes = Different<Sample>(4 * kMost + shift);
    const Sample* const first = planes.data() + shift;
    const PlaneRow<const Sample> row{first + kMost, first, first + 2 * kMost,
                                     hasAlpha ? first + 3 * kMost : nullptr};
    constexpr Sample kUntouched{77};
    std::vector<Sample> joined(4 * kMost + 1, kUntouched);
    JoinPlanes(row, pixels, joined.data());
    for (std::size_t x = 0; x < pixels; ++x)
    {
        ASSERT_EQ(joined[4 * x], row.blue[x]) << pixels;
        ASSERT_EQ(joined[4 * x + 1], row.green[x]) << pixels;
        ASSERT_EQ(joined[4 * x + 2], row.red[x]) << pixels;
        ASSERT_EQ(joined[4 * x + 3], hasAlpha ? row.alpha[x] : opaque) << pixels;
    }
    EXPECT_EQ(joined[4 * pixels], kUntouched);

    std::vector<Sample> split(planes.size() + 1, kUntouched);
    Sample* const back = split.data() + shift;
    SplitPlanes(joined.data(), pixels,
                PlaneRow<Sample>{back + kMost, back, back + 2 * kMost,
                                 hasAlpha ? back + 3 * kMost : nullptr});
    for (std::size_t plane = 0; plane < 4; ++plane)
    {
        for (std::size_t x = 0; x < kMost; ++x)
        {
            const bool isWritten = x < pixels && (plane < 3 || hasAlpha);
            ASSERT_EQ(back[plane * kMost + x], isWritten ? first[plane * kMost + x] : kUntouched)
                << pixels << " pixels, plane " << plane << ", " << x;
        }
    }
}

} // namespace

TEST(PlaneRows, PixelsOfEveryWidthComeOutOfPlanesAndGoBackAndNothingBesideThem)
{
    for (std::size_t pixels = 0; pixels <= kMost; ++pixels)
    {
        for (const bool hasAlpha : {false, true})
        {
            ExpectRowsToMatch<std::uint8_t>(pixels, pixels % 5, hasAlpha, 255);
            ExpectRowsToMatch<float>(pixels, pixels % 3, hasAlpha, 1.0F);
        }
    }
}

} // namespace GlazelHost
