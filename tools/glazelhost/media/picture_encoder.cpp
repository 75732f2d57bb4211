#include "tools/glazelhost/media/picture_codec.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/facts_writer.h"
#include "tools/glazelhost/media/jpeg_writer.h"
#include "tools/glazelhost/media/memory_stream.h"
#include "tools/glazelhost/media/plain_pictures.h"
#include "tools/glazelhost/windows_text.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace GlazelHost
{

namespace
{

// What a file of a kind, depth and alpha is made of.
struct EncodedFormat
{
    const WICPixelFormatGUID* format;
    PixelLayout layout;
};

// clang-format off
const EncodedFormat kBgr8   {&GUID_WICPixelFormat24bppBGR,  {FileSample::Bits8,  3, 2, 1, 0, -1, false}};
const EncodedFormat kBgra8  {&GUID_WICPixelFormat32bppBGRA, {FileSample::Bits8,  4, 2, 1, 0,  3, false}};
const EncodedFormat kRgb16  {&GUID_WICPixelFormat48bppRGB,  {FileSample::Bits16, 3, 0, 1, 2, -1, false}};
const EncodedFormat kRgba16 {&GUID_WICPixelFormat64bppRGBA, {FileSample::Bits16, 4, 0, 1, 2,  3, false}};
// clang-format on

const EncodedFormat& FormatFor(const Image& image, const PictureFormat& format) noexcept
{
    if (format.bits == 8)
    {
        return image.hasAlpha ? kBgra8 : kBgr8;
    }
    return image.hasAlpha ? kRgba16 : kRgb16;
}

const GUID& ContainerOf(FileKind kind) noexcept
{
    switch (kind)
    {
    case FileKind::Tiff:
        return GUID_ContainerFormatTiff;
    case FileKind::Bmp:
        return GUID_ContainerFormatBmp;
    default:
        return GUID_ContainerFormatPng;
    }
}

class Encoder
{
public:
    explicit Encoder(std::string name) : m_name(std::move(name))
    {
        Check(::CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                 IID_IWICImagingFactory, reinterpret_cast<void**>(&m_factory)),
              "the system's picture codecs do not start");
    }

    // The bytes of the file, owned by the stream. `swapWords`: see WordsAreSwapped.
    CComPtr<CMemoryStream> Encode(const Image& image, const PictureFormat& format, bool swapWords)
    {
        CComPtr<CMemoryStream> stream = StreamOf();
        CComPtr<IWICBitmapEncoder> encoder;
        Check(m_factory->CreateEncoder(ContainerOf(format.kind), nullptr, &encoder),
              "the system has no encoder for this kind of picture");
        Check(encoder->Initialize(stream, WICBitmapEncoderNoCache), "encoding failed");
        CComPtr<IWICBitmapFrameEncode> frame;
        Check(encoder->CreateNewFrame(&frame, nullptr), "encoding failed");
        Check(frame->Initialize(nullptr), "encoding failed");
        Check(frame->SetSize(static_cast<UINT>(image.width), static_cast<UINT>(image.height)),
              "encoding failed");
        const EncodedFormat& encoded = FormatFor(image, format);
        WICPixelFormatGUID accepted = *encoded.format;
        Check(frame->SetPixelFormat(&accepted), "encoding failed");
        if (accepted != *encoded.format)
        {
            throw HostError(m_name, "the system's encoder does not take these pixels",
                            "choose other bits, or another kind of picture");
        }
        WriteRows(image, encoded.layout, swapWords, *frame);
        Check(frame->Commit(), "encoding failed");
        Check(encoder->Commit(), "encoding failed");
        return stream;
    }

private:
    void Check(HRESULT result, const char* what) const
    {
        if (FAILED(result))
        {
            throw HostError(m_name, std::string(what) + ": " + ResultText(result),
                            "choose another kind of picture");
        }
    }

    void WriteRows(const Image& image, const PixelLayout& layout, bool swapWords,
                   IWICBitmapFrameEncode& frame) const
    {
        constexpr std::size_t kEncodedBandBytes = std::size_t{1} << 24;
        const std::size_t rowBytes = static_cast<std::size_t>(image.width) * layout.PixelBytes();
        const int bandRows = static_cast<int>(std::clamp<std::size_t>(
            kEncodedBandBytes / rowBytes, 1, static_cast<std::size_t>(image.height)));
        std::vector<std::byte> band(rowBytes * static_cast<std::size_t>(bandRows));
        for (int top = 0; top < image.height; top += bandRows)
        {
            const int rows = std::min(bandRows, image.height - top);
            for (int row = 0; row < rows; ++row)
            {
                PackRow(layout,
                        image.pixels.data() +
                            image.RowBytes() * static_cast<std::size_t>(top + row),
                        image.width, image.type,
                        band.data() + rowBytes * static_cast<std::size_t>(row));
            }
            const std::size_t bytes = rowBytes * static_cast<std::size_t>(rows);
            if (swapWords)
            {
                SwapWords({band.data(), bytes});
            }
            Check(frame.WritePixels(static_cast<UINT>(rows), static_cast<UINT>(rowBytes),
                                    static_cast<UINT>(bytes), reinterpret_cast<BYTE*>(band.data())),
                  "encoding failed");
        }
    }

    std::string m_name;
    CComPtr<IWICImagingFactory> m_factory;
};

// True when the system's PNG encoder takes 16-bit channels in the file's byte order instead of this
// machine's, as some versions of Wine do: seen by writing one pixel and reading it back.
bool WordsAreSwapped()
{
    static const bool swapped = [] {
        constexpr std::uint16_t kDark = 0x0001; // swapped it would be nearly black no more
        Image pixel;
        Reshape(pixel, 1, 1, SampleType::Float, false);
        const float dark[] = {FloatOf(kDark), FloatOf(kDark), FloatOf(kDark), 1.0F};
        std::memcpy(pixel.pixels.data(), dark, sizeof dark);
        const auto stream = Encoder("PNG").Encode(pixel, {FileKind::Png, 16, 95}, false);
        PictureDecoder(stream->Bytes(), "PNG").Decode(pixel, SampleType::Float);
        float blue = 0.0F;
        std::memcpy(&blue, pixel.pixels.data(), sizeof blue);
        return WordOf(blue) != kDark;
    }();
    return swapped;
}

} // namespace

void EncodePicture(const Image& image, const PictureFormat& format, ByteWriter& target,
                   const std::string& name)
{
    if (format.kind == FileKind::Tiff && format.bits == 32)
    {
        WriteFloatTiff(image, target, name, format.isLinear);
        return;
    }
    if (format.kind == FileKind::Bmp && image.hasAlpha)
    {
        WriteAlphaBmp(image, target, name);
        return;
    }
    std::vector<std::byte> file;
    if (format.kind == FileKind::Jpeg)
    {
        file = JpegOf(image, format.quality, name);
    }
    else
    {
        const bool swapWords =
            format.kind == FileKind::Png && format.bits == 16 && WordsAreSwapped();
        file = Encoder(name).Encode(image, format, swapWords)->TakeBytes();
    }
    if (image.facts)
    {
        file = WithFacts(format.kind, std::move(file), *image.facts, name);
    }
    target.Write(file.data(), file.size());
}

} // namespace GlazelHost
