// The kernel of float_rows.h for registers of four or of eight floats: one channel of several
// pixels in a register up to the weights of a cube, then one pixel in four floats. Codes come in as
// floats by table, after slope, offset and power.
// Pure: no windows.h.
#pragma once

#include "reference_renderer/core/colour_math.h"
#include "reference_renderer/core/float_rows.h"
#include "reference_renderer/core/prepared_look.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace ReferenceRenderer
{

// How registers hold pixels: number `pixel` of a group in the first four floats of register
// `pixel`, and in registers of eight number `pixel` + 4 behind it.
template <typename Floats>
struct PixelsOf;

template <>
struct PixelsOf<FourFloats>
{
    static constexpr std::size_t kCount = 4;

    // Of four floats each.
    static FourFloats Load(const void* first, const void* /*second*/) noexcept
    {
        return LoadFour(first);
    }
    static void Store(FourFloats pixels, void* first, void* /*second*/) noexcept
    {
        std::memcpy(first, &pixels, sizeof pixels);
    }
    template <int Low0, int Low1, int High0, int High1>
    static FourFloats Shuffled(FourFloats a, FourFloats b) noexcept
    {
        return __builtin_shufflevector(a, b, Low0, Low1, High0, High1);
    }
    // Codes of registers of pixels, a byte each, in the order of the pixels.
    static FourBits Packed(const FourBits (&codes)[4]) noexcept
    {
        const auto* const ints = reinterpret_cast<const __m128i*>(codes);
        return std::bit_cast<FourBits>(
            _mm_packus_epi16(_mm_packs_epi32(ints[0], ints[1]), _mm_packs_epi32(ints[2], ints[3])));
    }
};

// Turns registers of pixels into registers of channels and back.
template <typename Floats>
struct Quartet
{
    Floats registers[4];

    Quartet Transposed() const noexcept
    {
        using Pixels = PixelsOf<Floats>;
        const Floats low01 = Pixels::template Shuffled<0, 4, 1, 5>(registers[0], registers[1]);
        const Floats low23 = Pixels::template Shuffled<0, 4, 1, 5>(registers[2], registers[3]);
        const Floats high01 = Pixels::template Shuffled<2, 6, 3, 7>(registers[0], registers[1]);
        const Floats high23 = Pixels::template Shuffled<2, 6, 3, 7>(registers[2], registers[3]);
        return {{Pixels::template Shuffled<0, 1, 4, 5>(low01, low23),
                 Pixels::template Shuffled<2, 3, 6, 7>(low01, low23),
                 Pixels::template Shuffled<0, 1, 4, 5>(high01, high23),
                 Pixels::template Shuffled<2, 3, 6, 7>(high01, high23)}};
    }
};

template <typename Floats>
class FloatKernel
{
public:
    explicit FloatKernel(const PreparedLook& look) noexcept
        : m_mode(look.Stored().cdlMode), m_cdl(look.Stored().cdl),
          m_hasPower(m_cdl.power != Cdl{}.power), m_firstSteps(look.FirstSteps().data()),
          m_curves(look.CurvesView()), m_cube(look.CubesView()), m_strength(look.Stored().strength),
          m_isMixed(m_strength != 1.0F && look.Stored().HasTables())
    {
    }

    std::size_t Render(PixelKind kind, const std::byte* source, std::byte* target,
                       std::size_t width) const noexcept
    {
        switch (kind)
        {
        case PixelKind::Codes:
            return RenderRow<PixelKind::Codes>(source, target, width);
        case PixelKind::Floats:
            return IsOnlyCube() ? RenderRow<PixelKind::Floats, true>(source, target, width)
                                : RenderRow<PixelKind::Floats>(source, target, width);
        case PixelKind::LinearFloats:
            return IsOnlyCube() ? RenderRow<PixelKind::LinearFloats, true>(source, target, width)
                                : RenderRow<PixelKind::LinearFloats>(source, target, width);
        }
        return 0;
    }

private:
    using Pixels = PixelsOf<Floats>;
    using Lanes = LanesOf<Floats>;
    using Bits = typename Lanes::Bits;

    // One channel of the pixels of a group in a register.
    struct Colours
    {
        Floats r;
        Floats g;
        Floats b;
    };

    static Floats Larger(Floats a, Floats b) noexcept { return Lanes::Larger(a, b); }
    static Floats Smaller(Floats a, Floats b) noexcept { return Lanes::Smaller(a, b); }

    template <typename Step>
    [[gnu::always_inline]] static Colours ForEach(const Colours& colours, Step&& step) noexcept
    {
        return {step(0, colours.r), step(1, colours.g), step(2, colours.b)};
    }

    // A fifth faster where the loop has no place for other steps: their constants take registers.
    bool IsOnlyCube() const noexcept
    {
        return m_mode == CdlMode::None && m_curves.size == 0 && m_cube.size != 0 && !m_isMixed;
    }

    template <PixelKind Kind, bool OnlyCube = false>
    std::size_t RenderRow(const std::byte* source, std::byte* target,
                          std::size_t width) const noexcept
    {
        // A copy that nothing points to: what is written to the target cannot change it.
        const FloatKernel kernel = *this;
        constexpr std::size_t kPixelBytes = Kind == PixelKind::Codes ? 4 : 16;
        constexpr std::size_t kAhead = 2048;
        std::size_t done = 0;
        for (; width - done >= Pixels::kCount; done += Pixels::kCount)
        {
            const std::byte* const from = source + done * kPixelBytes;
            std::byte* const to = target + done * kPixelBytes;
            if constexpr (Kind == PixelKind::Codes)
            {
                kernel.RenderCodes(from, to);
            }
            else
            {
                // What the processor fetches by itself begins anew in every page.
                __builtin_prefetch(from + kAhead);
                __builtin_prefetch(from + kAhead + 64);
                kernel.template RenderFloats<Kind == PixelKind::LinearFloats, OnlyCube>(from, to);
            }
        }
        return done;
    }

    [[gnu::always_inline]] void RenderCodes(const std::byte* source,
                                            std::byte* target) const noexcept
    {
        Bits pixels;
        std::memcpy(&pixels, source, sizeof pixels);
        const auto first = [&](std::size_t channel) {
            Floats values{};
            for (std::size_t i = 0; i < Pixels::kCount; ++i)
            {
                const std::byte code = source[i * sizeof(pixels[0]) + 2 - channel];
                values[i] = m_firstSteps[channel][std::to_integer<std::size_t>(code)];
            }
            return values;
        };
        Colours colours{first(0), first(1), first(2)};
        if (m_mode == CdlMode::Clamped)
        {
            colours = Saturated<CdlMode::Clamped>(colours);
        }
        else if (m_mode == CdlMode::Unclamped)
        {
            colours = Saturated<CdlMode::Unclamped>(colours);
        }
        const Quartet<Floats> graded = Graded(colours);
        const Bits ofPixels[4]{Code8(graded.registers[0]), Code8(graded.registers[1]),
                               Code8(graded.registers[2]), Code8(graded.registers[3])};
        const Bits codes = Pixels::Packed(ofPixels) & 0x00FFFFFFU;
        const Bits result = codes | (pixels & 0xFF000000U);
        std::memcpy(target, &result, sizeof result);
    }

    template <bool Linear, bool OnlyCube>
    [[gnu::always_inline]] void RenderFloats(const std::byte* source,
                                             std::byte* target) const noexcept
    {
        constexpr std::size_t kPixelBytes = 16;
        constexpr std::size_t kSecond = 4 * kPixelBytes; // from a register's first pixel
        Quartet<Floats> pixels;
        for (std::size_t i = 0; i < 4; ++i)
        {
            pixels.registers[i] =
                Pixels::Load(source + i * kPixelBytes, source + i * kPixelBytes + kSecond);
        }
        const Quartet<Floats> channels = pixels.Transposed();
        Colours colours{channels.registers[2], channels.registers[1], channels.registers[0]};
        colours = ForEach(colours, [&](std::size_t, Floats value) {
            return Linear ? EncodeSrgb(Finite(value)) : Finite(value);
        });
        if (!OnlyCube && m_mode == CdlMode::Clamped)
        {
            colours = Saturated<CdlMode::Clamped>(Moved<CdlMode::Clamped>(colours));
        }
        else if (!OnlyCube && m_mode == CdlMode::Unclamped)
        {
            colours = Saturated<CdlMode::Unclamped>(Moved<CdlMode::Unclamped>(colours));
        }
        const Quartet<Floats> graded = OnlyCube ? InCube(colours) : Graded(colours);
        // Nodes of a cube are finite, and so is what lies between them.
        const bool isFinite = OnlyCube || (m_cube.size != 0 && !m_isMixed);
        for (std::size_t i = 0; i < 4; ++i)
        {
            Floats result = graded.registers[i];
            if (!isFinite)
            {
                result = Finite(result);
            }
            if constexpr (Linear)
            {
                result = DecodeSrgb(result);
            }
            Pixels::Store(WithAlphaOf(pixels.registers[i], result), target + i * kPixelBytes,
                          target + i * kPixelBytes + kSecond);
        }
    }

    [[gnu::always_inline]] static Quartet<Floats> PixelsFrom(const Colours& colours) noexcept
    {
        return Quartet<Floats>{{colours.b, colours.g, colours.r, Floats{}}}.Transposed();
    }

    // Alpha stays what it is, bit for bit: nothing is computed with it.
    static Floats WithAlphaOf(Floats pixels, Floats colours) noexcept
    {
        return Pixels::template Shuffled<0, 1, 2, 7>(colours, pixels);
    }

    template <CdlMode Mode>
    [[gnu::always_inline]] Colours Moved(const Colours& colours) const noexcept
    {
        return ForEach(colours, [&](std::size_t channel, Floats value) {
            const Floats shifted = Limited<Mode>(ApplySlopeOffset(
                Lanes::All(m_cdl.slope[channel]), Lanes::All(m_cdl.offset[channel]), value));
            // Without one the same bits: a power of 1 gives back its base.
            return m_hasPower ? ApplyPower<Mode>(Lanes::All(m_cdl.power[channel]), shifted)
                              : shifted;
        });
    }

    template <CdlMode Mode>
    [[gnu::always_inline]] Colours Saturated(const Colours& moved) const noexcept
    {
        const Floats luma = LumaOf(moved.r, moved.g, moved.b);
        return ForEach(moved, [&](std::size_t, Floats value) {
            return Limited<Mode>(ReferenceRenderer::Saturated(m_cdl.saturation, luma, value));
        });
    }

    // What follows the correction.
    [[gnu::always_inline]] Quartet<Floats> Graded(const Colours& colours) const noexcept
    {
        const Colours curved = m_curves.size != 0 ? Curved(colours) : colours;
        Quartet<Floats> graded;
        if (m_cube.size != 0)
        {
            graded = InCube(curved);
        }
        else
        {
            graded = PixelsFrom(curved);
        }
        if (m_isMixed)
        {
            const Quartet<Floats> inputs = PixelsFrom(colours);
            const float kept = 1.0F - m_strength;
            for (std::size_t i = 0; i < 4; ++i)
            {
                graded.registers[i] =
                    Finite(inputs.registers[i]) * kept + graded.registers[i] * m_strength;
            }
        }
        return graded;
    }

    [[gnu::always_inline]] static Floats PositionOf(const Axis& axis, Floats value) noexcept
    {
        return Smaller(Larger((value - axis.low) * axis.scale, Floats{}), Lanes::All(axis.last));
    }

    // The entry below a position that has one above it.
    static Floats EntryBelow(Floats position, const Axis& axis) noexcept
    {
        return Smaller(Lanes::FromInts(Lanes::Truncated(position)), Lanes::All(axis.last - 1.0F));
    }

    [[gnu::always_inline]] Colours Curved(const Colours& colours) const noexcept
    {
        return ForEach(colours, [&](std::size_t channel, Floats value) {
            const Axis& axis = m_curves.axes[channel];
            const Floats position = PositionOf(axis, value);
            const Floats below = EntryBelow(position, axis);
            const auto entries = Lanes::Truncated(below);
            const float* const curve = m_curves.values + channel * m_curves.size;
            Floats low{};
            Floats high{};
            for (std::size_t i = 0; i < Pixels::kCount; ++i)
            {
                low[i] = curve[entries[i]];
                high[i] = curve[entries[i] + 1];
            }
            return low + (position - below) * (high - low);
        });
    }

    [[gnu::always_inline]] Quartet<Floats> InCube(const Colours& colours) const noexcept
    {
        const float stepR = 3.0F; // floats from a node to the next; all offsets are exact
        const float stepG = stepR * static_cast<float>(m_cube.size);
        const float stepB = stepG * static_cast<float>(m_cube.size);
        const Floats stepsR = Lanes::All(stepR);
        const Floats stepsG = Lanes::All(stepG);
        const Floats stepsB = Lanes::All(stepB);
        const Floats allSteps = Lanes::All(stepR + stepG + stepB);

        const Colours positions = ForEach(colours, [&](std::size_t channel, Floats value) {
            return PositionOf(m_cube.axes[channel], value);
        });
        const Colours cells = ForEach(positions, [&](std::size_t channel, Floats position) {
            return EntryBelow(position, m_cube.axes[channel]);
        });
        const Floats r = positions.r - cells.r;
        const Floats g = positions.g - cells.g;
        const Floats b = positions.b - cells.b;

        // As in CubeView::PlaceOf.
        const Floats largest = Larger(Larger(r, g), b);
        const Floats smallest = Smaller(Smaller(r, g), b);
        const Floats middle = Larger(Smaller(r, g), Smaller(Larger(r, g), b));
        const Floats firstStep =
            Chosen((r >= g) & (r >= b), stepsR, Chosen(g >= b, stepsG, stepsB));
        const Floats lastStep = Chosen((b <= r) & (b <= g), stepsB, Chosen(g <= r, stepsG, stepsR));
        const Floats corner = cells.r * stepR + cells.g * stepG + cells.b * stepB;
        const typename Lanes::Ints corners[4]{
            Lanes::Truncated(corner), Lanes::Truncated(corner + firstStep),
            Lanes::Truncated(corner + (allSteps - lastStep)), Lanes::Truncated(corner + allSteps)};
        std::uint32_t offsets[4][Pixels::kCount];
        std::memcpy(offsets, corners, sizeof offsets);
        InMemory(offsets);
        const Floats weights[4]{1.0F - largest, largest - middle, middle - smallest, smallest};
        return {{Weighed<0>(offsets, weights), Weighed<1>(offsets, weights),
                 Weighed<2>(offsets, weights), Weighed<3>(offsets, weights)}};
    }

    template <int Pixel>
    [[gnu::always_inline]] Floats Weighed(const std::uint32_t (&offsets)[4][Pixels::kCount],
                                          const Floats (&weights)[4]) const noexcept
    {
        const auto term = [&](std::size_t corner) {
            const auto offset = [&](std::size_t pixel) {
                return m_cube.nodes + offsets[corner][pixel % Pixels::kCount];
            };
            return Pixels::Load(offset(Pixel), offset(Pixel + 4)) *
                   Pixels::template Shuffled<Pixel, Pixel, Pixel, Pixel>(weights[corner],
                                                                         weights[corner]);
        };
        const Floats sum = term(0) + term(1) + term(2) + term(3);
        return Pixels::template Shuffled<2, 1, 0, 3>(sum, sum);
    }

    CdlMode m_mode;
    Cdl m_cdl;
    bool m_hasPower;
    const std::array<float, 256>* m_firstSteps; // of codes: red, green, blue
    CurveView m_curves;
    CubeView m_cube;
    float m_strength;
    bool m_isMixed; // of tables and their input
};

} // namespace ReferenceRenderer
