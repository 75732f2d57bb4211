#include "tools/glazelhost/project/compound_check.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

namespace GlazelHost
{

namespace
{

constexpr std::array<unsigned char, 8> kSignature{0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};

// Header: offsets in bytes. All numbers of the format are little-endian.
constexpr std::size_t kVersionAt = 26; // u16: 3 or 4
constexpr std::size_t kByteOrderAt = 28;
constexpr std::size_t kSectorShiftAt = 30;
constexpr std::size_t kSmallShiftAt = 32;
constexpr std::size_t kFatSectorsAt = 44; // how many, u32, as are all that follow
constexpr std::size_t kFoldersAt = 48;
constexpr std::size_t kSmallLimitAt = 56;
constexpr std::size_t kSmallFatAt = 60;
constexpr std::size_t kListAt = 68;        // first further sector of the list of FAT sectors
constexpr std::size_t kListSectorsAt = 72; // how many of those
constexpr std::size_t kListHeadAt = 76;    // where the list begins
constexpr std::size_t kListHeadLength = 109;
constexpr std::size_t kHeaderSize = 512;

constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE;
constexpr std::uint32_t kNone = 0xFFFFFFFF; // no entry, no list
constexpr std::uint32_t kSmallSector = 64;  // bytes
constexpr std::uint32_t kSmallLimit = 4096; // shorter streams are kept in small sectors

// A folder entry: offsets in bytes.
constexpr std::size_t kEntrySize = 128;
constexpr std::size_t kTypeAt = 66;  // u8
constexpr std::size_t kLinksAt = 68; // left, right, first child
constexpr std::size_t kStartAt = 116;
constexpr std::size_t kSizeAt = 120; // u64; the upper half counts in version 4 only
constexpr std::uint8_t kStorage = 1;
constexpr std::uint8_t kStream = 2;
constexpr std::uint8_t kRoot = 5;

template <typename Number>
Number NumberAt(std::span<const std::byte> bytes, std::size_t offset) noexcept
{
    Number number = 0;
    std::memcpy(&number, bytes.data() + offset, sizeof number);
    return number;
}

// Links between sectors of one size; each sector belongs to one chain.
class Chains
{
public:
    // `count` sectors exist, `next` has the link of each as far as it reaches.
    Chains(std::vector<std::uint32_t> next, std::size_t count)
        : m_next(std::move(next)), m_taken(std::min(m_next.size(), count))
    {
    }

    // False when it does not exist or is taken already.
    bool Take(std::uint32_t sector)
    {
        if (sector >= m_taken.size() || m_taken[sector])
        {
            return false;
        }
        m_taken[sector] = true;
        return true;
    }

    // All sectors of a chain, which are then taken; none when it is broken.
    std::optional<std::vector<std::uint32_t>> Follow(std::uint32_t sector)
    {
        std::vector<std::uint32_t> chain;
        for (; sector != kEndOfChain; sector = m_next[sector])
        {
            if (!Take(sector))
            {
                return std::nullopt;
            }
            chain.push_back(sector);
        }
        return chain;
    }

private:
    std::vector<std::uint32_t> m_next;
    std::vector<bool> m_taken;
};

class Check
{
public:
    explicit Check(std::span<const std::byte> bytes) : m_bytes(bytes) {}

    bool Run()
    {
        return ReadHeader() && ReadFat() && ReadFolders() && ReadSmallFat() && WalkFolders();
    }

private:
    // The part of a sector that the file has.
    std::span<const std::byte> Sector(std::uint32_t sector) const noexcept
    {
        const std::size_t begin = (std::size_t{sector} + 1) * m_sectorSize;
        return m_bytes.subspan(begin, std::min(m_sectorSize, m_bytes.size() - begin));
    }

    // Appends the numbers in a sector; false when the file ends in it or before.
    bool AppendNumbers(std::uint32_t sector, std::vector<std::uint32_t>& numbers) const
    {
        if (sector >= m_sectorCount || Sector(sector).size() < m_sectorSize)
        {
            return false;
        }
        for (std::size_t offset = 0; offset < m_sectorSize; offset += sizeof(std::uint32_t))
        {
            numbers.push_back(NumberAt<std::uint32_t>(Sector(sector), offset));
        }
        return true;
    }

    bool ReadHeader()
    {
        if (!LooksCompound(m_bytes) || m_bytes.size() < kHeaderSize)
        {
            return false;
        }
        m_version = NumberAt<std::uint16_t>(m_bytes, kVersionAt);
        const auto shift = NumberAt<std::uint16_t>(m_bytes, kSectorShiftAt);
        m_sectorSize = std::size_t{1} << (m_version == 4 ? 12U : 9U);
        const bool known = (m_version == 3 && shift == 9) || (m_version == 4 && shift == 12);
        if (!known || m_bytes.size() <= m_sectorSize ||
            NumberAt<std::uint16_t>(m_bytes, kByteOrderAt) != 0xFFFE ||
            NumberAt<std::uint16_t>(m_bytes, kSmallShiftAt) != 6 ||
            NumberAt<std::uint32_t>(m_bytes, kSmallLimitAt) != kSmallLimit)
        {
            return false;
        }
        m_sectorCount = (m_bytes.size() - 1) / m_sectorSize; // the header fills the first
        return true;
    }

    // Sectors of the list, and of the FAT that it lists.
    bool ReadFat()
    {
        std::vector<std::uint32_t> list;
        for (std::size_t i = 0; i < kListHeadLength; ++i)
        {
            list.push_back(NumberAt<std::uint32_t>(m_bytes, kListHeadAt + i * 4));
        }
        std::vector<std::uint32_t> special;
        auto next = NumberAt<std::uint32_t>(m_bytes, kListAt);
        const auto listSectors = NumberAt<std::uint32_t>(m_bytes, kListSectorsAt);
        for (std::uint32_t i = 0; i < listSectors; ++i)
        {
            if (special.size() > m_sectorCount || !AppendNumbers(next, list))
            {
                return false;
            }
            special.push_back(next);
            next = list.back(); // the last number of such a sector is the link
            list.pop_back();
        }
        const auto fatSectors = NumberAt<std::uint32_t>(m_bytes, kFatSectorsAt);
        if ((next != kEndOfChain && next != kNone) || fatSectors > list.size() ||
            fatSectors > m_sectorCount)
        {
            return false;
        }
        std::vector<std::uint32_t> links;
        for (std::uint32_t i = 0; i < fatSectors; ++i)
        {
            if (!AppendNumbers(list[i], links))
            {
                return false;
            }
            special.push_back(list[i]);
        }
        m_chains.emplace(std::move(links), m_sectorCount);
        return std::ranges::all_of(special,
                                   [this](std::uint32_t sector) { return m_chains->Take(sector); });
    }

    bool ReadFolders()
    {
        const auto chain = m_chains->Follow(NumberAt<std::uint32_t>(m_bytes, kFoldersAt));
        if (!chain || chain->empty())
        {
            return false;
        }
        for (const std::uint32_t sector : *chain)
        {
            const auto part = Sector(sector);
            if (part.size() < m_sectorSize)
            {
                return false;
            }
            m_folders.insert(m_folders.end(), part.begin(), part.end());
        }
        return TypeOf(0) == kRoot;
    }

    // The small sectors lie one behind the other in a stream of the root's.
    bool ReadSmallFat()
    {
        std::vector<std::uint32_t> links;
        const auto start = NumberAt<std::uint32_t>(m_bytes, kSmallFatAt);
        const auto chain = start == kNone ? std::vector<std::uint32_t>() : m_chains->Follow(start);
        if (!chain || !std::ranges::all_of(*chain, [&](std::uint32_t sector) {
                return AppendNumbers(sector, links);
            }))
        {
            return false;
        }
        const std::uint64_t size = SizeOf(0);
        if (size != 0 && !Holds(*m_chains, StartOf(0), size, m_sectorSize))
        {
            return false;
        }
        m_smallChains.emplace(std::move(links), static_cast<std::size_t>(size / kSmallSector));
        return true;
    }

    bool WalkFolders()
    {
        const std::size_t count = m_folders.size() / kEntrySize;
        std::vector<bool> met(count);
        std::vector<std::uint32_t> open{0};
        while (!open.empty())
        {
            const std::uint32_t entry = open.back();
            open.pop_back();
            if (entry == kNone)
            {
                continue;
            }
            if (entry >= count || met[entry])
            {
                return false;
            }
            met[entry] = true;
            const std::uint8_t type = TypeOf(entry);
            if ((entry != 0 && type != kStorage && type != kStream) ||
                (type == kStream && !StreamIsWhole(entry)))
            {
                return false;
            }
            for (std::size_t link = 0; link < (type == kStream ? 2U : 3U); ++link)
            {
                open.push_back(NumberAt<std::uint32_t>(Entry(entry), kLinksAt + link * 4));
            }
        }
        return true;
    }

    bool StreamIsWhole(std::uint32_t entry)
    {
        const std::uint64_t size = SizeOf(entry);
        return size == 0 ||
               (size < kSmallLimit ? Holds(*m_smallChains, StartOf(entry), size, kSmallSector)
                                   : Holds(*m_chains, StartOf(entry), size, m_sectorSize));
    }

    // Whether the chain from `start` on has exactly the sectors that `size` bytes need, or more.
    bool Holds(Chains& chains, std::uint32_t start, std::uint64_t size, std::size_t sectorSize)
    {
        const auto chain = chains.Follow(start);
        return chain && size <= m_bytes.size() && chain->size() * sectorSize >= size;
    }

    std::span<const std::byte> Entry(std::uint32_t entry) const noexcept
    {
        return std::span(m_folders).subspan(entry * kEntrySize, kEntrySize);
    }
    std::uint8_t TypeOf(std::uint32_t entry) const noexcept
    {
        return NumberAt<std::uint8_t>(Entry(entry), kTypeAt);
    }
    std::uint32_t StartOf(std::uint32_t entry) const noexcept
    {
        return NumberAt<std::uint32_t>(Entry(entry), kStartAt);
    }
    std::uint64_t SizeOf(std::uint32_t entry) const noexcept
    {
        return m_version == 4 ? NumberAt<std::uint64_t>(Entry(entry), kSizeAt)
                              : NumberAt<std::uint32_t>(Entry(entry), kSizeAt);
    }

    std::span<const std::byte> m_bytes;
    std::uint16_t m_version = 0;
    std::size_t m_sectorSize = 0;
    std::size_t m_sectorCount = 0; // behind the header; the last one may be cut
    std::optional<Chains> m_chains;
    std::vector<std::byte> m_folders;
    std::optional<Chains> m_smallChains;
};

} // namespace

bool LooksCompound(std::span<const std::byte> bytes) noexcept
{
    return bytes.size() >= kSignature.size() &&
           std::memcmp(bytes.data(), kSignature.data(), kSignature.size()) == 0;
}

bool IsSoundCompound(std::span<const std::byte> bytes)
{
    return Check(bytes).Run();
}

} // namespace GlazelHost
