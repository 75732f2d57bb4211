#include "tools/glazelhost/media/plane_rows.h"

#include <emmintrin.h> // of every x64 processor

namespace GlazelHost
{

namespace
{

constexpr std::size_t kSamplesAPixel = 4;
constexpr std::size_t kBytesAtOnce = 16;
constexpr std::size_t kFloatsAtOnce = 4;

__m128i LoadBytes(const std::uint8_t* source) noexcept
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(source));
}

void StoreBytes(std::uint8_t* target, __m128i bytes) noexcept
{
    _mm_storeu_si128(reinterpret_cast<__m128i*>(target), bytes);
}

// Byte number `Channel` of each of sixteen pixels in four registers.
template <int Channel>
__m128i ChannelOf(const __m128i (&pixels)[4]) noexcept
{
    const __m128i lowest = _mm_set1_epi32(0xFF);
    const auto channel = [&](int index) {
        return _mm_and_si128(_mm_srli_epi32(pixels[index], 8 * Channel), lowest);
    };
    return _mm_packus_epi16(_mm_packs_epi32(channel(0), channel(1)),
                            _mm_packs_epi32(channel(2), channel(3)));
}

} // namespace

void JoinPlanes(const PlaneRow<const std::uint8_t>& row, std::size_t pixels,
                std::uint8_t* target) noexcept
{
    std::size_t x = 0;
    for (; x + kBytesAtOnce <= pixels; x += kBytesAtOnce)
    {
        const __m128i blue = LoadBytes(row.blue + x);
        const __m128i green = LoadBytes(row.green + x);
        const __m128i red = LoadBytes(row.red + x);
        const __m128i alpha = row.alpha != nullptr ? LoadBytes(row.alpha + x) : _mm_set1_epi8(-1);
        const __m128i lowBlueGreen = _mm_unpacklo_epi8(blue, green);
        const __m128i highBlueGreen = _mm_unpackhi_epi8(blue, green);
        const __m128i lowRedAlpha = _mm_unpacklo_epi8(red, alpha);
        const __m128i highRedAlpha = _mm_unpackhi_epi8(red, alpha);
        std::uint8_t* const place = target + kSamplesAPixel * x;
        StoreBytes(place, _mm_unpacklo_epi16(lowBlueGreen, lowRedAlpha));
        StoreBytes(place + kBytesAtOnce, _mm_unpackhi_epi16(lowBlueGreen, lowRedAlpha));
        StoreBytes(place + 2 * kBytesAtOnce, _mm_unpacklo_epi16(highBlueGreen, highRedAlpha));
        StoreBytes(place + 3 * kBytesAtOnce, _mm_unpackhi_epi16(highBlueGreen, highRedAlpha));
    }
    for (; x < pixels; ++x)
    {
        std::uint8_t* const pixel = target + kSamplesAPixel * x;
        pixel[0] = row.blue[x];
        pixel[1] = row.green[x];
        pixel[2] = row.red[x];
        pixel[3] = row.alpha != nullptr ? row.alpha[x] : std::uint8_t{255};
    }
}

void JoinPlanes(const PlaneRow<const float>& row, std::size_t pixels, float* target) noexcept
{
    std::size_t x = 0;
    for (; x + kFloatsAtOnce <= pixels; x += kFloatsAtOnce)
    {
        __m128 blue = _mm_loadu_ps(row.blue + x);
        __m128 green = _mm_loadu_ps(row.green + x);
        __m128 red = _mm_loadu_ps(row.red + x);
        __m128 alpha = row.alpha != nullptr ? _mm_loadu_ps(row.alpha + x) : _mm_set1_ps(1.0F);
        _MM_TRANSPOSE4_PS(blue, green, red, alpha); // each is a pixel now
        float* const place = target + kSamplesAPixel * x;
        _mm_storeu_ps(place, blue);
        _mm_storeu_ps(place + kFloatsAtOnce, green);
        _mm_storeu_ps(place + 2 * kFloatsAtOnce, red);
        _mm_storeu_ps(place + 3 * kFloatsAtOnce, alpha);
    }
    for (; x < pixels; ++x)
    {
        float* const pixel = target + kSamplesAPixel * x;
        pixel[0] = row.blue[x];
        pixel[1] = row.green[x];
        pixel[2] = row.red[x];
        pixel[3] = row.alpha != nullptr ? row.alpha[x] : 1.0F;
    }
}

void SplitPlanes(const std::uint8_t* source, std::size_t pixels,
                 const PlaneRow<std::uint8_t>& row) noexcept
{
    std::size_t x = 0;
    for (; x + kBytesAtOnce <= pixels; x += kBytesAtOnce)
    {
        const std::uint8_t* const place = source + kSamplesAPixel * x;
        const __m128i four[4] = {LoadBytes(place), LoadBytes(place + kBytesAtOnce),
                                 LoadBytes(place + 2 * kBytesAtOnce),
                                 LoadBytes(place + 3 * kBytesAtOnce)};
        StoreBytes(row.blue + x, ChannelOf<0>(four));
        StoreBytes(row.green + x, ChannelOf<1>(four));
        StoreBytes(row.red + x, ChannelOf<2>(four));
        if (row.alpha != nullptr)
        {
            StoreBytes(row.alpha + x, ChannelOf<3>(four));
        }
    }
    for (; x < pixels; ++x)
    {
        const std::uint8_t* const pixel = source + kSamplesAPixel * x;
        row.blue[x] = pixel[0];
        row.green[x] = pixel[1];
        row.red[x] = pixel[2];
        if (row.alpha != nullptr)
        {
            row.alpha[x] = pixel[3];
        }
    }
}

void SplitPlanes(const float* source, std::size_t pixels, const PlaneRow<float>& row) noexcept
{
    std::size_t x = 0;
    for (; x + kFloatsAtOnce <= pixels; x += kFloatsAtOnce)
    {
        const float* const place = source + kSamplesAPixel * x;
        __m128 blue = _mm_loadu_ps(place); // a pixel each
        __m128 green = _mm_loadu_ps(place + kFloatsAtOnce);
        __m128 red = _mm_loadu_ps(place + 2 * kFloatsAtOnce);
        __m128 alpha = _mm_loadu_ps(place + 3 * kFloatsAtOnce);
        _MM_TRANSPOSE4_PS(blue, green, red, alpha);
        _mm_storeu_ps(row.blue + x, blue);
        _mm_storeu_ps(row.green + x, green);
        _mm_storeu_ps(row.red + x, red);
        if (row.alpha != nullptr)
        {
            _mm_storeu_ps(row.alpha + x, alpha);
        }
    }
    for (; x < pixels; ++x)
    {
        const float* const pixel = source + kSamplesAPixel * x;
        row.blue[x] = pixel[0];
        row.green[x] = pixel[1];
        row.red[x] = pixel[2];
        if (row.alpha != nullptr)
        {
            row.alpha[x] = pixel[3];
        }
    }
}

} // namespace GlazelHost
