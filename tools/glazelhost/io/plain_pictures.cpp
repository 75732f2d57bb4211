#include "tools/glazelhost/io/plain_pictures.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/io/picture_light.h"
#include "tools/glazelhost/io/pixel_convert.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <string_view>
#include <vector>

namespace
{

// Appends little-endian numbers to a block of bytes.
class LittleEndianBlock
{
public:
    void Add16(std::uint32_t value) { Add(value, 2); }
    void Add32(std::uint32_t value) { Add(value, 4); }
    void AddText(std::string_view text)
    {
        std::ranges::transform(text, std::back_inserter(m_bytes),
                               [](char letter) { return static_cast<std::byte>(letter); });
    }
    std::size_t Size() const noexcept { return m_bytes.size(); }
    void WriteTo(ByteWriter& target) const { target.Write(m_bytes.data(), m_bytes.size()); }

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

void CheckFileSize(std::uint64_t bytes, const std::string& format, const std::string& name)
{
    if (bytes > std::numeric_limits<std::uint32_t>::max())
    {
        throw HostError(name, "a " + format + " file cannot hold more than 4 GB",
                        "write a smaller picture or fewer bits");
    }
}

std::uint32_t Narrow(std::uint64_t value) noexcept
{
    return static_cast<std::uint32_t>(value); // checked by CheckFileSize
}

// Types and tags of TIFF 6.0; the directory's entries stand in ascending order of tags.
constexpr std::uint32_t kTiffText = 2;
constexpr std::uint32_t kTiffShort = 3;
constexpr std::uint32_t kTiffLong = 4;
constexpr std::uint32_t kTiffFloatFormat = 3;
constexpr std::uint32_t kTiffRgb = 2;
constexpr std::uint32_t kTiffStraightAlpha = 2;
constexpr std::uint32_t kTiffEntryBytes = 12;
constexpr std::uint32_t kTiffNote = 270;

// One directory entry: its value, or the place of its values when they do not fit four bytes.
struct TiffEntry
{
    std::uint32_t tag;
    std::uint32_t type;
    std::uint32_t count;
    std::uint32_t value;
};

struct TiffPlan
{
    std::uint32_t channels;
    std::uint32_t rowBytes;
    std::uint32_t rowsPerStrip;
    std::uint32_t strips;
};

TiffPlan PlanTiff(const Image& image, const std::string& name)
{
    constexpr std::uint32_t kStripBytes = 1U << 16; // small enough for readers that buffer strips
    const std::uint32_t channels = image.hasAlpha ? 4 : 3;
    const auto rowBytes = static_cast<std::uint32_t>(image.width) * channels * 4U;
    const auto rows = static_cast<std::uint32_t>(image.height);
    constexpr std::uint64_t kHeaderRoom = 1U << 20; // strip tables of the largest picture and all
    CheckFileSize(std::uint64_t{rowBytes} * rows + kHeaderRoom, "TIFF", name);
    const std::uint32_t rowsPerStrip = std::clamp(kStripBytes / rowBytes, 1U, rows);
    return {channels, rowBytes, rowsPerStrip, (rows + rowsPerStrip - 1) / rowsPerStrip};
}

// `note` is the file's description; none when empty.
LittleEndianBlock TiffHeader(const Image& image, const TiffPlan& plan, std::string_view note)
{
    constexpr std::uint32_t kDirectory = 8;
    const std::uint32_t entryCount = 11U + (image.hasAlpha ? 1U : 0U) + (note.empty() ? 0U : 1U);
    const auto noteBytes = static_cast<std::uint32_t>(note.empty() ? 0 : note.size() + 1);
    // Behind the directory: the note, bits per sample, sample formats, strip offsets, strip sizes,
    // pixels. All stand at even places.
    const std::uint32_t words = kDirectory + 2 + entryCount * kTiffEntryBytes + 4;
    const std::uint32_t bits = words + (noteBytes + 1) / 2 * 2;
    const std::uint32_t formats = bits + 2 * plan.channels;
    const std::uint32_t offsets = formats + 2 * plan.channels;
    const std::uint32_t sizes = offsets + 4 * plan.strips;
    const std::uint32_t pixels = sizes + 4 * plan.strips;
    const std::uint32_t stripBytes = plan.rowBytes * plan.rowsPerStrip;
    const auto rows = static_cast<std::uint32_t>(image.height);
    const std::uint32_t lastBytes = (rows - (plan.strips - 1) * plan.rowsPerStrip) * plan.rowBytes;
    const bool oneStrip = plan.strips == 1; // its offset and size stand in the directory itself

    std::vector<TiffEntry> entries{
        {256, kTiffLong, 1, static_cast<std::uint32_t>(image.width)},
        {257, kTiffLong, 1, rows},
        {258, kTiffShort, plan.channels, bits},
        {259, kTiffShort, 1, 1}, // not compressed
        {262, kTiffShort, 1, kTiffRgb},
        {kTiffNote, kTiffText, noteBytes, words},
        {273, kTiffLong, plan.strips, oneStrip ? pixels : offsets},
        {277, kTiffShort, 1, plan.channels},
        {278, kTiffLong, 1, plan.rowsPerStrip},
        {279, kTiffLong, plan.strips, oneStrip ? lastBytes : sizes},
        {284, kTiffShort, 1, 1}, // channels of a pixel side by side
    };
    if (note.empty())
    {
        std::erase_if(entries, [](const TiffEntry& entry) { return entry.tag == kTiffNote; });
    }
    if (image.hasAlpha)
    {
        entries.push_back({338, kTiffShort, 1, kTiffStraightAlpha});
    }
    entries.push_back({339, kTiffShort, plan.channels, formats});

    LittleEndianBlock block;
    block.Add16(0x4949); // "II": little-endian
    block.Add16(42);
    block.Add32(kDirectory);
    block.Add16(entryCount);
    for (const TiffEntry& entry : entries)
    {
        block.Add16(entry.tag);
        block.Add16(entry.type);
        block.Add32(entry.count);
        block.Add32(entry.value);
    }
    block.Add32(0); // no further directory
    block.AddText(note);
    for (std::uint32_t place = words + static_cast<std::uint32_t>(note.size()); place < bits;
         ++place)
    {
        block.AddText({"\0", 1});
    }
    for (std::uint32_t channel = 0; channel < plan.channels; ++channel)
    {
        block.Add16(32);
    }
    for (std::uint32_t channel = 0; channel < plan.channels; ++channel)
    {
        block.Add16(kTiffFloatFormat);
    }
    for (std::uint32_t strip = 0; strip < plan.strips; ++strip)
    {
        block.Add32(pixels + strip * stripBytes);
    }
    for (std::uint32_t strip = 0; strip < plan.strips; ++strip)
    {
        block.Add32(strip + 1 == plan.strips ? lastBytes : stripBytes);
    }
    return block;
}

// Row `y` of the image in the layout of the file; `row` is room for it.
void WriteRow(const Image& image, int y, const PixelLayout& layout, std::vector<std::byte>& row,
              ByteWriter& target)
{
    PackRow(layout, image.pixels.data() + static_cast<std::size_t>(y) * image.RowBytes(),
            image.width, image.type, row.data());
    target.Write(row.data(), row.size());
}

} // namespace

void WriteFloatTiff(const Image& image, ByteWriter& target, const std::string& name, bool isLinear)
{
    const TiffPlan plan = PlanTiff(image, name);
    TiffHeader(image, plan, isLinear ? std::string_view() : kDisplayEncodedNote).WriteTo(target);
    const PixelLayout layout{.sample = FileSample::Float32,
                             .channels = static_cast<int>(plan.channels),
                             .red = 0,
                             .green = 1,
                             .blue = 2,
                             .alpha = image.hasAlpha ? 3 : -1};
    std::vector<std::byte> row(plan.rowBytes);
    for (int y = 0; y < image.height; ++y)
    {
        WriteRow(image, y, layout, row, target);
    }
}

void WriteAlphaBmp(const Image& image, ByteWriter& target, const std::string& name)
{
    constexpr std::uint32_t kFileHeaderBytes = 14;
    constexpr std::uint32_t kInfoHeaderBytes = 108;    // BITMAPV4HEADER
    constexpr std::uint32_t kBitFields = 3;            // BI_BITFIELDS
    constexpr std::uint32_t kStandardRgb = 0x73524742; // LCS_sRGB
    constexpr std::uint32_t kRowsOfEndpointsAndGamma = 12;
    const std::uint64_t pixelBytes = std::uint64_t{4} * static_cast<std::uint64_t>(image.width) *
                                     static_cast<std::uint64_t>(image.height);
    const std::uint64_t fileBytes = kFileHeaderBytes + kInfoHeaderBytes + pixelBytes;
    CheckFileSize(fileBytes, "BMP", name);

    LittleEndianBlock header;
    header.Add16(0x4D42); // "BM"
    header.Add32(Narrow(fileBytes));
    header.Add32(0);
    header.Add32(kFileHeaderBytes + kInfoHeaderBytes);
    header.Add32(kInfoHeaderBytes);
    header.Add32(static_cast<std::uint32_t>(image.width));
    header.Add32(static_cast<std::uint32_t>(image.height)); // positive: bottom-up
    header.Add16(1);
    header.Add16(32);
    header.Add32(kBitFields);
    header.Add32(Narrow(pixelBytes));
    header.Add32(0); // no resolution
    header.Add32(0);
    header.Add32(0); // no palette
    header.Add32(0);
    for (const std::uint32_t mask : {0x00FF0000U, 0x0000FF00U, 0x000000FFU, 0xFF000000U})
    {
        header.Add32(mask);
    }
    header.Add32(kStandardRgb);
    for (std::uint32_t i = 0; i < kRowsOfEndpointsAndGamma; ++i)
    {
        header.Add32(0);
    }
    header.WriteTo(target);

    std::vector<std::byte> row(4 * static_cast<std::size_t>(image.width));
    for (int y = image.height - 1; y >= 0; --y)
    {
        WriteRow(image, y, PixelLayout{}, row, target);
    }
}
