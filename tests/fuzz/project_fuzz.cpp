// Projects of any contents: what is written is read as it was, and a text that was changed is
// refused in one line, or means what it meant before.
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/project/project_text.h"

#include "tests/fuzz/fuzz_input.h"

#include <span>

using namespace GlazelHost;

namespace
{

std::vector<std::byte> RecordOf(FuzzedDataProvider& input)
{
    const std::string bytes = input.ConsumeRandomLengthString(64);
    const auto view = std::as_bytes(std::span(bytes));
    return {view.begin(), view.end()};
}

StoredProject ProjectOf(FuzzedDataProvider& input)
{
    StoredProject stored;
    // Not every byte is text, and only text can be stored: the class is letters.
    for (const char letter : input.ConsumeRandomLengthString(40))
    {
        stored.effect += static_cast<char>('a' + (static_cast<unsigned char>(letter) & 15));
    }
    stored.look = RecordOf(input);
    stored.project.ease = input.ConsumeBool() ? Ease::Smooth : Ease::Linear;
    const auto count = input.ConsumeIntegralInRange<int>(0, 4);
    for (int key = 0; key < count; ++key)
    {
        const auto frame = input.ConsumeIntegral<std::uint16_t>();
        const auto time = ParseKeyTime(std::to_string(frame) + (input.ConsumeBool() ? "f" : ".5"));
        Require(time.has_value());
        stored.project.keyframes.push_back({*time, RecordOf(input)});
    }
    return stored;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    // Taken first, so that short inputs damage something too.
    const auto place = input.ConsumeIntegral<std::uint16_t>();
    const auto flips = input.ConsumeIntegral<std::uint8_t>(); // 0: the text stays as it is
    const bool isCut = input.ConsumeIntegralInRange<int>(0, 7) == 0;
    const std::string written = TextOf(ProjectOf(input));
    std::string changed = written;
    const std::size_t at = place % changed.size();
    changed[at] = static_cast<char>(changed[at] ^ flips);
    if (isCut)
    {
        changed.resize(at);
    }
    const bool isWhole = changed == written;
    try
    {
        Require(TextOf(ParseProject(changed, "a.project")) == written);
    }
    catch (const HostError& error)
    {
        const std::string line = error.what();
        Require(!isWhole && line.starts_with("a.project: ") &&
                line.find('\n') == std::string::npos);
    }
    return 0;
}
