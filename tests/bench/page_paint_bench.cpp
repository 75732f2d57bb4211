// What a full paint of the property page costs, thumbnail and all, beside a plain BitBlt of the
// same area. Prints conditions and a ratio and judges nothing.
#include "binding/renderer_binding.h"
#include "propertypage/panel_image.h"
#include "propertypage/plugin_pp.h"
#include "tests/bench/timing.h"
#include "tests/doubles/fake_exchange.h"
#include "tests/doubles/renderers/renderer_variant.h"
#include "tests/propertypage/panel_picture.h"

#include <cstdio>

namespace
{

constexpr int kWidth = 1000;
constexpr int kHeight = 100;
constexpr int kRuns = 501;

// A window without a border on the screen; the system destroys it with the process.
HWND MakeFrame()
{
    return ::CreateWindowExW(WS_EX_TOPMOST, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 100, 100, kWidth,
                             kHeight, nullptr, nullptr, nullptr, nullptr);
}

CComPtr<CPluginPP> OpenPage(IUnknown* effect, HWND frame)
{
    CComObject<CPluginPP>* object = nullptr;
    if (FAILED(CComObject<CPluginPP>::CreateInstance(&object)))
    {
        return nullptr;
    }
    CComPtr<CPluginPP> page = object;
    const RECT rect{0, 0, kWidth, kHeight};
    const bool open = SUCCEEDED(page->SetObjects(1, &effect)) &&
                      SUCCEEDED(page->Activate(frame, &rect, FALSE)) &&
                      SUCCEEDED(page->Show(SW_SHOWNA));
    return open ? page : nullptr;
}

double MedianOfBitBlt(HWND window)
{
    const HDC target = ::GetDC(window);
    const HDC source = ::CreateCompatibleDC(target);
    const HBITMAP bitmap = ::CreateCompatibleBitmap(target, kWidth, kHeight);
    const HGDIOBJ old = ::SelectObject(source, bitmap);
    const double median = MedianMicroseconds(
        kRuns, [&] { ::BitBlt(target, 0, 0, kWidth, kHeight, source, 0, 0, SRCCOPY); });
    ::SelectObject(source, old);
    ::DeleteObject(bitmap);
    ::DeleteDC(source);
    ::ReleaseDC(window, target);
    return median;
}

} // namespace

int main()
{
    Recording& recording = UseRenderer(L"complete");
    Thumbnail thumbnail = SampleThumbnail({kWidth, kHeight});
    recording.iconPixels = thumbnail.pixels.data();
    recording.iconWidth = kWidth;
    recording.iconHeight = kHeight;
    FakeExchange effect;
    effect.bytes.assign(64, 1);
    const HWND frame = MakeFrame();
    const CComPtr<CPluginPP> page = OpenPage(&effect, frame);
    if (RendererAPI::Binding().Start(RendererAPI::kStartMode) != 0 || page == nullptr)
    {
        std::puts("the page does not open; is there a display?");
        return 1;
    }
    const HWND window = ::GetWindow(frame, GW_CHILD);
    const auto paint = [&] {
        ::RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
    };
    paint();

    FrameBufferDesc icon{};
    icon.pixels = thumbnail.pixels.data();
    icon.width = kWidth;
    icon.height = kHeight;
    const double blend = MedianMicroseconds(kRuns, [&] {
        const PanelImage image = ImageOf(icon, {kWidth, kHeight});
        asm volatile("" : : "r"(image.pixels.get()) : "memory"); // the blend must really happen
    });
    const double copy = MedianOfBitBlt(window);
    const double full = MedianMicroseconds(kRuns, paint);
    std::printf(
        "page of %d x %d pixels, thumbnail of the same size (%d x %d of it visible), median "
        "of %d runs\n",
        kWidth, kHeight, kWidth - 1 - kThumbnailOrigin.x, kHeight - 1 - kThumbnailOrigin.y, kRuns);
    std::printf("  BitBlt              %8.2f us\n", copy);
    std::printf("  thumbnail's blend   %8.2f us   ratio %.2f\n", blend, blend / copy);
    std::printf("  full paint          %8.2f us   ratio %.2f\n", full, full / copy);
    return 0;
}
