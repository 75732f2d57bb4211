#include "tools/glazelhost/io/ycbcr_weights.h"

#include <array>
#include <cassert>
#include <cstddef>

namespace
{

struct MatrixWeights
{
    YCbCrMatrix matrix;
    double red;
    double blue;
};
// clang-format off
constexpr std::array kMatrixWeights{ // from ITU-R BT.601, BT.709, BT.2020
    MatrixWeights{YCbCrMatrix::Bt601,  0.299,  0.114},
    MatrixWeights{YCbCrMatrix::Bt709,  0.2126, 0.0722},
    MatrixWeights{YCbCrMatrix::Bt2020, 0.2627, 0.0593},
};
// clang-format on

struct CodeScale
{
    double lumaZero; // code of Y = 0
    double luma;     // codes from Y = 0 to Y = 1
    double chroma;   // codes from C = -1/2 to C = 1/2
};

constexpr CodeScale ScaleOf(YCbCrRange range) noexcept
{
    return range == YCbCrRange::Limited ? CodeScale{16.0, 219.0, 224.0}
                                        : CodeScale{0.0, 255.0, 255.0};
}

} // namespace

DecodeWeights DecodeWeightsOf(const YCbCrEncoding& encoding, double unit) noexcept
{
    const MatrixWeights& k = kMatrixWeights[static_cast<std::size_t>(encoding.matrix)];
    assert(k.matrix == encoding.matrix);
    const CodeScale scale = ScaleOf(encoding.range);
    const double green = 1.0 - k.red - k.blue;
    const double redCr = 2.0 * (1.0 - k.red) * unit / scale.chroma;
    const double blueCb = 2.0 * (1.0 - k.blue) * unit / scale.chroma;
    return {.lumaZero = static_cast<float>(scale.lumaZero),
            .unit = static_cast<float>(unit),
            .lumaSpan = static_cast<float>(scale.luma),
            .redCr = static_cast<float>(redCr),
            .greenCb = static_cast<float>(-blueCb * k.blue / green),
            .greenCr = static_cast<float>(-redCr * k.red / green),
            .blueCb = static_cast<float>(blueCb)};
}

EncodeWeights EncodeWeightsOf(const YCbCrEncoding& encoding, double unit) noexcept
{
    const MatrixWeights& k = kMatrixWeights[static_cast<std::size_t>(encoding.matrix)];
    assert(k.matrix == encoding.matrix);
    const CodeScale scale = ScaleOf(encoding.range);
    const double weights[3] = {k.blue, 1.0 - k.red - k.blue, k.red};
    EncodeWeights result{
        .lumaZero = static_cast<float>(scale.lumaZero), .luma = {}, .cb = {}, .cr = {}};
    const double cb = scale.chroma / (2.0 * (1.0 - k.blue)) / unit;
    const double cr = scale.chroma / (2.0 * (1.0 - k.red)) / unit;
    for (int channel = 0; channel < 3; ++channel)
    {
        result.luma[channel] = static_cast<float>(weights[channel] * scale.luma / unit);
        result.cb[channel] =
            static_cast<float>(((channel == 0 ? 1.0 : 0.0) - weights[channel]) * cb);
        result.cr[channel] =
            static_cast<float>(((channel == 2 ? 1.0 : 0.0) - weights[channel]) * cr);
    }
    return result;
}
