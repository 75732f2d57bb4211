// The effect's work on one frame: input surface, renderer, output surface.
#include "binding/renderer_binding.h"
#include "effect/frame_number.h"
#include "effect/packed_walk.h"
#include "effect/plugin.h"
#include "effect/surface_memory.h"
#include "platform/runtime/foreign_call.h"
#include "support/exception_info.h"
#include "support/trace.h"

#include <cassert>
#include <cstdint>
#include <optional>
#include <tuple>

struct CPlugin::FrameContext
{
    const void* record;       // m_frame's block; may be null
    std::uint32_t recordSize; // bytes
    bool assumeLinear;        // the record's option word is 1
    FrameInformation information;
    std::int32_t number;
};

namespace
{

constexpr ULONG kLockTimeOutMs = 10000;
constexpr std::size_t kBytesPerSample = 4;

// The 8-bit path's result, shared by all effects: frames are processed one at a time.
FrameBuffer g_outputFrame;

bool IsEightBit(DXSAMPLEFORMATENUM format) noexcept
{
    return format == DXPF_ARGB32 || format == DXPF_PMARGB32;
}

// From here on: the surfaces, their locks and the renderer are somebody else's code, and what it
// throws comes out.

DXSAMPLEFORMATENUM FormatOf(IDXSurface* surface)
{
    DXSAMPLEFORMATENUM format = DXPF_ARGB32; // holds when the surface does not tell
    CallForeign([&] { std::ignore = surface->GetPixelFormat(nullptr, &format); });
    return format;
}

FrameInformation InformationOf(IDXSurface* surface)
{
    FrameInformation information;
    CComPtr<ISfFrameInformation> source;
    const HRESULT found = CallForeign([&] {
        return surface->QueryInterface(IID_ISfFrameInformation, reinterpret_cast<void**>(&source));
    });
    if (SUCCEEDED(found) && source != nullptr)
    {
        FrameInformation answer;
        if (SUCCEEDED(
                CallForeign([&] { return source->GetFrameInformation(&answer, sizeof answer); })))
        {
            information = answer;
        }
    }
    return information;
}

// Locks the surface, or its part in `bounds`, until the pointer is released.
template <typename SamplePointer>
CComPtr<SamplePointer> LockSamples(IDXSurface* surface, const DXBNDS* bounds, DXLOCKSURF access,
                                   HRESULT& result, const char* message)
{
    CComPtr<SamplePointer> samples;
    result = CallForeign([&] {
        return surface->LockSurface(bounds, kLockTimeOutMs, access, __uuidof(SamplePointer),
                                    reinterpret_cast<void**>(&samples), nullptr);
    });
    CheckHr(result, message);
    CheckPtr(samples, message);
    return samples;
}

struct Size
{
    std::uint32_t width;
    std::uint32_t height;
};

Size SizeOf(IDXSurface* surface, HRESULT& result, const char* message)
{
    const CDXDBnds bounds(surface, result);
    CheckHr(result, message);
    return {static_cast<std::uint32_t>(bounds.Width()),
            static_cast<std::uint32_t>(bounds.Height())};
}

SurfaceMemory MemoryOf(IDXARGBReadPtr* samples, Size size)
{
    DXNATIVETYPEINFO native{};
    CallForeign([&] { return samples->GetNativeType(&native); });
    return {native.pFirstByte, native.lPitch, size.width, size.height};
}

// What the renderer is told of a surface that it reads or writes itself.
struct DirectImage
{
    FrameBufferDesc desc;
    bool bottomUp;
};

DirectImage DescribeDirectly(IDXSurface* surface, IDXARGBReadPtr* samples, HRESULT& result)
{
    const Size size = SizeOf(surface, result, "WorkProc surfaceBounds failed!\n");
    const SurfaceMemory memory = MemoryOf(samples, size);
    const std::uint32_t format = IsEightBit(FormatOf(surface)) ? kFormatBgra8 : kFormatBgraFloat;
    const auto aspect = static_cast<float>(InformationOf(surface).pixelAspect);
    return {Describe(memory, format, aspect), memory.IsBottomUp()};
}

Geometry::Rect AreaOf(const CDXDBnds& bounds) noexcept
{
    return {bounds.Left(), bounds.Top(), bounds.Width(), bounds.Height()};
}

DXPACKEDRECTDESC PackedRect(const Geometry::Rect& area, const PackedWalk& walk,
                            void* pixels) noexcept
{
    if (!walk.isWholeFrame)
    {
        Trace(0, "outLeft=%d outTop=&d outWidth=%d outHeight=%d\n", area.left, area.top, area.width,
              area.height);
    }
    return {static_cast<DXBASESAMPLE*>(pixels) + walk.firstSample,
            FALSE,
            {0, 0, area.width, area.height},
            walk.rowPadding};
}

} // namespace

HRESULT CPlugin::WorkProc(const CDXTWorkInfoNTo1& workInfo, BOOL* continueProcessing) noexcept
{
    assert(IsLocked());
    if (*continueProcessing == FALSE)
    {
        Trace(0, "WorkProc pbContinue was FALSE\n");
        return S_OK;
    }
    HRESULT result = S_OK;
    return ResultOf(result, [&] {
        RefreshFrameProps();
        FrameContext frame{.record = m_frame.data,
                           .recordSize = m_frame.size,
                           .assumeLinear = m_frame.flag == kAssumeLinearGamma,
                           .information = {},
                           .number = 0};
        // Held: a surface that handles messages may let somebody set up others in their place.
        const CComPtr<IDXSurface> output(OutputSurface());
        CheckPtr(output, "WorkProc null output surface!\n");
        const CComPtr<IDXSurface> input(InputSurface(0));
        CheckPtr(input, "WorkProc null input surface!\n");
        const DXSAMPLEFORMATENUM outputFormat = FormatOf(output);
        const DXSAMPLEFORMATENUM inputFormat = FormatOf(input);

        // Also when the direct path then reads the input's own memory: what is fetched here is the
        // look editor's preview frame.
        FetchInput(input, inputFormat, result);
        frame.information = InformationOf(input);
        m_inputFrame.SetAspect(static_cast<float>(frame.information.pixelAspect));
        frame.number = FrameNumber(frame.information.frameTime, frame.information.framesPerSecond);
        Trace(0, "WorkProc w=%d h=%d as=%f\n", m_inputFrame.width, m_inputFrame.height,
              static_cast<double>(m_inputFrame.aspect));
        Trace(0, "f=%d ptr=%x w=%d h=%d rp=%d sc=%f sw=%d as=%f tx=%d\n", m_inputFrame.format,
              m_inputFrame.pixels, m_inputFrame.width, m_inputFrame.height, m_inputFrame.rowPitch,
              static_cast<double>(m_inputFrame.scale), m_inputFrame.sw,
              static_cast<double>(m_inputFrame.aspect), m_inputFrame.texture);

        if (IsEightBit(outputFormat))
        {
            RenderBuffered(output, workInfo, frame, result);
        }
        else
        {
            RenderDirect(input, output, frame, result);
        }
    });
}

void CPlugin::FetchInput(IDXSurface* input, DXSAMPLEFORMATENUM format, HRESULT& result)
{
    const auto samples = LockSamples<IDXARGBReadPtr>(input, nullptr, DXLOCKF_READ, result,
                                                     "WorkProc input LockSurface failed!\n");
    const Size size = SizeOf(input, result, "WorkProc inputSurfaceBounds failed!\n");
    const bool eightBit = IsEightBit(format);
    void* const pixels =
        m_inputFrame.Allocate(size.width, size.height, eightBit ? kFormatBgra8 : kFormatBgraFloat);
    CheckPtr(pixels, "WorkProc can't allocate input buffer!\n");
    if (eightBit)
    {
        const DXPACKEDRECTDESC rect{
            static_cast<DXBASESAMPLE*>(pixels),
            FALSE,
            {0, 0, static_cast<LONG>(size.width), static_cast<LONG>(size.height)},
            0};
        CallForeign([&] { samples->UnpackRect(&rect); });
    }
    else
    {
        CopyRows(MemoryOf(samples, size), m_inputFrame);
    }
}

void CPlugin::RenderBuffered(IDXSurface* output, const CDXTWorkInfoNTo1& workInfo,
                             const FrameContext& frame, HRESULT& result)
{
    const Geometry::Rect area = AreaOf(workInfo.OutputBnds);
    const std::optional<PackedWalk> walk =
        WalkOver(area, static_cast<std::int32_t>(m_inputFrame.width),
                 static_cast<std::int32_t>(m_inputFrame.height));
    std::size_t bytesBefore = 0;
    std::size_t bytesBehind = 0;
    CheckThat(walk && !__builtin_mul_overflow(walk->samplesBefore, kBytesPerSample, &bytesBefore) &&
                  !__builtin_mul_overflow(walk->samplesBehind, kBytesPerSample, &bytesBehind),
              DXTERR_INVALID_BOUNDS, "WorkProc output bounds too large!\n");
    FrameBuffer& rendered = g_outputFrame;
    CheckPtr(rendered.Allocate(m_inputFrame.width, m_inputFrame.height, kFormatBgra8,
                               {bytesBefore, bytesBehind}),
             "WorkProc can't allocate output buffer!\n");
    rendered.SetAspect(m_inputFrame.aspect);
    if (!m_inputFrame.IsValid() || !rendered.IsValid())
    {
        Trace(0, "WorkProc invalid buffer desc\n");
        return;
    }
    // The option "Assume Linear Gamma" is for float pictures: 8-bit ones are never linear, so the
    // record's option word is not passed on.
    RendererAPI::Binding().RenderFrame(&m_inputFrame, &rendered, frame.record, frame.recordSize,
                                       RendererAPI::kRenderFrame, frame.number);
    const auto samples =
        LockSamples<IDXARGBReadWritePtr>(output, &workInfo.OutputBnds, DXLOCKF_READWRITE, result,
                                         "WorkProc output LockSurface failed!\n");
    const DXPACKEDRECTDESC rect = PackedRect(area, *walk, rendered.pixels);
    CallForeign([&] { samples->PackRect(&rect); });
}

void CPlugin::RenderDirect(IDXSurface* input, IDXSurface* output, const FrameContext& frame,
                           HRESULT& result)
{
    g_outputFrame.Release(); // not needed while frames go this way
    const auto outputSamples = LockSamples<IDXARGBReadWritePtr>(
        output, nullptr, DXLOCKF_READWRITE, result, "WorkProc output LockSurface failed!\n");
    const DirectImage target = DescribeDirectly(output, outputSamples, result);
    const auto inputSamples = LockSamples<IDXARGBReadPtr>(input, nullptr, DXLOCKF_READ, result,
                                                          "WorkProc input LockSurface failed!\n");
    const HRESULT lockResult = result;
    const DirectImage source = DescribeDirectly(input, inputSamples, result);
    result = lockResult;
    if (!source.desc.IsValid() || !target.desc.IsValid())
    {
        Trace(0, "WorkProc invalid buffer desc\n");
        return;
    }
    std::uint32_t flags = RendererAPI::kRenderFrame;
    flags |= frame.assumeLinear ? RendererAPI::kRenderLinear : 0U;
    // One bit for both images, the input's: a host keeps both the same way up.
    flags |= source.bottomUp ? RendererAPI::kRenderFlipped : 0U;
    FrameBufferDesc sourceDesc = source.desc;
    FrameBufferDesc targetDesc = target.desc;
    RendererAPI::Binding().RenderFrame(&sourceDesc, &targetDesc, frame.record, frame.recordSize,
                                       flags, frame.number);
}
