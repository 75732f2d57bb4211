// What a renderer owes to the process and the desktop that it is loaded on.
#include "tools/glazelhost/validate/load_check.h"
#include "tools/glazelhost/validate/renderer_checks.h"

#include <array>
#include <cstdint>

namespace GlazelHost
{

namespace
{

using namespace RendererAPI;

// 1 x 1 pixels anywhere: a desktop that makes no window of ours makes none of an editor's.
bool WindowsCanBeMade() noexcept
{
    const HWND window = ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr,
                                          nullptr, nullptr);
    if (window != nullptr)
    {
        ::DestroyWindow(window);
    }
    return window != nullptr;
}

} // namespace

void CheckRendererExports(Check& check)
{
    const JudgedRenderer renderer(check.File());
    const EntryPoints& calls = renderer.Calls();
#define CHECK_ENTRY_POINT(pointer, name, required)                                                 \
    if (calls.pointer == nullptr)                                                                  \
    {                                                                                              \
        if (required)                                                                              \
        {                                                                                          \
            check.That(false, "it does not export " #name);                                        \
        }                                                                                          \
        else                                                                                       \
        {                                                                                          \
            check.Warn("it does not export " #name ", which is optional");                         \
        }                                                                                          \
    }
    RENDERER_ENTRY_POINTS(CHECK_ENTRY_POINT)
#undef CHECK_ENTRY_POINT
}

void CheckRendererStart(Check& check)
{
    StartedRenderer started(check);
    if (!started.isUsable)
    {
        return;
    }
    const EntryPoints& calls = started.renderer.Calls();
    check.That(calls.initRenderer(kStartMode) == 0,
               "InitRenderer(3) does not answer 0 for the second effect of a process");
    calls.exitRenderer();
    check.That(calls.initRenderer(kStartMode) == 0,
               "InitRenderer(3) does not answer 0 after ExitRenderer");
}

void CheckRendererUnload(Check& check)
{
    constexpr unsigned kLoads = 25;
    CheckLoads(check, kLoads, [&check] {
        StartedRenderer started(check);
        const Record look = started.isUsable ? started.renderer.LookOf(check) : Record();
        if (look.empty())
        {
            return HMODULE{nullptr};
        }
        const PictureShape shape{64, 16, kFormatBgra8, 0};
        JudgedPicture picture(shape);
        picture.FillAtRandom(check);
        FrameBufferDesc frame = picture.Description();
        started.renderer.Render(frame, frame, look);
        FrameBufferDesc icon{};
        started.renderer.Calls().getSessionIcon(look.data(),
                                                static_cast<std::uint32_t>(look.size()), &icon);
        return started.renderer.Module();
    });
}

void CheckRendererNoDesktop(Check& check)
{
    StartedRenderer started(check);
    if (!started.isUsable)
    {
        return;
    }
    if (WindowsCanBeMade())
    {
        check.Skip("there is a desktop here");
        return;
    }
    const Record look = started.renderer.LookOf(check);
    JudgedPicture preview({32, 16, kFormatBgra8, 0});
    preview.FillAtRandom(check);
    FrameBufferDesc frame = preview.Description();
    const auto size = static_cast<std::uint32_t>(look.size());
    const EntryPoints& calls = started.renderer.Calls();
    check.That(calls.doModalUI(&frame, look.data(), size) == kEditorUnavailable,
               "DoModalUI does not answer 10 where no window can be made");
    if (calls.doModalUI2 != nullptr)
    {
        check.That(calls.doModalUI2(&frame, look.data(), size, 1) == kEditorUnavailable,
                   "DoModalUI2 does not answer 10 where no window can be made");
    }
}

} // namespace GlazelHost
