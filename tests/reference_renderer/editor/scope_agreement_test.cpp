// Compares the counts of the scopes with those of an independent program on the same pictures.
// Needs ffmpeg.
#include "reference_renderer/editor/scope_bins.h"
#include "tests/reference_renderer/core/ffmpeg_samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>

namespace ReferenceRenderer
{

namespace
{

struct Source
{
    const char* name;
    std::size_t width;
    std::size_t height;
    std::string input; // of ffmpeg
};

const Source kSources[] = {
    {"photograph", 320, 200,
     "-i " GLAZEL_SOURCE_DIR "/samples/images/coffee.png -vf crop=320:200:140:90"},
    {"test picture", 320, 180, "-f lavfi -i testsrc2=size=320x180 -frames:v 1 -vf null"},
    {"bars of 75 %", 352, 144, "-f lavfi -i smptehdbars=size=352x144 -frames:v 1 -vf null"},
    {"all hues", 256, 128,
     "-f lavfi -i nullsrc=size=256x128 -frames:v 1 -vf "
     "format=rgb24,geq=r=X:g=2*Y:b=255-X/2-Y/2"},
};

// Of ffmpeg's conversion, which dithers nothing.
const std::string kLuma = ",zscale=matrix=709:range=limited,format=yuv444p";

// One more pixel in a place raises its code by one, so that codes below 255 are counts.
const std::string kCounting = ":intensity=0.004";

std::uint8_t AsCode(std::uint32_t count)
{
    return static_cast<std::uint8_t>(std::min<std::uint32_t>(count, 255));
}

class ScopeAgreement : public testing::TestWithParam<Source>
{
protected:
    std::vector<std::uint8_t> Filtered(const std::string& filters, const std::string& format) const
    {
        return SamplesFrom<std::uint8_t>(GetParam().input + ",format=gbrp" + filters +
                                         " -pix_fmt " + format);
    }
    ScopeBins Counted(ScopeKind kind) const
    {
        const auto bytes = SamplesFrom<std::uint8_t>(GetParam().input + ",format=gbrp,format=bgra" +
                                                     " -pix_fmt bgra");
        const std::size_t pitch = GetParam().width * kChannels;
        EXPECT_EQ(bytes.size(), pitch * GetParam().height);
        ScopeBins bins(kind, GetParam().width, GetParam().width);
        bins.Count(reinterpret_cast<const std::byte*>(bytes.data()), pitch, GetParam().height);
        return bins;
    }
};

TEST_P(ScopeAgreement, EveryPixelHasTheLumaAndTheDifferencesOfTheConversion)
{
    const std::size_t pixels = GetParam().width * GetParam().height;
    const auto colours = Filtered("", "gbrp");
    const auto codes = Filtered(kLuma, "yuv444p");
    ASSERT_EQ(colours.size(), pixels * 3);
    ASSERT_EQ(codes.size(), pixels * 3);
    for (std::size_t i = 0; i < pixels; ++i)
    {
        const LumaCodes ours =
            LumaCodesOf(colours[2 * pixels + i], colours[i], colours[pixels + i]);
        const LumaCodes theirs{codes[i], codes[pixels + i], codes[2 * pixels + i]};
        ASSERT_EQ(ours, theirs) << int{colours[2 * pixels + i]} << " " << int{colours[i]} << " "
                                << int{colours[pixels + i]} << ": " << ours.luma << " "
                                << ours.blueDifference << " " << ours.redDifference << ", "
                                << theirs.luma << " " << theirs.blueDifference << " "
                                << theirs.redDifference;
    }
}

TEST_P(ScopeAgreement, TheParadeHasTheSameCountsInTheSamePlaces)
{
    const std::size_t width = GetParam().width;
    const auto theirs = Filtered(",waveform=components=7:display=parade" + kCounting, "gbrp");
    const std::size_t plane = 3 * width * kLevels;
    ASSERT_EQ(theirs.size(), 3 * plane);
    const ScopeBins ours = Counted(ScopeKind::Parade);
    constexpr std::size_t kPlaneOf[] = {2, 0, 1}; // of red, green, blue
    for (std::size_t colour = 0; colour < kColours; ++colour)
    {
        for (std::size_t i = 0; i < width * kLevels; ++i)
        {
            const std::size_t row = i / width; // 255 is at the top
            const std::size_t place = row * 3 * width + colour * width + i % width;
            ASSERT_EQ(AsCode(ours.Levels(colour, i % width)[kLevels - 1 - row]),
                      theirs[kPlaneOf[colour] * plane + place])
                << "colour " << colour << ", row " << row << ", column " << i % width;
        }
    }
}

TEST_P(ScopeAgreement, TheWaveformHasTheSameCountsInTheSamePlaces)
{
    const std::size_t width = GetParam().width;
    const auto theirs = Filtered(kLuma + ",waveform=components=1" + kCounting, "yuv444p");
    ASSERT_EQ(theirs.size(), 3 * width * kLevels);
    const ScopeBins ours = Counted(ScopeKind::Waveform);
    for (std::size_t i = 0; i < width * kLevels; ++i)
    {
        const std::size_t level = kLevels - 1 - i / width;
        ASSERT_EQ(AsCode(ours.Levels(0, i % width)[level]), theirs[i])
            << "level " << level << ", column " << i % width;
    }
}

TEST_P(ScopeAgreement, TheVectorscopeHasTheSameCountsInTheSamePlaces)
{
    const auto theirs = Filtered(kLuma + ",vectorscope=mode=gray" + kCounting, "yuv444p");
    ASSERT_EQ(theirs.size(), 3 * kLevels * kLevels);
    const ScopeBins ours = Counted(ScopeKind::Vectors);
    for (std::size_t i = 0; i < kLevels * kLevels; ++i)
    {
        const std::size_t red = kLevels - 1 - i / kLevels; // the largest at the top
        ASSERT_EQ(AsCode(ours.Vector(i % kLevels, red)), theirs[i])
            << "blue difference " << i % kLevels << ", red difference " << red;
    }
}

TEST_P(ScopeAgreement, TheHistogramHasTheSameBars)
{
    constexpr std::size_t kHeight = 2048; // the most that there is
    const auto theirs = Filtered(
        ",histogram=scale_height=0:fgopacity=1:level_height=" + std::to_string(kHeight), "gbrp");
    constexpr std::size_t kPart = kHeight * kLevels; // one colour above the other
    ASSERT_EQ(theirs.size(), 3 * kColours * kPart);
    const ScopeBins ours = Counted(ScopeKind::Histogram);
    for (std::size_t colour = 0; colour < kColours; ++colour)
    {
        const auto& counts = ours.Histogram(colour);
        const std::uint64_t most = *std::max_element(counts.begin(), counts.end());
        for (std::size_t level = 0; level < kLevels; ++level)
        {
            std::size_t bar = 0;
            for (std::size_t row = 0; row < kHeight; ++row)
            {
                bar += theirs[colour * kPart + row * kLevels + level] > 128 ? 1U : 0U;
            }
            ASSERT_EQ((counts[level] * kHeight + most - 1) / most, bar)
                << "colour " << colour << ", level " << level;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Pictures, ScopeAgreement, testing::ValuesIn(kSources),
                         [](const auto& source) {
                             std::string name = source.param.name;
                             std::erase_if(name, [](char c) { return std::isalnum(c) == 0; });
                             return name;
                         });

} // namespace

} // namespace ReferenceRenderer
