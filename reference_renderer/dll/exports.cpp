// The sixteen entry points. Each unpacks its arguments and asks the one renderer of the process.
#include "contract/entry_points.h"
#include "platform/runtime/exception_state.h"
#include "reference_renderer/dll/renderer.h"
#include "reference_renderer/editor/window_classes.h"

#include <cstring>

#include <windows.h>

namespace ReferenceRenderer
{

// Nothing is declared for it in the toolchain's headers; ntdll.dll exports it.
extern "C" NTSYSAPI BOOLEAN NTAPI RtlDllShutdownInProgress(void);

namespace
{

// Never destroyed: a binding may call ExitRenderer while the process ends, after this library's own
// destructors would have run.
union OneRenderer
{
    constexpr OneRenderer() noexcept : renderer() {}
    ~OneRenderer() {}
    Renderer renderer;
};

constinit OneRenderer g_one;

std::span<const std::uint8_t> Bytes(const void* data, std::uint32_t size) noexcept
{
    return {static_cast<const std::uint8_t*>(data), data != nullptr ? size : 0U};
}

} // namespace

extern "C"
{

std::int32_t InitRenderer(std::uint32_t mode) noexcept
{
    constexpr std::int32_t kModeRefused = 1;
    if (mode != RendererAPI::kStartMode)
    {
        return kModeRefused;
    }
    // Without threads of its own the renderer is slower, not broken: that is no failed start.
    std::ignore = g_one.renderer.Start();
    return 0;
}

void ExitRenderer() noexcept
{
    // While the process ends, other threads are gone with the locks that they held.
    if (!RtlDllShutdownInProgress())
    {
        g_one.renderer.Stop();
    }
}

std::int32_t DoModalUI(FrameBufferDesc* preview, const void* record,
                       std::uint32_t recordSize) noexcept
{
    return g_one.renderer.Edit(preview, Bytes(record, recordSize), false);
}

std::int32_t DoModalUI2(FrameBufferDesc* preview, const void* record, std::uint32_t recordSize,
                        std::uint32_t linear) noexcept
{
    return g_one.renderer.Edit(preview, Bytes(record, recordSize), linear == 1);
}

// A profile would say how the display shows colours; pictures are shown without one.
std::int32_t DoModalUIWithProfile(FrameBufferDesc* preview, const void* record,
                                  std::uint32_t recordSize, const void*, std::uint32_t,
                                  std::uint32_t linear) noexcept
{
    return g_one.renderer.Edit(preview, Bytes(record, recordSize), linear == 1);
}

std::int32_t RenderFrame(FrameBufferDesc* source, FrameBufferDesc* destination, const void* record,
                         std::uint32_t recordSize, std::uint32_t flags, std::int32_t) noexcept
{
    return g_one.renderer.RenderFrame(source, destination, Bytes(record, recordSize), flags);
}

std::int32_t LoadSessionFile(const void* path, std::uint32_t options) noexcept
{
    const auto* const text = static_cast<const char*>(path);
    return g_one.renderer.Import(text != nullptr ? std::string_view(text) : std::string_view(),
                                 options);
}

std::int32_t GetSessionIcon(const void* record, std::uint32_t recordSize,
                            FrameBufferDesc* icon) noexcept
{
    return icon != nullptr && g_one.renderer.DrawIcon(Bytes(record, recordSize), *icon) ? 1 : 0;
}

std::uint32_t GetSessionDataSize() noexcept
{
    return g_one.renderer.ProducedSize();
}

std::int32_t GetSessionData(void* buffer, std::uint32_t bufferSize) noexcept
{
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    return g_one.renderer.CopyProduced({bytes, bytes != nullptr ? bufferSize : 0U}) ? 1 : 0;
}

void InterpolateSessionData(const void* recordA, std::uint32_t sizeA, const void* recordB,
                            std::uint32_t sizeB, double fraction, void* output) noexcept
{
    if (output != nullptr && recordA != nullptr)
    {
        g_one.renderer.Interpolate(Bytes(recordA, sizeA), Bytes(recordB, sizeB), fraction,
                                   static_cast<std::uint8_t*>(output));
    }
}

std::int32_t BeginToolChain() noexcept
{
    return g_one.renderer.BeginToolChain() ? 1 : 0;
}

std::int32_t AddToolToChain(std::uint32_t tool) noexcept
{
    return g_one.renderer.AddTool(tool);
}

void SetToolParameterValue(std::uint32_t tool, std::uint32_t parameter, double value) noexcept
{
    g_one.renderer.SetToolParameter(tool, parameter, value);
}

// There are no features to switch and no mask: accepted, and without effect.
void EnableFeature(std::uint32_t, std::uint32_t) noexcept {}
void SetTopLevelMaskParameterValue(std::uint32_t, double) noexcept {}

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void* terminating)
{
    switch (reason)
    {
    case DLL_PROCESS_ATTACH:
        if (!HasExceptionState())
        {
            return FALSE;
        }
        g_one.renderer.Attach();
        return TRUE;
    case DLL_THREAD_DETACH:
        EndThreadExceptionState();
        return TRUE;
    case DLL_PROCESS_DETACH:
        if (terminating == nullptr)
        {
            UnregisterEditorClasses();
            g_one.renderer.Detach();
        }
        return TRUE;
    default:
        return TRUE;
    }
}

} // extern "C"

namespace
{

using namespace RendererAPI;

// The compiler compares each entry point with what callers expect.
template <typename Expected, typename Exported>
constexpr bool kFits = std::is_convertible_v<Exported*, Expected*>;

#define CHECK_SIGNATURE(pointer, name, required)                                                   \
    static_assert(kFits<name##Function, decltype(name)>);
RENDERER_ENTRY_POINTS(CHECK_SIGNATURE)
#undef CHECK_SIGNATURE

} // namespace

} // namespace ReferenceRenderer
