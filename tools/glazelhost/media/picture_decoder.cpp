#include "tools/glazelhost/media/picture_codec.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/memory_stream.h"
#include "tools/glazelhost/media/picture_check.h"
#include "tools/glazelhost/media/picture_light.h"
#include "tools/glazelhost/media/picture_size.h"
#include "tools/glazelhost/media/tiff_directory.h"
#include "tools/glazelhost/windows_text.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <span>
#include <utility>

namespace GlazelHost
{

namespace
{

struct KnownFormat
{
    const WICPixelFormatGUID* format;
    PixelLayout layout;
};

// Formats of the system that the toolchain's headers do not name.
constexpr GUID HalfFormat(BYTE last) noexcept
{
    return {0x6FDDC324, 0x4E03, 0x4BFE, {0xB1, 0x85, 0x3D, 0x77, 0x76, 0x8D, 0xC9, last}};
}
constexpr GUID kGrayHalf = HalfFormat(0x3E); // 16 bits a pixel
constexpr GUID kRgbHalf = HalfFormat(0x3B);  // 48
constexpr GUID kRgbxHalf = HalfFormat(0x42); // 64

// Channels: count, then the places of red, green, blue, alpha. The byte order names of the formats
// count from the lowest address.
// clang-format off
const KnownFormat kKnownFormats[] = {
    {&GUID_WICPixelFormat8bppGray,          {FileSample::Bits8,   1, 0, 0, 0, -1, false}},
    {&GUID_WICPixelFormat24bppBGR,          {FileSample::Bits8,   3, 2, 1, 0, -1, false}},
    {&GUID_WICPixelFormat24bppRGB,          {FileSample::Bits8,   3, 0, 1, 2, -1, false}},
    {&GUID_WICPixelFormat32bppBGR,          {FileSample::Bits8,   4, 2, 1, 0, -1, false}},
    {&GUID_WICPixelFormat32bppBGRA,         {FileSample::Bits8,   4, 2, 1, 0,  3, false}},
    {&GUID_WICPixelFormat32bppPBGRA,        {FileSample::Bits8,   4, 2, 1, 0,  3, true}},
    {&GUID_WICPixelFormat32bppRGB,          {FileSample::Bits8,   4, 0, 1, 2, -1, false}},
    {&GUID_WICPixelFormat32bppRGBA,         {FileSample::Bits8,   4, 0, 1, 2,  3, false}},
    {&GUID_WICPixelFormat32bppPRGBA,        {FileSample::Bits8,   4, 0, 1, 2,  3, true}},
    {&GUID_WICPixelFormat16bppGray,         {FileSample::Bits16,  1, 0, 0, 0, -1, false}},
    {&GUID_WICPixelFormat48bppRGB,          {FileSample::Bits16,  3, 0, 1, 2, -1, false}},
    {&GUID_WICPixelFormat48bppBGR,          {FileSample::Bits16,  3, 2, 1, 0, -1, false}},
    {&GUID_WICPixelFormat64bppRGB,          {FileSample::Bits16,  4, 0, 1, 2, -1, false}},
    {&GUID_WICPixelFormat64bppRGBA,         {FileSample::Bits16,  4, 0, 1, 2,  3, false}},
    {&GUID_WICPixelFormat64bppBGRA,         {FileSample::Bits16,  4, 2, 1, 0,  3, false}},
    {&GUID_WICPixelFormat64bppPRGBA,        {FileSample::Bits16,  4, 0, 1, 2,  3, true}},
    {&GUID_WICPixelFormat64bppPBGRA,        {FileSample::Bits16,  4, 2, 1, 0,  3, true}},
    {&kGrayHalf,                             {FileSample::Float16, 1, 0, 0, 0, -1, false}},
    {&kRgbHalf,                              {FileSample::Float16, 3, 0, 1, 2, -1, false}},
    {&kRgbxHalf,                             {FileSample::Float16, 4, 0, 1, 2, -1, false}},
    {&GUID_WICPixelFormat64bppRGBAHalf,     {FileSample::Float16, 4, 0, 1, 2,  3, false}},
    {&GUID_WICPixelFormat32bppGrayFloat,    {FileSample::Float32, 1, 0, 0, 0, -1, false}},
    {&GUID_WICPixelFormat96bppRGBFloat,     {FileSample::Float32, 3, 0, 1, 2, -1, false}},
    {&GUID_WICPixelFormat128bppRGBFloat,    {FileSample::Float32, 4, 0, 1, 2, -1, false}},
    {&GUID_WICPixelFormat128bppRGBAFloat,   {FileSample::Float32, 4, 0, 1, 2,  3, false}},
    {&GUID_WICPixelFormat128bppPRGBAFloat,  {FileSample::Float32, 4, 0, 1, 2,  3, true}},
};
// clang-format on

// A frame is fetched in bands of about so many bytes: the whole of a large one does not fit the
// 32-bit sizes of the interface.
constexpr std::size_t kBandBytes = std::size_t{1} << 26;

// True when the system's TIFF decoder gives 16-bit channels of big-endian files in the file's byte
// order instead of this machine's, as some versions of Wine do: seen by reading one pixel.
bool BigEndianWordsAreSwapped(IWICImagingFactory& factory)
{
    static const bool swapped = [&factory] {
        constexpr std::uint16_t kCode = 0x1234;
        // clang-format off
        constexpr std::uint8_t kFile[] = {
            'M', 'M', 0, 42, 0, 0, 0, 10, 0x12, 0x34, // the directory's place, and the pixel
            0, 8,                                     // tags, each with type, count and value
            1, 0,  0, 3, 0, 0, 0, 1, 0, 1, 0, 0,      // width
            1, 1,  0, 3, 0, 0, 0, 1, 0, 1, 0, 0,      // rows
            1, 2,  0, 3, 0, 0, 0, 1, 0, 16, 0, 0,     // bits of a channel
            1, 3,  0, 3, 0, 0, 0, 1, 0, 1, 0, 0,      // not compressed
            1, 6,  0, 3, 0, 0, 0, 1, 0, 1, 0, 0,      // grey
            1, 17, 0, 3, 0, 0, 0, 1, 0, 8, 0, 0,      // the pixel's place
            1, 22, 0, 3, 0, 0, 0, 1, 0, 1, 0, 0,      // rows of a strip
            1, 23, 0, 3, 0, 0, 0, 1, 0, 2, 0, 0,      // bytes of the strip
            0, 0, 0, 0};
        // clang-format on
        const auto bytes = std::as_bytes(std::span(kFile));
        const CComPtr<CMemoryStream> stream = StreamOf(bytes);
        CComPtr<IWICBitmapDecoder> decoder;
        CComPtr<IWICBitmapFrameDecode> frame;
        std::uint16_t code = kCode;
        return SUCCEEDED(factory.CreateDecoderFromStream(
                   stream, nullptr, WICDecodeMetadataCacheOnDemand, &decoder)) &&
               SUCCEEDED(decoder->GetFrame(0, &frame)) &&
               SUCCEEDED(frame->CopyPixels(nullptr, sizeof code, sizeof code,
                                           reinterpret_cast<BYTE*>(&code))) &&
               code != kCode;
    }();
    return swapped;
}

std::shared_ptr<const PictureFacts> UprightFacts(PictureFacts facts, int orientation)
{
    if (facts.resolution && SwapsSides(orientation))
    {
        std::swap(facts.resolution->across, facts.resolution->down);
    }
    return facts == PictureFacts() ? nullptr
                                   : std::make_shared<const PictureFacts>(std::move(facts));
}

} // namespace

void PictureDecoder::Check(HRESULT result, const char* what) const
{
    if (FAILED(result))
    {
        throw HostError(m_name, std::string(what) + ": " + ResultText(result),
                        "the file is damaged or of a kind that is not supported; make it again "
                        "as PNG, JPEG, TIFF or BMP");
    }
}

PictureDecoder::PictureDecoder(std::vector<std::byte> file, std::string name)
    : m_name(std::move(name))
{
    if (const auto stated = SizeFromHeader(file)) // before a codec takes memory for it
    {
        CheckSize(m_name, stated->width, stated->height);
    }
    CheckPixelKind(file, m_name);
    Check(::CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                             IID_IWICImagingFactory, reinterpret_cast<void**>(&m_factory)),
          "the system's picture codecs do not start");
    const CComPtr<CMemoryStream> stream = StreamOf(std::move(file));
    CComPtr<IWICBitmapDecoder> decoder;
    Check(m_factory->CreateDecoderFromStream(stream, nullptr, WICDecodeMetadataCacheOnDemand,
                                             &decoder),
          "this is not a picture that can be read");
    Check(decoder->GetFrameCount(&m_pages), "its pages cannot be counted");
    Check(decoder->GetFrame(0, &m_frame), "it holds no picture that can be read");
    UINT width = 0;
    UINT height = 0;
    Check(m_frame->GetSize(&width, &height), "its size cannot be read");
    CheckSize(m_name, width, height);
    m_width = static_cast<int>(width);
    m_height = static_cast<int>(height);
    FindLayout();
    FindWords(stream->Bytes());
    m_orientation = OrientationOf(stream->Bytes());
    m_facts = UprightFacts(FactsOf(stream->Bytes()), m_orientation);
    m_light = LightOf(stream->Bytes(), m_layout.sample == FileSample::Float16 ||
                                           m_layout.sample == FileSample::Float32);
}

// Not every version of the codecs tells floats of 16 bits from whole numbers, or minds their order.
void PictureDecoder::FindWords(const std::vector<std::byte>& file)
{
    const auto directory = TiffDirectory::Read(file);
    if (!directory || m_layout.BitsPerChannel() != 16)
    {
        return;
    }
    if (directory->NumberKind() == TiffDirectory::kFloat)
    {
        m_layout.sample = FileSample::Float16;
    }
    m_swapsWords = directory->IsBigEndian() && BigEndianWordsAreSwapped(*m_factory);
}

std::string PictureDecoder::Description() const
{
    const bool isFloat =
        m_layout.sample == FileSample::Float16 || m_layout.sample == FileSample::Float32;
    std::string text =
        std::to_string(m_layout.BitsPerChannel()) + (isFloat ? "-bit float" : " bits");
    if (m_orientation != 1)
    {
        text += ", turned upright";
    }
    if (m_pages > 1)
    {
        text += ", page 1 of " + std::to_string(m_pages) + " (the others are left out)";
    }
    return text;
}

void PictureDecoder::FindLayout()
{
    WICPixelFormatGUID format{};
    Check(m_frame->GetPixelFormat(&format), "its pixel format cannot be read");
    const auto known = std::ranges::find_if(
        kKnownFormats, [&](const KnownFormat& row) { return *row.format == format; });
    if (known == std::end(kKnownFormats))
    {
        ConvertToBytes(format);
        return;
    }
    m_layout = known->layout;
    m_hasAlpha = m_layout.HasAlpha();
    m_source = m_frame;
}

void PictureDecoder::ConvertToBytes(const WICPixelFormatGUID& format)
{
    CComPtr<IWICComponentInfo> component;
    Check(m_factory->CreateComponentInfo(format, &component), "its pixel format is not known");
    CComPtr<IWICPixelFormatInfo2> facts;
    Check(component->QueryInterface(IID_IWICPixelFormatInfo2, reinterpret_cast<void**>(&facts)),
          "its pixel format is not known");
    UINT bits = 0;
    UINT channels = 0;
    BOOL transparent = FALSE;
    WICPixelFormatNumericRepresentation numbers = WICPixelFormatNumericRepresentationUnspecified;
    Check(facts->GetBitsPerPixel(&bits), "its pixel format is not known");
    Check(facts->GetChannelCount(&channels), "its pixel format is not known");
    Check(facts->SupportsTransparency(&transparent), "its pixel format is not known");
    Check(facts->GetNumericRepresentation(&numbers), "its pixel format is not known");
    const bool bytes = numbers == WICPixelFormatNumericRepresentationIndexed ||
                       (numbers == WICPixelFormatNumericRepresentationUnsignedInteger &&
                        bits <= 8 * std::max(channels, 1U));
    if (!bytes)
    {
        throw HostError(m_name, "its pixels of " + std::to_string(bits) + " bits are not supported",
                        "convert it to 8-bit, 16-bit or 32-bit float channels");
    }
    m_hasAlpha = transparent != FALSE;
    if (numbers == WICPixelFormatNumericRepresentationIndexed)
    {
        CComPtr<IWICPalette> palette;
        BOOL paletteAlpha = FALSE;
        Check(m_factory->CreatePalette(&palette), "its palette cannot be read");
        Check(m_frame->CopyPalette(palette), "its palette cannot be read");
        Check(palette->HasAlpha(&paletteAlpha), "its palette cannot be read");
        m_hasAlpha = paletteAlpha != FALSE;
    }
    CComPtr<IWICFormatConverter> converter;
    Check(m_factory->CreateFormatConverter(&converter), "its pixels cannot be converted");
    Check(converter->Initialize(m_frame, GUID_WICPixelFormat32bppBGRA, WICBitmapDitherTypeNone,
                                nullptr, 0.0, WICBitmapPaletteTypeCustom),
          "its pixels cannot be converted");
    m_layout = PixelLayout{};
    m_source = converter;
}

void PictureDecoder::Decode(Image& image, SampleType type)
{
    Reshape(image, m_width, m_height, type, m_hasAlpha);
    const std::size_t rowBytes = static_cast<std::size_t>(m_width) * m_layout.PixelBytes();
    const int bandRows = static_cast<int>(
        std::clamp<std::size_t>(kBandBytes / rowBytes, 1, static_cast<std::size_t>(m_height)));
    std::vector<std::byte> band(rowBytes * static_cast<std::size_t>(bandRows));
    for (int top = 0; top < m_height; top += bandRows)
    {
        const int rows = std::min(bandRows, m_height - top);
        const WICRect rect{0, top, m_width, rows};
        const std::size_t bytes = rowBytes * static_cast<std::size_t>(rows);
        Check(m_source->CopyPixels(&rect, static_cast<UINT>(rowBytes), static_cast<UINT>(bytes),
                                   reinterpret_cast<BYTE*>(band.data())),
              "its pixels cannot be read");
        if (m_swapsWords)
        {
            SwapWords({band.data(), bytes});
        }
        for (int row = 0; row < rows; ++row)
        {
            UnpackRow(m_layout, band.data() + rowBytes * static_cast<std::size_t>(row), m_width,
                      type,
                      image.pixels.data() + image.RowBytes() * static_cast<std::size_t>(top + row));
        }
    }
    MakeUpright(m_orientation, image);
    image.facts = m_facts;
}

} // namespace GlazelHost
