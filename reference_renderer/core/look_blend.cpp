#include "reference_renderer/core/look_blend.h"

#include "reference_renderer/core/common_lattice.h"

#include <algorithm>

namespace ReferenceRenderer
{

namespace
{

// Of curves that are sampled: as fine as the steps of 14 bits.
constexpr std::uint32_t kBlendedCurveSize = 16384;

float Mix(double weightA, float a, double weightB, float b) noexcept
{
    return static_cast<float>(weightA * a + weightB * b);
}

void MixTriples(double weightB, const std::array<float, 3>& a, const std::array<float, 3>& b,
                std::array<float, 3>& blend) noexcept
{
    for (std::size_t channel = 0; channel < blend.size(); ++channel)
    {
        blend[channel] = Mix(1.0 - weightB, a[channel], weightB, b[channel]);
    }
}

CdlMode BlendedMode(CdlMode a, CdlMode b) noexcept
{
    if (a == CdlMode::None && b == CdlMode::None)
    {
        return CdlMode::None;
    }
    return a == CdlMode::Clamped || b == CdlMode::Clamped ? CdlMode::Clamped : CdlMode::Unclamped;
}

// A weighted mean of what two looks' tables hold or give.
struct TableMix
{
    double weightA;
    double weightB;

    float operator()(float a, float b) const noexcept { return Mix(weightA, a, weightB, b); }

    Rgb operator()(const Rgb& a, const Rgb& b) const noexcept
    {
        return {(*this)(a.r, b.r), (*this)(a.g, b.g), (*this)(a.b, b.b)};
    }

    // Encloses the mean of values out of two ranges.
    Domain operator()(const Domain& a, const Domain& b) const noexcept
    {
        Domain mixed;
        for (std::size_t channel = 0; channel < mixed.size(); ++channel)
        {
            mixed[channel] = {(*this)(a[channel].low, b[channel].low),
                              (*this)(a[channel].high, b[channel].high)};
        }
        return mixed;
    }

    void operator()(const std::vector<float>& a, const std::vector<float>& b, std::size_t count,
                    std::vector<float>& mixed) const noexcept
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            mixed[i] = (*this)(a[i], b[i]);
        }
    }
};

bool SameTables(const StoredLook& a, const StoredLook& b) noexcept
{
    return a.codedVersion == b.codedVersion && a.curveSize == b.curveSize &&
           a.cubeSize == b.cubeSize && a.curveDomain == b.curveDomain &&
           a.curveRange == b.curveRange && a.cubeDomain == b.cubeDomain &&
           a.cubeRange == b.cubeRange && a.coded == b.coded;
}

bool SameCurves(const StoredLook& a, const StoredLook& b) noexcept
{
    return std::equal(a.curveValues.begin(),
                      a.curveValues.begin() + 3 * std::ptrdiff_t{a.curveSize},
                      b.curveValues.begin());
}

bool SameLattice(const StoredLook& a, const StoredLook& b) noexcept
{
    const bool sameCurveLattice =
        a.curveSize == b.curveSize && (a.curveSize == 0 || a.curveDomain == b.curveDomain);
    const bool sameCubeLattice =
        a.cubeSize == b.cubeSize && (a.cubeSize == 0 || a.cubeDomain == b.cubeDomain);
    // Curves in front of a cube move its nodes: they must be the very same ones.
    return sameCurveLattice && sameCubeLattice &&
           (a.curveSize == 0 || a.cubeSize == 0 || SameCurves(a, b));
}

void MixEntries(const StoredLook& a, const StoredLook& b, const TableMix& mix,
                StoredLook& blend) noexcept
{
    blend.CopyTables(a);
    if (a.cubeSize == 0)
    {
        blend.curveRange = mix(a.curveRange, b.curveRange);
        mix(a.curveValues, b.curveValues, std::size_t{3} * a.curveSize, blend.curveValues);
        return;
    }
    blend.cubeRange = mix(a.cubeRange, b.cubeRange);
    mix(a.cubeNodes, b.cubeNodes, 3 * NodeCount(a.cubeSize), blend.cubeNodes);
}

const Domain& OutputRange(const StoredLook& look) noexcept
{
    return look.cubeSize != 0 ? look.cubeRange : look.curveRange;
}

void MixSampledCurves(const PreparedLook& a, const PreparedLook& b, const TableMix& mix,
                      StoredLook& blend) noexcept
{
    blend.curveSize = kBlendedCurveSize;
    blend.curveDomain = CommonDomain(a.Stored(), b.Stored());
    blend.curveRange = mix(OutputRange(a.Stored()), OutputRange(b.Stored()));
    for (std::size_t channel = 0; channel < 3; ++channel)
    {
        float* const values = blend.curveValues.data() + channel * blend.curveSize;
        for (std::uint32_t i = 0; i < blend.curveSize; ++i)
        {
            const float input = EntryValue(blend.curveDomain[channel], i, blend.curveSize);
            values[i] =
                mix(a.CurvesView().Sample(channel, input), b.CurvesView().Sample(channel, input));
        }
    }
}

void MixSampledCubes(const PreparedLook& a, const PreparedLook& b, const TableMix& mix,
                     StoredLook& blend) noexcept
{
    const CommonLattice lattice(a, b, blend);
    blend.cubeRange = mix(OutputRange(a.Stored()), OutputRange(b.Stored()));
    float* node = blend.cubeNodes.data();
    for (std::uint32_t blue = 0; blue < blend.cubeSize; ++blue)
    {
        for (std::uint32_t green = 0; green < blend.cubeSize; ++green)
        {
            for (std::uint32_t red = 0; red < blend.cubeSize; ++red)
            {
                const Rgb input = lattice.InputOf(red, green, blue);
                const Rgb mixed = mix(a.SampleTables(input), b.SampleTables(input));
                *node++ = mixed.r;
                *node++ = mixed.g;
                *node++ = mixed.b;
            }
        }
    }
}

// Where to begin looking for the step of a blend. Two cubes that are cut off along different
// surfaces take more room together than either; guessing that saves a frame of an animation a try.
std::uint32_t LikelyStep(const StoredLook& a, const StoredLook& b) noexcept
{
    const bool isTight = CubeBytesOf(a) + CubeBytesOf(b) > kRecordTableSize;
    return std::max(CubeStepOf(a), CubeStepOf(b)) + (isTight ? 1 : 0);
}

// With o = (1 - s) x + s T(x) for a look of strength s and tables T, the mean of two outputs is of
// that form again: the strengths and the weights of T below follow from it.
void BlendTables(const PreparedLook& a, const PreparedLook& b, double fraction, StoredLook& blend,
                 TableEncoder& encoder) noexcept
{
    const StoredLook& storedA = a.Stored();
    const StoredLook& storedB = b.Stored();
    const double strengthA = storedA.HasTables() ? (1.0 - fraction) * storedA.strength : 0.0;
    const double strengthB = storedB.HasTables() ? fraction * storedB.strength : 0.0;
    const double strength = strengthA + strengthB;
    if (!storedA.HasTables() || !storedB.HasTables())
    {
        blend.CopyTables(storedA.HasTables() ? storedA : storedB);
        blend.strength = blend.HasTables() ? static_cast<float>(strength) : 1.0F;
        return;
    }
    blend.strength = static_cast<float>(std::min(strength, 1.0));
    const double weightB = strength > 0.0 ? strengthB / strength : fraction;
    const TableMix mix{1.0 - weightB, weightB};
    if (SameTables(storedA, storedB))
    {
        blend.CopyTables(storedA);
        return;
    }
    if (SameLattice(storedA, storedB))
    {
        MixEntries(storedA, storedB, mix, blend);
    }
    else if (storedA.cubeSize == 0 && storedB.cubeSize == 0)
    {
        MixSampledCurves(a, b, mix, blend);
    }
    else
    {
        MixSampledCubes(a, b, mix, blend);
    }
    CodeTables(blend, LikelyStep(storedA, storedB), encoder);
}

} // namespace

void BlendLooks(const PreparedLook& a, const PreparedLook& b, double fraction, StoredLook& blend,
                TableEncoder& encoder) noexcept
{
    const double t = BlendFraction(fraction);
    const StoredLook& storedA = a.Stored();
    const StoredLook& storedB = b.Stored();
    blend.Clear();
    blend.cdlMode = BlendedMode(storedA.cdlMode, storedB.cdlMode);
    MixTriples(t, storedA.cdl.slope, storedB.cdl.slope, blend.cdl.slope);
    MixTriples(t, storedA.cdl.offset, storedB.cdl.offset, blend.cdl.offset);
    MixTriples(t, storedA.cdl.power, storedB.cdl.power, blend.cdl.power);
    blend.cdl.saturation = Mix(1.0 - t, storedA.cdl.saturation, t, storedB.cdl.saturation);
    blend.title = t < 0.5 ? storedA.title : storedB.title;
    BlendTables(a, b, t, blend, encoder);
}

} // namespace ReferenceRenderer
