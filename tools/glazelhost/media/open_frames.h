// Opens what frames are read from and written to: pictures, numbered sequences and raw streams, by
// extension and content. Pure declarations: no windows.h.
//
// Pictures are PNG, JPEG, TIFF (8-bit, 16-bit, 16-bit and 32-bit float) and BMP; the first page
// counts, and is turned upright as its orientation tag says. Its numbers are taken as they are:
// what the file says of its colours goes with the frame into a picture that is written, and a
// colour profile tells whether floats are linear light. "shot_%04d.png" (%d, %0Nd or ####, once, in
// the file name; %% is a per cent sign) is a sequence: as a source where no file has that very
// name, as a sink unless the source is a single picture. The caller has initialised COM on the
// calling thread, and calls one object from that thread only.
#pragma once

#include "tools/glazelhost/media/frame_io.h"
#include "tools/glazelhost/media/stream_format.h"
#include "tools/glazelhost/media/ycbcr_rows.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace GlazelHost
{

// The path that means standard input or standard output.
inline constexpr char kStandardStream[] = "-";

struct SourceOptions
{
    std::string path;                   // UTF-8; "-" is standard input
    std::optional<StreamFormat> format; // none: by content, then by extension; "-" needs one
    int width = 0;                      // of a raw stream, which does not say
    int height = 0;
    double framesPerSecond = 0.0;            // 0: not said
    double pixelAspect = 0.0;                // 0: not said, which is 1
    bool isLinearLight = false;              // the numbers of a raw stream
    bool isOpaque = false;                   // a raw stream whose alpha means nothing
    LumaWeights lumaWeights;                 // of a raw stream of YCbCr
    std::optional<std::int64_t> firstNumber; // of a sequence; none: the lowest that exists
};

struct SinkOptions
{
    std::string path;                   // UTF-8; "-" is standard output
    std::optional<StreamFormat> format; // none: by extension; "-" needs one
    LumaWeights lumaWeights;            // of a raw stream of YCbCr
    bool overwrite = false;             // an output that exists is an error otherwise
    bool strict = false;                // what a picture cannot hold is an error, not a remark
    // Bits a channel of a picture: 8, 16 or 32 (float, TIFF alone). None: JPEG and BMP 8; others 8
    // for a Byte image; for a Float image PNG 16, TIFF 16 when the source had 16, else 32.
    std::optional<int> bits;
    int quality = 95;                        // JPEG, 1 to 100
    std::optional<std::uint32_t> ditherSeed; // of floats that become 8 bits; none: no dither
};

// Throws HostError (WrongUsage when the options contradict each other or are incomplete).
std::unique_ptr<FrameSource> OpenSource(const SourceOptions& options);

// `info` is the source's, with the light that the output shall state. Checks the
// target (folder, existing output, a file of the source, options) before anything is created;
// throws HostError.
std::unique_ptr<FrameSink> OpenSink(const SinkOptions& options, const StreamInfo& info);

} // namespace GlazelHost
