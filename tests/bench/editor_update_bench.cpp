// How often a second the look editor follows a slider on a 1080p picture: from the slider's step to
// the graded picture in the window, with the message from another thread counted in.
#include "contract/frame_buffer_desc.h"
#include "tests/bench/timing.h"
#include "tests/reference_renderer/core/look_fixtures.h"
#include "tests/reference_renderer/dll/loaded_renderer.h"
#include "tests/reference_renderer/editor/open_editor.h"

#include <cstdio>
#include <vector>

using namespace ReferenceRenderer;

namespace
{

constexpr std::uint32_t kWidth = 1920;
constexpr std::uint32_t kHeight = 1080;
constexpr int kRuns = 101;

template <typename Sample>
FrameBufferDesc Gradient(std::vector<Sample>& samples, std::uint32_t format, float white)
{
    samples.resize(std::size_t{kWidth} * kHeight * 4);
    for (std::size_t i = 0; i < samples.size(); ++i)
    {
        const std::size_t pixel = i / 4;
        const auto share = static_cast<float>((pixel * (i % 4 + 1) + pixel / kWidth) % kWidth) /
                           static_cast<float>(kWidth);
        samples[i] = static_cast<Sample>(share * white);
    }
    FrameBufferDesc frame{};
    frame.format = format;
    frame.pixels = samples.data();
    frame.width = kWidth;
    frame.height = kHeight;
    frame.rowPitch = kWidth;
    return frame;
}

void Measure(const LoadedRenderer& library, FrameBufferDesc& frame, const char* picture,
             const Look& look, const char* kind)
{
    const std::vector<std::uint8_t> record = RecordOf(look);
    OpenEditor editor([&] {
        return library.doModalUI2(&frame, record.data(), static_cast<std::uint32_t>(record.size()),
                                  1);
    });
    for (const SIZE size : {SIZE{1200, 720}, SIZE{2560, 1440}})
    {
        editor.Resize(size.cx, size.cy);
        RECT shown{};
        ::GetClientRect(editor.Child(IDC_PICTURE), &shown);
        bool up = false;
        const double update = MedianMicroseconds(kRuns, [&] {
            up = !up;
            editor.SlideKey(Control::SlopeGreen, up ? VK_RIGHT : VK_LEFT);
        });
        std::printf("  %-13s %-16s picture in %4ld x %4ld: %7.2f ms, %6.1f a second\n", picture,
                    kind, shown.right, shown.bottom, update / 1e3, 1e6 / update);
    }
    editor.CloseWith(IDCANCEL);
}

} // namespace

int main()
{
    const LoadedRenderer library;
    std::vector<std::uint8_t> bytes;
    std::vector<float> floats;
    FrameBufferDesc eightBit = Gradient(bytes, kFormatBgra8, 255.0F);
    FrameBufferDesc linear = Gradient(floats, kFormatBgraFloat, 1.0F);
    Cdl powers;
    powers.power = {0.9F, 1.1F, 1.2F};
    powers.saturation = 1.1F;
    Look cube = CubeLook(CubeOf(25, Swirled));
    cube.cdlMode = CdlMode::Clamped;
    Look all = cube;
    all.cdl = powers;
    std::printf("one step of a slider, 1920 x 1080, median of %d runs\n", kRuns);
    Measure(library, eightBit, "8-bit", CdlLook(powers), "CDL");
    Measure(library, eightBit, "8-bit", all, "CDL and 3D LUT");
    Measure(library, linear, "linear float", CdlLook({}), "slope alone");
    Measure(library, linear, "linear float", CdlLook(powers), "CDL");
    Measure(library, linear, "linear float", cube, "slope and 3D LUT");
    Measure(library, linear, "linear float", all, "CDL and 3D LUT");
    return 0;
}
