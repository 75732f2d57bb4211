#include "tools/glazelhost/media/picture_check.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/file_kind.h"
#include "tools/glazelhost/media/picture_blocks.h"
#include "tools/glazelhost/media/tiff_directory.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

namespace GlazelHost
{

namespace
{

// `what` stands behind "its", without a verb.
[[noreturn]] void Refuse(const std::string& name, const std::string& what,
                         const std::string& remedy)
{
    throw HostError(name, "its " + what + " not supported", remedy);
}

constexpr char kMakeRgb[] = "convert it to RGB by its colour profile, in a picture editor";
constexpr char kMakePlain[] =
    "write it again as PNG or as TIFF with LZW, Deflate or no compression";
constexpr char kMakeDepth[] = "convert it to 8-bit, 16-bit or 32-bit float channels";

void CheckJpeg(Bytes file, const std::string& name)
{
    constexpr std::uint32_t kFirstFrame = 0xC0;
    constexpr std::uint32_t kLastFrame = 0xCF;
    constexpr std::array<std::uint32_t, 3> kTables{0xC4, 0xC8, 0xCC}; // among the frames' numbers
    constexpr std::uint32_t kProgressive = 0xC2;
    constexpr std::uint32_t kFirstArithmetic = 0xC9;
    constexpr std::size_t kChannels = 5;
    for (auto segment = JpegSegmentAt(file, kFirstJpegSegment); segment;
         segment = JpegSegmentAt(file, segment->end))
    {
        const std::uint32_t marker = segment->name;
        if (marker < kFirstFrame || marker > kLastFrame ||
            std::ranges::find(kTables, marker) != kTables.end())
        {
            continue;
        }
        if (marker >= kFirstArithmetic)
        {
            Refuse(name, "arithmetic coding is", "write it again as baseline or progressive JPEG");
        }
        if (marker > kProgressive)
        {
            Refuse(name, "lossless or hierarchical coding is", "write it again as PNG");
        }
        if (const std::uint32_t bits = BigEndianAt(segment->contents, 0, 1); bits != 8)
        {
            Refuse(name, std::to_string(bits) + "-bit channels are",
                   "write it again as 16-bit PNG");
        }
        if (BigEndianAt(segment->contents, kChannels, 1) == 4)
        {
            Refuse(name, "colours are CMYK, which is", kMakeRgb);
        }
        return;
    }
}

struct Named
{
    std::uint32_t number;
    const char* name;
};

// How the numbers of a TIFF become colours.
constexpr std::uint16_t kChannelsTag = 277;
constexpr std::uint16_t kColoursTag = 262;
constexpr std::uint32_t kWhiteIsZero = 0;
constexpr std::uint32_t kGrey = 1;
constexpr std::uint32_t kPalette = 3;

void CheckColours(const TiffDirectory& directory, const std::string& name)
{
    constexpr std::uint32_t kCmyk = 5;
    constexpr Named kOthers[] = {{4, "a mask"},
                                 {6, "YCbCr"},
                                 {8, "CIE L*a*b*"},
                                 {9, "ICC L*a*b*"},
                                 {10, "ITU L*a*b*"},
                                 {32803, "a camera's raw mosaic"},
                                 {32844, "log luminance"},
                                 {32845, "log L*u*v*"},
                                 {34892, "a camera's raw data"}};
    const std::uint32_t colours = directory.Number(kColoursTag).value_or(kGrey);
    if (colours == kCmyk)
    {
        Refuse(name, "colours are CMYK or other inks, which are", kMakeRgb);
    }
    const auto* const other = std::ranges::find(kOthers, colours, &Named::number);
    if (other != std::end(kOthers))
    {
        Refuse(name, std::string("colours are ") + other->name + ", which is", "convert it to RGB");
    }
}

void CheckCompression(const TiffDirectory& directory, const std::string& name)
{
    constexpr std::uint16_t kCompressionTag = 259;
    constexpr Named kOthers[] = {
        {6, "JPEG (old style)"}, {7, "JPEG"},       {34712, "JPEG 2000"}, {34676, "SGI log"},
        {34677, "SGI log"},      {34887, "LERC"},   {34925, "LZMA"},      {50000, "Zstandard"},
        {50001, "WebP"},         {50002, "JPEG XL"}};
    const auto compression = directory.Number(kCompressionTag);
    const auto* const other =
        std::ranges::find_if(kOthers, [&](const Named& row) { return row.number == compression; });
    if (other != std::end(kOthers))
    {
        Refuse(name, std::string(other->name) + " compression within TIFF is", kMakePlain);
    }
}

// The codecs look at little more than how many bits the channels have, if at all.
void CheckNumbers(const TiffDirectory& directory, const std::string& name)
{
    const std::uint32_t kind = directory.NumberKind();
    const std::uint32_t bits = directory.BitsPerChannel();
    const std::uint32_t colours = directory.Number(kColoursTag).value_or(kGrey);
    const bool isFloat = kind == TiffDirectory::kFloat;
    const bool isPalette = colours == kPalette;
    const bool isWhole = bits == 1 || bits == 4 || bits == 8 || bits == (isPalette ? 2U : 16U);
    if (kind == TiffDirectory::kSigned || !(isFloat ? bits == 16 || bits == 32 : isWhole))
    {
        const char* const numbers = isFloat                          ? "floats are"
                                    : kind == TiffDirectory::kSigned ? "numbers with a sign are"
                                                                     : "whole numbers are";
        Refuse(name, std::to_string(bits) + "-bit " + numbers, kMakeDepth);
    }
    if (isFloat && colours == kWhiteIsZero)
    {
        Refuse(name, "floats of which 0 is white are", "write it again with 0 as black");
    }
    if (isFloat && bits == 32 && directory.IsBigEndian())
    {
        Refuse(name, "32-bit floats in big-endian order are",
               "write it again as a little-endian TIFF");
    }
    if (bits > 8 && directory.Number(kChannelsTag) == 2U)
    {
        Refuse(name, "grey with alpha of more than 8 bits is", "write it again as RGB with alpha");
    }
}

void CheckPlanes(const TiffDirectory& directory, const std::string& name)
{
    constexpr std::uint16_t kArrangementTag = 284;
    constexpr std::uint32_t kApart = 2;
    if (directory.Number(kArrangementTag) == kApart && directory.Number(kChannelsTag) > 1U)
    {
        Refuse(name, "channels are stored one after the other (planar), which is",
               "write it again with the channels of a pixel side by side");
    }
}

void CheckTiff(Bytes file, const std::string& name)
{
    constexpr std::byte kMagicOfBig{43};
    if (file[2] == kMagicOfBig || file[3] == kMagicOfBig)
    {
        Refuse(name, "64-bit file places (BigTIFF) are", "write it again as an ordinary TIFF");
    }
    const auto directory = TiffDirectory::Read(file);
    if (!directory)
    {
        return;
    }
    CheckCompression(*directory, name);
    CheckColours(*directory, name);
    CheckNumbers(*directory, name);
    CheckPlanes(*directory, name);
}

} // namespace

void CheckPixelKind(Bytes file, const std::string& name)
{
    const auto kind = KindFromContent(file);
    if (kind == FileKind::Jpeg)
    {
        CheckJpeg(file, name);
    }
    else if (kind == FileKind::Tiff)
    {
        CheckTiff(file, name);
    }
}

} // namespace GlazelHost
