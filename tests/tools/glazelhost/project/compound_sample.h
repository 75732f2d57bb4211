// A compound document to read and to damage, for tests. Pure: no windows.h.
#pragma once

#include "tools/glazelhost/project/compound_check.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace GlazelHost
{

namespace CompoundSample
{

inline constexpr std::uint32_t kEnd = 0xFFFFFFFE;
inline constexpr std::uint32_t kFree = 0xFFFFFFFF;
inline constexpr std::uint32_t kFat = 0xFFFFFFFD;
inline constexpr std::size_t kSector = 512;

// Where the parts of the sample stand.
inline constexpr std::size_t kFatSector = 0;
inline constexpr std::size_t kFolderSector = 1;
inline constexpr std::size_t kSmallFatSector = 2;
inline constexpr std::size_t kSmallSectors = 3; // of the root
inline constexpr std::size_t kLongStream = 4;   // 9 sectors
inline constexpr std::size_t kSectors = 13;

class Document
{
public:
    Document() : m_bytes((kSectors + 1) * kSector)
    {
        const std::array<unsigned char, 8> signature{0xD0, 0xCF, 0x11, 0xE0,
                                                     0xA1, 0xB1, 0x1A, 0xE1};
        std::memcpy(m_bytes.data(), signature.data(), signature.size());
        Put<std::uint16_t>(24, 0x3E);
        Put<std::uint16_t>(26, 3);
        Put<std::uint16_t>(28, 0xFFFE);
        Put<std::uint16_t>(30, 9);
        Put<std::uint16_t>(32, 6);
        Put<std::uint32_t>(44, 1);
        Put<std::uint32_t>(48, kFolderSector);
        Put<std::uint32_t>(56, 4096);
        Put<std::uint32_t>(60, kSmallFatSector);
        Put<std::uint32_t>(64, 1);
        Put<std::uint32_t>(68, kEnd);
        for (std::size_t i = 0; i < 109; ++i)
        {
            Put(76 + 4 * i, i == 0 ? std::uint32_t{kFatSector} : kFree);
        }
        for (std::size_t i = 0; i < kSector / 4; ++i)
        {
            Fat(i) = kFree;
            SmallFat(i) = kFree;
        }
        Fat(kFatSector) = kFat;
        Fat(kFolderSector) = Fat(kSmallFatSector) = Fat(kSmallSectors) = kEnd;
        for (std::size_t i = kLongStream; i < kSectors; ++i)
        {
            Fat(i) = i + 1 < kSectors ? static_cast<std::uint32_t>(i + 1) : kEnd;
        }
        SmallFat(0) = 1;
        SmallFat(1) = kEnd;
        // A root with a folder, in which a short and a long stream stand side by side.
        Entry(0, 5, kFree, kFree, 1, kSmallSectors, 128);
        Entry(1, 1, kFree, kFree, 2, 0, 0);
        Entry(2, 2, kFree, 3, kFree, 0, 100);
        Entry(3, 2, kFree, kFree, kFree, kLongStream, 9 * kSector - 5);
    }

    template <typename Number>
    void Put(std::size_t offset, Number number)
    {
        std::memcpy(m_bytes.data() + offset, &number, sizeof number);
    }

    // A number inside the file, to be changed in place.
    class Word
    {
    public:
        Word(Document& document, std::size_t offset) : m_document(document), m_offset(offset) {}
        Word& operator=(std::uint32_t number)
        {
            m_document.Put(m_offset, number);
            return *this;
        }
        Word& operator=(const Word& other)
        {
            std::memcpy(m_document.m_bytes.data() + m_offset,
                        other.m_document.m_bytes.data() + other.m_offset, 4);
            return *this;
        }

    private:
        Document& m_document;
        std::size_t m_offset;
    };

    Word Fat(std::size_t sector) { return {*this, kSector + kFatSector * kSector + 4 * sector}; }
    Word SmallFat(std::size_t sector)
    {
        return {*this, kSector + kSmallFatSector * kSector + 4 * sector};
    }
    Word Link(std::size_t entry, std::size_t link)
    {
        return {*this, EntryAt(entry) + 68 + 4 * link};
    }
    Word Start(std::size_t entry) { return {*this, EntryAt(entry) + 116}; }
    Word Size(std::size_t entry) { return {*this, EntryAt(entry) + 120}; }

    std::vector<std::byte>& Bytes() { return m_bytes; }
    bool IsSound() const { return IsSoundCompound(m_bytes); }

private:
    static std::size_t EntryAt(std::size_t entry)
    {
        return kSector + kFolderSector * kSector + 128 * entry;
    }
    void Entry(std::size_t entry, std::uint8_t type, std::uint32_t left, std::uint32_t right,
               std::uint32_t child, std::uint32_t start, std::uint32_t size)
    {
        Put(EntryAt(entry) + 66, type);
        Link(entry, 0) = left;
        Link(entry, 1) = right;
        Link(entry, 2) = child;
        Start(entry) = start;
        Size(entry) = size;
    }

    std::vector<std::byte> m_bytes;
};

} // namespace CompoundSample

} // namespace GlazelHost
