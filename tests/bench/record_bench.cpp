// What it costs to give a frame its record: the copy under the lock, beside a plain memcpy of the
// same bytes. Prints a ratio and judges nothing.
#include "effect/plugin.h"
#include "tests/bench/timing.h"
#include "tests/doubles/renderers/renderer_variant.h"

#include <cstdio>
#include <cstring>
#include <vector>

namespace
{

class OpenPlugin : public CPlugin
{
public:
    using CPlugin::RefreshFrameProps;
};

constexpr std::uint32_t kRecordBytes = 131072;
constexpr int kRuns = 2001;

} // namespace

int main()
{
    UseRenderer(L"complete");
    CComObject<OpenPlugin>* object = nullptr;
    if (FAILED(CComObject<OpenPlugin>::CreateInstance(&object)))
    {
        std::puts("the effect was not created");
        return 1;
    }
    const CComPtr<OpenPlugin> effect = object;
    SessionData record;
    std::memset(record.AllocateData(kRecordBytes), 7, kRecordBytes);
    effect->SetProps(&record);
    effect->RefreshFrameProps();

    std::vector<std::uint8_t> target(kRecordBytes);
    const double copy = MedianMicroseconds(kRuns, [&] {
        std::memcpy(target.data(), record.data, kRecordBytes);
        asm volatile("" : : "r"(target.data()) : "memory"); // the copy must really happen
    });
    const double refresh = MedianMicroseconds(kRuns, [&] { effect->RefreshFrameProps(); });
    std::printf("record of %u bytes, median of %d runs\n", static_cast<unsigned>(kRecordBytes),
                kRuns);
    std::printf("  memcpy              %8.2f us\n", copy);
    std::printf("  RefreshFrameProps   %8.2f us   ratio %.2f\n", refresh, refresh / copy);
    return 0;
}
