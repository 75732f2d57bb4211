#include "tools/glazelhost/media/picture_facts.h"

#include "tools/glazelhost/media/file_kind.h"
#include "tools/glazelhost/media/picture_blocks.h"
#include "tools/glazelhost/media/picture_tags.h"
#include "tools/glazelhost/media/tiff_directory.h"
#include "tools/glazelhost/media/zlib_block.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string_view>

namespace GlazelHost
{

namespace
{

using namespace std::string_view_literals;

constexpr double kMetresPerInch = 0.0254;
constexpr double kPngUnit = 100000.0; // of gamma and chromaticities

// A number without a unit says something only where pixels are not square.
void SetResolution(PictureFacts& facts, double across, double down, LengthUnit unit)
{
    constexpr double kMost = 400000.0;
    const auto makesSense = [](double number) { return number > 0.0 && number < kMost; };
    if (makesSense(across) && makesSense(down) && (unit != LengthUnit::None || across != down))
    {
        facts.resolution = {across, down, unit};
    }
}

// Whole numbers for a metre stand for whole numbers for an inch or a centimetre where they can.
void SetResolutionByMetre(PictureFacts& facts, std::uint32_t across, std::uint32_t down)
{
    const auto inches = [](std::uint32_t number) { return std::round(number * kMetresPerInch); };
    const auto isOfInch = [&](std::uint32_t number) {
        return std::round(inches(number) / kMetresPerInch) == number;
    };
    if (across % 100 == 0 && down % 100 == 0 && !(isOfInch(across) && isOfInch(down)))
    {
        SetResolution(facts, across / 100.0, down / 100.0, LengthUnit::Centimetre);
    }
    else if (isOfInch(across) && isOfInch(down))
    {
        SetResolution(facts, inches(across), inches(down), LengthUnit::Inch);
    }
    else
    {
        SetResolution(facts, across * kMetresPerInch, down * kMetresPerInch, LengthUnit::Inch);
    }
}

void SetProfile(PictureFacts& facts, Bytes profile)
{
    constexpr std::size_t kHeader = 128;
    constexpr std::size_t kColourSpace = 16;
    if (profile.size() < kHeader)
    {
        facts.unusable.emplace_back("its colour profile, which is damaged");
        return;
    }
    if (BigEndianAt(profile, kColourSpace, 4) == BlockName("RGB "))
    {
        facts.profile.assign(profile.begin(), profile.end());
        return;
    }
    std::string space;
    for (const std::byte letter : profile.subspan(kColourSpace, 4))
    {
        const auto code = std::to_integer<char>(letter);
        space += code > ' ' && code <= '~' ? std::string(1, code) : std::string();
    }
    facts.unusable.push_back("its colour profile, which is of " +
                             (space.empty() ? "nothing known" : space) + " and not of RGB");
}

// The colours of what cameras call Adobe RGB, which EXIF states by a number alone.
void SetAdobeRgb(PictureFacts& facts)
{
    facts.gamma = facts.gamma.value_or(563.0 / 256.0);
    facts.chromaticities = facts.chromaticities.value_or(
        std::array{0.3127, 0.3290, 0.64, 0.33, 0.21, 0.71, 0.15, 0.06});
}

void ReadColourSpace(PictureFacts& facts, const TiffDirectory& directory)
{
    const auto exif = directory.Below(kTagExif);
    if (!exif)
    {
        return;
    }
    if (const auto gamma = exif->Fraction(kTagGamma); gamma && *gamma > 0.0 && !facts.gamma)
    {
        facts.gamma = *gamma;
    }
    const auto space = exif->Number(kTagColourSpace);
    const auto otherFiles = exif->Below(kTagInteroperability);
    if (space == kColourSpaceSrgb)
    {
        facts.srgbIntent = facts.srgbIntent.value_or(std::uint8_t{0});
    }
    else if (space == kColourSpaceAdobe ||
             (otherFiles && BeginsWith(otherFiles->Bytes(kTagInteroperabilityIndex), "R03"sv)))
    {
        SetAdobeRgb(facts);
    }
}

void ReadChromaticities(PictureFacts& facts, const TiffDirectory& directory)
{
    std::array<double, 8> numbers{};
    for (std::size_t i = 0; i < numbers.size(); ++i)
    {
        const auto number = i < 2 ? directory.Fraction(kTagWhitePoint, i)
                                  : directory.Fraction(kTagPrimaries, i - 2);
        if (!number)
        {
            return;
        }
        numbers[i] = *number;
    }
    facts.chromaticities = numbers;
}

// What a TIFF says, or the EXIF block of another file. What the file itself said already stands.
void ReadDirectory(PictureFacts& facts, Bytes bytes)
{
    const auto directory = TiffDirectory::Read(bytes);
    if (!directory)
    {
        return;
    }
    const auto across = directory->Fraction(kTagAcross);
    const auto down = directory->Fraction(kTagDown);
    if (across && down && !facts.resolution)
    {
        const std::uint32_t unit = directory->Number(kTagUnit).value_or(kUnitInch);
        SetResolution(facts, *across, *down,
                      unit == kUnitInch         ? LengthUnit::Inch
                      : unit == kUnitCentimetre ? LengthUnit::Centimetre
                                                : LengthUnit::None);
    }
    if (!facts.chromaticities)
    {
        ReadChromaticities(facts, *directory);
    }
    ReadColourSpace(facts, *directory);
    if (const Bytes profile = directory->Bytes(kTagProfile); !profile.empty())
    {
        SetProfile(facts, profile);
    }
    if (!directory->Bytes(kTagTransferFunction).empty())
    {
        facts.unusable.emplace_back("its transfer function");
    }
}

void ReadPngProfile(PictureFacts& facts, Bytes contents)
{
    const auto nameEnd = std::ranges::find(contents, std::byte{0});
    const auto packed = static_cast<std::size_t>(nameEnd - contents.begin()) + 2;
    const auto profile = packed <= contents.size() ? Unpacked(contents.subspan(packed))
                                                   : std::optional<std::vector<std::byte>>();
    SetProfile(facts, profile ? Bytes(*profile) : Bytes());
}

void ReadPngChunk(PictureFacts& facts, const PictureBlock& chunk)
{
    const Bytes bytes = chunk.contents;
    if (chunk.name == BlockName("iCCP"))
    {
        ReadPngProfile(facts, bytes);
    }
    else if (chunk.name == BlockName("sRGB") && !bytes.empty())
    {
        facts.srgbIntent = std::to_integer<std::uint8_t>(bytes[0]);
    }
    else if (chunk.name == BlockName("gAMA") && BigEndianAt(bytes, 0, 4) > 0)
    {
        facts.gamma = kPngUnit / BigEndianAt(bytes, 0, 4);
    }
    else if (chunk.name == BlockName("cHRM") && bytes.size() >= 32)
    {
        std::array<double, 8> numbers{};
        for (std::size_t i = 0; i < numbers.size(); ++i)
        {
            numbers[i] = BigEndianAt(bytes, 4 * i, 4) / kPngUnit;
        }
        facts.chromaticities = numbers;
    }
    else if (chunk.name == BlockName("cICP") && bytes.size() >= 4)
    {
        facts.codePoints = {bytes[0], bytes[1], bytes[2], bytes[3]};
    }
    else if (chunk.name == BlockName("pHYs") && bytes.size() >= 9)
    {
        const std::uint32_t across = BigEndianAt(bytes, 0, 4);
        const std::uint32_t down = BigEndianAt(bytes, 4, 4);
        if (bytes[8] == std::byte{1})
        {
            SetResolutionByMetre(facts, across, down);
        }
        else
        {
            SetResolution(facts, across, down, LengthUnit::None);
        }
    }
}

void ReadPng(PictureFacts& facts, Bytes file)
{
    for (auto chunk = PngChunkAt(file, kFirstPngChunk); chunk && chunk->name != BlockName("IDAT");
         chunk = PngChunkAt(file, chunk->end))
    {
        ReadPngChunk(facts, *chunk);
    }
}

void ReadJfif(PictureFacts& facts, Bytes contents)
{
    constexpr std::size_t kUnit = 7;
    constexpr std::array kUnits{LengthUnit::None, LengthUnit::Inch, LengthUnit::Centimetre};
    if (contents.size() >= kUnit + 5 && BeginsWith(contents, "JFIF\0"sv) &&
        std::to_integer<std::size_t>(contents[kUnit]) < kUnits.size())
    {
        SetResolution(facts, BigEndianAt(contents, kUnit + 1, 2),
                      BigEndianAt(contents, kUnit + 3, 2),
                      kUnits[std::to_integer<std::size_t>(contents[kUnit])]);
    }
}

// A profile stands in numbered pieces, each of which says how many there are.
void ReadJpeg(PictureFacts& facts, Bytes file)
{
    std::map<std::uint32_t, Bytes> pieces;
    std::uint32_t count = 0;
    for (auto segment = JpegSegmentAt(file, kFirstJpegSegment); segment;
         segment = JpegSegmentAt(file, segment->end))
    {
        const Bytes contents = segment->contents;
        if (segment->name == kJpegJfif)
        {
            ReadJfif(facts, contents);
        }
        else if (segment->name == kJpegProfile && BeginsWith(contents, kJpegProfileMark) &&
                 contents.size() > kJpegProfileMark.size() + 2)
        {
            count = BigEndianAt(contents, kJpegProfileMark.size() + 1, 1);
            pieces.emplace(BigEndianAt(contents, kJpegProfileMark.size(), 1),
                           contents.subspan(kJpegProfileMark.size() + 2));
        }
    }
    if (pieces.empty())
    {
        return;
    }
    std::vector<std::byte> profile;
    for (const auto& [number, piece] : pieces)
    {
        profile.insert(profile.end(), piece.begin(), piece.end());
    }
    const bool isWhole =
        pieces.size() == count && pieces.begin()->first == 1 && pieces.rbegin()->first == count;
    SetProfile(facts, isWhole ? Bytes(profile) : Bytes());
}

void ReadBmp(PictureFacts& facts, Bytes file)
{
    constexpr std::size_t kInfoHeader = 14;
    constexpr std::size_t kAcross = kInfoHeader + 24;
    constexpr std::size_t kOldHeaderBytes = 12;
    constexpr std::size_t kHeaderWithProfileBytes = 124;
    constexpr std::uint32_t kEmbedded = 0x4D424544; // 'MBED'
    const auto number = [&](std::size_t place) {
        const std::uint32_t reversed = BigEndianAt(file, place, 4);
        return reversed >> 24 | (reversed >> 8 & 0xFF00U) | (reversed << 8 & 0xFF0000U) |
               reversed << 24;
    };
    if (number(kInfoHeader) > kOldHeaderBytes)
    {
        SetResolutionByMetre(facts, number(kAcross), number(kAcross + 4));
    }
    if (number(kInfoHeader) == kHeaderWithProfileBytes && number(kInfoHeader + 56) == kEmbedded)
    {
        const std::size_t place = kInfoHeader + std::size_t{number(kInfoHeader + 112)};
        const std::size_t bytes = number(kInfoHeader + 116);
        SetProfile(facts, place <= file.size() && bytes <= file.size() - place
                              ? file.subspan(place, bytes)
                              : Bytes());
    }
}

} // namespace

PictureFacts FactsOf(Bytes file)
{
    PictureFacts facts;
    switch (KindFromContent(file).value_or(FileKind::Raw))
    {
    case FileKind::Png:
        ReadPng(facts, file);
        break;
    case FileKind::Jpeg:
        ReadJpeg(facts, file);
        break;
    case FileKind::Bmp:
        ReadBmp(facts, file);
        break;
    default:
        break;
    }
    ReadDirectory(facts, DirectoryBytes(file));
    return facts;
}

} // namespace GlazelHost
