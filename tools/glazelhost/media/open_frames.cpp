#include "tools/glazelhost/media/open_frames.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/dither.h"
#include "tools/glazelhost/media/file_identity.h"
#include "tools/glazelhost/media/file_kind.h"
#include "tools/glazelhost/media/file_stream.h"
#include "tools/glazelhost/media/picture_frames.h"
#include "tools/glazelhost/media/raw_stream.h"
#include "tools/glazelhost/media/safe_output.h"
#include "tools/glazelhost/media/sequence_pattern.h"

#include <iterator>
#include <utility>

namespace GlazelHost
{

namespace
{

const std::string kUseKnownKind =
    "use " + std::string(kKnownKinds) + ", or \"glazel render\", which takes every video";

[[noreturn]] void RefuseUse(const std::string& what, const std::string& why,
                            const std::string& remedy)
{
    throw HostError(what, why, remedy, ExitCode::WrongUsage);
}

// "give --input-format bgra8, bgra16 or ..."
std::string GiveFormat(const std::string& option)
{
    std::string text = "give " + option;
    for (const StreamFormatRow& row : kStreamFormats)
    {
        text += &row == std::begin(kStreamFormats)     ? " "
                : &row == std::end(kStreamFormats) - 1 ? " or "
                                                       : ", ";
        text += row.name;
    }
    return text;
}

// Raw pixels may begin like anything, so their extension goes before the content; everything else
// is what it says inside, whatever its name.
FileKind KindOfFile(const std::string& path)
{
    const auto byName = KindFromName(path);
    if (byName == FileKind::Raw)
    {
        return *byName;
    }
    const std::vector<std::byte> firstBytes = ReadFirstBytes(path, kKindBytes);
    if (firstBytes.empty())
    {
        throw HostError(path, "it is empty", "make the file again");
    }
    const auto byContent = KindFromContent(firstBytes);
    if (byContent)
    {
        return *byContent;
    }
    if (byName)
    {
        throw HostError(path,
                        "it does not begin like a " + std::string(DescribeKind(*byName)) + " file",
                        "the file is damaged or has the wrong extension; make it again");
    }
    throw HostError(path, "this kind of file is not known", kUseKnownKind);
}

bool CanHold(FileKind kind, int bits) noexcept
{
    switch (kind)
    {
    case FileKind::Png:
        return bits == 8 || bits == 16;
    case FileKind::Tiff:
        return bits == 8 || bits == 16 || bits == 32;
    default:
        return bits == 8;
    }
}

void CheckSinkOptions(const SinkOptions& options, FileKind kind)
{
    if (options.bits && !CanHold(kind, *options.bits))
    {
        RefuseUse(
            options.path,
            std::string(DescribeKind(kind)) + " does not hold " + std::to_string(*options.bits) +
                " bits a channel",
            "PNG holds 8 or 16, TIFF 8, 16 or 32, all others 8; a stream has its --output-format");
    }
    if (options.quality < 1 || options.quality > 100)
    {
        RefuseUse(options.path, "a quality of " + std::to_string(options.quality) + " is not known",
                  "give one from 1 to 100");
    }
}

FileKind KindOfSink(const SinkOptions& options)
{
    if (options.format)
    {
        return FileKind::Raw;
    }
    if (options.path == kStandardStream)
    {
        RefuseUse("standard output", "its format is not said", GiveFormat("--output-format"));
    }
    const auto kind = KindFromName(options.path);
    if (!kind)
    {
        RefuseUse(options.path, "the extension does not say what to write", kUseKnownKind);
    }
    return *kind;
}

std::unique_ptr<FrameSink> OpenPlainSink(const SinkOptions& options, const StreamInfo& info)
{
    const FileKind kind = KindOfSink(options);
    const StreamFormat format = options.format.value_or(StreamFormat::Bgra8);
    CheckSinkOptions(options, kind);
    if (options.path == kStandardStream)
    {
        return std::make_unique<RawSink>(OpenStandardOutput(), "standard output", format,
                                         options.lumaWeights);
    }
    // Of a single picture there is nothing to number.
    const auto pattern = info.isPicture ? std::nullopt : SequencePattern::Parse(options.path);
    if (!IsPicture(kind))
    {
        if (pattern)
        {
            RefuseUse(options.path, "a stream is one file, not a sequence",
                      "name one file, or pictures like out_%04d.png");
        }
        CheckApart({options.path}, info.files);
        return std::make_unique<RawSink>(OpenSafeOutput(options.path, options.overwrite),
                                         options.path, format, options.lumaWeights);
    }
    if (pattern)
    {
        return std::make_unique<PictureSink>(options, info, kind, *pattern);
    }
    return std::make_unique<PictureSink>(options, info, kind);
}

} // namespace

std::unique_ptr<FrameSource> OpenSource(const SourceOptions& options)
{
    if (options.firstNumber && *options.firstNumber < 0)
    {
        RefuseUse(options.path, "the first number is below 0", "give a number from 0 on");
    }
    if (options.path == kStandardStream)
    {
        if (!options.format)
        {
            RefuseUse("standard input", "its format is not said", GiveFormat("--input-format"));
        }
        return std::make_unique<RawSource>(OpenStandardInput(), "standard input", *options.format,
                                           options);
    }
    const auto pattern =
        IsThere(options.path) ? std::nullopt : SequencePattern::Parse(options.path);
    if (pattern && options.format)
    {
        RefuseUse(options.path, "a sequence of pictures has no stream format",
                  "leave --input-format out, or name one file");
    }
    if (pattern)
    {
        return std::make_unique<PictureSource>(options, *pattern);
    }
    const FileKind kind = options.format ? FileKind::Raw : KindOfFile(options.path);
    if (IsPicture(kind))
    {
        return std::make_unique<PictureSource>(options);
    }
    return std::make_unique<RawSource>(OpenFileReader(options.path), options.path,
                                       options.format.value_or(StreamFormat::Bgra8), options);
}

std::unique_ptr<FrameSink> OpenSink(const SinkOptions& options, const StreamInfo& info)
{
    std::unique_ptr<FrameSink> sink = OpenPlainSink(options, info);
    if (options.ditherSeed && sink->BitsPerChannel(SampleType::Float) == 8)
    {
        return std::make_unique<DitheredSink>(std::move(sink), *options.ditherSeed);
    }
    return sink;
}

} // namespace GlazelHost
