// Headers of pictures that are cut or wrong.
#include "tools/glazelhost/media/picture_size.h"

#include "tests/fuzz/fuzz_input.h"

using namespace GlazelHost;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto stated = SizeFromHeader(std::as_bytes(std::span(data, size)));
    Require(!stated || stated->height >= 0);
    return 0;
}
