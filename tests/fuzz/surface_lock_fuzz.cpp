// Locks of a surface with any numbers in their bounds, and any rectangles asked of them: bounds are
// refused or lie inside, and nothing beside the locked area is read or written.
#include "tools/glazelhost/surface/area_bounds.h"
#include "tools/glazelhost/surface/sample_cursor.h"

#include "tests/fuzz/fuzz_input.h"

#include <cmath>
#include <vector>

using namespace GlazelHost;

namespace
{

constexpr std::byte kOutside{0xEE};
constexpr Sample kHidden{0xEE, 0xEE, 0xEE, 0xEE};
constexpr std::size_t kMostSamples = 4096; // nobody has buffers for larger rectangles here

int Number(FuzzedDataProvider& input)
{
    return input.ConsumeIntegralInRange<int>(0, 7) != 0 ? input.ConsumeIntegralInRange<int>(-30, 30)
                                                        : input.ConsumeIntegral<std::int32_t>();
}

double Edge(FuzzedDataProvider& input)
{
    switch (input.ConsumeIntegralInRange<int>(0, 3))
    {
    case 0:
        return input.ConsumeFloatingPoint<double>();
    case 1:
        return std::nan("");
    default:
        return input.ConsumeIntegralInRange<int>(-8, 200) / 8.0;
    }
}

Interval AnyInterval(FuzzedDataProvider& input)
{
    const double min = Edge(input);
    return {min, Edge(input)};
}

Area AnyRect(FuzzedDataProvider& input)
{
    const int left = Number(input);
    const int top = Number(input);
    return {left, top, Number(input), Number(input)};
}

// A rectangle with exactly the samples that it needs in `samples`: the sanitizer sees one beside
// them.
PackedRect AnyPacked(FuzzedDataProvider& input, std::vector<Sample>& samples)
{
    PackedRect packed;
    packed.rect = AnyRect(input);
    packed.rowPadding = Number(input);
    packed.premultiplied = input.ConsumeBool();
    const std::int64_t width = std::int64_t{packed.rect.right} - packed.rect.left;
    const std::int64_t height = std::int64_t{packed.rect.bottom} - packed.rect.top;
    const std::int64_t stride = width + packed.rowPadding;
    constexpr auto kMost = static_cast<std::int64_t>(kMostSamples);
    if (width > 0 && height > 0 && stride >= 0 && width <= kMost && height <= kMost &&
        stride <= kMost && stride * (height - 1) + width <= kMost)
    {
        samples.assign(static_cast<std::size_t>(stride * (height - 1) + width), Sample{});
        packed.samples = samples.data();
    }
    return packed;
}

// What lies outside the area, row by row with the padding.
std::vector<std::byte> Outside(const PixelGrid& grid, const Area& area)
{
    const SurfaceLayout& layout = grid.Layout();
    std::vector<std::byte> bytes;
    for (int y = 0; y < layout.height; ++y)
    {
        const std::span row(grid.Row(y), layout.PitchBytes());
        const bool isHeld = y >= area.top && y < area.bottom;
        const std::size_t left = isHeld ? static_cast<std::size_t>(area.left) : 0;
        const std::size_t right = isHeld ? static_cast<std::size_t>(area.right) : 0;
        const auto before = row.first(left * layout.PixelBytes());
        const auto behind = row.subspan(right * layout.PixelBytes());
        bytes.insert(bytes.end(), before.begin(), before.end());
        bytes.insert(bytes.end(), behind.begin(), behind.end());
    }
    return bytes;
}

SurfaceLayout AnyLayout(FuzzedDataProvider& input)
{
    SurfaceLayout layout;
    layout.width = input.ConsumeIntegralInRange<int>(1, 24);
    layout.height = input.ConsumeIntegralInRange<int>(1, 24);
    layout.format = input.PickValueInArray(
        {SurfaceFormat::Straight8, SurfaceFormat::Premultiplied8, SurfaceFormat::StraightFloat});
    layout.bottomUp = input.ConsumeBool();
    layout.padding = 4 * input.ConsumeIntegralInRange<int>(0, 8);
    return layout;
}

void AskSomething(SampleCursor& cursor, FuzzedDataProvider& input, bool showsHidden)
{
    std::vector<Sample> samples;
    const auto count = input.ConsumeIntegralInRange<std::size_t>(0, 64);
    const Sample sample{1, 2, 3, input.ConsumeIntegral<std::uint8_t>()};
    bool isReading = false;
    switch (input.ConsumeIntegralInRange<int>(0, 9))
    {
    case 0:
        cursor.MoveBy(Number(input));
        break;
    case 1:
        cursor.MoveTo(Number(input), Number(input));
        break;
    case 2:
        samples.resize(count);
        cursor.Read(samples, false);
        isReading = true;
        break;
    case 3:
        samples.resize(count, sample);
        cursor.Write(samples, input.ConsumeBool());
        break;
    case 4:
        samples.resize(count, sample);
        cursor.Blend(samples);
        break;
    case 5:
        cursor.Fill(input.ConsumeBool() ? count : input.ConsumeIntegral<std::uint32_t>(), sample,
                    input.ConsumeBool());
        break;
    case 6:
    {
        const PackedRect packed = AnyPacked(input, samples);
        cursor.ReadRect(packed);
        isReading = !packed.premultiplied;
        break;
    }
    case 7:
        cursor.WriteRect(AnyPacked(input, samples));
        break;
    case 8:
        cursor.FillRect(AnyRect(input), sample, input.ConsumeBool());
        break;
    default:
    {
        const auto run = input.ConsumeIntegralInRange<std::size_t>(1, 64);
        if (std::byte* const pixels = cursor.CurrentRun(run))
        {
            const std::size_t bytes = cursor.Format() == SurfaceFormat::StraightFloat ? 16 : 4;
            std::fill_n(pixels, run * bytes, std::byte{0x11}); // as a caller may
        }
    }
    }
    Require(!isReading || !showsHidden || std::ranges::count(samples, kHidden) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const SurfaceLayout layout = AnyLayout(input);
    const Interval x = AnyInterval(input);
    const Interval y = AnyInterval(input);
    const auto area = AreaOf(x, y, layout.width, layout.height);
    if (!area)
    {
        return 0;
    }
    Require(area->left >= 0 && area->left < area->right && area->right <= layout.width);
    Require(area->top >= 0 && area->top < area->bottom && area->bottom <= layout.height);
    Require(area->left <= x.min && area->right >= x.max && area->top <= y.min &&
            area->bottom >= y.max);

    const PixelGrid grid(layout);
    for (int row = 0; row < layout.height; ++row)
    {
        std::fill_n(grid.Row(row), layout.PitchBytes(), kOutside);
        if (row >= area->top && row < area->bottom)
        {
            std::fill_n(grid.At(area->left, row),
                        static_cast<std::size_t>(area->Width()) * layout.PixelBytes(),
                        std::byte{0x11});
        }
    }
    const std::vector<std::byte> before = Outside(grid, *area);
    ContractLog log;
    SampleCursor cursor(grid, *area, log);
    while (input.remaining_bytes() > 0)
    {
        AskSomething(cursor, input, layout.format == SurfaceFormat::Straight8);
    }
    Require(grid.GuardsAreIntact());
    Require(Outside(grid, *area) == before);
    return 0;
}
