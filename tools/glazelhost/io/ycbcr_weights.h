// The weights that turn luma and chroma codes into colours and back, from the definition that
// ycbcr_convert.h states. Pure: no windows.h.
// Tests: tests/tools/glazelhost/io/ycbcr_convert_test.cpp.
#pragma once

#include "tools/glazelhost/io/ycbcr_encoding.h"

// channel = (luma code - lumaZero) * unit / lumaSpan + sum of weight * (chroma code - 128), where
// `unit` is what a channel holds for 1.0.
struct DecodeWeights
{
    float lumaZero;
    float unit;
    float lumaSpan;
    float redCr;
    float greenCb;
    float greenCr;
    float blueCb;
};
DecodeWeights DecodeWeightsOf(const YCbCrEncoding& encoding, double unit) noexcept;

// luma code = lumaZero + sum of luma * channel; chroma code = 128 + sum of cb (or cr) * channel. In
// each array: blue, green, red.
struct EncodeWeights
{
    float lumaZero;
    float luma[3];
    float cb[3];
    float cr[3];
};
EncodeWeights EncodeWeightsOf(const YCbCrEncoding& encoding, double unit) noexcept;
