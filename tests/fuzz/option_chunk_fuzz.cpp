// The option word in blocks of any size and contents: the effect and the host read the same one,
// and setting it changes those four bytes or none.
#include "binding/session_data.h"
#include "tools/glazelhost/plugin/look.h"

#include "tests/fuzz/fuzz_input.h"

#include <algorithm>
#include <vector>

using namespace GlazelHost;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const auto value = input.ConsumeIntegral<std::uint32_t>();
    const auto block = input.ConsumeRemainingBytes<std::uint8_t>();
    SessionData record;
    std::uint8_t* const bytes = record.AllocateData(static_cast<std::uint32_t>(block.size()));
    std::ranges::copy(block, bytes);

    const auto option = LinearOption(std::as_bytes(std::span(block)));
    Require(!option || *option == (record.GetFlag() == kAssumeLinearGamma));
    record.SetFlag(value);
    Require(record.GetFlag() == value && record.size == block.size());
    for (std::size_t i = 0; i < block.size(); ++i)
    {
        const bool isOption = option && i >= 16 && i < 20;
        Require(bytes[i] == (isOption ? value >> 8 * (i - 16) & 0xFF : block[i]));
    }
    return 0;
}
