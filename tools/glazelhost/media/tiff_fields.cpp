#include "tools/glazelhost/media/tiff_fields.h"

#include "tools/glazelhost/media/tiff_directory.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace GlazelHost
{

namespace
{

constexpr std::uint16_t kShort = 3;
constexpr std::uint16_t kLong = 4;

std::uint32_t UnitOf(std::uint16_t type) noexcept
{
    switch (type)
    {
    case kShort:
    case 8: // with a sign
        return 2;
    case kLong:
    case 9:  // with a sign
    case 11: // floats
    case 13: // the place of a directory
        return 4;
    case kTiffFraction:
    case 10: // with a sign
    case 12: // doubles
        return 8;
    default:
        return 1;
    }
}

} // namespace

void AddTiffHeader(LittleEndianBlock& block, std::uint32_t directory)
{
    block.AddText("II");
    block.Add16(42);
    block.Add32(directory);
}

void TiffFields::Set(Field field)
{
    const auto place = std::ranges::lower_bound(m_fields, field.tag, {}, &Field::tag);
    if (place != m_fields.end() && place->tag == field.tag)
    {
        *place = std::move(field);
    }
    else
    {
        m_fields.insert(place, std::move(field));
    }
}

void TiffFields::SetShorts(std::uint16_t tag, std::span<const std::uint32_t> values)
{
    LittleEndianBlock bytes;
    for (const std::uint32_t value : values)
    {
        bytes.Add16(value);
    }
    Set({tag, kShort, bytes.Bytes(), {}});
}

void TiffFields::SetLongs(std::uint16_t tag, std::span<const std::uint32_t> values)
{
    LittleEndianBlock bytes;
    for (const std::uint32_t value : values)
    {
        bytes.Add32(value);
    }
    Set({tag, kLong, bytes.Bytes(), {}});
}

void TiffFields::SetFractions(std::uint16_t tag, std::span<const double> values)
{
    LittleEndianBlock bytes;
    for (const double value : values)
    {
        const double denominator = value == std::floor(value) ? 1.0 : value < 40.0 ? 1e8 : 1e4;
        bytes.Add32(static_cast<std::uint32_t>(std::llround(value * denominator)));
        bytes.Add32(static_cast<std::uint32_t>(denominator));
    }
    Set({tag, kTiffFraction, bytes.Bytes(), {}});
}

void TiffFields::SetBytes(std::uint16_t tag, std::uint16_t type, std::span<const std::byte> bytes)
{
    Set({tag, type, {bytes.begin(), bytes.end()}, {}});
}

void TiffFields::SetBelow(std::uint16_t tag, TiffFields below)
{
    Set({tag, kLong, std::vector<std::byte>(4), {std::move(below)}});
}

std::uint32_t TiffFields::Size() const
{
    LittleEndianBlock block;
    AddTo(block, 0);
    return static_cast<std::uint32_t>(block.Size());
}

void TiffFields::AddTo(LittleEndianBlock& block, std::uint32_t place) const
{
    LittleEndianBlock behind;
    const std::uint32_t values =
        place + 2 + static_cast<std::uint32_t>(m_fields.size()) * kTiffEntryBytes + 4;
    const auto next = [&] { return values + static_cast<std::uint32_t>(behind.Size()); };
    block.Add16(static_cast<std::uint32_t>(m_fields.size()));
    for (const Field& field : m_fields)
    {
        const auto bytes = static_cast<std::uint32_t>(field.bytes.size());
        block.Add16(field.tag);
        block.Add16(field.type);
        block.Add32(bytes / UnitOf(field.type));
        if (!field.below.empty())
        {
            block.Add32(next());
            field.below.front().AddTo(behind, next());
        }
        else if (bytes > 4)
        {
            block.Add32(next());
            behind.AddBytes(field.bytes);
            behind.PadToEven();
        }
        else
        {
            block.AddBytes(field.bytes);
            block.AddBytes(std::vector<std::byte>(4 - bytes));
        }
    }
    block.Add32(0); // no further directory
    block.AddBytes(behind.Bytes());
}

} // namespace GlazelHost
