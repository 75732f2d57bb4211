#include "tools/glazelhost/media/plain_pictures.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/facts_writer.h"
#include "tools/glazelhost/media/picture_light.h"
#include "tools/glazelhost/media/pixel_convert.h"
#include "tools/glazelhost/media/tiff_fields.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>
#include <vector>

namespace GlazelHost
{

namespace
{

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

// Values of tags of TIFF 6.0.
constexpr std::uint32_t kTiffFloatFormat = 3;
constexpr std::uint32_t kTiffRgb = 2;
constexpr std::uint32_t kTiffStraightAlpha = 2;

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
    const std::uint64_t profileBytes = image.facts ? image.facts->profile.size() : 0;
    CheckFileSize(std::uint64_t{rowBytes} * rows + kHeaderRoom + profileBytes, "TIFF", name);
    const std::uint32_t rowsPerStrip = std::clamp(kStripBytes / rowBytes, 1U, rows);
    return {channels, rowBytes, rowsPerStrip, (rows + rowsPerStrip - 1) / rowsPerStrip};
}

// `pixels` is the place of the first strip.
TiffFields TiffTags(const Image& image, const TiffPlan& plan, bool isLinear, std::uint32_t pixels)
{
    const auto rows = static_cast<std::uint32_t>(image.height);
    const std::uint32_t stripBytes = plan.rowBytes * plan.rowsPerStrip;
    std::vector<std::uint32_t> offsets;
    std::vector<std::uint32_t> sizes;
    for (std::uint32_t strip = 0; strip < plan.strips; ++strip)
    {
        offsets.push_back(pixels + strip * stripBytes);
        sizes.push_back(std::min(stripBytes, plan.rowBytes * rows - strip * stripBytes));
    }
    TiffFields fields;
    fields.SetLong(256, static_cast<std::uint32_t>(image.width));
    fields.SetLong(257, rows);
    fields.SetShorts(258, std::vector<std::uint32_t>(plan.channels, 32));
    fields.SetShort(259, 1); // not compressed
    fields.SetShort(262, kTiffRgb);
    if (!isLinear)
    {
        const std::string_view note(kDisplayEncodedNote,
                                    sizeof kDisplayEncodedNote); // with its end
        fields.SetBytes(270, TiffFields::kText, std::as_bytes(std::span(note)));
    }
    fields.SetLongs(273, offsets);
    fields.SetShort(277, plan.channels);
    fields.SetLong(278, plan.rowsPerStrip);
    fields.SetLongs(279, sizes);
    fields.SetShort(284, 1); // channels of a pixel side by side
    if (image.hasAlpha)
    {
        fields.SetShort(338, kTiffStraightAlpha);
    }
    fields.SetShorts(339, std::vector<std::uint32_t>(plan.channels, kTiffFloatFormat));
    if (image.facts)
    {
        SetFacts(fields, *image.facts);
    }
    return fields;
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
    const std::uint32_t pixels =
        kTiffHeaderBytes + TiffTags(image, plan, isLinear, 0).Size(); // whatever the places are
    LittleEndianBlock header;
    AddTiffHeader(header, kTiffHeaderBytes);
    TiffTags(image, plan, isLinear, pixels).AddTo(header, kTiffHeaderBytes);
    target.Write(header.Bytes().data(), header.Size());
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

    const PixelsPerMetre metre = image.facts ? ByMetre(*image.facts) : PixelsPerMetre();
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
    header.Add32(metre.across); // 0: no resolution
    header.Add32(metre.down);
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
    target.Write(header.Bytes().data(), header.Size());

    std::vector<std::byte> row(4 * static_cast<std::size_t>(image.width));
    for (int y = image.height - 1; y >= 0; --y)
    {
        WriteRow(image, y, PixelLayout{}, row, target);
    }
}

} // namespace GlazelHost
