#include "samples/renderer/row_functions.h"

#include "samples/renderer/colour_math.h"

#include <array>
#include <cstring>

namespace
{

constexpr std::size_t kChannels = 4; // blue, green, red, alpha

template <TableKind Tables>
Rgb ApplyTables(const PreparedLook& look, const Rgb& value) noexcept
{
    if constexpr (Tables == TableKind::None)
    {
        return value;
    }
    Rgb graded = value;
    if constexpr (Tables == TableKind::Curves || Tables == TableKind::CurvesAndCube)
    {
        graded = look.CurvesView().Sample(graded);
    }
    if constexpr (Tables == TableKind::Cube || Tables == TableKind::CurvesAndCube)
    {
        graded = look.CubesView().Sample(graded);
    }
    return AtStrength(look.Stored().strength, value, graded);
}

// What follows slope, offset and power.
template <CdlMode Mode, TableKind Tables>
Rgb ApplyLastSteps(const PreparedLook& look, const Rgb& value) noexcept
{
    if constexpr (Mode == CdlMode::None)
    {
        return ApplyTables<Tables>(look, value);
    }
    return ApplyTables<Tables>(look, ApplySaturation<Mode>(look.Stored().cdl, value));
}

// Slope, offset and power of all channels, in the order of a pixel in memory.
class FirstSteps
{
public:
    explicit FirstSteps(const Cdl& cdl) noexcept
        : m_slope(InMemoryOrder(cdl.slope)), m_offset(InMemoryOrder(cdl.offset)),
          m_power(InMemoryOrder(cdl.power)), m_hasPower(cdl.power != Cdl{}.power)
    {
    }

    template <CdlMode Mode>
    FourFloats Apply(FourFloats pixel) const noexcept
    {
        if constexpr (Mode == CdlMode::None)
        {
            return pixel;
        }
        if (!m_hasPower)
        {
            // The same bits: a power of 1 gives back its base.
            return Limited<Mode>(ApplySlopeOffset(m_slope, m_offset, pixel));
        }
        return ApplySlopeOffsetPower<Mode>(m_slope, m_offset, m_power, pixel);
    }

private:
    static FourFloats InMemoryOrder(const std::array<float, 3>& values) noexcept
    {
        return FourFloats{values[2], values[1], values[0], 1.0F};
    }

    FourFloats m_slope;
    FourFloats m_offset;
    FourFloats m_power;
    bool m_hasPower; // most looks do without, and it takes most of the time
};

std::byte Round8(float value) noexcept
{
    return static_cast<std::byte>(Code8(value));
}

template <CdlMode Mode, TableKind Tables>
void RenderRow8(const PreparedLook& look, const std::byte* source, std::byte* target,
                std::size_t width)
{
    const auto first = [&](std::size_t channel, std::byte code) {
        return look.FirstStep(channel, std::to_integer<std::size_t>(code));
    };
    const std::byte* const end = source + width * kChannels;
    for (; source != end; source += kChannels, target += kChannels)
    {
        const std::byte alpha = source[3];
        const Rgb graded = ApplyLastSteps<Mode, Tables>(
            look, {first(0, source[2]), first(1, source[1]), first(2, source[0])});
        target[0] = Round8(graded.b);
        target[1] = Round8(graded.g);
        target[2] = Round8(graded.r);
        target[3] = alpha;
    }
}

template <CdlMode Mode, TableKind Tables, bool Linear>
void RenderRowFloat(const PreparedLook& look, const std::byte* source, std::byte* target,
                    std::size_t width)
{
    const FirstSteps first(look.Stored().cdl);
    constexpr std::size_t kColourBytes = 3 * sizeof(float);
    constexpr std::size_t kBytes = kChannels * sizeof(float);
    const std::byte* const end = source + width * kBytes;
    for (; source != end; source += kBytes, target += kBytes)
    {
        FourFloats pixel = Finite(LoadFour(source)); // the fourth lane is not used
        if constexpr (Linear)
        {
            pixel = EncodeSrgb(pixel);
        }
        pixel = first.Apply<Mode>(pixel);
        const Rgb graded = ApplyLastSteps<Mode, Tables>(look, {pixel[2], pixel[1], pixel[0]});
        pixel = FourFloats{graded.b, graded.g, graded.r, 0.0F};
        if constexpr (Linear)
        {
            pixel = DecodeSrgb(Finite(pixel));
        }
        pixel = Finite(pixel);
        // Alpha goes as bytes: through a float register a signalling NaN might change.
        std::memcpy(target + kColourBytes, source + kColourBytes, sizeof(float));
        std::memcpy(target, &pixel, kColourBytes);
    }
}

template <CdlMode Mode, TableKind Tables>
constexpr RowFunctions FunctionsFor() noexcept
{
    return {RenderRow8<Mode, Tables>, RenderRowFloat<Mode, Tables, false>,
            RenderRowFloat<Mode, Tables, true>};
}

template <CdlMode Mode>
RowFunctions FunctionsFor(TableKind tables) noexcept
{
    switch (tables)
    {
    case TableKind::None:
        break;
    case TableKind::Curves:
        return FunctionsFor<Mode, TableKind::Curves>();
    case TableKind::Cube:
        return FunctionsFor<Mode, TableKind::Cube>();
    case TableKind::CurvesAndCube:
        return FunctionsFor<Mode, TableKind::CurvesAndCube>();
    }
    return FunctionsFor<Mode, TableKind::None>();
}

} // namespace

TableKind TableKindOf(const StoredLook& look) noexcept
{
    if (look.curveSize != 0)
    {
        return look.cubeSize != 0 ? TableKind::CurvesAndCube : TableKind::Curves;
    }
    return look.cubeSize != 0 ? TableKind::Cube : TableKind::None;
}

RowFunctions RowFunctionsOf(CdlMode mode, TableKind tables) noexcept
{
    switch (mode)
    {
    case CdlMode::None:
        break;
    case CdlMode::Clamped:
        return FunctionsFor<CdlMode::Clamped>(tables);
    case CdlMode::Unclamped:
        return FunctionsFor<CdlMode::Unclamped>(tables);
    }
    return FunctionsFor<CdlMode::None>(tables);
}
