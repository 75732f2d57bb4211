// The first directory of a TIFF file: what it states of its picture beside the pixels.
// Pure: no windows.h. Tests: tests/tools/glazelhost/io/tiff_directory_test.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

// Looks into the file, which outlives it. Whatever the file holds, nothing outside it is read.
class TiffDirectory
{
public:
    // None when the bytes do not begin like a TIFF with a directory.
    static std::optional<TiffDirectory> Read(std::span<const std::byte> file) noexcept;

    // The first value of a tag that holds whole numbers of one, two or four bytes.
    std::optional<std::uint32_t> Number(std::uint16_t tag) const noexcept;
    // All bytes of a tag's values; none when the tag is absent or its bytes are.
    std::span<const std::byte> Bytes(std::uint16_t tag) const noexcept;

private:
    TiffDirectory() = default;
    std::uint32_t NumberAt(std::size_t place, std::size_t bytes) const noexcept;
    std::optional<std::size_t> EntryOf(std::uint16_t tag) const noexcept;

    std::span<const std::byte> m_file;
    bool m_bigEndian = false;
    std::size_t m_entries = 0; // place of the first one
    std::size_t m_count = 0;
};
