// Compound documents with damaged links: the check ends, whatever they link to.
#include "tools/glazelhost/project/compound_check.h"

#include "tests/fuzz/fuzz_input.h"
#include "tests/tools/glazelhost/project/compound_sample.h"

using namespace GlazelHost;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    auto bytes = CompoundSample::Document().Bytes();
    Damage(bytes, input);
    Require(!IsSoundCompound(bytes) || LooksCompound(bytes));
    return 0;
}
