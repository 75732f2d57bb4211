#include "tools/glazelhost/media/tiff_directory.h"

#include <algorithm>
#include <array>

namespace GlazelHost
{

namespace
{

constexpr std::size_t kHeaderBytes = 8;
constexpr std::uint32_t kMagic = 42;

// Bytes of one value of a type; 0: an unknown type.
std::size_t ValueBytes(std::uint32_t type) noexcept
{
    // Unused, bytes, text, 16 and 32 bits, fractions; with a sign: bytes, anything, 16 and 32 bits,
    // fractions; floats, doubles; the place of a directory.
    constexpr std::array<std::size_t, 14> kBytes{0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
    return type < kBytes.size() ? kBytes[type] : 0;
}

} // namespace

std::optional<TiffDirectory> TiffDirectory::Read(std::span<const std::byte> file) noexcept
{
    TiffDirectory directory;
    directory.m_file = file;
    if (file.size() < kHeaderBytes || file[0] != file[1] ||
        (file[0] != std::byte{'I'} && file[0] != std::byte{'M'}))
    {
        return std::nullopt;
    }
    directory.m_bigEndian = file[0] == std::byte{'M'};
    const std::size_t place = directory.NumberAt(4, 4);
    if (directory.NumberAt(2, 2) != kMagic || place > file.size() - 2)
    {
        return std::nullopt;
    }
    directory.Enter(place);
    return directory;
}

// The place is at least two bytes before the end.
void TiffDirectory::Enter(std::size_t place) noexcept
{
    m_entries = place + 2;
    m_count =
        std::min<std::size_t>(NumberAt(place, 2), (m_file.size() - m_entries) / kTiffEntryBytes);
}

std::optional<TiffDirectory> TiffDirectory::Below(std::uint16_t tag) const noexcept
{
    const auto place = Number(tag);
    if (!place || *place > m_file.size() - 2)
    {
        return std::nullopt;
    }
    TiffDirectory below = *this;
    below.Enter(*place);
    return below;
}

std::uint32_t TiffDirectory::NumberAt(std::size_t place, std::size_t bytes) const noexcept
{
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < bytes; ++i)
    {
        const std::size_t next = m_bigEndian ? place + i : place + bytes - 1 - i;
        number = number << 8 | std::to_integer<std::uint32_t>(m_file[next]);
    }
    return number;
}

TiffValues TiffDirectory::At(std::size_t index) const noexcept
{
    const std::size_t entry = m_entries + index * kTiffEntryBytes;
    TiffValues values{static_cast<std::uint16_t>(NumberAt(entry, 2)),
                      static_cast<std::uint16_t>(NumberAt(entry + 2, 2)),
                      {}};
    const std::uint64_t bytes = std::uint64_t{NumberAt(entry + 4, 4)} * ValueBytes(values.type);
    const std::size_t place = bytes <= 4 ? entry + 8 : NumberAt(entry + 8, 4);
    if (place <= m_file.size() && bytes <= m_file.size() - place)
    {
        values.bytes = m_file.subspan(place, static_cast<std::size_t>(bytes));
    }
    return values;
}

TiffValues TiffDirectory::ValuesOf(std::uint16_t tag) const noexcept
{
    for (std::size_t index = 0; index < m_count; ++index)
    {
        if (const TiffValues values = At(index); values.tag == tag)
        {
            return values;
        }
    }
    return {};
}

std::span<const std::byte> TiffDirectory::Bytes(std::uint16_t tag) const noexcept
{
    return ValuesOf(tag).bytes;
}

std::optional<std::uint32_t> TiffDirectory::Number(std::uint16_t tag,
                                                   std::size_t index) const noexcept
{
    const TiffValues values = ValuesOf(tag);
    const std::size_t unit = ValueBytes(values.type);
    if (unit == 0 || unit > 4 || index >= values.bytes.size() / unit)
    {
        return std::nullopt;
    }
    const auto place = static_cast<std::size_t>(values.bytes.data() - m_file.data());
    return NumberAt(place + index * unit, unit);
}

std::size_t TiffDirectory::CountOf(std::uint16_t tag) const noexcept
{
    const TiffValues values = ValuesOf(tag);
    return values.bytes.empty() ? 0 : values.bytes.size() / ValueBytes(values.type);
}

std::optional<double> TiffDirectory::Fraction(std::uint16_t tag, std::size_t index) const noexcept
{
    const TiffValues values = ValuesOf(tag);
    if (values.type != kTiffFraction || index >= values.bytes.size() / ValueBytes(kTiffFraction))
    {
        return std::nullopt;
    }
    const std::size_t place = static_cast<std::size_t>(values.bytes.data() - m_file.data()) +
                              index * ValueBytes(kTiffFraction);
    const std::uint32_t denominator = NumberAt(place + 4, 4);
    return denominator == 0 ? std::nullopt
                            : std::optional(static_cast<double>(NumberAt(place, 4)) / denominator);
}

std::uint32_t TiffDirectory::BitsPerChannel() const noexcept
{
    constexpr std::uint16_t kBitsPerSample = 258;
    return Number(kBitsPerSample).value_or(1U);
}

std::uint32_t TiffDirectory::NumberKind() const noexcept
{
    constexpr std::uint16_t kSampleFormat = 339;
    return Number(kSampleFormat).value_or(1U);
}

} // namespace GlazelHost
