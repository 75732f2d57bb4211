#include "reference_renderer/core/common_lattice.h"

#include <algorithm>

namespace ReferenceRenderer
{

namespace
{

// What each look's own spacing and the straight line contribute. The line keeps the common spacing
// rising, at no less than a tenth of its mean, where both looks are flat.
constexpr double kOwnShare = 0.45;
constexpr double kLineShare = 0.1;
constexpr std::uint32_t kSpacingEntries = 2048; // of the curves that space nodes

const Domain& InputDomain(const StoredLook& look) noexcept
{
    return look.curveSize != 0 ? look.curveDomain : look.cubeDomain;
}

bool Rises(const StoredLook& look, std::size_t channel) noexcept
{
    const float* const first = look.curveValues.data() + channel * look.curveSize;
    return std::is_sorted(first, first + look.curveSize) && first[0] < first[look.curveSize - 1];
}

// How one look wants the nodes of one channel spaced: rises from 0 to 1 over its domain.
class Spacing
{
public:
    Spacing(const PreparedLook& look, std::size_t channel) noexcept
        : m_look(look), m_channel(channel), m_domain(InputDomain(look.Stored())[channel]),
          m_curved(look.Stored().curveSize != 0 && Rises(look.Stored(), channel))
    {
    }

    bool IsStraight() const noexcept { return !m_curved; }
    const Interval& Domain() const noexcept { return m_domain; }

    double At(float value) const noexcept
    {
        const double clamped = std::clamp(value, m_domain.low, m_domain.high);
        if (!m_curved)
        {
            return (clamped - m_domain.low) / (double{m_domain.high} - m_domain.low);
        }
        const CurveView& curves = m_look.CurvesView();
        const double low = curves.Sample(m_channel, m_domain.low);
        const double high = curves.Sample(m_channel, m_domain.high);
        return (double{curves.Sample(m_channel, value)} - low) / (high - low);
    }

private:
    const PreparedLook& m_look;
    std::size_t m_channel;
    Interval m_domain;
    bool m_curved;
};

bool NeedsCurves(const PreparedLook& a, const PreparedLook& b) noexcept
{
    for (std::size_t channel = 0; channel < 3; ++channel)
    {
        const Spacing ofA(a, channel);
        const Spacing ofB(b, channel);
        if (!ofA.IsStraight() || !ofB.IsStraight() || !(ofA.Domain() == ofB.Domain()))
        {
            return true;
        }
    }
    return false;
}

// Nodes a side of the smallest cube that has all nodes of both, the largest one where there is
// none.
std::uint32_t CommonSize(const StoredLook& a, const StoredLook& b) noexcept
{
    const bool cubesAlone = a.curveSize == 0 && b.curveSize == 0;
    for (std::uint32_t size = std::max(a.cubeSize, b.cubeSize);
         cubesAlone && size < kStoredCubeSize; ++size)
    {
        if ((size - 1) % (a.cubeSize - 1) == 0 && (size - 1) % (b.cubeSize - 1) == 0)
        {
            return size;
        }
    }
    return kStoredCubeSize;
}

void FillCurve(const Spacing& a, const Spacing& b, const Interval& domain, float* curve) noexcept
{
    for (std::uint32_t i = 0; i < kSpacingEntries; ++i)
    {
        const float value = EntryValue(domain, i, kSpacingEntries);
        const double line = static_cast<double>(i) / (kSpacingEntries - 1);
        const double share = kOwnShare * (a.At(value) + b.At(value)) + kLineShare * line;
        curve[i] = static_cast<float>(std::clamp(share, 0.0, 1.0));
    }
    curve[kSpacingEntries - 1] = 1.0F;
}

// The value at which a strictly rising curve reaches `share`.
float InverseOf(const float* curve, const Interval& domain, float share) noexcept
{
    const float* const above = std::upper_bound(curve + 1, curve + kSpacingEntries - 1, share);
    const double low = above[-1];
    const double entry = static_cast<double>(above - 1 - curve) + (share - low) / (*above - low);
    return static_cast<float>(domain.low +
                              (double{domain.high} - domain.low) * entry / (kSpacingEntries - 1));
}

} // namespace

Domain CommonDomain(const StoredLook& a, const StoredLook& b) noexcept
{
    const Domain& ofA = InputDomain(a);
    const Domain& ofB = InputDomain(b);
    Domain common;
    for (std::size_t channel = 0; channel < common.size(); ++channel)
    {
        common[channel] = {std::min(ofA[channel].low, ofB[channel].low),
                           std::max(ofA[channel].high, ofB[channel].high)};
    }
    return common;
}

CommonLattice::CommonLattice(const PreparedLook& a, const PreparedLook& b,
                             StoredLook& blend) noexcept
{
    const Domain domain = CommonDomain(a.Stored(), b.Stored());
    const bool curved = NeedsCurves(a, b);
    blend.cubeSize = curved ? kStoredCubeSize : CommonSize(a.Stored(), b.Stored());
    blend.cubeDomain = curved ? Domain{} : domain;
    blend.curveSize = curved ? kSpacingEntries : 0;
    blend.curveDomain = domain;
    blend.curveRange = Domain{};
    for (std::size_t channel = 0; channel < 3; ++channel)
    {
        float* const curve = blend.curveValues.data() + channel * blend.curveSize;
        if (curved)
        {
            FillCurve(Spacing(a, channel), Spacing(b, channel), domain[channel], curve);
        }
        for (std::uint32_t i = 0; i < blend.cubeSize; ++i)
        {
            const float share = EntryValue(Interval{}, i, blend.cubeSize);
            m_inputs[channel][i] = curved ? InverseOf(curve, domain[channel], share)
                                          : EntryValue(domain[channel], i, blend.cubeSize);
        }
    }
}

} // namespace ReferenceRenderer
