// Arithmetic on colour values: powers, the steps of a CDL, the sRGB curve. The same to the last bit
// on every platform, because no function of a C run time is used; without jumps.
// Pure: no windows.h. Tests: tests/reference_renderer/core/colour_math_test.cpp.
#pragma once

#include "reference_renderer/core/four_floats.h"
#include "reference_renderer/core/look.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace ReferenceRenderer
{

inline constexpr float kLargestFloat = std::numeric_limits<float>::max();

// NaN becomes 0, infinities the largest float of their sign.
template <typename Value>
[[gnu::always_inline]] inline Value Finite(Value value) noexcept
{
    using Lanes = LanesOf<Value>;
    const Value largest = Lanes::All(kLargestFloat);
    const Value number = Chosen(value == value, value, Lanes::All(0.0F));
    return Lanes::Smaller(Lanes::Larger(number, -largest), largest);
}

// Limited to 0..1; NaN becomes 0.
template <typename Value>
[[gnu::always_inline]] inline Value Clamp01(Value value) noexcept
{
    using Lanes = LanesOf<Value>;
    return Lanes::Smaller(Lanes::Larger(value, Lanes::All(0.0F)), Lanes::All(1.0F));
}

// The 8-bit code nearest to a value, 0..255; NaN gives 0.
template <typename Value>
[[gnu::always_inline]] inline typename LanesOf<Value>::Bits Code8(Value value) noexcept
{
    using Lanes = LanesOf<Value>;
    return std::bit_cast<typename Lanes::Bits>(Lanes::Truncated(Clamp01(value) * 255.0F + 0.5F));
}

// Binary logarithm of a normal number > 0: the exponent plus the series of atanh for the mantissa,
// whose argument stays within +-0.172, where the first term left out is below 1e-9.
template <typename Value>
[[gnu::always_inline]] inline Value BinaryLogarithm(Value value) noexcept
{
    using Bits = typename LanesOf<Value>::Bits;
    using Ints = typename LanesOf<Value>::Ints;
    constexpr std::uint32_t kRootOfHalf = 0x3F3504F3; // bits of sqrt(0.5): mantissas run from here
    constexpr float kTwoOverLn2 = 2.885390082F;
    const Bits shifted = std::bit_cast<Bits>(value) - kRootOfHalf;
    const Value exponent = LanesOf<Value>::FromInts(std::bit_cast<Ints>(shifted) >> 23);
    const Value mantissa = std::bit_cast<Value>((shifted & 0x007FFFFFU) + kRootOfHalf);
    const Value t = (mantissa - 1.0F) / (mantissa + 1.0F);
    const Value tt = t * t;
    const Value series =
        t *
        (1.0F + tt * (1.0F / 3.0F + tt * (1.0F / 5.0F + tt * (1.0F / 7.0F + tt * (1.0F / 9.0F)))));
    return exponent + kTwoOverLn2 * series;
}

// 2 to the power `value`, limited to what a normal float can hold. Taylor's series of the
// exponential on +-0.347, where the first term left out is below 6e-9.
template <typename Value>
[[gnu::always_inline]] inline Value BinaryExponential(Value value) noexcept
{
    using Lanes = LanesOf<Value>;
    using Bits = typename Lanes::Bits;
    constexpr float kLn2 = 0.693147181F;
    const Value lowest = Lanes::All(-126.0F);
    const Value highest = Lanes::All(127.4F);
    const Value limited = Lanes::Smaller(Lanes::Larger(value, lowest), highest);
    constexpr float kRounder = 12582912.0F; // 1.5 * 2^23: a sum with it has no room for a fraction
    const Value shifted = limited + kRounder;
    const Value x = (limited - (shifted - kRounder)) * kLn2;
    const Bits whole = std::bit_cast<Bits>(shifted) - std::bit_cast<std::uint32_t>(kRounder);
    const Value series =
        1.0F +
        x * (1.0F +
             x * (1.0F / 2.0F +
                  x * (1.0F / 6.0F +
                       x * (1.0F / 24.0F +
                            x * (1.0F / 120.0F + x * (1.0F / 720.0F + x * (1.0F / 5040.0F)))))));
    return series * std::bit_cast<Value>((whole + 127U) << 23);
}

// `base` to the power `exponent` for a normal base > 0. The relative error stays below 2e-6 for
// results between 1e-4 and 1e4.
template <typename Value>
[[gnu::always_inline]] inline Value PowerOfNormal(Value base, Value exponent) noexcept
{
    return BinaryExponential(BinaryLogarithm(base) * exponent);
}

// The same for every base; exponent 1 gives back the base itself. Bases below the smallest normal
// number, negative ones and NaN give 0; results are limited to what a float can hold.
template <typename Value>
[[gnu::always_inline]] inline Value PowerOf(Value base, Value exponent) noexcept
{
    const Value smallest = LanesOf<Value>::All(std::numeric_limits<float>::min());
    const Value zero = LanesOf<Value>::All(0.0F);
    const Value one = LanesOf<Value>::All(1.0F);
    const Value safe = Chosen(base >= smallest, base, one);
    const Value power = PowerOfNormal(safe, exponent);
    const Value result = Chosen(base >= smallest, power, zero);
    return Chosen(exponent == one, base, result);
}

// By the exponent bits of a float: 2 to the power of its exponent * `dividend` / `divisor`, times
// `factor`. `root` is the one of 2 that `divisor` names. No entry is denormal or infinite.
constexpr std::array<float, 256> ScalesOf(int dividend, int divisor, double root,
                                          double factor) noexcept
{
    constexpr int kLowest = -40; // far below where the powers of the sRGB curve begin
    std::array<float, 256> scales{};
    for (int bits = 0; bits < 256; ++bits)
    {
        const int power = (bits - 127 > kLowest ? bits - 127 : kLowest) * dividend;
        const int rest = (power % divisor + divisor) % divisor;
        double scale = factor;
        for (int i = 0; i < rest; ++i)
        {
            scale *= root;
        }
        for (int i = 0; i < power - rest; i += divisor)
        {
            scale *= 2.0;
        }
        for (int i = 0; i > power - rest; i -= divisor)
        {
            scale /= 2.0;
        }
        scales[static_cast<std::size_t>(bits)] =
            static_cast<float>(scale < double{kLargestFloat} ? scale : double{kLargestFloat});
    }
    return scales;
}

// A power of a normal number > 0: a polynomial in its mantissa - 1, times the entry for its
// exponent. The terms keep the largest relative error on mantissas of 1 to 2 least. Numbers below 2
// to the power `First` - 127 give anything; those of `Count` powers from there on are the fastest.
template <int First, int Count, std::size_t Terms, typename Value>
[[gnu::always_inline]] inline Value PowerByTable(const std::array<float, Terms>& terms,
                                                 const std::array<float, 256>& scales,
                                                 Value value) noexcept
{
    using Lanes = LanesOf<Value>;
    using Bits = typename Lanes::Bits;
    const Bits bits = std::bit_cast<Bits>(value);
    const Value x = std::bit_cast<Value>((bits & 0x007FFFFFU) | 0x3F800000U) - 1.0F;
    const Value xx = x * x;
    Value high = terms[4] + terms[5] * x;
    if constexpr (Terms == 7)
    {
        high = high + terms[6] * xx;
    }
    const Value series = terms[0] + terms[1] * x + xx * (terms[2] + terms[3] * x + xx * high);
    return series * Lanes::template Entries<First, Count>(scales.data(), bits >> 23);
}

// `curve` of the magnitude, with the sign of the value.
template <typename Value, typename Curve>
[[gnu::always_inline]] inline Value Mirrored(Value value, Curve&& curve) noexcept
{
    using Bits = typename LanesOf<Value>::Bits;
    const Bits bits = std::bit_cast<Bits>(value);
    const Value result = curve(std::bit_cast<Value>(bits & 0x7FFFFFFFU));
    return std::bit_cast<Value>(std::bit_cast<Bits>(result) | (bits & 0x80000000U));
}

// The sRGB curve from linear light to display values, mirrored for negative values and continued
// above 1. The relative error of both directions stays below 1e-6.
template <typename Value>
[[gnu::always_inline]] inline Value EncodeSrgb(Value linear) noexcept
{
    // of x to the power 1 / 2.4 = 5 / 12
    static constexpr std::array kTerms{1.000000163F,    0.4166483505F,   -0.1211937752F,
                                       0.06181829388F,  -0.03337843252F, 0.01379974252F,
                                       -0.002854706088F};
    static constexpr std::array kScales = ScalesOf(5, 12, 1.0594630943592953, 1.055);
    return Mirrored(linear, [](Value magnitude) {
        const Value curve = PowerByTable<118, 16>(kTerms, kScales, magnitude) - 0.055F;
        return Chosen(magnitude <= LanesOf<Value>::All(0.0031308F), magnitude * 12.92F, curve);
    });
}

// The inverse of EncodeSrgb; finite for every finite value.
template <typename Value>
[[gnu::always_inline]] inline Value DecodeSrgb(Value encoded) noexcept
{
    // of x to the power 2.4 = 12 / 5
    static constexpr std::array kTerms{1.000000249F,  2.399974872F,    1.680383278F,
                                       0.2219259971F, -0.02844656716F, 0.004195126169F};
    constexpr double kFactor = 0.87941546140213; // 1.055 to the power -2.4
    static constexpr std::array kScales = ScalesOf(12, 5, 1.1486983549970351, kFactor);
    return Mirrored(encoded, [](Value magnitude) {
        const Value curve = PowerByTable<123, 8>(kTerms, kScales, magnitude + 0.055F);
        const Value limited = LanesOf<Value>::Smaller(curve, LanesOf<Value>::All(kLargestFloat));
        return Chosen(magnitude <= LanesOf<Value>::All(0.04045F), magnitude * (1.0F / 12.92F),
                      limited);
    });
}

template <typename Value>
Value ApplySlopeOffset(Value slope, Value offset, Value value) noexcept
{
    return value * slope + offset;
}

// What a correction does after its offset and after its saturation: it clamps, or leaves alone.
template <CdlMode Mode, typename Value>
Value Limited(Value value) noexcept
{
    return Mode == CdlMode::Clamped ? Clamp01(value) : value;
}

// The power of a value that is Limited. Without the clamp it leaves negative values as they are: it
// has no real value there.
template <CdlMode Mode, typename Value>
Value ApplyPower(Value power, Value moved) noexcept
{
    if constexpr (Mode == CdlMode::Clamped)
    {
        return PowerOf(moved, power);
    }
    return Chosen(moved > LanesOf<Value>::All(0.0F), PowerOf(moved, power), moved);
}

template <CdlMode Mode, typename Value>
Value ApplySlopeOffsetPower(Value slope, Value offset, Value power, Value value) noexcept
{
    return ApplyPower<Mode>(power, Limited<Mode>(ApplySlopeOffset(slope, offset, value)));
}

// The same for one channel.
template <CdlMode Mode>
float ApplySlopeOffsetPower(const Cdl& cdl, std::size_t channel, float value) noexcept
{
    return ApplySlopeOffsetPower<Mode>(cdl.slope[channel], cdl.offset[channel], cdl.power[channel],
                                       value);
}

// Of Rec. 709.
template <typename Value>
Value LumaOf(Value r, Value g, Value b) noexcept
{
    return 0.2126F * r + 0.7152F * g + 0.0722F * b;
}

inline float LumaOf(const Rgb& value) noexcept
{
    return LumaOf(value.r, value.g, value.b);
}

// The saturation step around a luma, before its clamp.
template <typename Value>
Value Saturated(float saturation, Value luma, Value value) noexcept
{
    return luma + saturation * (value - luma);
}

inline Rgb Saturated(float saturation, float luma, const Rgb& value) noexcept
{
    return {Saturated(saturation, luma, value.r), Saturated(saturation, luma, value.g),
            Saturated(saturation, luma, value.b)};
}

template <CdlMode Mode>
Rgb ApplySaturation(const Cdl& cdl, const Rgb& value) noexcept
{
    const Rgb saturated = Saturated(cdl.saturation, LumaOf(value), value);
    return {Limited<Mode>(saturated.r), Limited<Mode>(saturated.g), Limited<Mode>(saturated.b)};
}

// What tables gave, mixed with what reached them. An infinity that a correction made must not turn
// into NaN where it has no weight.
inline Rgb AtStrength(float strength, const Rgb& value, const Rgb& graded) noexcept
{
    if (strength == 1.0F)
    {
        return graded;
    }
    const float kept = 1.0F - strength;
    return {Finite(value.r) * kept + graded.r * strength,
            Finite(value.g) * kept + graded.g * strength,
            Finite(value.b) * kept + graded.b * strength};
}

} // namespace ReferenceRenderer
