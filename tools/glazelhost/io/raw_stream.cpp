#include "tools/glazelhost/io/raw_stream.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/io/pixel_convert.h"
#include "tools/glazelhost/io/stream_frames.h"

#include <utility>

namespace
{

constexpr std::size_t kPixelBytes = 4;
constexpr PixelLayout kFloatLayout{.sample = FileSample::Float32};

void ConvertRows(const Image& from, const PixelLayout& layout, Image& to)
{
    for (int y = 0; y < from.height; ++y)
    {
        const auto row = static_cast<std::size_t>(y);
        UnpackRow(layout, from.pixels.data() + row * from.RowBytes(), from.width, to.type,
                  to.pixels.data() + row * to.RowBytes());
    }
}

} // namespace

RawSource::RawSource(std::unique_ptr<ByteReader> stream, std::string name,
                     const SourceOptions& options)
    : m_stream(std::move(stream)), m_name(std::move(name))
{
    if (options.width == 0 && options.height == 0)
    {
        throw HostError(m_name, "raw pixels do not say how large the picture is",
                        "give the size, for example --size 1920x1080", ExitCode::WrongUsage);
    }
    CheckSize(m_name, options.width, options.height);
    m_frameBytes = kPixelBytes * static_cast<std::size_t>(options.width) *
                   static_cast<std::size_t>(options.height);
    m_info.width = options.width;
    m_info.height = options.height;
    m_info.framesPerSecond = options.framesPerSecond;
    m_info.pixelAspect = options.pixelAspect > 0.0 ? options.pixelAspect : 1.0;
    m_info.description = "raw BGRA";
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
    m_stream.reset(); // lets go of the file, which may be the one to be replaced
    if (bytes == 0)
    {
        return false;
    }
    throw HostError(FrameName(),
                    "the data ends " + MissingBytes(m_frameBytes - bytes, m_frameBytes),
                    "check the size that you gave, or make the file again");
}

bool RawSource::Read(Image& image, SampleType type)
{
    if (!m_stream)
    {
        return false;
    }
    ++m_frame;
    Image& bytes = type == SampleType::Byte ? image : m_bytes;
    Reshape(bytes, m_info.width, m_info.height, SampleType::Byte, true);
    if (!CheckWhole(ReadFully(*m_stream, bytes.pixels.data(), m_frameBytes)))
    {
        return false;
    }
    if (type == SampleType::Float)
    {
        Reshape(image, m_info.width, m_info.height, type, true);
        ConvertRows(m_bytes, PixelLayout{}, image);
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
    return CheckWhole(m_stream->Skip(m_frameBytes));
}

std::string RawSource::FrameName() const
{
    return FrameNameOf(m_frame, m_name);
}

RawSink::RawSink(std::unique_ptr<ByteWriter> stream, std::string name)
    : m_stream(std::move(stream)), m_name(std::move(name))
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
    const Image* bytes = &image;
    if (image.type == SampleType::Float)
    {
        Reshape(m_bytes, m_width, m_height, SampleType::Byte, image.hasAlpha);
        ConvertRows(image, kFloatLayout, m_bytes);
        bytes = &m_bytes;
    }
    m_stream->Write(bytes->pixels.data(), bytes->pixels.size());
}

void RawSink::Finish()
{
    CheckNotEmpty(m_name, m_width != 0);
    m_stream->Commit();
}
