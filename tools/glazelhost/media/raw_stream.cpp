#include "tools/glazelhost/media/raw_stream.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/pixel_convert.h"
#include "tools/glazelhost/media/plane_rows.h"

#include <cstdint>
#include <utility>

namespace GlazelHost
{

namespace
{

constexpr std::size_t kChannels = 4;

constexpr PixelLayout LayoutOf(StreamFormat format) noexcept
{
    return {.sample = RowOf(format).sample};
}

constexpr bool IsPlanar(StreamFormat format) noexcept
{
    return RowOf(format).planes != 0;
}

// What its planes are joined to: codes of YCbCr stand for floats outside 0 to 1, too.
constexpr PixelLayout JoinedLayout(StreamFormat format) noexcept
{
    return {.sample = RowOf(format).isYcbcr ? FileSample::Float32 : RowOf(format).sample};
}

// Whether an Image of this type has its samples so.
constexpr bool HasSameSamples(StreamFormat format, SampleType type) noexcept
{
    return JoinedLayout(format).sample ==
           (type == SampleType::Byte ? FileSample::Bits8 : FileSample::Float32);
}

// Whether it has its pixels so, too.
constexpr bool IsSame(StreamFormat format, SampleType type) noexcept
{
    return !IsPlanar(format) && HasSameSamples(format, type);
}

std::size_t FrameBytes(StreamFormat format, int width, int height) noexcept
{
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const std::size_t pixelBytes = LayoutOf(format).PixelBytes();
    return IsPlanar(format)
               ? pixelBytes / kChannels * static_cast<std::size_t>(RowOf(format).planes) * pixels
               : pixelBytes * pixels;
}

// The row that begins with pixel `first`, in planes of green, blue, red and perhaps alpha.
template <typename Sample, typename Byte>
PlaneRow<Sample> RowInPlanes(Byte* frame, int planes, std::size_t pixels,
                             std::size_t first) noexcept
{
    Sample* const green = reinterpret_cast<Sample*>(frame) + first;
    return {green + pixels, green, green + 2 * pixels,
            planes == static_cast<int>(kChannels) ? green + 3 * pixels : nullptr};
}

template <typename Sample, typename Byte>
YcbcrRow<Sample> YcbcrRowInPlanes(Byte* frame, std::size_t pixels, std::size_t first) noexcept
{
    Sample* const luma = reinterpret_cast<Sample*>(frame) + first;
    return {luma, luma + pixels, luma + 2 * pixels};
}

// Calls `operation` with a value of the type of the stream's samples, which are planes of RGB.
template <typename Operation>
void WithSample(StreamFormat format, Operation&& operation)
{
    if (RowOf(format).sample == FileSample::Bits8)
    {
        operation(std::uint8_t{});
    }
    else
    {
        operation(float{});
    }
}

// An Image out of a frame of a stream. The Image has its size and type; `row` is room that is used
// again from frame to frame, as in Encode.
void Decode(StreamFormat format, LumaWeights weights, const std::byte* frame, Image& image,
            std::vector<std::byte>& row)
{
    const PixelLayout layout = JoinedLayout(format);
    const auto width = static_cast<std::size_t>(image.width);
    const std::size_t pixels = width * static_cast<std::size_t>(image.height);
    const bool isSame = HasSameSamples(format, image.type);
    row.resize(IsPlanar(format) && !isSame ? width * layout.PixelBytes() : 0);
    for (std::size_t first = 0; first < pixels; first += width)
    {
        std::byte* const target = image.pixels.data() + first * image.PixelBytes();
        const std::byte* packed = IsPlanar(format) ? nullptr : frame + first * layout.PixelBytes();
        if (IsPlanar(format))
        {
            std::byte* const joined = isSame ? target : row.data();
            if (RowOf(format).isYcbcr)
            {
                JoinYcbcr(YcbcrRowInPlanes<const std::uint16_t>(frame, pixels, first), width,
                          weights, reinterpret_cast<float*>(joined));
            }
            else
            {
                WithSample(format, [&]<typename Sample>(Sample) {
                    JoinPlanes(
                        RowInPlanes<const Sample>(frame, RowOf(format).planes, pixels, first),
                        width, reinterpret_cast<Sample*>(joined));
                });
            }
            packed = joined;
        }
        if (packed != target)
        {
            UnpackRow(layout, packed, image.width, image.type, target);
        }
    }
}

// A frame of a stream out of an Image.
void Encode(StreamFormat format, LumaWeights weights, const Image& image, std::byte* frame,
            std::vector<std::byte>& row)
{
    const PixelLayout layout = JoinedLayout(format);
    const auto width = static_cast<std::size_t>(image.width);
    const std::size_t pixels = width * static_cast<std::size_t>(image.height);
    const bool isSame = HasSameSamples(format, image.type);
    row.resize(IsPlanar(format) && !isSame ? width * layout.PixelBytes() : 0);
    for (std::size_t first = 0; first < pixels; first += width)
    {
        const std::byte* source = image.pixels.data() + first * image.PixelBytes();
        if (!IsPlanar(format))
        {
            PackRow(layout, source, image.width, image.type, frame + first * layout.PixelBytes());
            continue;
        }
        if (!isSame)
        {
            PackRow(layout, source, image.width, image.type, row.data());
            source = row.data();
        }
        if (RowOf(format).isYcbcr)
        {
            SplitYcbcr(reinterpret_cast<const float*>(source), width, weights,
                       YcbcrRowInPlanes<std::uint16_t>(frame, pixels, first));
            continue;
        }
        WithSample(format, [&]<typename Sample>(Sample) {
            SplitPlanes(reinterpret_cast<const Sample*>(source), width,
                        RowInPlanes<Sample>(frame, RowOf(format).planes, pixels, first));
        });
    }
}

void CheckSameSize(const std::string& streamName, const Image& image, int width, int height)
{
    if (image.width != width || image.height != height)
    {
        const auto size = [](int columns, int rows) {
            return std::to_string(columns) + " x " + std::to_string(rows);
        };
        throw HostError(streamName,
                        "a frame of " + size(image.width, image.height) +
                            " does not fit into a stream of " + size(width, height),
                        "give frames of one size, or write a numbered sequence of pictures");
    }
}

} // namespace

RawSource::RawSource(std::unique_ptr<ByteReader> stream, std::string name, StreamFormat format,
                     const SourceOptions& options)
    : m_stream(std::move(stream)), m_name(std::move(name)), m_format(format),
      m_lumaWeights(options.lumaWeights), m_isOpaque(options.isOpaque || RowOf(format).planes == 3)
{
    if (options.width == 0 && options.height == 0)
    {
        throw HostError(m_name, "raw pixels do not say how large the picture is",
                        "give the size, for example --size 1920x1080", ExitCode::WrongUsage);
    }
    CheckSize(m_name, options.width, options.height);
    m_frameBytes = FrameBytes(format, options.width, options.height);
    m_info.width = options.width;
    m_info.height = options.height;
    m_info.framesPerSecond = options.framesPerSecond;
    m_info.pixelAspect = options.pixelAspect > 0.0 ? options.pixelAspect : 1.0;
    m_info.bitsPerChannel = LayoutOf(format).BitsPerChannel();
    if (options.isLinearLight)
    {
        m_info.light = {.isLinear = true, .why = "--input-light linear"};
    }
    else if (RowOf(format).sample == FileSample::Float32)
    {
        m_info.light.why = "without --input-light linear";
    }
    m_info.description = RowOf(format).description;
    if (options.path != kStandardStream)
    {
        m_info.files = {options.path};
    }
    if (const auto size = m_stream->Size(); size && *size % m_frameBytes == 0)
    {
        m_info.frameCount = static_cast<std::int64_t>(*size / m_frameBytes);
    }
}

bool RawSource::CheckWhole(std::uint64_t bytes)
{
    if (bytes == m_frameBytes)
    {
        return true;
    }
    m_stream.reset();
    if (bytes == 0)
    {
        return false;
    }
    throw HostError(FrameName(),
                    "the data ends in this frame: " + std::to_string(m_frameBytes - bytes) +
                        " of its " + std::to_string(m_frameBytes) + " bytes are missing",
                    "check the size that you gave, or make the file again");
}

bool RawSource::Read(Image& image, SampleType type)
{
    if (!m_stream)
    {
        return false;
    }
    ++m_frame;
    Reshape(image, m_info.width, m_info.height, type, !m_isOpaque);
    const bool isSame = IsSame(m_format, type);
    m_bytes.resize(isSame ? 0 : m_frameBytes);
    std::unique_ptr<ByteReader> stream = std::move(m_stream); // which has ended when this fails
    const std::size_t bytes =
        ReadFully(*stream, isSame ? image.pixels.data() : m_bytes.data(), m_frameBytes);
    m_stream = std::move(stream);
    if (!CheckWhole(bytes))
    {
        return false;
    }
    if (!isSame)
    {
        Decode(m_format, m_lumaWeights, m_bytes.data(), image, m_row);
    }
    return true;
}

bool RawSource::Skip()
{
    if (!m_stream)
    {
        return false;
    }
    ++m_frame;
    std::unique_ptr<ByteReader> stream = std::move(m_stream); // as in Read
    const std::uint64_t bytes = stream->Skip(m_frameBytes);
    m_stream = std::move(stream);
    return CheckWhole(bytes);
}

std::string RawSource::FrameName() const
{
    return "frame " + std::to_string(m_frame) + " of " + m_name;
}

RawSink::RawSink(std::unique_ptr<ByteWriter> stream, std::string name, StreamFormat format,
                 LumaWeights lumaWeights)
    : m_stream(std::move(stream)), m_name(std::move(name)), m_format(format),
      m_lumaWeights(lumaWeights)
{
}

void RawSink::Write(const Image& image)
{
    if (m_width == 0)
    {
        m_width = image.width;
        m_height = image.height;
    }
    CheckSameSize(m_name, image, m_width, m_height);
    if (IsSame(m_format, image.type))
    {
        m_stream->Write(image.pixels.data(), image.pixels.size());
        return;
    }
    m_bytes.resize(FrameBytes(m_format, m_width, m_height));
    Encode(m_format, m_lumaWeights, image, m_bytes.data(), m_row);
    m_stream->Write(m_bytes.data(), m_bytes.size());
}

void RawSink::Finish()
{
    CheckNotEmpty(m_name, m_width != 0);
    m_stream->Commit();
}

int RawSink::BitsPerChannel(SampleType) const noexcept
{
    return LayoutOf(m_format).BitsPerChannel();
}

} // namespace GlazelHost
