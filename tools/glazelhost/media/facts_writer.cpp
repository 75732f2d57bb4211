#include "tools/glazelhost/media/facts_writer.h"

#include "support/crc32.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/picture_blocks.h"
#include "tools/glazelhost/media/picture_tags.h"
#include "tools/glazelhost/media/tiff_directory.h"
#include "tools/glazelhost/media/zlib_block.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

namespace GlazelHost
{

namespace
{

[[noreturn]] void RefuseFile(const std::string& name, FileKind kind)
{
    throw HostError(name,
                    "the system's encoder made a " + std::string(DescribeKind(kind)) +
                        " that cannot be completed",
                    "choose another kind of picture");
}

class BigEndianBlock
{
public:
    void Add8(std::uint32_t value) { Add(value, 1); }
    void Add16(std::uint32_t value) { Add(value, 2); }
    void Add32(std::uint32_t value) { Add(value, 4); }
    void AddBytes(Bytes bytes) { m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end()); }
    void AddText(std::string_view text) { AddBytes(std::as_bytes(std::span(text))); }
    const std::vector<std::byte>& All() const noexcept { return m_bytes; }

private:
    void Add(std::uint32_t value, int count)
    {
        for (int shift = 8 * (count - 1); shift >= 0; shift -= 8)
        {
            m_bytes.push_back(static_cast<std::byte>(value >> shift));
        }
    }
    std::vector<std::byte> m_bytes;
};

std::uint32_t Rounded(double number) noexcept
{
    return static_cast<std::uint32_t>(std::llround(number));
}

bool IsWhole(double number) noexcept
{
    return number == std::floor(number);
}

void AddPngChunk(BigEndianBlock& file, std::string_view name, const BigEndianBlock& contents)
{
    BigEndianBlock checked;
    checked.AddText(name);
    checked.AddBytes(contents.All());
    file.Add32(static_cast<std::uint32_t>(contents.All().size()));
    file.AddBytes(checked.All());
    file.Add32(Crc32(checked.All()));
}

void AddPngResolution(BigEndianBlock& file, const PictureFacts& facts)
{
    constexpr std::uint32_t kUnknown = 0;
    constexpr std::uint32_t kMetre = 1;
    BigEndianBlock contents;
    if (facts.resolution->unit == LengthUnit::None)
    {
        contents.Add32(Rounded(facts.resolution->across));
        contents.Add32(Rounded(facts.resolution->down));
        contents.Add8(kUnknown);
    }
    else
    {
        const PixelsPerMetre metre = ByMetre(facts);
        contents.Add32(metre.across);
        contents.Add32(metre.down);
        contents.Add8(kMetre);
    }
    AddPngChunk(file, "pHYs", contents);
}

void AddPngFacts(BigEndianBlock& file, const PictureFacts& facts)
{
    constexpr double kUnit = 100000.0;
    if (facts.codePoints)
    {
        BigEndianBlock contents;
        contents.AddBytes(*facts.codePoints);
        AddPngChunk(file, "cICP", contents);
    }
    if (!facts.profile.empty())
    {
        BigEndianBlock contents;
        contents.AddText("ICC profile");
        contents.Add16(0); // the name's end, and the one packing there is
        contents.AddBytes(Packed(facts.profile));
        AddPngChunk(file, "iCCP", contents);
    }
    else if (facts.srgbIntent) // a file must not have both
    {
        BigEndianBlock contents;
        contents.Add8(*facts.srgbIntent);
        AddPngChunk(file, "sRGB", contents);
    }
    if (facts.gamma)
    {
        BigEndianBlock contents;
        contents.Add32(Rounded(kUnit / *facts.gamma));
        AddPngChunk(file, "gAMA", contents);
    }
    if (facts.chromaticities)
    {
        BigEndianBlock contents;
        for (const double number : *facts.chromaticities)
        {
            contents.Add32(Rounded(number * kUnit));
        }
        AddPngChunk(file, "cHRM", contents);
    }
    if (facts.resolution)
    {
        AddPngResolution(file, facts);
    }
}

bool IsOfFacts(std::uint32_t chunk) noexcept
{
    constexpr std::array kChunks{BlockName("cICP"), BlockName("iCCP"), BlockName("sRGB"),
                                 BlockName("gAMA"), BlockName("cHRM"), BlockName("pHYs")};
    return std::ranges::find(kChunks, chunk) != kChunks.end();
}

// Behind the first chunk, before which nothing may stand; all must precede palette and pixels.
std::vector<std::byte> PngWithFacts(Bytes file, const PictureFacts& facts, const std::string& name)
{
    BigEndianBlock whole;
    std::size_t place = kFirstPngChunk;
    for (auto chunk = PngChunkAt(file, place); chunk; chunk = PngChunkAt(file, place))
    {
        const Bytes bytes = file.subspan(place, chunk->end - place);
        if (place == kFirstPngChunk)
        {
            whole.AddBytes(file.first(chunk->end));
            AddPngFacts(whole, facts);
        }
        else if (!IsOfFacts(chunk->name))
        {
            whole.AddBytes(bytes);
        }
        place = chunk->end;
    }
    if (whole.All().empty() || place != file.size())
    {
        RefuseFile(name, FileKind::Png);
    }
    return whole.All();
}

void AddJpegSegment(BigEndianBlock& file, std::uint32_t marker, Bytes contents)
{
    file.Add8(0xFF);
    file.Add8(marker);
    file.Add16(static_cast<std::uint32_t>(contents.size() + 2));
    file.AddBytes(contents);
}

// JFIF counts in whole numbers of 16 bits.
bool FitsJfif(const Resolution& resolution) noexcept
{
    constexpr double kMost = 65535.0;
    return IsWhole(resolution.across) && IsWhole(resolution.down) && resolution.across <= kMost &&
           resolution.down <= kMost;
}

void AddJfif(BigEndianBlock& file, const PictureFacts& facts)
{
    constexpr Resolution kNothing{1.0, 1.0, LengthUnit::None};
    const Resolution stated =
        facts.resolution && FitsJfif(*facts.resolution) ? *facts.resolution : kNothing;
    BigEndianBlock contents;
    contents.AddText(std::string_view("JFIF\0\1\1", 7)); // version 1.1
    contents.Add8(static_cast<std::uint32_t>(stated.unit));
    contents.Add16(Rounded(stated.across));
    contents.Add16(Rounded(stated.down));
    contents.Add16(0); // no small picture
    AddJpegSegment(file, kJpegJfif, contents.All());
}

// What the JFIF and profile segments cannot say.
bool NeedsExif(const PictureFacts& facts) noexcept
{
    return facts.srgbIntent || facts.gamma || facts.chromaticities ||
           (facts.resolution && !FitsJfif(*facts.resolution));
}

void AddExif(BigEndianBlock& file, const PictureFacts& facts)
{
    PictureFacts ofExif = facts;
    ofExif.profile.clear(); // has segments of its own
    TiffFields fields;
    SetFacts(fields, ofExif);
    LittleEndianBlock directory;
    AddTiffHeader(directory, kTiffHeaderBytes);
    fields.AddTo(directory, kTiffHeaderBytes);
    BigEndianBlock contents;
    contents.AddText(kJpegExifMark);
    contents.AddBytes(directory.Bytes());
    AddJpegSegment(file, kJpegExif, contents.All());
}

void AddJpegProfile(BigEndianBlock& file, Bytes profile)
{
    const std::size_t largest = 65533 - kJpegProfileMark.size() - 2;
    const std::size_t count = (profile.size() + largest - 1) / largest;
    for (std::size_t piece = 0; piece < count; ++piece)
    {
        BigEndianBlock contents;
        contents.AddText(kJpegProfileMark);
        contents.Add8(static_cast<std::uint32_t>(piece + 1));
        contents.Add8(static_cast<std::uint32_t>(count));
        contents.AddBytes(
            profile.subspan(piece * largest, std::min(largest, profile.size() - piece * largest)));
        AddJpegSegment(file, kJpegProfile, contents.All());
    }
}

// So many pieces a profile of a JPEG may have, by their numbers of 8 bits.
bool FitsJpeg(Bytes profile) noexcept
{
    return profile.size() <= 255 * (65533 - kJpegProfileMark.size() - 2);
}

// In place of the first segment, which is JFIF's.
std::vector<std::byte> JpegWithFacts(Bytes file, const PictureFacts& facts, const std::string& name)
{
    const auto first = JpegSegmentAt(file, kFirstJpegSegment);
    if (!first || first->name != kJpegJfif)
    {
        RefuseFile(name, FileKind::Jpeg);
    }
    BigEndianBlock whole;
    whole.AddBytes(file.first(kFirstJpegSegment));
    AddJfif(whole, facts);
    if (NeedsExif(facts))
    {
        AddExif(whole, facts);
    }
    if (FitsJpeg(facts.profile))
    {
        AddJpegProfile(whole, facts.profile);
    }
    whole.AddBytes(file.subspan(first->end));
    return whole.All();
}

// A new directory at the end takes the place of the old one, whose values it repeats.
std::vector<std::byte> TiffWithFacts(std::vector<std::byte> file, const PictureFacts& facts,
                                     const std::string& name)
{
    constexpr std::size_t kPlaceOfDirectory = 4;
    const auto directory = TiffDirectory::Read(file);
    if (!directory || file[0] != std::byte{'I'})
    {
        RefuseFile(name, FileKind::Tiff);
    }
    TiffFields fields;
    for (std::size_t index = 0; index < directory->Count(); ++index)
    {
        const TiffValues values = directory->At(index);
        fields.SetBytes(values.tag, values.type, values.bytes);
    }
    SetFacts(fields, facts);
    file.resize((file.size() + 1) / 2 * 2);
    if (file.size() + fields.Size() > std::numeric_limits<std::uint32_t>::max())
    {
        throw HostError(name, "a TIFF file cannot hold more than 4 GB",
                        "write a smaller picture or fewer bits");
    }
    const auto place = static_cast<std::uint32_t>(file.size());
    LittleEndianBlock added;
    fields.AddTo(added, place);
    file.insert(file.end(), added.Bytes().begin(), added.Bytes().end());
    LittleEndianBlock pointer;
    pointer.Add32(place);
    std::ranges::copy(pointer.Bytes(), file.begin() + kPlaceOfDirectory);
    return file;
}

std::vector<std::byte> BmpWithFacts(std::vector<std::byte> file, const PictureFacts& facts,
                                    const std::string& name)
{
    constexpr std::size_t kPlaceOfResolution = 38;
    const PixelsPerMetre metre = ByMetre(facts);
    LittleEndianBlock numbers;
    numbers.Add32(metre.across);
    numbers.Add32(metre.down);
    if (file.size() < kPlaceOfResolution + numbers.Size())
    {
        RefuseFile(name, FileKind::Bmp);
    }
    std::ranges::copy(numbers.Bytes(), file.begin() + kPlaceOfResolution);
    return file;
}

} // namespace

std::vector<std::byte> WithFacts(FileKind kind, std::vector<std::byte> file,
                                 const PictureFacts& facts, const std::string& name)
{
    switch (kind)
    {
    case FileKind::Png:
        return PngWithFacts(file, facts, name);
    case FileKind::Jpeg:
        return JpegWithFacts(file, facts, name);
    case FileKind::Tiff:
        return TiffWithFacts(std::move(file), facts, name);
    default:
        return BmpWithFacts(std::move(file), facts, name);
    }
}

void SetFacts(TiffFields& fields, const PictureFacts& facts)
{
    if (facts.resolution)
    {
        const std::uint32_t unit = facts.resolution->unit == LengthUnit::Inch ? kUnitInch
                                   : facts.resolution->unit == LengthUnit::Centimetre
                                       ? kUnitCentimetre
                                       : kUnitNone;
        fields.SetFractions(kTagAcross, {&facts.resolution->across, 1});
        fields.SetFractions(kTagDown, {&facts.resolution->down, 1});
        fields.SetShort(kTagUnit, unit);
    }
    if (facts.chromaticities)
    {
        const std::span numbers(*facts.chromaticities);
        fields.SetFractions(kTagWhitePoint, numbers.first(2));
        fields.SetFractions(kTagPrimaries, numbers.subspan(2));
    }
    if (!facts.profile.empty())
    {
        fields.SetBytes(kTagProfile, TiffFields::kAnything, facts.profile);
    }
    if (facts.srgbIntent || facts.gamma)
    {
        constexpr std::string_view kVersion = "0231";
        TiffFields exif;
        exif.SetBytes(kTagExifVersion, TiffFields::kAnything, std::as_bytes(std::span(kVersion)));
        exif.SetShort(kTagColourSpace, facts.srgbIntent ? kColourSpaceSrgb : kColourSpaceOther);
        if (facts.gamma)
        {
            exif.SetFractions(kTagGamma, {&*facts.gamma, 1});
        }
        fields.SetBelow(kTagExif, std::move(exif));
    }
}

PixelsPerMetre ByMetre(const PictureFacts& facts)
{
    if (!facts.resolution || facts.resolution->unit == LengthUnit::None)
    {
        return {};
    }
    constexpr double kInchesPerMetre = 1.0 / 0.0254;
    constexpr double kCentimetresPerMetre = 100.0;
    const double units =
        facts.resolution->unit == LengthUnit::Inch ? kInchesPerMetre : kCentimetresPerMetre;
    return {Rounded(facts.resolution->across * units), Rounded(facts.resolution->down * units)};
}

std::vector<std::string> LeftOut(FileKind kind, const PictureFacts& facts)
{
    const std::string holder = ", which a " + std::string(DescribeKind(kind)) + " does not hold";
    std::vector<std::string> clauses = facts.unusable;
    const auto add = [&](bool isThere, const std::string& what) {
        if (isThere)
        {
            clauses.push_back(what + holder);
        }
    };
    const bool isBmp = kind == FileKind::Bmp;
    add(!facts.profile.empty() && (isBmp || (kind == FileKind::Jpeg && !FitsJpeg(facts.profile))),
        "its colour profile");
    // A BMP without a statement is sRGB.
    add(isBmp && !facts.srgbIntent && (facts.gamma || facts.chromaticities),
        "its gamma and chromaticities");
    add(facts.codePoints && kind != FileKind::Png, "its cICP colour statement");
    add(isBmp && facts.resolution && facts.resolution->unit == LengthUnit::None,
        "the shape of its pixels");
    return clauses;
}

} // namespace GlazelHost
