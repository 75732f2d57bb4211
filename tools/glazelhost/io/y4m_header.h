// The text lines of a Y4M stream. Pure: no windows.h.
// Tests: tests/tools/glazelhost/io/y4m_header_test.cpp.
#pragma once

#include "tools/glazelhost/io/ratio.h"
#include "tools/glazelhost/io/ycbcr_encoding.h"

#include <optional>
#include <string>
#include <string_view>

inline constexpr std::string_view kY4mMagic = "YUV4MPEG2";
inline constexpr std::string_view kY4mFrameMagic = "FRAME";
// Longest line that is taken for a header: far more than all known parameters need.
inline constexpr std::size_t kLongestY4mLine = 4096;

struct Y4mHeader
{
    int width = 0;
    int height = 0;
    Ratio rate;
    Ratio pixelAspect;
    ChromaSampling sampling = ChromaSampling::Half420Jpeg;
    std::optional<YCbCrRange> range; // XCOLORRANGE
};

// `line` has no line feed. Throws HostError, which names `name`, for what is not a Y4M header, has
// no usable size, is interlaced, or has a chroma sampling that is not supported. Parameters that
// are not known are passed over.
Y4mHeader ParseY4mHeader(std::string_view line, const std::string& name);

// The header line with its line feed.
std::string FormatY4mHeader(const Y4mHeader& header);

// True for "FRAME" with or without parameters.
bool IsY4mFrameLine(std::string_view line) noexcept;
