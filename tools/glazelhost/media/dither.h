// Floats rounded to 8 bits with noise in place of bands.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/dither_test.cpp.
#pragma once

#include "tools/glazelhost/media/frame_io.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace GlazelHost
{

class Dither
{
public:
    // One seed always gives the same pictures.
    explicit Dither(std::uint32_t seed);

    // Makes an Image of bytes of one of floats. The noise of each frame number (from 0) and channel
    // is another one. A colour between two codes becomes either, in the proportion of its
    // distances, and one that is a code stays it; values outside 0 to 1 become the nearest end, NaN
    // becomes 0. Alpha is rounded to the nearest code: noise would make holes in what is nearly
    // opaque.
    void ToBytes(const Image& floats, std::int64_t frame, Image& bytes) const;

private:
    std::uint32_t m_seed;
    std::vector<float> m_thresholds; // a tile of blue noise, above 0 and below 1
};

// Passes on what it gets, floats as bytes. The first frame has the number 0.
class DitheredSink final : public FrameSink
{
public:
    DitheredSink(std::unique_ptr<FrameSink> sink, std::uint32_t seed);

    void Write(const Image& image) override;
    void Pass() override;
    int BitsPerChannel(SampleType type) const noexcept override
    {
        return m_sink->BitsPerChannel(type);
    }
    std::vector<std::string> TakeRemarks() override { return m_sink->TakeRemarks(); }
    void Finish() override { m_sink->Finish(); }

private:
    std::unique_ptr<FrameSink> m_sink;
    Dither m_dither;
    std::int64_t m_frame = 0;
    Image m_bytes;
};

} // namespace GlazelHost
