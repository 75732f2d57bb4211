// How fast the look editor follows a slider: from its step to the graded picture in the window,
// with the message from another thread counted in. Prints JSON for ./bench.sh and judges nothing;
// needs a display.
#include "contract/frame_buffer_desc.h"
#include "tests/bench/figures.h"
#include "tests/reference_renderer/core/look_fixtures.h"
#include "tests/reference_renderer/dll/loaded_renderer.h"
#include "tests/reference_renderer/editor/open_editor.h"

#include <string>
#include <vector>

using namespace ReferenceRenderer;

namespace
{

struct Size
{
    const char* name;
    std::uint32_t width;
    std::uint32_t height;
};

constexpr int kRounds = 31;

template <typename Sample>
FrameBufferDesc Gradient(const Size& size, std::vector<Sample>& samples, std::uint32_t format,
                         float white)
{
    samples.resize(std::size_t{size.width} * size.height * 4);
    for (std::size_t i = 0; i < samples.size(); ++i)
    {
        const std::size_t pixel = i / 4;
        const auto share =
            static_cast<float>((pixel * (i % 4 + 1) + pixel / size.width) % size.width) /
            static_cast<float>(size.width);
        samples[i] = static_cast<Sample>(share * white);
    }
    FrameBufferDesc frame{};
    frame.format = format;
    frame.pixels = samples.data();
    frame.width = size.width;
    frame.height = size.height;
    frame.rowPitch = size.width;
    return frame;
}

// Set when the loop of the editor takes what its scope shows next.
HANDLE g_answered = nullptr;

LRESULT CALLBACK WatchScope(int code, WPARAM removed, LPARAM lParam) noexcept
{
    const auto& message = *reinterpret_cast<const MSG*>(lParam);
    if (code == HC_ACTION && removed == PM_REMOVE && message.message == SCOPE_ANSWERED)
    {
        ::SetEvent(g_answered);
    }
    return ::CallNextHookEx(nullptr, code, removed, lParam);
}

// In a window that fills the display of the tests. With the key of a scope that is open, and then
// once more until that shows the step too.
void Measure(const LoadedRenderer& library, FrameBufferDesc& frame, const Look& look,
             const std::string& name, Figures& figures, WPARAM scopeKey = 0)
{
    const std::vector<std::uint8_t> record = RecordOf(look);
    OpenEditor editor([&] {
        return library.doModalUI2(&frame, record.data(), static_cast<std::uint32_t>(record.size()),
                                  1);
    });
    editor.Resize(1280, 1024);
    bool up = false;
    const auto step = [&] {
        up = !up;
        editor.SlideKey(Control::SlopeGreen, up ? VK_RIGHT : VK_LEFT);
    };
    Figures steps;
    steps.Add(name, 1.0, step);
    if (scopeKey == 0)
    {
        steps.Run(kRounds);
        figures.Take(steps);
    }
    else
    {
        g_answered = ::CreateEventW(nullptr, FALSE, FALSE, nullptr);
        const HHOOK hook = ::SetWindowsHookExW(WH_GETMESSAGE, WatchScope, nullptr, editor.Thread());
        editor.PressKey(scopeKey, {});
        ::WaitForSingleObject(g_answered, kDeadlineMs);
        steps.Run(kRounds);
        figures.Take(steps);
        Figures untilScope;
        untilScope.Add(name + ", until it shows", 1.0, [&] {
            ::ResetEvent(g_answered);
            step();
            ::WaitForSingleObject(g_answered, kDeadlineMs);
            ::SendMessageW(editor.Child(IDC_SCOPE), WM_NULL, 0, 0); // it is painted
        });
        untilScope.Run(kRounds);
        figures.Take(untilScope);
        ::UnhookWindowsHookEx(hook);
        ::CloseHandle(g_answered);
    }
    editor.CloseWith(IDCANCEL);
}

} // namespace

int main()
{
    const LoadedRenderer library;
    Cdl powers;
    powers.power = {0.9F, 1.1F, 1.2F};
    powers.saturation = 1.1F;
    Look cube = CubeLook(CubeOf(25, Swirled));
    cube.cdlMode = CdlMode::Clamped;
    Look all = cube;
    all.cdl = powers;
    Figures figures;
    for (const Size& size : {Size{"1920x1080", 1920, 1080}, Size{"3840x2160", 3840, 2160}})
    {
        std::vector<std::uint8_t> bytes;
        std::vector<float> floats;
        FrameBufferDesc eightBit = Gradient(size, bytes, kFormatBgra8, 255.0F);
        FrameBufferDesc linear = Gradient(size, floats, kFormatBgraFloat, 1.0F);
        const std::string behind = std::string(", ") + size.name;
        Measure(library, eightBit, CdlLook(powers), "slider 8-bit, CDL" + behind, figures);
        Measure(library, eightBit, all, "slider 8-bit, CDL and LUT" + behind, figures);
        Measure(library, linear, all, "slider linear float, CDL and LUT" + behind, figures);
        const char* const scopes[] = {"parade", "waveform", "vectorscope", "histogram"};
        for (std::size_t i = 0; i < std::size(scopes); ++i)
        {
            const std::string name = std::string(", ") + scopes[i] + behind;
            Measure(library, eightBit, all, "slider 8-bit, CDL and LUT" + name, figures, VK_F2 + i);
            Measure(library, linear, all, "slider linear float, CDL and LUT" + name, figures,
                    VK_F2 + i);
        }
    }
    figures.Print();
    return 0;
}
