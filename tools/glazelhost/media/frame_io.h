// Where frames come from and where they go: files, numbered sequences, streams.
// Pure: no windows.h.
#pragma once

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/picture_facts.h"
#include "tools/glazelhost/surface/pixel_buffer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace GlazelHost
{

// How a channel is held in memory.
enum class SampleType
{
    Byte,  // 0 to 255
    Float, // 32-bit float, 0.0 to 1.0 nominal, any value allowed
};

// Largest width and height that the program takes.
inline constexpr int kLargestSide = 16384;

// One picture: rows top-down without padding, four channels a pixel in the order blue, green, red,
// alpha, straight (not premultiplied) alpha.
struct Image
{
    int width = 0;
    int height = 0;
    SampleType type = SampleType::Byte;
    bool hasAlpha = false; // false: every alpha is opaque and files are written without one
    PixelBuffer pixels;
    std::shared_ptr<const PictureFacts> facts = nullptr; // nothing is said beside the pixels

    std::size_t PixelBytes() const noexcept { return type == SampleType::Byte ? 4U : 16U; }
    std::size_t RowBytes() const noexcept { return static_cast<std::size_t>(width) * PixelBytes(); }
};

// Whether the numbers of a picture are linear light, as opposed to codes for a display.
struct Light
{
    bool isLinear = false;
    std::string why = "its codes are whole numbers"; // a clause that stands behind the answer

    bool operator==(const Light&) const = default;
};

// What a source says of all its frames.
struct StreamInfo
{
    int width = 0; // 0 when frames may differ in size (separate picture files)
    int height = 0;
    int bitsPerChannel = 8;       // 8, 16 or 32 (float) in the file
    double framesPerSecond = 0.0; // 0 = not said
    double pixelAspect = 1.0;
    std::optional<std::int64_t> frameCount;  // none when the length is not known beforehand
    std::optional<std::int64_t> firstNumber; // the first frame's number in a numbered sequence
    bool isPicture = false;         // one picture in a file of its own: no stream, no sequence
    std::vector<std::string> files; // that the frames come from: no output may be one of them
    Light light;
    std::string description; // for the user: "raw BGRA of 16 bits"
};

// Gives frames in order. Not thread-safe.
class FrameSource
{
public:
    virtual ~FrameSource() = default;
    FrameSource() = default;
    FrameSource(const FrameSource&) = delete;
    FrameSource& operator=(const FrameSource&) = delete;

    virtual const StreamInfo& Info() const noexcept = 0;
    // Reads the next frame into `image` (whose memory is reused) as `type`; false at the end.
    // Throws HostError for a frame that cannot be read; the next call then goes on with the
    // following frame where the source allows that (files do, a cut stream ends).
    virtual bool Read(Image& image, SampleType type) = 0;
    // Passes over the next frame without decoding it where possible; false at the end.
    virtual bool Skip() = 0;
    // Of the frame that the last call of Read tried: a file's path, or "frame 12 of clip.bgra".
    virtual std::string FrameName() const = 0;
};

// Takes frames in order. Not thread-safe.
class FrameSink
{
public:
    virtual ~FrameSink() = default; // discards what was not finished
    FrameSink() = default;
    FrameSink(const FrameSink&) = delete;
    FrameSink& operator=(const FrameSink&) = delete;

    // Throws HostError when the frame cannot be written.
    virtual void Write(const Image& image) = 0;
    // Leaves one frame out: a numbered sequence keeps its number free, so that the pictures that
    // follow keep the numbers of their sources; a stream is one frame shorter.
    virtual void Pass() {}
    // How many bits a channel of the output has where it gets images of this type.
    virtual int BitsPerChannel(SampleType) const noexcept { return 8; }
    // What the last frames had and the output does not hold, as lines for the user; each once.
    virtual std::vector<std::string> TakeRemarks() { return {}; }
    // Gives the output its final name. Nothing stands under that name before. (Each picture of a
    // numbered sequence is complete, and has its name, as soon as it is written.) Throws HostError
    // when that fails or when no frame was written.
    virtual void Finish() = 0;
};

// Throws HostError for what the output cannot hold, where that is not to be borne.
[[noreturn]] inline void RefuseLoss(const std::string& outputName, const std::string& loss)
{
    throw HostError(outputName, "not everything can be kept: " + loss,
                    "choose another kind of file, or leave --strict out");
}

// Throws HostError when no frame was written: an output without frames is not one.
inline void CheckNotEmpty(const std::string& outputName, bool anyFrame)
{
    if (!anyFrame)
    {
        throw HostError(outputName, "there was no frame to write",
                        "check the input and the list of frames");
    }
}

} // namespace GlazelHost
