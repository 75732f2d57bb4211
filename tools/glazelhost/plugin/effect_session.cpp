#include "tools/glazelhost/plugin/effect_session.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/plugin/com_calls.h"
#include "tools/glazelhost/plugin/message_boxes.h"

#include <array>
#include <cstring>
#include <tuple>

namespace GlazelHost
{

namespace
{

SurfaceFormat FormatFor(SampleType type, const SurfaceOptions& options) noexcept
{
    if (type == SampleType::Float)
    {
        return SurfaceFormat::StraightFloat;
    }
    return options.premultiplied ? SurfaceFormat::Premultiplied8 : SurfaceFormat::Straight8;
}

// Images hold straight alpha; only 8-bit surfaces can hold another.
void PutPicture(const Image& image, const PixelGrid& grid) noexcept
{
    const std::size_t rowBytes = image.RowBytes();
    for (int y = 0; y < image.height; ++y)
    {
        const std::byte* row = image.pixels.data() + rowBytes * static_cast<std::size_t>(y);
        if (grid.Layout().format == SurfaceFormat::StraightFloat)
        {
            std::memcpy(grid.Row(y), row, rowBytes);
        }
        else
        {
            StoreSamples(
                grid.Row(y), grid.Layout().format, false,
                {reinterpret_cast<const Sample*>(row), static_cast<std::size_t>(image.width)});
        }
    }
}

void TakePicture(const PixelGrid& grid, Image& image) noexcept
{
    const std::size_t rowBytes = image.RowBytes();
    for (int y = 0; y < image.height; ++y)
    {
        std::byte* row = image.pixels.data() + rowBytes * static_cast<std::size_t>(y);
        if (grid.Layout().format == SurfaceFormat::StraightFloat)
        {
            std::memcpy(row, grid.Row(y), rowBytes);
        }
        else
        {
            LoadSamples(grid.Row(y), grid.Layout().format, false,
                        {reinterpret_cast<Sample*>(row), static_cast<std::size_t>(image.width)});
        }
    }
}

// A surface in the memory of an Image for as long as this lives.
class ShownPicture
{
public:
    ShownPicture(CHostSurface& surface, std::byte* pixels) : m_surface(surface) { Show(pixels); }
    ~ShownPicture() { Show(nullptr); }
    ShownPicture(const ShownPicture&) = delete;
    ShownPicture& operator=(const ShownPicture&) = delete;

private:
    void Show(std::byte* pixels) noexcept
    {
        m_surface.Show(PixelGrid(m_surface.Pixels().Layout(), pixels));
    }

    CHostSurface& m_surface;
};

} // namespace

EffectSession::EffectSession(const PluginModule& module, const SurfaceOptions& options)
    : m_module(module), m_options(options), m_effect(module.CreateEffect()),
      m_transform(
          QueryEffect<IDXTransform>(*m_effect, IID_IDXTransform, "IDXTransform", module.Path()))
{
}

EffectSession::~EffectSession()
{
    // Lets go of the surfaces before the effect ends; there is nobody left to tell of a failure.
    std::ignore = m_transform->Setup(nullptr, 0, nullptr, 0, 0);
}

void EffectSession::SetUp(const SurfaceLayout& layout)
{
    m_input.Release();
    m_output.Release();
    // In one statement each, so that neither is left behind when the other one's memory fails.
    const auto pixels = [&] {
        return ShowsImages() ? PixelGrid(layout, nullptr) : PixelGrid(layout);
    };
    CComPtr<CHostSurface> input(new CHostSurface(pixels()));
    CComPtr<CHostSurface> output(new CHostSurface(pixels()));
    const std::array<IUnknown*, 1> inputs{static_cast<IDXSurface*>(input.p)};
    const std::array<IUnknown*, 1> outputs{static_cast<IDXSurface*>(output.p)};
    CheckEffectCall(m_transform->Setup(inputs.data(), 1, outputs.data(), 1, 0), m_module.Path(),
                    "the effect refused its surfaces");
    m_input = std::move(input);
    m_output = std::move(output);
}

void EffectSession::CheckSurfaces()
{
    for (CHostSurface* surface : {m_input.p, m_output.p})
    {
        surface->CheckAfterUse();
        const std::string broken = surface->Log().Summary();
        surface->Log().Clear();
        if (!broken.empty())
        {
            throw HostError(m_module.Path(),
                            std::string("the effect broke the contract of the ") +
                                (surface == m_input.p ? "input" : "output") + " surface: " + broken,
                            "report this to the makers of the plug-in and the renderer");
        }
    }
}

void EffectSession::Render(const Image& input, Image& output, const FrameInformation& information)
{
    const SurfaceLayout layout{input.width, input.height, FormatFor(input.type, m_options),
                               m_options.bottomUp, m_options.padding};
    if (!m_input || m_input->Pixels().Layout() != layout)
    {
        SetUp(layout);
    }
    output.width = input.width;
    output.height = input.height;
    output.type = input.type;
    output.hasAlpha = input.hasAlpha;
    output.facts = input.facts;
    output.pixels.resize(input.pixels.size());
    m_input->SetFrameInformation(information);
    if (!ShowsImages())
    {
        PutPicture(input, m_input->Pixels());
        Execute();
        TakePicture(m_output->Pixels(), output);
        return;
    }
    // An effect may not write to its input, whatever memory that is.
    const ShownPicture source(*m_input, input.pixels.Lent());
    const ShownPicture target(*m_output, output.pixels.data());
    Execute();
}

void EffectSession::Execute()
{
    m_input->PixelsChanged();
    ULONG before = 0;
    ULONG after = 0;
    m_output->GetGenerationId(&before);
    const HRESULT executed = m_transform->Execute(nullptr, nullptr, nullptr);
    m_output->GetGenerationId(&after);
    ThrowRecordedMessageBoxes(m_module.Path());
    CheckSurfaces();
    CheckEffectCall(executed, m_module.Path(), "the effect failed on this frame");
    if (before == after)
    {
        throw HostError(m_module.Path(), "the effect wrote no picture for this frame",
                        "see \"glazelhost info\" for what the plug-in and the renderer lack");
    }
}

} // namespace GlazelHost
