#include "tools/glazelhost/io/tiff_directory.h"

#include <algorithm>

namespace
{

constexpr std::size_t kHeaderBytes = 8;
constexpr std::size_t kEntryBytes = 12;
constexpr std::uint32_t kMagic = 42;

// Bytes of one value of a type that is known here; 0: another type.
std::size_t ValueBytes(std::uint32_t type) noexcept
{
    switch (type)
    {
    case 1: // bytes
    case 2: // text
    case 7: // anything
        return 1;
    case 3:
        return 2;
    case 4:
        return 4;
    default:
        return 0;
    }
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
    directory.m_entries = place + 2;
    directory.m_count = std::min<std::size_t>(directory.NumberAt(place, 2),
                                              (file.size() - place - 2) / kEntryBytes);
    return directory;
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

std::optional<std::size_t> TiffDirectory::EntryOf(std::uint16_t tag) const noexcept
{
    for (std::size_t index = 0; index < m_count; ++index)
    {
        const std::size_t entry = m_entries + index * kEntryBytes;
        if (NumberAt(entry, 2) == tag)
        {
            return entry;
        }
    }
    return std::nullopt;
}

std::span<const std::byte> TiffDirectory::Bytes(std::uint16_t tag) const noexcept
{
    const auto entry = EntryOf(tag);
    if (!entry)
    {
        return {};
    }
    const std::uint64_t bytes =
        std::uint64_t{NumberAt(*entry + 4, 4)} * ValueBytes(NumberAt(*entry + 2, 2));
    const std::size_t place = bytes <= 4 ? *entry + 8 : NumberAt(*entry + 8, 4);
    if (place > m_file.size() || bytes > m_file.size() - place)
    {
        return {};
    }
    return m_file.subspan(place, static_cast<std::size_t>(bytes));
}

std::optional<std::uint32_t> TiffDirectory::Number(std::uint16_t tag) const noexcept
{
    const auto entry = EntryOf(tag);
    const std::span<const std::byte> bytes = Bytes(tag);
    if (!entry || bytes.empty())
    {
        return std::nullopt;
    }
    const auto place = static_cast<std::size_t>(bytes.data() - m_file.data());
    return NumberAt(place, ValueBytes(NumberAt(*entry + 2, 2)));
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
