// The first directory of a TIFF file: what it states of its picture beside the pixels.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/tiff_directory_test.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace GlazelHost
{

// TIFF 6.0, section 2: the type of values that are two numbers each, and an entry of a directory.
inline constexpr std::uint16_t kTiffFraction = 5;
inline constexpr std::uint32_t kTiffEntryBytes = 12;

// One tag's values as they stand in the file.
struct TiffValues
{
    std::uint16_t tag = 0;
    std::uint16_t type = 0;
    std::span<const std::byte>
        bytes; // in the file's order; none of an unknown type or when missing
};

// Looks into the file, which outlives it. Whatever the file holds, nothing outside it is read.
class TiffDirectory
{
public:
    static constexpr std::uint32_t kSigned = 2;
    static constexpr std::uint32_t kFloat = 3;

    // None when the bytes do not begin like a TIFF with a directory.
    static std::optional<TiffDirectory> Read(std::span<const std::byte> file) noexcept;

    bool IsBigEndian() const noexcept { return m_bigEndian; }

    // The directory that a tag points to.
    std::optional<TiffDirectory> Below(std::uint16_t tag) const noexcept;

    // All tags in the file's order.
    std::size_t Count() const noexcept { return m_count; }
    TiffValues At(std::size_t index) const noexcept;

    // A value of a tag that holds whole numbers of one, two or four bytes.
    std::optional<std::uint32_t> Number(std::uint16_t tag, std::size_t index = 0) const noexcept;
    std::size_t CountOf(std::uint16_t tag) const noexcept;
    // A value of a tag that holds fractions; none where the denominator is 0.
    std::optional<double> Fraction(std::uint16_t tag, std::size_t index = 0) const noexcept;
    // All bytes of a tag's values; none when the tag is absent or its bytes are.
    std::span<const std::byte> Bytes(std::uint16_t tag) const noexcept;

    // How a channel is stored: bits, and 1 for whole numbers, 2 for such with a sign, 3 for floats.
    std::uint32_t BitsPerChannel() const noexcept;
    std::uint32_t NumberKind() const noexcept;

private:
    TiffDirectory() = default;
    std::uint32_t NumberAt(std::size_t place, std::size_t bytes) const noexcept;
    void Enter(std::size_t place) noexcept;
    TiffValues ValuesOf(std::uint16_t tag) const noexcept;

    std::span<const std::byte> m_file;
    bool m_bigEndian = false;
    std::size_t m_entries = 0; // place of the first one
    std::size_t m_count = 0;
};

} // namespace GlazelHost
