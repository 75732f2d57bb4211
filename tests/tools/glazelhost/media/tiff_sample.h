// Small TIFF files for tests: a directory of chosen tags, without pixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace GlazelHost
{

struct SampleTag
{
    std::uint32_t tag;
    std::uint32_t type; // 2 text, 3 of 16 bits, 4 of 32 bits, 5 fractions, 7 anything
    std::string bytes;  // in the order of the file
};

inline std::string NumberBytes(std::uint32_t value, int bytes, bool bigEndian)
{
    std::string text;
    for (int i = 0; i < bytes; ++i)
    {
        const int shift = 8 * (bigEndian ? bytes - 1 - i : i);
        text += static_cast<char>(value >> shift);
    }
    return text;
}

// The directory stands behind the values.
inline std::string SampleTiff(const std::vector<SampleTag>& tags, bool bigEndian = false)
{
    const auto number = [bigEndian](std::size_t value, int bytes) {
        return NumberBytes(static_cast<std::uint32_t>(value), bytes, bigEndian);
    };
    std::string values;
    std::string entries;
    for (const SampleTag& tag : tags)
    {
        const std::size_t unit = tag.type == 3 ? 2 : tag.type == 4 ? 4 : tag.type == 5 ? 8 : 1;
        std::string field = tag.bytes;
        if (field.size() > 4)
        {
            field = number(8 + values.size(), 4);
            values += tag.bytes;
        }
        field.resize(4);
        entries += number(tag.tag, 2) + number(tag.type, 2) + number(tag.bytes.size() / unit, 4);
        entries += field;
    }
    return (bigEndian ? "MM" : "II") + number(42, 2) + number(8 + values.size(), 4) + values +
           number(tags.size(), 2) + entries + std::string(4, '\0');
}

} // namespace GlazelHost
