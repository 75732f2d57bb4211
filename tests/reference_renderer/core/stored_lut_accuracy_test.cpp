// What a look record keeps of cubes as people use them: prints the figures and holds them to the
// promised ones. All errors are shares of the range of the cube.
#include "reference_renderer/core/lut_fitting.h"
#include "reference_renderer/core/lut_sampling.h"
#include "reference_renderer/core/record_tables.h"
#include "tests/reference_renderer/core/lut_set.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <vector>

namespace ReferenceRenderer
{

namespace
{

constexpr double kSeen = 1.0 / 256.0;
constexpr double kPromised = 1.0 / 1024.0; // for 99.9 % of values
constexpr double kNodesPromised = 1.0 / 8192.0;

struct Figures
{
    double range = 0.0;
    double largestAtNodes = 0.0;
    double largest = 0.0;
    double shareWithin = 0.0; // of the samples, within kPromised
    std::uint32_t size = 0;
    std::uint32_t step = 0;
    std::size_t bytes = 0;
    std::size_t warnings = 0;
};

double WidestRange(const Cube& cube)
{
    Domain ranges{Interval{cube.nodes[0], cube.nodes[0]}, Interval{cube.nodes[1], cube.nodes[1]},
                  Interval{cube.nodes[2], cube.nodes[2]}};
    for (std::size_t i = 0; i < 3 * NodeCount(cube.size); ++i)
    {
        ranges[i % 3].low = std::min(ranges[i % 3].low, cube.nodes[i]);
        ranges[i % 3].high = std::max(ranges[i % 3].high, cube.nodes[i]);
    }
    return std::max({ranges[0].high - ranges[0].low, ranges[1].high - ranges[1].low,
                     ranges[2].high - ranges[2].low});
}

Figures Measure(const Look& look, float highest)
{
    StoredLook stored;
    std::vector<std::string> warnings;
    Figures figures;
    const double range = WidestRange(*look.cube);
    figures.range = range;
    figures.largestAtNodes = StoreFitted(look, stored, warnings).size / range;
    figures.size = stored.cubeSize;
    figures.step = CubeStepOf(stored);
    figures.bytes = CubeBytesOf(stored);
    figures.warnings = warnings.size();

    std::vector<std::uint8_t> record(kRecordSize);
    WriteRecord(stored, RecordBytes(record.data(), kRecordSize));
    PreparedLook kept;
    EXPECT_EQ(kept.Read(record), RecordState::Usable);
    const auto corrections = Prepared(CdlLook(look.cdl, look.cdlMode));
    std::mt19937 random(1);
    std::uniform_real_distribution<float> value(0.0F, highest);
    constexpr int kSamples = 40000;
    int within = 0;
    for (int i = 0; i < kSamples; ++i)
    {
        const Rgb input{value(random), value(random), value(random)};
        const Rgb corrected = look.cdlMode != CdlMode::None ? corrections->Grade(input) : input;
        const Rgb exact =
            ViewOf(*look.cube)
                .Sample(look.curves ? ViewOf(*look.curves).Sample(corrected) : corrected);
        const double error = Distance(kept.Grade(input), exact) / range;
        figures.largest = std::max(figures.largest, error);
        within += error <= kPromised ? 1 : 0;
    }
    figures.shareWithin = static_cast<double>(within) / kSamples;
    return figures;
}

void Print(const std::string& name, const Figures& figures)
{
    std::printf("%-24s %2u points, %6zu bytes, step 2^%-2u nodes 1/%-8.0f samples 1/%-8.0f "
                "%7.3f %% within 1/1024, %zu warnings\n",
                name.c_str(), static_cast<unsigned>(figures.size), figures.bytes,
                static_cast<unsigned>(figures.step), 1.0 / std::max(figures.largestAtNodes, 1e-9),
                1.0 / std::max(figures.largest, 1e-9), 100.0 * figures.shareWithin,
                figures.warnings);
}

void ExpectKept(const LutOfSet& lut, const Look& look, std::uint32_t size, float highest)
{
    const Figures figures = Measure(look, highest);
    Print(lut.name, figures);
    EXPECT_EQ(figures.size, size) << lut.name;
    constexpr double kCode8 = 1.0 / 255.0;
    EXPECT_EQ(figures.warnings != 0, figures.largestAtNodes * figures.range > kCode8) << lut.name;
    if (size <= 33)
    {
        EXPECT_LE(figures.largestAtNodes, kNodesPromised) << lut.name;
    }
    EXPECT_LE(figures.largest, kSeen) << lut.name;
    EXPECT_GE(figures.shareWithin, lut.isHard ? 0.5 : 0.999) << lut.name;
}

} // namespace

TEST(StoredLutAccuracy, CubesOf17And33Points)
{
    for (const LutOfSet& lut : LutSet())
    {
        ExpectKept(lut, CubeLook(CubeOf(17, lut.grading)), 17, 1.0F);
        ExpectKept(lut, CubeLook(CubeOf(33, lut.grading)), 33, 1.0F);
    }
}

TEST(StoredLutAccuracy, CubesOf65Points)
{
    for (const LutOfSet& lut : LutSet())
    {
        ExpectKept(lut, CubeLook(CubeOf(65, lut.grading)), 65, 1.0F);
    }
}

TEST(StoredLutAccuracy, CubesBehindACorrectionAndAShaper)
{
    for (const LutOfSet& lut : LutSet())
    {
        const std::uint32_t size = lut.name == "Cineon to display" ? 65 : 33; // the fullest record
        Look look = CubeLook(CubeOf(size, lut.grading));
        look.cdl = SetCdl();
        look.cdlMode = CdlMode::Unclamped;
        look.curves = SetShaper();
        // Right beside a jump the rounding of the shaper alone moves a value across it.
        if (lut.isSmooth)
        {
            ExpectKept(lut, look, size, 16.0F);
        }
    }
}

} // namespace ReferenceRenderer
