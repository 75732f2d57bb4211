// Frames out of and into streams of bare pixels.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/raw_stream_test.cpp.
#pragma once

#include "tools/glazelhost/media/byte_stream.h"
#include "tools/glazelhost/media/frame_io.h"
#include "tools/glazelhost/media/open_frames.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace GlazelHost
{

class RawSource final : public FrameSource
{
public:
    // Of `options` the size, rate, aspect, light and weights of luma count. Throws HostError:
    // WrongUsage without a size.
    RawSource(std::unique_ptr<ByteReader> stream, std::string name, StreamFormat format,
              const SourceOptions& options);

    const StreamInfo& Info() const noexcept override { return m_info; }
    // A last frame that is not whole is a HostError, as is one that cannot be read; the stream has
    // then ended.
    bool Read(Image& image, SampleType type) override;
    bool Skip() override;
    std::string FrameName() const override;

private:
    // False at the end; throws when the frame has some of its bytes and not all.
    bool CheckWhole(std::uint64_t bytes);

    std::unique_ptr<ByteReader> m_stream; // null after the end
    std::string m_name;
    StreamFormat m_format;
    LumaWeights m_lumaWeights;
    bool m_isOpaque;
    StreamInfo m_info;
    std::size_t m_frameBytes = 0;
    std::vector<std::byte> m_bytes; // a frame as the stream has it, unless an Image has it so, too
    std::vector<std::byte> m_row;   // room for one, where a frame has planes of other samples
    std::int64_t m_frame = 0;       // number of the frame last begun, from 1
};

class RawSink final : public FrameSink
{
public:
    RawSink(std::unique_ptr<ByteWriter> stream, std::string name, StreamFormat format,
            LumaWeights lumaWeights = {});

    // All frames have the size of the first. Floats are rounded to the nearest code of a stream of
    // integers.
    void Write(const Image& image) override;
    void Finish() override;
    int BitsPerChannel(SampleType) const noexcept override;

private:
    std::unique_ptr<ByteWriter> m_stream;
    std::string m_name;
    StreamFormat m_format;
    LumaWeights m_lumaWeights;
    int m_width = 0; // 0 before the first frame
    int m_height = 0;
    std::vector<std::byte> m_bytes; // a frame as the stream has it, unless the Image has it so, too
    std::vector<std::byte> m_row;   // room for one, where a frame has planes of other samples
};

} // namespace GlazelHost
