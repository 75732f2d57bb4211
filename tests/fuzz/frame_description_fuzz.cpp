// Descriptions of frames with any numbers in them: one is refused, or every row of the work lies
// inside both images and alpha is copied.
#include "contract/entry_points.h"
#include "reference_renderer/core/frame_render.h"
#include "reference_renderer/core/look_record.h"

#include "tests/fuzz/fuzz_input.h"

#include <array>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

using namespace ReferenceRenderer;

namespace
{

constexpr std::uint64_t kMostBytes =
    1 << 16; // what is rendered; of larger ones the rows are added up

std::uint32_t Number(FuzzedDataProvider& input)
{
    return input.ConsumeBool() ? input.ConsumeIntegralInRange<std::uint32_t>(0, 24)
                               : input.ConsumeIntegral<std::uint32_t>();
}

FrameBufferDesc DescriptionOf(FuzzedDataProvider& input, void* pixels)
{
    FrameBufferDesc frame;
    constexpr std::array kFormats{kFormatBgra8, kFormatBgraFloat};
    frame.format = input.ConsumeIntegralInRange<int>(0, 9) != 0 ? input.PickValueInArray(kFormats)
                                                                : Number(input);
    frame.pixels = input.ConsumeIntegralInRange<int>(0, 9) != 0 ? pixels : nullptr;
    frame.width = Number(input);
    frame.height = Number(input);
    frame.rowPitch = Number(input);
    frame.minValue = input.ConsumeFloatingPoint<float>();
    frame.maxValue = input.ConsumeFloatingPoint<float>();
    return frame;
}

// To the end of the last row, which has no gap behind it; none when no memory could hold them.
std::optional<std::uint64_t> BytesOf(const FrameBufferDesc& frame)
{
    const std::uint64_t pitch = std::uint64_t{frame.rowPitch} * BytesPerPixel(frame.format);
    const std::uint64_t last = std::uint64_t{frame.width} * BytesPerPixel(frame.format);
    const std::uint64_t rows = frame.height - 1;
    if (rows != 0 && pitch > (std::numeric_limits<std::uint64_t>::max() - last) / rows)
    {
        return std::nullopt;
    }
    return pitch * rows + last;
}

const PreparedLook& SampleLook()
{
    static const auto look = [] {
        Look sample;
        sample.cdlMode = CdlMode::Clamped;
        sample.cdl.slope = {1.1F, 0.9F, 1.0F};
        StoredLook stored;
        StoreLook(sample, stored);
        std::vector<std::uint8_t> record(kRecordSize);
        WriteRecord(stored, RecordBytes(record));
        auto prepared = std::make_unique<PreparedLook>();
        Require(prepared->Read(record) == RecordState::Usable);
        return prepared;
    }();
    return *look;
}

bool SameAlpha(const FrameJob& job)
{
    const std::size_t channel = job.pixelBytes / 4;
    for (std::size_t y = 0; y < job.height; ++y)
    {
        for (std::size_t x = 0; x < job.width; ++x)
        {
            const std::size_t at = x * job.pixelBytes + 3 * channel;
            if (std::memcmp(job.source + y * job.sourcePitch + at,
                            job.target + y * job.targetPitch + at, channel) != 0)
            {
                return false;
            }
        }
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    char somewhere = 0;
    FrameBufferDesc source = DescriptionOf(input, &somewhere);
    FrameBufferDesc target = input.ConsumeBool() ? source : DescriptionOf(input, &somewhere);
    target.rowPitch = input.ConsumeBool() ? target.rowPitch : Number(input);
    const auto flags = input.ConsumeIntegral<std::uint32_t>();
    const PreparedLook* const look = input.ConsumeBool() ? &SampleLook() : nullptr;

    FrameJob job;
    const std::int32_t result = DescribeFrame(&source, &target, look, flags, job);
    if (result != RendererAPI::kFrameRendered)
    {
        Require(result < 0 && job.source == nullptr && job.target == nullptr && job.height == 0);
        return 0;
    }
    Require(job.width == source.width && job.height == source.height);
    Require(job.sourcePitch >= job.width * job.pixelBytes);
    Require(job.targetPitch >= job.width * job.pixelBytes);
    const auto sourceBytes = BytesOf(source);
    const auto targetBytes = BytesOf(target);
    if (!sourceBytes || !targetBytes || *sourceBytes > kMostBytes || *targetBytes > kMostBytes)
    {
        return 0; // nobody has memory of that size
    }
    // Of exactly these sizes: the sanitizer sees a byte beside them.
    std::vector<std::byte> from(static_cast<std::size_t>(*sourceBytes));
    std::vector<std::byte> to(static_cast<std::size_t>(*targetBytes));
    for (std::byte& byte : from)
    {
        byte = static_cast<std::byte>(input.ConsumeIntegral<std::uint8_t>());
    }
    source.pixels = from.data();
    target.pixels = to.data();
    Require(DescribeFrame(&source, &target, look, flags, job) == RendererAPI::kFrameRendered);
    job.RenderRows(0, job.height);
    Require(SameAlpha(job));
    return 0;
}
