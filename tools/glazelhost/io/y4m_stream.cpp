#include "tools/glazelhost/io/y4m_stream.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/io/stream_frames.h"
#include "tools/glazelhost/io/y4m_header.h"

#include <utility>

namespace
{

constexpr char kMakeAgain[] = "make the file again";

// Players refuse a stream without a rate; this is the one that they assume themselves.
constexpr Ratio kDefaultRate{25, 1};
constexpr Ratio kSquarePixels{1, 1};

// The header's line without its line feed.
std::string ReadHeaderLine(BufferedReader& stream, const std::string& name)
{
    std::string line;
    switch (stream.ReadLine(line, kLongestY4mLine))
    {
    case BufferedReader::Line::Whole:
        break;
    case BufferedReader::Line::End:
        throw HostError(name, "it is empty", "give a Y4M stream");
    case BufferedReader::Line::Cut:
    case BufferedReader::Line::TooLong:
        // Where the line does begin like a header, say that it never ends.
        ParseY4mHeader(line, name);
        throw HostError(name, "its Y4M header has no end", kMakeAgain);
    }
    return line;
}

StreamInfo InfoOf(const Y4mHeader& header, const SourceOptions& options)
{
    const YCbCrEncoding encoding{
        header.sampling, options.range.value_or(header.range.value_or(YCbCrRange::Limited)),
        options.matrix.value_or(DefaultMatrix(header.width, header.height))};
    StreamInfo info;
    info.width = header.width;
    info.height = header.height;
    info.framesPerSecond =
        options.framesPerSecond > 0.0 ? options.framesPerSecond : header.rate.Value();
    info.pixelAspect = options.pixelAspect > 0.0          ? options.pixelAspect
                       : header.pixelAspect.Value() > 0.0 ? header.pixelAspect.Value()
                                                          : 1.0;
    info.encoding = encoding;
    info.description = "Y4M " + std::string(DescribeSampling(encoding.sampling)) + ' ' +
                       std::string(DescribeRange(encoding.range)) + ", " +
                       std::string(DescribeMatrix(encoding.matrix));
    return info;
}

// How many frames follow a header of `headerBytes`, when no frame line has parameters and no byte
// is missing or left over.
std::optional<std::int64_t> CountFrames(std::optional<std::uint64_t> streamBytes,
                                        std::size_t headerBytes, std::size_t frameBytes)
{
    const std::uint64_t record = frameBytes + kY4mFrameMagic.size() + 1;
    if (!streamBytes || *streamBytes < headerBytes || (*streamBytes - headerBytes) % record != 0)
    {
        return std::nullopt;
    }
    return static_cast<std::int64_t>((*streamBytes - headerBytes) / record);
}

// What the sink writes: what the user asks for, else what the source had.
YCbCrEncoding EncodingFor(const SinkOptions& options, const StreamInfo& info, const Image& first)
{
    YCbCrEncoding encoding =
        info.encoding.value_or(YCbCrEncoding{ChromaSampling::Half420Jpeg, YCbCrRange::Limited,
                                             DefaultMatrix(first.width, first.height)});
    if (encoding.sampling == ChromaSampling::Mono)
    {
        encoding.sampling = ChromaSampling::Half420Jpeg; // a look may tint what had no colour
    }
    encoding.sampling = options.sampling.value_or(encoding.sampling);
    encoding.range = options.range.value_or(encoding.range);
    encoding.matrix = options.matrix.value_or(encoding.matrix);
    return encoding;
}

} // namespace

Y4mSource::Y4mSource(std::unique_ptr<ByteReader> stream, std::string name,
                     const SourceOptions& options)
    : m_stream(std::move(stream)), m_name(std::move(name))
{
    const std::string line = ReadHeaderLine(*m_stream, m_name);
    const Y4mHeader header = ParseY4mHeader(line, m_name);
    m_info = InfoOf(header, options);
    m_converter.emplace(header.width, header.height, *m_info.encoding);
    m_planes.resize(m_converter->FrameBytes());
    m_info.frameCount = CountFrames(m_stream->Size(), line.size() + 1, m_planes.size());
}

bool Y4mSource::BeginFrame()
{
    if (!m_stream)
    {
        return false;
    }
    ++m_frame;
    switch (m_stream->ReadLine(m_line, kLongestY4mLine))
    {
    case BufferedReader::Line::End:
        m_stream.reset(); // lets go of the file, which may be the one to be replaced
        return false;
    case BufferedReader::Line::Cut:
        if (IsY4mFrameLine(m_line) || kY4mFrameMagic.starts_with(m_line))
        {
            CheckWhole(0);
        }
        break;
    case BufferedReader::Line::Whole:
        if (IsY4mFrameLine(m_line))
        {
            return true;
        }
        break;
    case BufferedReader::Line::TooLong:
        break;
    }
    Break("there is no frame where one should begin", kMakeAgain);
}

void Y4mSource::CheckWhole(std::uint64_t bytes)
{
    if (bytes != m_planes.size())
    {
        Break("the data ends " + MissingBytes(m_planes.size() - bytes, m_planes.size()),
              "make the file again; the frames before this one are whole");
    }
}

void Y4mSource::Break(const std::string& why, const std::string& remedy)
{
    m_stream.reset();
    throw HostError(FrameName(), why, remedy);
}

bool Y4mSource::Read(Image& image, SampleType type)
{
    if (!BeginFrame())
    {
        return false;
    }
    CheckWhole(m_stream->ReadFully(reinterpret_cast<std::byte*>(m_planes.data()), m_planes.size()));
    m_converter->Decode(m_planes.data(), image, type);
    return true;
}

bool Y4mSource::Skip()
{
    if (!BeginFrame())
    {
        return false;
    }
    CheckWhole(m_stream->Skip(m_planes.size()));
    return true;
}

std::string Y4mSource::FrameName() const
{
    return FrameNameOf(m_frame, m_name);
}

Y4mSink::Y4mSink(std::unique_ptr<ByteWriter> stream, std::string name, const SinkOptions& options,
                 const StreamInfo& info)
    : m_stream(std::move(stream)), m_name(std::move(name)), m_options(options), m_info(info)
{
}

void Y4mSink::Begin(const Image& first)
{
    const YCbCrEncoding encoding = EncodingFor(m_options, m_info, first);
    Y4mHeader header{first.width,
                     first.height,
                     FrameRateOf(m_info.framesPerSecond),
                     RatioOf(m_info.pixelAspect),
                     encoding.sampling,
                     encoding.range};
    header.rate = header.rate == Ratio{} ? kDefaultRate : header.rate;
    header.pixelAspect = header.pixelAspect == Ratio{} ? kSquarePixels : header.pixelAspect;
    const std::string line = FormatY4mHeader(header);
    m_stream->Write(reinterpret_cast<const std::byte*>(line.data()), line.size());

    m_converter.emplace(first.width, first.height, encoding);
    m_record.assign(kY4mFrameMagic.begin(), kY4mFrameMagic.end());
    m_record.push_back('\n');
    m_record.resize(m_record.size() + m_converter->FrameBytes());
    m_width = first.width;
    m_height = first.height;
}

void Y4mSink::Write(const Image& image)
{
    if (m_width == 0)
    {
        Begin(image);
    }
    CheckSameSize(m_name, image, m_width, m_height);
    m_converter->Encode(image, m_record.data() + kY4mFrameMagic.size() + 1);
    m_stream->Write(reinterpret_cast<const std::byte*>(m_record.data()), m_record.size());
}

void Y4mSink::Finish()
{
    CheckNotEmpty(m_name, m_width != 0);
    m_stream->Commit();
}
