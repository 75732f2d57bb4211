// Y4M streams: whole frames, then the end or one error, and nothing behind that.
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/io/open_frames.h"
#include "tools/glazelhost/io/y4m_stream.h"

#include "tests/fuzz/fuzz_input.h"
#include "tests/tools/glazelhost/io/memory_streams.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
    {
        return 0;
    }
    const std::size_t pieceBytes = 1 + data[0] % 64;
    const SampleType type = data[0] < 128 ? SampleType::Byte : SampleType::Float;
    std::unique_ptr<Y4mSource> source;
    try
    {
        source = std::make_unique<Y4mSource>(ReaderOf(StringOf(data + 1, size - 1), pieceBytes),
                                             "stream", SourceOptions());
    }
    catch (const HostError&)
    {
        return 0;
    }
    Image image;
    try
    {
        while (source->Read(image, type))
        {
            Require(image.width == source->Info().width && image.height == source->Info().height);
            Require(image.pixels.size() ==
                    image.RowBytes() * static_cast<std::size_t>(image.height));
        }
    }
    catch (const HostError&)
    {
        Require(!source->Read(image, type));
    }
    return 0;
}
