#include "tools/glazelhost/io/ycbcr_encoding.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace
{

template <typename Value>
struct Named
{
    Value value;
    std::string_view name;        // on the command line and in headers
    std::string_view description; // for the user
};

// clang-format off
constexpr std::array kRanges{
    Named<YCbCrRange>{YCbCrRange::Limited, "limited", "limited range"},
    Named<YCbCrRange>{YCbCrRange::Full,    "full",    "full range"},
};
constexpr std::array kMatrices{
    Named<YCbCrMatrix>{YCbCrMatrix::Bt601,  "bt601",  "Rec. 601"},
    Named<YCbCrMatrix>{YCbCrMatrix::Bt709,  "bt709",  "Rec. 709"},
    Named<YCbCrMatrix>{YCbCrMatrix::Bt2020, "bt2020", "Rec. 2020"},
};
constexpr std::array kSamplings{
    Named<ChromaSampling>{ChromaSampling::Half420Jpeg,   "420jpeg",  "4:2:0"},
    Named<ChromaSampling>{ChromaSampling::Half420Mpeg2,  "420mpeg2", "4:2:0 (MPEG-2 siting)"},
    Named<ChromaSampling>{ChromaSampling::Half420Paldv,  "420paldv", "4:2:0 (PAL-DV siting)"},
    Named<ChromaSampling>{ChromaSampling::Half422,       "422",      "4:2:2"},
    Named<ChromaSampling>{ChromaSampling::Full444,       "444",      "4:4:4"},
    Named<ChromaSampling>{ChromaSampling::Mono,          "mono",     "monochrome"},
};
// clang-format on

template <typename Table>
constexpr bool RowsFollowTheEnum(const Table& table)
{
    for (std::size_t row = 0; row < table.size(); ++row)
    {
        if (static_cast<std::size_t>(table[row].value) != row)
        {
            return false;
        }
    }
    return true;
}
static_assert(RowsFollowTheEnum(kRanges), "one row per range, in the enum's order");
static_assert(RowsFollowTheEnum(kMatrices), "one row per matrix, in the enum's order");
static_assert(RowsFollowTheEnum(kSamplings), "one row per sampling, in the enum's order");

template <typename Value, std::size_t Count>
std::optional<Value> ValueNamed(const std::array<Named<Value>, Count>& table,
                                std::string_view name) noexcept
{
    const auto row = std::ranges::find(table, name, &Named<Value>::name);
    return row == table.end() ? std::nullopt : std::optional<Value>(row->value);
}

// Size from which video is taken for high definition.
constexpr int kHighDefinitionWidth = 1280;
constexpr int kHighDefinitionHeight = 720;

} // namespace

std::optional<YCbCrRange> RangeFromName(std::string_view name) noexcept
{
    return ValueNamed(kRanges, name);
}

std::optional<YCbCrMatrix> MatrixFromName(std::string_view name) noexcept
{
    return ValueNamed(kMatrices, name);
}

std::optional<ChromaSampling> SamplingFromName(std::string_view name) noexcept
{
    return name == "420" ? ChromaSampling::Half420Jpeg : ValueNamed(kSamplings, name);
}

std::string_view SamplingName(ChromaSampling sampling) noexcept
{
    return kSamplings[static_cast<std::size_t>(sampling)].name;
}

std::string_view DescribeRange(YCbCrRange range) noexcept
{
    return kRanges[static_cast<std::size_t>(range)].description;
}

std::string_view DescribeMatrix(YCbCrMatrix matrix) noexcept
{
    return kMatrices[static_cast<std::size_t>(matrix)].description;
}

std::string_view DescribeSampling(ChromaSampling sampling) noexcept
{
    return kSamplings[static_cast<std::size_t>(sampling)].description;
}

YCbCrMatrix DefaultMatrix(int width, int height) noexcept
{
    return width >= kHighDefinitionWidth || height >= kHighDefinitionHeight ? YCbCrMatrix::Bt709
                                                                            : YCbCrMatrix::Bt601;
}
