// Raw streams of any length, size and format: whole frames are read, a rest is told, and what is
// written from a frame is what the stream held where its samples fit.
#include "tools/glazelhost/media/raw_stream.h"

#include "tests/fuzz/fuzz_input.h"
#include "tests/tools/glazelhost/media/memory_streams.h"

#include <iterator>

using namespace GlazelHost;

namespace
{

constexpr int kLargestTried = 40; // pixels a side: more memory would teach nothing

// Whether the stream came to its end, and not to a frame that is cut.
bool ReadToTheEnd(RawSource& source, SampleType type, FuzzedDataProvider& input)
{
    Image image;
    try
    {
        const StreamInfo& info = source.Info();
        while (input.ConsumeBool() ? source.Skip() : source.Read(image, type))
        {
            Require(
                image.pixels.size() == 0 ||
                (image.width == info.width && image.height == info.height &&
                 image.pixels.size() == image.RowBytes() * static_cast<std::size_t>(image.height)));
            Require(!source.FrameName().empty());
        }
        return true;
    }
    catch (const HostError& error)
    {
        Require(std::string(error.what()).find('\n') == std::string::npos);
        Require(!source.Read(image, type)); // it has ended
        return false;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const StreamFormatRow& row =
        kStreamFormats[input.ConsumeIntegralInRange<std::size_t>(0, std::size(kStreamFormats) - 1)];
    const SampleType type = input.ConsumeBool() ? SampleType::Byte : SampleType::Float;
    SourceOptions options;
    options.width = input.ConsumeIntegralInRange<int>(1, kLargestTried);
    options.height = input.ConsumeIntegralInRange<int>(1, kLargestTried);
    const auto pieceBytes = input.ConsumeIntegralInRange<std::size_t>(1, 64);
    const bool knowsSize = input.ConsumeBool();
    const std::string choices =
        input.ConsumeRandomLengthString(16); // what is read, what is skipped
    const std::string stream = input.ConsumeRemainingBytesAsString();

    RawSource source(std::make_unique<MemoryReader>(stream, pieceBytes, knowsSize), "clip",
                     row.format, options);
    FuzzedDataProvider steps(reinterpret_cast<const std::uint8_t*>(choices.data()), choices.size());
    const std::size_t channelBytes = row.sample == FileSample::Bits8    ? 1
                                     : row.sample == FileSample::Bits16 ? 2
                                                                        : 4;
    const std::size_t frameBytes = static_cast<std::size_t>(options.width) *
                                   static_cast<std::size_t>(options.height) * channelBytes *
                                   static_cast<std::size_t>(row.planes == 0 ? 4 : row.planes);
    Require(ReadToTheEnd(source, type, steps) == (stream.size() % frameBytes == 0));
    return 0;
}
