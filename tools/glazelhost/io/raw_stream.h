// Frames out of and into streams of bare pixels: blue, green, red, alpha, 8 bits each, straight
// alpha, rows top-down without padding, frame after frame.
// Pure: no windows.h. Tests: tests/tools/glazelhost/io/raw_stream_test.cpp.
#pragma once

#include "tools/glazelhost/io/byte_stream.h"
#include "tools/glazelhost/io/frame_io.h"
#include "tools/glazelhost/io/open_frames.h"

#include <memory>
#include <string>

class RawSource final : public FrameSource
{
public:
    // Of `options` the size, rate and aspect count. Throws HostError: WrongUsage without a size.
    RawSource(std::unique_ptr<ByteReader> stream, std::string name, const SourceOptions& options);

    const StreamInfo& Info() const noexcept override { return m_info; }
    // A last frame that is not whole is a HostError; the stream has then ended.
    bool Read(Image& image, SampleType type) override;
    bool Skip() override;
    std::string FrameName() const override;

private:
    // False at the end; throws when the frame has some of its bytes and not all.
    bool CheckWhole(std::uint64_t bytes);

    std::unique_ptr<ByteReader> m_stream; // null after the end
    std::string m_name;
    StreamInfo m_info;
    std::size_t m_frameBytes = 0;
    Image m_bytes;            // for callers that want floats
    std::int64_t m_frame = 0; // number of the frame last begun, from 1
};

class RawSink final : public FrameSink
{
public:
    RawSink(std::unique_ptr<ByteWriter> stream, std::string name);

    // All frames have the size of the first. Float images are rounded to the nearest code.
    void Write(const Image& image) override;
    void Finish() override;

private:
    std::unique_ptr<ByteWriter> m_stream;
    std::string m_name;
    int m_width = 0; // 0 before the first frame
    int m_height = 0;
    Image m_bytes; // of Float images
};
