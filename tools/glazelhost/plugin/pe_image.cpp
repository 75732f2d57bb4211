#include "tools/glazelhost/plugin/pe_image.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace GlazelHost
{

namespace
{

// Offsets and sizes of the format's records.
constexpr std::size_t kHeaderOffsetField = 0x3C;
constexpr std::size_t kFileHeaderBytes = 24; // with the signature before it
constexpr std::uint16_t kOptionalHeader64 = 0x20B;
constexpr std::size_t kDirectoryCountField = 108; // of the 64-bit optional header
constexpr std::size_t kDirectories = 112;
constexpr std::uint32_t kExportDirectory = 0;
constexpr std::uint32_t kImportDirectory = 1;
constexpr std::uint32_t kDelayedImportDirectory = 13;
constexpr std::size_t kSectionBytes = 40;
constexpr std::size_t kImportRecordBytes = 20;
constexpr std::size_t kDelayedImportRecordBytes = 32;
constexpr std::uint16_t kIsDll = 0x2000;
constexpr std::uint64_t kImportedByNumber = 1ULL << 63;

// A damaged image may chain records for ever: no real one has as many.
constexpr std::size_t kMostLibraries = 4096;
constexpr std::size_t kMostSlots = 65536; // exports have numbers of 16 bits too
constexpr std::size_t kLongestName = 512;

struct Section
{
    std::uint32_t address;
    std::uint32_t fileOffset;
    std::uint32_t fileBytes;
};

class Reader
{
public:
    Reader(std::span<const std::byte> bytes, PeLayout layout) : m_bytes(bytes), m_layout(layout) {}

    template <typename Number>
    std::optional<Number> At(std::uint64_t offset) const
    {
        if (offset > m_bytes.size() || m_bytes.size() - offset < sizeof(Number))
        {
            return std::nullopt;
        }
        Number number;
        std::memcpy(&number, m_bytes.data() + offset, sizeof(Number));
        return number;
    }

    template <typename Number>
    std::optional<Number> AtAddress(std::uint64_t address) const
    {
        const auto offset = OffsetOf(address);
        return offset ? At<Number>(*offset) : std::nullopt;
    }

    std::string TextAtAddress(std::uint64_t address) const
    {
        std::string text;
        for (std::size_t index = 0; index < kLongestName; ++index)
        {
            const auto character = AtAddress<char>(address + index);
            if (!character || *character == '\0')
            {
                return text;
            }
            text += *character;
        }
        return text;
    }

    void AddSection(const Section& section) { m_sections.push_back(section); }

private:
    std::optional<std::uint64_t> OffsetOf(std::uint64_t address) const
    {
        if (m_layout == PeLayout::Loaded)
        {
            return address;
        }
        const auto holds = [address](const Section& section) {
            return address >= section.address && address - section.address < section.fileBytes;
        };
        const auto section = std::find_if(m_sections.begin(), m_sections.end(), holds);
        if (section == m_sections.end())
        {
            return std::nullopt;
        }
        return section->fileOffset + (address - section->address);
    }

    std::span<const std::byte> m_bytes;
    PeLayout m_layout;
    std::vector<Section> m_sections;
};

// `names` is the table of what is imported, `slots` the table of addresses beside it.
std::vector<ImportSlot> SlotsOf(const Reader& reader, std::uint32_t names, std::uint32_t slots)
{
    std::vector<ImportSlot> result;
    for (std::uint32_t index = 0; index < kMostSlots; ++index)
    {
        const auto entry = reader.AtAddress<std::uint64_t>(names + std::uint64_t{index} * 8U);
        const bool hasSlot =
            reader.AtAddress<std::uint64_t>(slots + std::uint64_t{index} * 8U).has_value();
        if (!entry || *entry == 0 || !hasSlot)
        {
            break;
        }
        constexpr std::uint64_t kHintBytes = 2;
        const bool byNumber = (*entry & kImportedByNumber) != 0;
        result.push_back({byNumber ? std::string() : reader.TextAtAddress(*entry + kHintBytes),
                          slots + index * 8U});
    }
    return result;
}

std::vector<ImportedLibrary> ImportsOf(const Reader& reader, std::uint32_t table)
{
    std::vector<ImportedLibrary> libraries;
    while (libraries.size() < kMostLibraries)
    {
        const std::uint64_t record = table + libraries.size() * kImportRecordBytes;
        const auto names = reader.AtAddress<std::uint32_t>(record);
        const auto name = reader.AtAddress<std::uint32_t>(record + 12);
        const auto slots = reader.AtAddress<std::uint32_t>(record + 16);
        if (!names || !name || !slots || *name == 0)
        {
            break;
        }
        // Some linkers leave the table of names out; the address table then holds them in the file.
        libraries.push_back(
            {reader.TextAtAddress(*name), SlotsOf(reader, *names != 0 ? *names : *slots, *slots)});
    }
    return libraries;
}

std::vector<ImportedLibrary> DelayedImportsOf(const Reader& reader, std::uint32_t table)
{
    std::vector<ImportedLibrary> libraries;
    while (libraries.size() < kMostLibraries)
    {
        const std::uint64_t record = table + libraries.size() * kDelayedImportRecordBytes;
        const auto name = reader.AtAddress<std::uint32_t>(record + 4);
        const auto slots = reader.AtAddress<std::uint32_t>(record + 12);
        const auto names = reader.AtAddress<std::uint32_t>(record + 16);
        if (!names || !name || !slots || *name == 0)
        {
            break;
        }
        libraries.push_back({reader.TextAtAddress(*name), SlotsOf(reader, *names, *slots)});
    }
    return libraries;
}

std::vector<std::string> ExportsOf(const Reader& reader, std::uint32_t table)
{
    const auto count = reader.AtAddress<std::uint32_t>(std::uint64_t{table} + 24);
    const auto names = reader.AtAddress<std::uint32_t>(std::uint64_t{table} + 32);
    std::vector<std::string> exports;
    for (std::size_t index = 0; count && names && index < std::min<std::size_t>(*count, kMostSlots);
         ++index)
    {
        const auto name = reader.AtAddress<std::uint32_t>(*names + std::uint64_t{index} * 4U);
        if (!name)
        {
            break;
        }
        exports.push_back(reader.TextAtAddress(*name));
    }
    return exports;
}

// Address of a directory's table, 0 when the image has none.
std::uint32_t DirectoryOf(const Reader& reader, std::uint64_t optionalHeader, std::uint32_t index)
{
    const auto count = reader.At<std::uint32_t>(optionalHeader + kDirectoryCountField);
    if (!count || *count <= index)
    {
        return 0;
    }
    return reader.At<std::uint32_t>(optionalHeader + kDirectories + std::uint64_t{index} * 8U)
        .value_or(0);
}

} // namespace

std::optional<PeImage> ReadPeImage(std::span<const std::byte> bytes, PeLayout layout)
{
    Reader reader(bytes, layout);
    constexpr std::uint16_t kOuterMark = 0x5A4D;     // "MZ"
    constexpr std::uint32_t kInnerMark = 0x00004550; // "PE", 0, 0
    const auto header = reader.At<std::uint32_t>(kHeaderOffsetField);
    if (reader.At<std::uint16_t>(0) != kOuterMark || !header ||
        reader.At<std::uint32_t>(*header) != kInnerMark)
    {
        return std::nullopt;
    }
    const std::uint64_t start = *header;
    const auto machine = reader.At<std::uint16_t>(start + 4);
    const auto sectionCount = reader.At<std::uint16_t>(start + 6);
    const auto optionalBytes = reader.At<std::uint16_t>(start + 20);
    const auto characteristics = reader.At<std::uint16_t>(start + 22);
    if (!machine || !sectionCount || !optionalBytes || !characteristics)
    {
        return std::nullopt;
    }
    PeImage image{*machine, (*characteristics & kIsDll) != 0, {}, {}, {}};
    const std::uint64_t optionalHeader = start + kFileHeaderBytes;
    if (reader.At<std::uint16_t>(optionalHeader) != kOptionalHeader64)
    {
        return image;
    }
    for (std::uint64_t index = 0; index < *sectionCount; ++index)
    {
        const std::uint64_t record = optionalHeader + *optionalBytes + index * kSectionBytes;
        const auto address = reader.At<std::uint32_t>(record + 12);
        const auto fileBytes = reader.At<std::uint32_t>(record + 16);
        const auto fileOffset = reader.At<std::uint32_t>(record + 20);
        if (address && fileBytes && fileOffset)
        {
            reader.AddSection({*address, *fileOffset, *fileBytes});
        }
    }
    if (const std::uint32_t table = DirectoryOf(reader, optionalHeader, kImportDirectory))
    {
        image.imports = ImportsOf(reader, table);
    }
    if (const std::uint32_t table = DirectoryOf(reader, optionalHeader, kDelayedImportDirectory))
    {
        image.delayedImports = DelayedImportsOf(reader, table);
    }
    if (const std::uint32_t table = DirectoryOf(reader, optionalHeader, kExportDirectory))
    {
        image.exports = ExportsOf(reader, table);
    }
    return image;
}

std::string MachineName(std::uint16_t machine)
{
    struct Row
    {
        std::uint16_t machine;
        const char* name;
    };
    constexpr std::array kNames{Row{kMachineX64, "64-bit (x64)"}, Row{kMachineX86, "32-bit (x86)"},
                                Row{kMachineArm64, "64-bit (ARM)"}};
    for (const Row& row : kNames)
    {
        if (row.machine == machine)
        {
            return row.name;
        }
    }
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "for machine 0x%04X", unsigned{machine});
    return text.data();
}

} // namespace GlazelHost
