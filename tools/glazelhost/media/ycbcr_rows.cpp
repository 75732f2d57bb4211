#include "tools/glazelhost/media/ycbcr_rows.h"

#include <emmintrin.h> // of every x64 processor

#include <algorithm>
#include <array>

namespace GlazelHost
{

namespace
{

constexpr std::size_t kAtOnce = 8; // pixels
constexpr std::size_t kHalf = 4;
constexpr float kBlack = 4096.0F;
constexpr float kLumaCodes = 56064.0F; // from black to white
constexpr float kNoDifference = 32768.0F;
constexpr float kDifferenceCodes = 57344.0F; // from the lowest to the highest
constexpr float kHighestCode = 65535.0F;

using Codes = std::array<std::uint16_t, kAtOnce>;

// How far a whole difference is from 0, for the difference of the colour with this weight.
double Reach(double weight) noexcept
{
    return 2.0 * (1.0 - weight);
}

// Multiplies four floats.
class Factor
{
public:
    explicit Factor(double value) noexcept : m_values(_mm_set1_ps(static_cast<float>(value))) {}
    __m128 operator*(__m128 four) const noexcept { return _mm_mul_ps(m_values, four); }

private:
    __m128 m_values;
};

struct Four
{
    __m128 blue;
    __m128 green;
    __m128 red;
};

class ToPixels
{
public:
    explicit ToPixels(LumaWeights weights) noexcept
        : m_luma(1.0 / kLumaCodes), m_blue(Reach(weights.blue) / kDifferenceCodes),
          m_red(Reach(weights.red) / kDifferenceCodes),
          m_greenOfBlue(weights.blue / weights.Green() * Reach(weights.blue) / kDifferenceCodes),
          m_greenOfRed(weights.red / weights.Green() * Reach(weights.red) / kDifferenceCodes)
    {
    }

    // Eight pixels.
    void Convert(const std::uint16_t* luma, const std::uint16_t* blueDifference,
                 const std::uint16_t* redDifference, float* target) const noexcept
    {
        const __m128i lumas = Load(luma);
        const __m128i blues = Load(blueDifference);
        const __m128i reds = Load(redDifference);
        const __m128i zero = _mm_setzero_si128();
        Convert(_mm_unpacklo_epi16(lumas, zero), _mm_unpacklo_epi16(blues, zero),
                _mm_unpacklo_epi16(reds, zero), target);
        Convert(_mm_unpackhi_epi16(lumas, zero), _mm_unpackhi_epi16(blues, zero),
                _mm_unpackhi_epi16(reds, zero), target + 4 * kHalf);
    }

private:
    static __m128i Load(const std::uint16_t* codes) noexcept
    {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(codes));
    }

    static __m128 From(__m128i codes, float zero) noexcept
    {
        return _mm_sub_ps(_mm_cvtepi32_ps(codes), _mm_set1_ps(zero));
    }

    void Convert(__m128i lumas, __m128i blues, __m128i reds, float* target) const noexcept
    {
        const __m128 luma = m_luma * From(lumas, kBlack);
        const __m128 blueDifference = From(blues, kNoDifference);
        const __m128 redDifference = From(reds, kNoDifference);
        __m128 blue = _mm_add_ps(luma, m_blue * blueDifference);
        __m128 green = _mm_sub_ps(
            luma, _mm_add_ps(m_greenOfBlue * blueDifference, m_greenOfRed * redDifference));
        __m128 red = _mm_add_ps(luma, m_red * redDifference);
        __m128 alpha = _mm_set1_ps(1.0F);
        _MM_TRANSPOSE4_PS(blue, green, red, alpha); // each is a pixel now
        _mm_storeu_ps(target, blue);
        _mm_storeu_ps(target + 4, green);
        _mm_storeu_ps(target + 8, red);
        _mm_storeu_ps(target + 12, alpha);
    }

    Factor m_luma;
    Factor m_blue;
    Factor m_red;
    Factor m_greenOfBlue;
    Factor m_greenOfRed;
};

class ToCodes
{
public:
    explicit ToCodes(LumaWeights weights) noexcept
        : m_blueOfLuma(weights.blue), m_greenOfLuma(weights.Green()), m_redOfLuma(weights.red),
          m_luma(kLumaCodes), m_blue(kDifferenceCodes / Reach(weights.blue)),
          m_red(kDifferenceCodes / Reach(weights.red))
    {
    }

    // Eight pixels.
    void Convert(const float* source, std::uint16_t* luma, std::uint16_t* blueDifference,
                 std::uint16_t* redDifference) const noexcept
    {
        const Four first = Convert(source);
        const Four second = Convert(source + 4 * kHalf);
        Store(luma, first.green, second.green);
        Store(blueDifference, first.blue, second.blue);
        Store(redDifference, first.red, second.red);
    }

private:
    // Codes, with fractions: differences in the places of their colours, luma in that of green.
    Four Convert(const float* source) const noexcept
    {
        __m128 blue = _mm_loadu_ps(source); // a pixel each
        __m128 green = _mm_loadu_ps(source + 4);
        __m128 red = _mm_loadu_ps(source + 8);
        __m128 alpha = _mm_loadu_ps(source + 12);
        _MM_TRANSPOSE4_PS(blue, green, red, alpha);
        const __m128 luma =
            _mm_add_ps(_mm_add_ps(m_blueOfLuma * blue, m_greenOfLuma * green), m_redOfLuma * red);
        return {_mm_add_ps(m_blue * _mm_sub_ps(blue, luma), _mm_set1_ps(kNoDifference)),
                _mm_add_ps(m_luma * luma, _mm_set1_ps(kBlack)),
                _mm_add_ps(m_red * _mm_sub_ps(red, luma), _mm_set1_ps(kNoDifference))};
    }

    // To the nearest, less 32768: it is signed words that can be packed.
    static __m128i Rounded(__m128 codes) noexcept
    {
        const __m128 least = _mm_setzero_ps(); // also what becomes of what is no number
        const __m128 cut = _mm_min_ps(_mm_max_ps(codes, least), _mm_set1_ps(kHighestCode));
        return _mm_sub_epi32(_mm_cvtps_epi32(cut), _mm_set1_epi32(0x8000));
    }

    static void Store(std::uint16_t* target, __m128 first, __m128 second) noexcept
    {
        const __m128i words = _mm_packs_epi32(Rounded(first), Rounded(second));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target),
                         _mm_xor_si128(words, _mm_set1_epi16(static_cast<short>(0x8000))));
    }

    Factor m_blueOfLuma;
    Factor m_greenOfLuma;
    Factor m_redOfLuma;
    Factor m_luma;
    Factor m_blue;
    Factor m_red;
};

} // namespace

void JoinYcbcr(const YcbcrRow<const std::uint16_t>& row, std::size_t pixels, LumaWeights weights,
               float* target) noexcept
{
    const ToPixels conversion(weights);
    std::size_t x = 0;
    for (; x + kAtOnce <= pixels; x += kAtOnce)
    {
        conversion.Convert(row.luma + x, row.blueDifference + x, row.redDifference + x,
                           target + 4 * x);
    }
    if (const std::size_t rest = pixels - x; rest != 0)
    {
        Codes luma{};
        Codes blueDifference{};
        Codes redDifference{};
        std::array<float, 4 * kAtOnce> joined;
        std::copy_n(row.luma + x, rest, luma.data());
        std::copy_n(row.blueDifference + x, rest, blueDifference.data());
        std::copy_n(row.redDifference + x, rest, redDifference.data());
        conversion.Convert(luma.data(), blueDifference.data(), redDifference.data(), joined.data());
        std::copy_n(joined.data(), 4 * rest, target + 4 * x);
    }
}

void SplitYcbcr(const float* source, std::size_t pixels, LumaWeights weights,
                const YcbcrRow<std::uint16_t>& row) noexcept
{
    const ToCodes conversion(weights);
    std::size_t x = 0;
    for (; x + kAtOnce <= pixels; x += kAtOnce)
    {
        conversion.Convert(source + 4 * x, row.luma + x, row.blueDifference + x,
                           row.redDifference + x);
    }
    if (const std::size_t rest = pixels - x; rest != 0)
    {
        std::array<float, 4 * kAtOnce> padded{};
        Codes luma;
        Codes blueDifference;
        Codes redDifference;
        std::copy_n(source + 4 * x, 4 * rest, padded.data());
        conversion.Convert(padded.data(), luma.data(), blueDifference.data(), redDifference.data());
        std::copy_n(luma.data(), rest, row.luma + x);
        std::copy_n(blueDifference.data(), rest, row.blueDifference + x);
        std::copy_n(redDifference.data(), rest, row.redDifference + x);
    }
}

} // namespace GlazelHost
