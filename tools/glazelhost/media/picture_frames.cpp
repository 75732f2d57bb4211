#include "tools/glazelhost/media/picture_frames.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/facts_writer.h"
#include "tools/glazelhost/media/file_identity.h"
#include "tools/glazelhost/media/file_stream.h"
#include "tools/glazelhost/media/safe_output.h"
#include "tools/glazelhost/media/sequence_files.h"
#include "tools/glazelhost/media/windows_path.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace GlazelHost
{

namespace
{

std::string DescribeKindOf(const std::string& path)
{
    const auto kind = KindFromName(path);
    return kind && IsPicture(*kind) ? std::string(DescribeKind(*kind)) : "picture";
}

bool IsMissing(const std::string& path)
{
    return ::GetFileAttributesW(WindowsPath(path).c_str()) == INVALID_FILE_ATTRIBUTES &&
           ::GetLastError() == ERROR_FILE_NOT_FOUND;
}

template <typename Sample>
bool IsAnyBelow(const Image& image, Sample opaque) noexcept
{
    const std::size_t count = image.pixels.size() / sizeof opaque;
    const std::span samples(reinterpret_cast<const Sample*>(image.pixels.data()), count);
    std::size_t alpha = 3;
    while (alpha < count && samples[alpha] >= opaque)
    {
        alpha += 4;
    }
    return alpha < count;
}

// A channel of alpha that is opaque everywhere says nothing that could be lost.
bool IsTransparentAnywhere(const Image& image) noexcept
{
    return image.hasAlpha && (image.type == SampleType::Byte ? IsAnyBelow<std::uint8_t>(image, 255)
                                                             : IsAnyBelow(image, 1.0F));
}

} // namespace

PictureSource::PictureSource(const SourceOptions& options) : m_path(options.path)
{
    Open(m_path);
    m_info.width = m_opened->Width();
    m_info.height = m_opened->Height();
    m_info.frameCount = 1;
    m_info.isPicture = true;
    m_info.files = {m_path};
    m_info.bitsPerChannel = m_opened->BitsPerChannel();
    m_info.light = m_opened->LightOfPixels();
    m_info.description = DescribeKindOf(m_path) + " picture, " + m_opened->Description();
    ApplyOptions(options);
}

PictureSource::PictureSource(const SourceOptions& options, const SequencePattern& pattern)
    : m_pattern(pattern), m_path(options.path)
{
    const std::vector<std::int64_t> numbers = NumbersOfFiles(pattern);
    const auto first = std::ranges::lower_bound(numbers, options.firstNumber.value_or(0));
    if (first == numbers.end())
    {
        throw HostError(m_path, "there is no picture of this sequence",
                        "check the folder, the name and the number of digits");
    }
    m_next = options.firstNumber.value_or(*first);
    m_last = numbers.back();
    m_info.frameCount = m_last - m_next + 1;
    m_info.firstNumber = m_next;
    for (const std::int64_t number : numbers)
    {
        m_info.files.push_back(pattern.PathOf(number));
    }
    m_info.description = DescribeKindOf(m_path) + " pictures " + std::to_string(m_next) + " to " +
                         std::to_string(m_last);
    LookAtFirst({first, numbers.end()});
    ApplyOptions(options);
}

// The first picture that can be opened says what all are.
void PictureSource::LookAtFirst(std::span<const std::int64_t> numbers)
{
    for (const std::int64_t number : numbers)
    {
        try
        {
            Open(PathOf(number));
        }
        catch (const HostError&)
        {
            if (number == m_next)
            {
                m_failure = std::current_exception(); // reported when its turn to be read comes
            }
            continue;
        }
        m_info.bitsPerChannel = m_opened->BitsPerChannel();
        m_info.light = m_opened->LightOfPixels();
        m_info.description += ", " + m_opened->Description();
        if (number != m_next)
        {
            m_opened.reset();
        }
        return;
    }
}

void PictureSource::ApplyOptions(const SourceOptions& options)
{
    m_info.framesPerSecond = options.framesPerSecond;
    m_info.pixelAspect = options.pixelAspect > 0.0 ? options.pixelAspect : 1.0;
}

std::string PictureSource::PathOf(std::int64_t number) const
{
    return m_pattern ? m_pattern->PathOf(number) : m_path;
}

void PictureSource::Open(const std::string& path)
{
    if (m_pattern && IsMissing(path))
    {
        throw HostError(path, "this picture of the sequence is missing",
                        "make it again, or leave its frame out");
    }
    m_opened.emplace(ReadWholeFile(path), path);
}

bool PictureSource::Read(Image& image, SampleType type)
{
    if (m_next > m_last)
    {
        return false;
    }
    m_path = PathOf(m_next);
    ++m_next; // also when reading fails: the next call goes on behind it
    if (m_failure)
    {
        std::rethrow_exception(std::exchange(m_failure, nullptr));
    }
    if (!m_opened)
    {
        Open(m_path);
    }
    PictureDecoder picture = std::move(*m_opened);
    m_opened.reset();
    picture.Decode(image, type);
    return true;
}

bool PictureSource::Skip()
{
    if (m_next > m_last)
    {
        return false;
    }
    ++m_next;
    m_opened.reset();
    m_failure = nullptr;
    return true;
}

PictureSink::PictureSink(const SinkOptions& options, const StreamInfo& info, FileKind kind)
    : m_options(options), m_kind(kind), m_sourceBits(info.bitsPerChannel),
      m_isLinear(info.light.isLinear)
{
    CheckApart({options.path}, info.files);
    CheckOutputTarget(options.path, options.overwrite);
}

PictureSink::PictureSink(const SinkOptions& options, const StreamInfo& info, FileKind kind,
                         const SequencePattern& pattern)
    : m_options(options), m_kind(kind), m_sourceBits(info.bitsPerChannel),
      m_isLinear(info.light.isLinear), m_pattern(pattern), m_number(info.firstNumber.value_or(1))
{
    std::vector<std::string> old;
    for (const std::int64_t number : NumbersOfFiles(pattern))
    {
        if (number >= m_number && (!info.frameCount || number - m_number < *info.frameCount))
        {
            old.push_back(pattern.PathOf(number));
        }
    }
    CheckApart(old, info.files);
    CheckOutputTarget(pattern.PathOf(m_number), options.overwrite);
    if (!old.empty())
    {
        CheckOutputTarget(old.front(), options.overwrite);
    }
}

int PictureSink::BitsPerChannel(SampleType type) const noexcept
{
    if (m_options.bits)
    {
        return *m_options.bits;
    }
    if (type == SampleType::Byte || m_kind == FileKind::Jpeg || m_kind == FileKind::Bmp)
    {
        return 8;
    }
    return m_kind == FileKind::Tiff && m_sourceBits != 16 ? 32 : 16;
}

void PictureSink::Write(const Image& image)
{
    if (!m_pattern && m_anyFrame)
    {
        throw HostError(m_options.path, "one picture holds one frame only",
                        "name a sequence like out_%04d.png, or choose one frame with --frames");
    }
    const std::string path = m_pattern ? m_pattern->PathOf(m_number) : m_options.path;
    ++m_number;
    std::unique_ptr<ByteWriter> file = OpenSafeOutput(path, m_options.overwrite);
    EncodePicture(image, {m_kind, BitsPerChannel(image.type), m_options.quality, m_isLinear}, *file,
                  path);
    Remark(image);
    m_anyFrame = true;
    if (m_pattern)
    {
        file->Commit();
    }
    else
    {
        m_single = std::move(file);
    }
}

// The pictures of a sequence mostly lack the same: it is said of the first one.
void PictureSink::Remark(const Image& image)
{
    std::vector<std::string> clauses =
        image.facts ? LeftOut(m_kind, *image.facts) : std::vector<std::string>();
    if (m_kind == FileKind::Jpeg && IsTransparentAnywhere(image))
    {
        clauses.emplace_back("its transparency, which a JPEG does not hold");
    }
    for (const std::string& clause : clauses)
    {
        if (m_options.strict)
        {
            RefuseLoss(m_options.path, "left out of the picture is " + clause);
        }
        if (m_said.insert(clause).second)
        {
            m_remarks.push_back(m_options.path + ": left out of the picture is " + clause);
        }
    }
}

void PictureSink::Finish()
{
    CheckNotEmpty(m_options.path, m_anyFrame);
    if (m_single)
    {
        m_single->Commit();
        m_single.reset();
    }
}

} // namespace GlazelHost
