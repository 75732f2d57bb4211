// What an effect makes of frames, and how it gets on with surfaces.
#include "tools/glazelhost/media/memory_stream.h"
#include "tools/glazelhost/plugin/effect_session.h"
#include "tools/glazelhost/plugin/look.h"
#include "tools/glazelhost/validate/judged_plug_in.h"
#include "tools/glazelhost/validate/plug_in_checks.h"
#include "tools/glazelhost/validate/refusing_surface.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

namespace GlazelHost
{

namespace
{

struct FrameSize
{
    int width;
    int height;
};
constexpr int kWholePixels = 16; // the largest pixel; rows apart by these alone go to the renderer

// How the rows lie, the way a host may have them: padded by whole pixels of both kinds, by some of
// 8 bits only, and by no whole pixels.
constexpr std::array kOrders{
    SurfaceOptions{false, false},     SurfaceOptions{true, false},
    SurfaceOptions{false, true},      SurfaceOptions{true, true},
    SurfaceOptions{false, false, 16}, SurfaceOptions{true, false, 48},
    SurfaceOptions{true, false, 4},   SurfaceOptions{false, false, 7},
    SurfaceOptions{true, false, 21},
};

// clang-format off
constexpr std::array kFrameSizes{
    FrameSize{1, 1}, FrameSize{2, 1}, FrameSize{1, 3}, FrameSize{17, 5}, FrameSize{64, 64},
    FrameSize{641, 359}, FrameSize{16384, 1}, FrameSize{1, 16384}, FrameSize{2, 2},
};
// clang-format on

Image RandomImage(Check& check, FrameSize size, SampleType type)
{
    Image image{size.width, size.height, type, true, {}};
    image.pixels.resize(image.RowBytes() * static_cast<std::size_t>(size.height));
    if (type == SampleType::Byte)
    {
        std::ranges::copy(check.RandomBytes(image.pixels.size()), image.pixels.begin());
        return image;
    }
    for (std::size_t at = 0; at < image.pixels.size(); at += sizeof(float))
    {
        const float value = static_cast<float>(check.Random(1024)) / 1023.0F;
        std::memcpy(&image.pixels[at], &value, sizeof value);
    }
    return image;
}

// What the renderer alone makes of the picture.
Image RenderedDirectly(const JudgedRenderer& renderer, const Image& picture, const Record& look)
{
    Image result = picture;
    FrameBufferDesc frame{};
    frame.format = picture.type == SampleType::Byte ? kFormatBgra8 : kFormatBgraFloat;
    frame.pixels = result.pixels.data();
    frame.width = frame.rowPitch = static_cast<std::uint32_t>(picture.width);
    frame.height = static_cast<std::uint32_t>(picture.height);
    const bool isLinear = picture.type == SampleType::Float && LinearOption(look).value_or(true);
    FrameBufferDesc same = frame;
    renderer.Render(frame, same, look,
                    RendererAPI::kRenderFrame | (isLinear ? RendererAPI::kRenderLinear : 0U));
    return result;
}

std::string NameOf(const Image& image, const SurfaceOptions& options)
{
    return std::to_string(image.width) + " x " + std::to_string(image.height) +
           (image.type == SampleType::Byte ? " 8-bit" : " float") +
           (options.premultiplied ? " premultiplied" : "") +
           (options.bottomUp ? " bottom-up" : "") + " frame" +
           (options.padding != 0
                ? " with " + std::to_string(options.padding) + " bytes behind each row"
                : "");
}

// Two surfaces of which one refuses a call, and the effect between them.
class RefusedFrames
{
public:
    RefusedFrames(Check& check, const JudgedEffect& judged, const SurfaceLayout& layout)
        : m_check(check), m_transform(judged.As<IDXTransform>(IID_IDXTransform, "IDXTransform")),
          m_input(new CRefusingSurface(layout)), m_output(new CRefusingSurface(layout))
    {
        const std::array<IUnknown*, 1> inputs{m_input.p};
        const std::array<IUnknown*, 1> outputs{m_output.p};
        check.Answers(S_OK, m_transform->Setup(inputs.data(), 1, outputs.data(), 1, 0), "Setup");
        check.Answers(S_OK, Execute(), "Execute");
    }
    ~RefusedFrames() { std::ignore = m_transform->Setup(nullptr, 0, nullptr, 0, 0); }
    RefusedFrames(const RefusedFrames&) = delete;
    RefusedFrames& operator=(const RefusedFrames&) = delete;

    // Each of the calls of one frame fails once.
    void RefuseEach(bool ofInput, SurfaceCall call)
    {
        CRefusingSurface& surface = ofInput ? *m_input.p : *m_output.p;
        const std::string name = std::string(ofInput ? "the input's " : "the output's ") +
                                 (call == SurfaceCall::LockSurface ? "LockSurface" : "GetBounds") +
                                 " fails: Execute";
        for (unsigned nth = 1; nth < 20; ++nth)
        {
            surface.Refuse(call, nth);
            const HRESULT result = Execute();
            const bool wasRefused = surface.HasRefused();
            surface.Refuse(call, 0);
            if (!wasRefused)
            {
                return;
            }
            m_check.Answers(CRefusingSurface::kRefusal, result, name);
            for (CRefusingSurface* each : {m_input.p, m_output.p})
            {
                each->Surface().CheckAfterUse();
                m_check.That(each->Surface().Log().Summary().empty(),
                             name + " leaves a surface with: " + each->Surface().Log().Summary());
                each->Surface().Log().Clear();
            }
            m_check.Answers(S_OK, Execute(), "Execute after a call of a surface failed");
        }
    }

private:
    HRESULT Execute() const { return m_transform->Execute(nullptr, nullptr, nullptr); }

    Check& m_check;
    CComPtr<IDXTransform> m_transform;
    CComPtr<CRefusingSurface> m_input;
    CComPtr<CRefusingSurface> m_output;
};

} // namespace

void CheckEffectFrames(Check& check)
{
    JudgedPlugIn plugIn(check);
    const CComPtr<IUnknown> starter = plugIn.module.CreateEffect(); // it starts the renderer
    const JudgedRenderer renderer(plugIn.renderer.State().path);
    const Record look = plugIn.LookOf();
    for (const SurfaceOptions& options : kOrders)
    {
        EffectSession session(plugIn.module, options);
        EffectControls controls(session.Effect(), check.File());
        for (const bool isLinear : {false, true})
        {
            const Record record = WithOption(look, isLinear);
            controls.LoadLook(record);
            for (const FrameSize& size : kFrameSizes)
            {
                for (const SampleType type : {SampleType::Byte, SampleType::Float})
                {
                    const Image picture = RandomImage(check, size, type);
                    Image output;
                    session.Render(picture, output, {1.0, 25.0, 400000});
                    // A premultiplied surface rounds on the way in and out, and the renderer is
                    // told the pitch in pixels: of others it is asked that nothing else is written.
                    const bool isExact = type == SampleType::Float
                                             ? options.padding % kWholePixels == 0
                                             : !options.premultiplied;
                    check.That(!isExact || output.pixels ==
                                               RenderedDirectly(renderer, picture, record).pixels,
                               NameOf(picture, options) + " is not what the renderer makes of it");
                }
            }
        }
    }
}

void CheckEffectAutomatedFrames(Check& check)
{
    JudgedPlugIn plugIn(check);
    EffectSession session(plugIn.module);
    EffectControls controls(session.Effect(), check.File());
    const JudgedRenderer renderer(plugIn.renderer.State().path);
    const Record first = plugIn.LookOf();
    const Record last = plugIn.LookOf(kOtherCubeText);
    const Image picture = RandomImage(check, {31, 7}, SampleType::Byte);
    Image output;
    const auto shows = [&](const Record& record, const char* otherwise) {
        session.Render(picture, output, {});
        check.That(output.pixels == RenderedDirectly(renderer, picture, record).pixels, otherwise);
    };
    controls.LoadLook(last);
    controls.SetAutomation(true);
    controls.SetKeyframes(*StreamOf(first), *StreamOf(last));
    controls.SetFraction(0.0);
    shows(first, "at fraction 0 a frame does not show the earlier keyframe");
    controls.SetFraction(1.0);
    shows(last, "at fraction 1 a frame does not show the later keyframe");
    controls.SetFraction(0.5);
    Record between(first.size());
    renderer.Calls().interpolateSessionData(first.data(), static_cast<std::uint32_t>(first.size()),
                                            last.data(), static_cast<std::uint32_t>(last.size()),
                                            0.5, between.data());
    shows(between, "at fraction 0.5 a frame does not show the renderer's blend");
    controls.SetAutomation(false);
    shows(last, "without automation a frame does not show the current look");
}

void CheckEffectFailingSurfaces(Check& check)
{
    const JudgedEffect judged(check);
    for (const SurfaceFormat format : {SurfaceFormat::Straight8, SurfaceFormat::StraightFloat})
    {
        RefusedFrames frames(check, judged, {9, 4, format, false});
        for (const SurfaceCall call : {SurfaceCall::LockSurface, SurfaceCall::GetBounds})
        {
            frames.RefuseEach(true, call);
            frames.RefuseEach(false, call);
        }
    }
}

} // namespace GlazelHost
