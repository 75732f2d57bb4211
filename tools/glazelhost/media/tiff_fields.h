// Directories of little-endian TIFF files and EXIF blocks, as they are written.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/tiff_fields_test.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

namespace GlazelHost
{

// Appends little-endian numbers to a block of bytes.
class LittleEndianBlock
{
public:
    void Add16(std::uint32_t value) { Add(value, 2); }
    void Add32(std::uint32_t value) { Add(value, 4); }
    void AddBytes(std::span<const std::byte> bytes)
    {
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    }
    void AddText(std::string_view text) { AddBytes(std::as_bytes(std::span(text))); }
    void PadToEven() { m_bytes.resize((m_bytes.size() + 1) / 2 * 2); }
    std::size_t Size() const noexcept { return m_bytes.size(); }
    const std::vector<std::byte>& Bytes() const noexcept { return m_bytes; }

private:
    void Add(std::uint32_t value, int count)
    {
        for (; count > 0; --count, value >>= 8)
        {
            m_bytes.push_back(static_cast<std::byte>(value));
        }
    }
    std::vector<std::byte> m_bytes;
};

// What every file begins with: the byte order and the place of the first directory.
inline constexpr std::uint32_t kTiffHeaderBytes = 8;
void AddTiffHeader(LittleEndianBlock& block, std::uint32_t directory);

// A tag that is set again replaces what it had.
class TiffFields
{
public:
    static constexpr std::uint16_t kText = 2;
    static constexpr std::uint16_t kAnything = 7;

    void SetShorts(std::uint16_t tag, std::span<const std::uint32_t> values);
    void SetLongs(std::uint16_t tag, std::span<const std::uint32_t> values);
    void SetShort(std::uint16_t tag, std::uint32_t value) { SetShorts(tag, {&value, 1}); }
    void SetLong(std::uint16_t tag, std::uint32_t value) { SetLongs(tag, {&value, 1}); }
    // With four digits behind the point, or more where that holds them exactly. Each is at least 0
    // and below 400,000.
    void SetFractions(std::uint16_t tag, std::span<const double> values);
    // `bytes` are `type`'s values, in little-endian order.
    void SetBytes(std::uint16_t tag, std::uint16_t type, std::span<const std::byte> bytes);
    // A directory of its own, which this tag points to.
    void SetBelow(std::uint16_t tag, TiffFields below);

    bool IsEmpty() const noexcept { return m_fields.empty(); }
    std::uint32_t Size() const; // bytes that AddTo adds
    // The directory, then its values, then what it points to; the block ends at `place` of the
    // file, which is even.
    void AddTo(LittleEndianBlock& block, std::uint32_t place) const;

private:
    struct Field
    {
        std::uint16_t tag;
        std::uint16_t type;
        std::vector<std::byte> bytes;
        std::vector<TiffFields> below; // none or one
    };
    void Set(Field field);

    std::vector<Field> m_fields; // in ascending order of tags, as directories must be
};

} // namespace GlazelHost
