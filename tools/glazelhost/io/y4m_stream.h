// Frames out of and into Y4M streams: 8-bit 4:2:0, 4:2:2, 4:4:4 and monochrome, progressive.
// Pure: no windows.h. Tests: tests/tools/glazelhost/io/y4m_stream_test.cpp.
#pragma once

#include "tools/glazelhost/io/buffered_reader.h"
#include "tools/glazelhost/io/byte_stream.h"
#include "tools/glazelhost/io/frame_io.h"
#include "tools/glazelhost/io/open_frames.h"
#include "tools/glazelhost/io/ycbcr_convert.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

class Y4mSource final : public FrameSource
{
public:
    // Reads the stream's header. `name` stands for the stream in messages; of `options` the rate,
    // aspect, range and matrix count. Throws HostError.
    Y4mSource(std::unique_ptr<ByteReader> stream, std::string name, const SourceOptions& options);

    const StreamInfo& Info() const noexcept override { return m_info; }
    // A cut or damaged stream delivers the frames before the damage, then one HostError that says
    // in which frame it is and how much is missing, and then has ended.
    bool Read(Image& image, SampleType type) override;
    bool Skip() override;
    std::string FrameName() const override;

private:
    bool BeginFrame(); // reads the frame's line; false at the end
    void CheckWhole(std::uint64_t bytes);
    [[noreturn]] void Break(const std::string& why, const std::string& remedy);

    std::optional<BufferedReader> m_stream; // none after the end
    std::string m_name;
    StreamInfo m_info;
    std::optional<YCbCrConverter> m_converter; // always there once constructed
    std::vector<std::uint8_t> m_planes;
    std::string m_line;
    std::int64_t m_frame = 0; // number of the frame last begun, from 1
};

class Y4mSink final : public FrameSink
{
public:
    // Of `options` the sampling, range and matrix count; `info` is the source's.
    Y4mSink(std::unique_ptr<ByteWriter> stream, std::string name, const SinkOptions& options,
            const StreamInfo& info);

    // All frames have the size of the first.
    void Write(const Image& image) override;
    void Finish() override;

private:
    void Begin(const Image& first);

    std::unique_ptr<ByteWriter> m_stream;
    std::string m_name;
    SinkOptions m_options;
    StreamInfo m_info;
    int m_width = 0; // 0 before the first frame
    int m_height = 0;
    std::optional<YCbCrConverter> m_converter;
    std::vector<std::uint8_t> m_record; // the frame's line and its planes
};
