// How the pictures of a Y4M stream encode colour: chroma sampling, code range, matrix.
// Pure: no windows.h. Tests: tests/tools/glazelhost/io/ycbcr_encoding_test.cpp.
#pragma once

#include <optional>
#include <string_view>

// Where the chroma samples are, relative to the luma samples. Rows and columns count from 0 at the
// top left; "between" means midway between an even row or column and the next.
enum class ChromaSampling
{
    Half420Jpeg,  // half width and height; between columns, between rows
    Half420Mpeg2, // half width and height; on even columns, between rows
    Half420Paldv, // half width and height; on even columns, Cr on even rows, Cb on odd rows
    Half422,      // half width; on even columns
    Full444,
    Mono, // luma alone
};

// Codes of luma and chroma.
enum class YCbCrRange
{
    Limited, // luma 16 to 235, chroma 16 to 240 around 128
    Full,    // luma 0 to 255, chroma 128 +- 127.5
};

enum class YCbCrMatrix
{
    Bt601,
    Bt709,
    Bt2020, // non-constant luminance
};

struct YCbCrEncoding
{
    ChromaSampling sampling = ChromaSampling::Half420Jpeg;
    YCbCrRange range = YCbCrRange::Limited;
    YCbCrMatrix matrix = YCbCrMatrix::Bt709;

    bool operator==(const YCbCrEncoding&) const = default;
};

// The words of the command line: "limited", "full"; "bt601", "bt709", "bt2020"; and the sampling
// names of the Y4M header: "420jpeg", "420mpeg2", "420paldv", "420", "422", "444", "mono" ("420" is
// "420jpeg"). None for any other word.
std::optional<YCbCrRange> RangeFromName(std::string_view name) noexcept;
std::optional<YCbCrMatrix> MatrixFromName(std::string_view name) noexcept;
std::optional<ChromaSampling> SamplingFromName(std::string_view name) noexcept;

// The sampling's name in a Y4M header.
std::string_view SamplingName(ChromaSampling sampling) noexcept;
// For the user: "limited range", "Rec. 709", "4:2:0 (MPEG-2 siting)".
std::string_view DescribeRange(YCbCrRange range) noexcept;
std::string_view DescribeMatrix(YCbCrMatrix matrix) noexcept;
std::string_view DescribeSampling(ChromaSampling sampling) noexcept;

// The matrix that video of this size has when nobody says: Rec. 709 from 1280 columns or 720 rows
// on, else Rec. 601.
YCbCrMatrix DefaultMatrix(int width, int height) noexcept;
