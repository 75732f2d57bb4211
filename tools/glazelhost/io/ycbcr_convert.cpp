#include "tools/glazelhost/io/ycbcr_convert.h"

#include "tools/glazelhost/io/pixel_convert.h"
#include "tools/glazelhost/io/ycbcr_weights.h"

#include <cassert>
#include <cstring>
#include <type_traits>

namespace
{

constexpr float kChromaZero = 128.0F;

// What an Image's channel holds for 1.0.
template <typename Channel>
constexpr double kUnit = std::is_same_v<Channel, float> ? 1.0 : 255.0;

// The comparisons are in the order that the processor's own minimum and maximum have: NaN is 0.
std::uint32_t NearestCode(float value) noexcept
{
    const float code = value + 0.5F;
    const float aboveZero = code > 0.0F ? code : 0.0F;
    return static_cast<std::uint32_t>(static_cast<int>(aboveZero < 255.0F ? aboveZero : 255.0F));
}

std::uint8_t StoredCode(float value) noexcept
{
    return static_cast<std::uint8_t>(NearestCode(value));
}

struct Colour
{
    float blue;
    float green;
    float red;
};

// A pixel of bytes moves as one word, blue in its lowest byte: so the loops become vector code.
Colour LoadPixel(const std::uint8_t* source) noexcept
{
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, source, sizeof pixel);
    const auto channel = [pixel](int shift) {
        return static_cast<float>(static_cast<int>(pixel >> shift & 255U));
    };
    return {channel(0), channel(8), channel(16)};
}

Colour LoadPixel(const float* source) noexcept
{
    return {source[0], source[1], source[2]};
}

// Opaque.
void StorePixel(std::uint8_t* target, const Colour& colour) noexcept
{
    const std::uint32_t pixel = NearestCode(colour.blue) | NearestCode(colour.green) << 8 |
                                NearestCode(colour.red) << 16 | 0xFF000000U;
    std::memcpy(target, &pixel, sizeof pixel);
}

void StorePixel(float* target, const Colour& colour) noexcept
{
    target[0] = colour.blue;
    target[1] = colour.green;
    target[2] = colour.red;
    target[3] = 1.0F;
}

float Weighted(const float (&weight)[3], const Colour& colour) noexcept
{
    return weight[0] * colour.blue + weight[1] * colour.green + weight[2] * colour.red;
}

// One row, chroma around 0. The rows do not overlap: said to the compiler, which otherwise has to
// take every byte that is stored for a change of everything else.
template <typename Channel>
void DecodeRow(const DecodeWeights& weights, const std::uint8_t* __restrict codes,
               const float* __restrict cbRow, const float* __restrict crRow, int width,
               Channel* __restrict target) noexcept
{
    const DecodeWeights w = weights;
    for (int x = 0; x < width; ++x)
    {
        // The product is exact and the quotient rounded once: white is 1.0, not nearly so.
        const float luma = (static_cast<float>(codes[x]) - w.lumaZero) * w.unit / w.lumaSpan;
        const float cb = cbRow[x];
        const float cr = crRow[x];
        StorePixel(target + 4 * x, {luma + w.blueCb * cb, luma + w.greenCb * cb + w.greenCr * cr,
                                    luma + w.redCr * cr});
    }
}

template <typename Channel>
void EncodeRow(const EncodeWeights& weights, const Channel* __restrict source, int width,
               std::uint8_t* __restrict codes, float* __restrict cbRow,
               float* __restrict crRow) noexcept
{
    const EncodeWeights w = weights;
    for (int x = 0; x < width; ++x)
    {
        const Colour colour = LoadPixel(source + 4 * x);
        codes[x] = StoredCode(w.lumaZero + Weighted(w.luma, colour));
        cbRow[x] = Weighted(w.cb, colour);
        crRow[x] = Weighted(w.cr, colour);
    }
}

// Chroma around 0 between two rows of codes.
void BlendCodes(const std::uint8_t* lower, const std::uint8_t* upper, float upperWeight, int width,
                float* __restrict row) noexcept
{
    const float lowerWeight = 1.0F - upperWeight;
    for (int x = 0; x < width; ++x)
    {
        row[x] = static_cast<float>(lower[x]) * lowerWeight +
                 static_cast<float>(upper[x]) * upperWeight - kChromaZero;
    }
}

// The codes of the weighted sum of three rows of chroma around 0.
void RoundChroma(const float* first, const float* second, const float* third,
                 const float (&weights)[3], int width, std::uint8_t* __restrict codes) noexcept
{
    const float w[3] = {weights[0], weights[1], weights[2]};
    for (int x = 0; x < width; ++x)
    {
        codes[x] = StoredCode(first[x] * w[0] + second[x] * w[1] + third[x] * w[2] + kChromaZero);
    }
}

constexpr bool IsHalfWidth(ChromaSampling sampling) noexcept
{
    return sampling != ChromaSampling::Full444 && sampling != ChromaSampling::Mono;
}

constexpr bool IsHalfHeight(ChromaSampling sampling) noexcept
{
    return IsHalfWidth(sampling) && sampling != ChromaSampling::Half422;
}

} // namespace

std::size_t YCbCrFrameBytes(int width, int height, ChromaSampling sampling) noexcept
{
    const auto area = [](int columns, int rows) {
        return static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    };
    if (sampling == ChromaSampling::Mono)
    {
        return area(width, height);
    }
    return area(width, height) + 2 * area(IsHalfWidth(sampling) ? (width + 1) / 2 : width,
                                          IsHalfHeight(sampling) ? (height + 1) / 2 : height);
}

YCbCrConverter::YCbCrConverter(int width, int height, const YCbCrEncoding& encoding)
    : m_width(width), m_height(height), m_encoding(encoding),
      m_halfWidth(IsHalfWidth(encoding.sampling)), m_halfHeight(IsHalfHeight(encoding.sampling)),
      m_chromaWidth(m_halfWidth ? (width + 1) / 2 : width),
      m_chromaHeight(m_halfHeight ? (height + 1) / 2 : height),
      m_columnSite(encoding.sampling == ChromaSampling::Half420Jpeg ? ChromaSite::Between
                                                                    : ChromaSite::OnEven)
{
    const bool palDv = encoding.sampling == ChromaSampling::Half420Paldv;
    const std::size_t luma = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const std::size_t chroma =
        static_cast<std::size_t>(m_chromaWidth) * static_cast<std::size_t>(m_chromaHeight);
    m_cb = {luma, palDv ? ChromaSite::OnOdd : ChromaSite::Between};
    m_cr = {luma + chroma, palDv ? ChromaSite::OnEven : ChromaSite::Between};
    m_halfRow.resize(static_cast<std::size_t>(m_chromaWidth));
    m_cbRow.resize(static_cast<std::size_t>(width));
    m_crRow.resize(static_cast<std::size_t>(width));
}

std::size_t YCbCrConverter::FrameBytes() const noexcept
{
    return YCbCrFrameBytes(m_width, m_height, m_encoding.sampling);
}

void YCbCrConverter::LoadChromaRow(const std::uint8_t* planes, const Plane& plane, int y,
                                   float* full)
{
    const auto rowAt = [&](int row) {
        return planes + plane.offset +
               static_cast<std::size_t>(row) * static_cast<std::size_t>(m_chromaWidth);
    };
    float* const row = m_halfWidth ? m_halfRow.data() : full;
    if (m_halfHeight)
    {
        const UpsampleTaps taps = UpsampleTapsAt(plane.rowSite, y, m_chromaHeight);
        BlendCodes(rowAt(taps.lower), rowAt(taps.upper), taps.upperWeight, m_chromaWidth, row);
    }
    else
    {
        BlendCodes(rowAt(y), rowAt(y), 0.0F, m_chromaWidth, row);
    }
    if (m_halfWidth)
    {
        UpsampleRow(m_columnSite, row, m_width, full);
    }
}

template <typename Channel>
void YCbCrConverter::DecodeRows(const std::uint8_t* planes, Image& image)
{
    const DecodeWeights weights = DecodeWeightsOf(m_encoding, kUnit<Channel>);
    auto* target = reinterpret_cast<Channel*>(image.pixels.data());
    for (int y = 0; y < m_height; ++y)
    {
        if (m_encoding.sampling != ChromaSampling::Mono) // else the rows stay at zero
        {
            LoadChromaRow(planes, m_cb, y, m_cbRow.data());
            LoadChromaRow(planes, m_cr, y, m_crRow.data());
        }
        DecodeRow(weights, planes + static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width),
                  m_cbRow.data(), m_crRow.data(), m_width, target);
        target += 4 * static_cast<std::size_t>(m_width);
    }
}

void YCbCrConverter::Decode(const std::uint8_t* planes, Image& image, SampleType type)
{
    Reshape(image, m_width, m_height, type, false);
    if (type == SampleType::Byte)
    {
        DecodeRows<std::uint8_t>(planes, image);
    }
    else
    {
        DecodeRows<float>(planes, image);
    }
}

void YCbCrConverter::StoreChromaPlane(const std::vector<float>& rows, const Plane& plane,
                                      std::uint8_t* planes)
{
    const auto rowAt = [&](int row) {
        return rows.data() +
               static_cast<std::size_t>(row) * static_cast<std::size_t>(m_chromaWidth);
    };
    std::uint8_t* codes = planes + plane.offset;
    for (int row = 0; row < m_chromaHeight; ++row, codes += m_chromaWidth)
    {
        const DownsampleTaps taps = m_halfHeight
                                        ? DownsampleTapsAt(plane.rowSite, row, m_height)
                                        : DownsampleTaps{{row, row, row}, {1.0F, 0.0F, 0.0F}};
        RoundChroma(rowAt(taps.index[0]), rowAt(taps.index[1]), rowAt(taps.index[2]), taps.weight,
                    m_chromaWidth, codes);
    }
}

template <typename Channel>
void YCbCrConverter::EncodeRows(const Image& image, std::uint8_t* planes)
{
    const EncodeWeights weights = EncodeWeightsOf(m_encoding, kUnit<Channel>);
    const auto* source = reinterpret_cast<const Channel*>(image.pixels.data());
    const auto chromaStep = static_cast<std::size_t>(m_chromaWidth);
    for (int y = 0; y < m_height; ++y)
    {
        const std::size_t chromaRow = static_cast<std::size_t>(y) * chromaStep;
        float* const cbRow = m_halfWidth ? m_cbRow.data() : m_cbRows.data() + chromaRow;
        float* const crRow = m_halfWidth ? m_crRow.data() : m_crRows.data() + chromaRow;
        EncodeRow(weights, source, m_width, planes, cbRow, crRow);
        if (m_halfWidth)
        {
            DownsampleRow(m_columnSite, cbRow, m_width, m_cbRows.data() + chromaRow);
            DownsampleRow(m_columnSite, crRow, m_width, m_crRows.data() + chromaRow);
        }
        source += 4 * static_cast<std::size_t>(m_width);
        planes += m_width;
    }
}

void YCbCrConverter::Encode(const Image& image, std::uint8_t* planes)
{
    assert(image.width == m_width && image.height == m_height);
    const std::size_t samples =
        static_cast<std::size_t>(m_chromaWidth) * static_cast<std::size_t>(m_height);
    m_cbRows.resize(samples);
    m_crRows.resize(samples);
    if (image.type == SampleType::Byte)
    {
        EncodeRows<std::uint8_t>(image, planes);
    }
    else
    {
        EncodeRows<float>(image, planes);
    }
    if (m_encoding.sampling != ChromaSampling::Mono)
    {
        StoreChromaPlane(m_cbRows, m_cb, planes);
        StoreChromaPlane(m_crRows, m_cr, planes);
    }
}
