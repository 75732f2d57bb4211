// Pictures, single and in numbered sequences, as sources and sinks of frames.
#pragma once

#include "tools/glazelhost/media/file_kind.h"
#include "tools/glazelhost/media/frame_io.h"
#include "tools/glazelhost/media/open_frames.h"
#include "tools/glazelhost/media/picture_codec.h"
#include "tools/glazelhost/media/sequence_pattern.h"

#include <exception>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace GlazelHost
{

class PictureSource final : public FrameSource
{
public:
    // A single picture. Throws HostError when its size and layout cannot be read.
    explicit PictureSource(const SourceOptions& options);
    // The numbers from the first to the last that exists. A picture that is missing or cannot be
    // read is an error of its frame, also the first one. Throws HostError when there is none.
    PictureSource(const SourceOptions& options, const SequencePattern& pattern);

    const StreamInfo& Info() const noexcept override { return m_info; }
    bool Read(Image& image, SampleType type) override;
    bool Skip() override;
    std::string FrameName() const override { return m_path; }

private:
    std::string PathOf(std::int64_t number) const;
    void LookAtFirst(std::span<const std::int64_t> numbers);
    void Open(const std::string& path);
    void ApplyOptions(const SourceOptions& options);

    std::optional<SequencePattern> m_pattern; // none: a single picture
    std::string m_path;                       // of the picture last tried
    std::int64_t m_next = 0;
    std::int64_t m_last = 0;
    StreamInfo m_info;
    // Of the picture m_next, when it was looked at already; at most one.
    std::optional<PictureDecoder> m_opened;
    std::exception_ptr m_failure;
};

class PictureSink final : public FrameSink
{
public:
    // A single picture.
    PictureSink(const SinkOptions& options, const StreamInfo& info, FileKind kind);
    PictureSink(const SinkOptions& options, const StreamInfo& info, FileKind kind,
                const SequencePattern& pattern);

    void Write(const Image& image) override;
    void Pass() override { ++m_number; }
    int BitsPerChannel(SampleType type) const noexcept override;
    std::vector<std::string> TakeRemarks() override { return std::exchange(m_remarks, {}); }
    void Finish() override;

private:
    void Remark(const Image& image);

    SinkOptions m_options;
    FileKind m_kind;
    int m_sourceBits;
    bool m_isLinear;                          // what is written holds linear light
    std::optional<SequencePattern> m_pattern; // none: a single picture
    std::int64_t m_number = 1;                // of the next picture
    bool m_anyFrame = false;
    std::set<std::string> m_said; // what was left out of some picture
    std::vector<std::string> m_remarks;
    std::unique_ptr<ByteWriter> m_single; // the single picture, written and not yet named
};

} // namespace GlazelHost
