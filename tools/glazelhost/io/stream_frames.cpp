#include "tools/glazelhost/io/stream_frames.h"

#include "tools/glazelhost/host_error.h"

std::string FrameNameOf(std::int64_t frame, const std::string& streamName)
{
    return "frame " + std::to_string(frame) + " of " + streamName;
}

std::string MissingBytes(std::uint64_t missing, std::uint64_t whole)
{
    return "in this frame: " + std::to_string(missing) + " of its " + std::to_string(whole) +
           " bytes are missing";
}

void CheckSameSize(const std::string& streamName, const Image& image, int width, int height)
{
    if (image.width != width || image.height != height)
    {
        const auto size = [](int columns, int rows) {
            return std::to_string(columns) + " x " + std::to_string(rows);
        };
        throw HostError(streamName,
                        "a frame of " + size(image.width, image.height) +
                            " does not fit into a stream of " + size(width, height),
                        "give frames of one size, or write a numbered sequence of pictures");
    }
}

void CheckNotEmpty(const std::string& outputName, bool anyFrame)
{
    if (!anyFrame)
    {
        throw HostError(outputName, "there was no frame to write",
                        "check the input and the list of frames");
    }
}
