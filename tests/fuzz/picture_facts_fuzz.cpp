// Pictures whose blocks and tags are cut or wrong.
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/facts_writer.h"
#include "tools/glazelhost/media/orientation.h"
#include "tools/glazelhost/media/picture_check.h"
#include "tools/glazelhost/media/picture_facts.h"

#include "tests/fuzz/fuzz_input.h"

using namespace GlazelHost;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto file = std::as_bytes(std::span(data, size));
    const int orientation = OrientationOf(file);
    Require(orientation >= 1 && orientation <= 8);
    const PictureFacts facts = FactsOf(file);
    for (const FileKind kind : {FileKind::Png, FileKind::Jpeg, FileKind::Tiff, FileKind::Bmp})
    {
        LeftOut(kind, facts);
        try
        {
            WithFacts(kind, {file.begin(), file.end()}, facts, "picture");
        }
        catch (const HostError&)
        {
            continue; // not of that kind
        }
    }
    try
    {
        CheckPixelKind(file, "picture");
    }
    catch (const HostError&)
    {
        return 0;
    }
    return 0;
}
