#include "reference_renderer/core/look_blend.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace ReferenceRenderer
{

namespace
{

// The blend of two looks by way of its record, as a renderer would use it.
std::unique_ptr<PreparedLook> Blend(const PreparedLook& a, const PreparedLook& b, double fraction)
{
    const auto blend = std::make_unique<StoredLook>();
    static TableEncoder encoder(NodeCount(kStoredCubeSize));
    BlendLooks(a, b, fraction, *blend, encoder);
    std::vector<std::uint8_t> record(kRecordSize);
    WriteRecord(*blend, RecordBytes(record.data(), kRecordSize));
    auto prepared = std::make_unique<PreparedLook>();
    EXPECT_EQ(prepared->Read(record), RecordState::Usable);
    return prepared;
}

// The largest difference between the blend of two looks and the mean of their outputs, over random
// values of a range.
double BlendError(const Look& a, const Look& b, double fraction, float low = 0.0F,
                  float high = 1.0F)
{
    const auto lookA = Prepared(a);
    const auto lookB = Prepared(b);
    const auto blend = Blend(*lookA, *lookB, fraction);
    const auto share = static_cast<float>(fraction);
    std::mt19937 random(5);
    std::uniform_real_distribution<float> value(low, high);
    double largest = 0.0;
    for (int i = 0; i < 20000; ++i)
    {
        const Rgb input{value(random), value(random), value(random)};
        const Rgb outA = lookA->Grade(input);
        const Rgb outB = lookB->Grade(input);
        const Rgb mean{outA.r + share * (outB.r - outA.r), outA.g + share * (outB.g - outA.g),
                       outA.b + share * (outB.b - outA.b)};
        largest = std::max(largest, Distance(blend->Grade(input), mean));
    }
    return largest;
}

double LogCurve(double linear)
{
    return std::log2(linear / 0.01 + 1.0) / 11.0;
}

// A camera-like look: a logarithmic shaper over a wide range, then a cube.
Look ShaperLook()
{
    Look look = CubeLook(CubeOf(21, Swirled));
    const Interval wide{0.0F, 16.0F};
    look.curves = CurvesOf(2048, LogCurve, {wide, wide, wide});
    return look;
}

constexpr double kRoundingOfRecords = 2e-5; // of three records of ranges about 1

} // namespace

TEST(LookBlend, NumbersOfCorrectionsBlendLinearly)
{
    const auto a = Prepared(CdlLook({{1, 1, 1}, {0, 0, 0}, {1, 1, 1}, 1}));
    const auto b = Prepared(CdlLook({{2, 1, 0}, {0.4F, 0, -0.4F}, {3, 1, 1}, 0}));
    const auto blend = Blend(*a, *b, 0.25);
    const Cdl& cdl = blend->Stored().cdl;
    EXPECT_FLOAT_EQ(cdl.slope[0], 1.25F);
    EXPECT_FLOAT_EQ(cdl.slope[2], 0.75F);
    EXPECT_FLOAT_EQ(cdl.offset[0], 0.1F);
    EXPECT_FLOAT_EQ(cdl.power[0], 1.5F);
    EXPECT_FLOAT_EQ(cdl.saturation, 0.75F);
    EXPECT_EQ(blend->Stored().cdlMode, CdlMode::Clamped);
}

TEST(LookBlend, ALookWithoutACorrectionCountsAsANeutralOne)
{
    const auto a = Prepared({});
    const auto b = Prepared(CdlLook({{3, 1, 1}, {0, 0, 0}, {1, 1, 1}, 1}, CdlMode::Unclamped));
    EXPECT_FLOAT_EQ(Blend(*a, *b, 0.5)->Stored().cdl.slope[0], 2.0F);
    EXPECT_EQ(Blend(*a, *b, 0.5)->Stored().cdlMode, CdlMode::Unclamped);
    EXPECT_EQ(Blend(*a, *a, 0.5)->Stored().cdlMode, CdlMode::None);
}

TEST(LookBlend, CubesOverTheSameLatticeBlendExactly)
{
    EXPECT_LT(BlendError(CubeLook(CubeOf(27, Swirled)), CubeLook(CubeOf(27, Inverted)), 0.3),
              kRoundingOfRecords);
    EXPECT_LT(BlendError(CurveLook(CurvesOf(100, LogCurve)),
                         CurveLook(CurvesOf(100, [](double x) { return 1.0 - x; })), 0.7),
              kRoundingOfRecords);
}

TEST(LookBlend, ALookWithoutTablesBlendsExactlyEvenOutsideADomain)
{
    EXPECT_LT(BlendError({}, CubeLook(CubeOf(9, Swirled)), 0.4, -2.0F, 3.0F), kRoundingOfRecords);
    EXPECT_LT(BlendError(CubeLook(CubeOf(9, Swirled)), {}, 0.4, -2.0F, 3.0F), kRoundingOfRecords);
    EXPECT_LT(BlendError({}, ShaperLook(), 0.5, -1.0F, 20.0F), kRoundingOfRecords);
}

TEST(LookBlend, StrengthsAreBlendedToo)
{
    Look half = CubeLook(CubeOf(9, Swirled));
    half.strength = 0.5F;
    Look none = CubeLook(CubeOf(9, Inverted));
    none.strength = 0.0F;
    EXPECT_LT(BlendError(half, CubeLook(CubeOf(9, Inverted)), 0.6), kRoundingOfRecords);
    EXPECT_LT(BlendError(half, none, 0.6), kRoundingOfRecords);
    EXPECT_LT(BlendError(none, none, 0.6), kRoundingOfRecords);
}

TEST(LookBlend, CubesWhoseNodesFitIntoOneLatticeBlendExactly)
{
    EXPECT_LT(BlendError(CubeLook(CubeOf(5, Swirled)), CubeLook(CubeOf(9, Inverted)), 0.5),
              kRoundingOfRecords);
    EXPECT_LT(BlendError(CubeLook(CubeOf(3, Swirled)), CubeLook(CubeOf(14, Inverted)), 0.5),
              kRoundingOfRecords)
        << "over 27 nodes";
}

TEST(LookBlend, CubesOfOtherSizesBlendWithinTheirInterpolation)
{
    EXPECT_LT(BlendError(CubeLook(CubeOf(17, Swirled)), CubeLook(CubeOf(26, Swirled)), 0.5), 2e-3);
}

TEST(LookBlend, CurvesOfOtherSizesAndDomainsBlendClosely)
{
    const Interval wide{-1.0F, 4.0F};
    EXPECT_LT(
        BlendError(CurveLook(CurvesOf(1024, LogCurve)),
                   CurveLook(CurvesOf(33, [](double x) { return x / 4; }, {wide, wide, wide})), 0.5,
                   -1.5F, 4.5F),
        1e-2)
        << "where the logarithm is steepest";
}

TEST(LookBlend, AWideShaperAndACubeKeepTheShadows)
{
    const Look cube = CubeLook(CubeOf(17, Swirled));
    EXPECT_LT(BlendError(ShaperLook(), cube, 0.5, 0.0F, 1.0F), 1e-2);
    EXPECT_LT(BlendError(cube, ShaperLook(), 0.5, 0.0F, 16.0F), 1e-2);
    EXPECT_LT(BlendError(ShaperLook(), CurveLook(CurvesOf(512, LogCurve)), 0.5), 5e-3);
}

TEST(LookBlend, AFallingCurveAndACubeBlend)
{
    const Look falling = CurveLook(CurvesOf(512, [](double x) { return 1.0 - x * x; }));
    EXPECT_LT(BlendError(falling, CubeLook(CubeOf(17, Swirled)), 0.5), 2e-3);
}

TEST(LookBlend, DomainsThatDoNotMeetBlend)
{
    const Interval low{-2.0F, -1.0F};
    const Interval high{1.0F, 2.0F};
    EXPECT_LT(BlendError(CubeLook(CubeOf(9, Same, {low, low, low})),
                         CubeLook(CubeOf(9, Same, {high, high, high})), 0.5, -2.0F, 2.0F),
              2e-2);
}

TEST(LookBlend, TheEndsAreTheTwoLooks)
{
    const Look a = CubeLook(CubeOf(17, Swirled));
    const Look b = ShaperLook();
    EXPECT_LT(BlendError(a, a, 0.0), kRoundingOfRecords);
    EXPECT_LT(BlendError(a, CubeLook(CubeOf(17, Inverted)), 1.0), kRoundingOfRecords);
    EXPECT_LT(BlendError(a, {}, 1.0), kRoundingOfRecords);
    EXPECT_LT(BlendError({}, b, 0.0), kRoundingOfRecords);
}

TEST(LookBlend, FractionsAreLimited)
{
    EXPECT_EQ(BlendFraction(-1.0), 0.0);
    EXPECT_EQ(BlendFraction(7.0), 1.0);
    EXPECT_EQ(BlendFraction(std::nan("")), 0.0);
    EXPECT_EQ(BlendFraction(-std::numeric_limits<double>::infinity()), 0.0);
    EXPECT_EQ(BlendFraction(0.25), 0.25);
}

TEST(LookBlend, ExtremeNumbersStayReadable)
{
    Look a = CubeLook(CubeOf(3, [](const Rgb&) { return Rgb{1e30F, -1e30F, 0.0F}; }));
    a.cube->domain = {Interval{-1e30F, -9e29F}, Interval{}, Interval{0.0F, 1e-30F}};
    Look b = CubeLook(CubeOf(4, Same));
    b.cube->domain[0] = {9e29F, 1e30F};
    EXPECT_NE(Blend(*Prepared(a), *Prepared(b), 0.5), nullptr);
}

TEST(LookBlend, CubesOf33And65PointsBlendExactly)
{
    EXPECT_LT(BlendError(CubeLook(CubeOf(33, Swirled)), CubeLook(CubeOf(65, Inverted)), 0.4),
              kRoundingOfRecords);
}

TEST(LookBlend, BlendsOfBlendsStayExact)
{
    const auto a = Prepared(CubeLook(CubeOf(33, Swirled)));
    auto blend = Prepared(CubeLook(CubeOf(33, Inverted)));
    double shareOfA = 0.0;
    for (int generation = 0; generation < 10; ++generation)
    {
        blend = Blend(*a, *blend, 0.9);
        shareOfA = 0.1 + 0.9 * shareOfA;
    }
    for (const float value : {0.0F, 0.11F, 0.5F, 0.93F, 1.0F})
    {
        const Rgb input{value, 1.0F - value, 0.3F};
        const Rgb outA = Swirled(input);
        const Rgb outB = Inverted(input);
        const auto share = static_cast<float>(shareOfA);
        const Rgb mean{outB.r + share * (outA.r - outB.r), outB.g + share * (outA.g - outB.g),
                       outB.b + share * (outA.b - outB.b)};
        EXPECT_LT(Distance(blend->Grade(input), mean), 5e-4) << value; // the cube's own spacing
    }
}

TEST(LookBlend, TablesThatBothHaveAreKeptAsTheyAre)
{
    Look a = CubeLook(CubeOf(33, Swirled));
    Look b = a;
    b.cdlMode = CdlMode::Clamped;
    b.cdl.saturation = 0.2F;
    const auto lookA = Prepared(a);
    const auto blend = Blend(*lookA, *Prepared(b), 0.5);
    EXPECT_TRUE(blend->Stored().coded == lookA->Stored().coded);
    EXPECT_FLOAT_EQ(blend->Stored().cdl.saturation, 0.6F);
}

TEST(LookBlend, CubesThatFillTheirRecordsStillBlend)
{
    std::mt19937 random(9);
    std::uniform_real_distribution<float> value(0.0F, 1.0F);
    const auto noise = [&](const Rgb&) { return Rgb{value(random), value(random), value(random)}; };
    EXPECT_LT(BlendError(CubeLook(CubeOf(33, noise)), CubeLook(CubeOf(33, noise)), 0.5), 4e-3);
}

} // namespace ReferenceRenderer
