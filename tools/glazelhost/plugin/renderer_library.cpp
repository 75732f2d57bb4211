#include "tools/glazelhost/plugin/renderer_library.h"

#include "contract/entry_points.h"
#include "support/win32/utf8.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/one_line.h"
#include "tools/glazelhost/plugin/message_boxes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

namespace GlazelHost
{

namespace
{

// The largest record that an effect stores; a larger one would vanish from the user's project.
constexpr std::uint32_t kLargestRecord = 131072;
// A description is a few lines of text.
constexpr std::uint32_t kLargestDescription = 1U << 20;

std::string PathIn(const std::string& folder)
{
    return FullPath(folder + "\\" + RendererAPI::kLibraryName);
}

void SetNotFound(RendererState& state)
{
    state.path = RendererAPI::kLibraryName;
    state.library.why = "the renderer is in none of the places where the system looks";
    state.library.remedy = "name its folder with --renderer DIR";
}

template <typename Exports>
void FindEntryPoints(RendererState& state, Exports&& exports)
{
    for (const RendererAPI::EntryPointName& entry : RendererAPI::kEntryPoints)
    {
        if (!exports(entry.name))
        {
            (entry.required ? state.missingEntryPoints : state.absentOptions)
                .emplace_back(entry.name);
        }
    }
}

} // namespace

void RequireRenderer(const RendererState& state)
{
    if (state.library.problem != LibraryProblem::None)
    {
        throw HostError(state.path, state.library.why, state.library.remedy);
    }
    if (!state.missingEntryPoints.empty())
    {
        throw HostError(state.path,
                        "the renderer does not export " + Joined(state.missingEntryPoints),
                        "use a renderer that has every required entry point");
    }
}

RendererState StateOfRendererFile(const std::string& folder)
{
    RendererState state;
    state.path = folder.empty() ? FirstFileOfName(RendererAPI::kLibraryName) : PathIn(folder);
    const std::vector<std::string> exports = ExportsOfFile(state.path, state.library);
    if (state.path.empty())
    {
        SetNotFound(state);
    }
    state.version = FileVersion(state.path);
    if (state.library.problem == LibraryProblem::None)
    {
        FindEntryPoints(state, [&exports](std::string_view name) {
            return std::ranges::find(exports, name) != exports.end();
        });
    }
    return state;
}

RendererLibrary::RendererLibrary(const std::string& folder)
{
    if (folder.empty())
    {
        LoadAsTheEffectDoes();
    }
    else
    {
        m_state.path = PathIn(folder);
        // The effect asks for the plain name, and the renderer for what lies beside it.
        ::SetDllDirectoryW(Wide(FullPath(folder)).c_str());
        m_library = LoadLibraryFile(m_state.path, m_state.library);
    }
    m_state.version = FileVersion(m_state.path);
    if (m_library)
    {
        RedirectMessageBoxesOfLoadedModules();
        FindEntryPoints(m_state, [this](const char* name) {
            return ::GetProcAddress(m_library.Get(), name) != nullptr;
        });
    }
}

void RendererLibrary::LoadAsTheEffectDoes()
{
    m_library = LoadLibraryByName(RendererAPI::kLibraryName, m_state.path, m_state.library);
    if (m_state.path.empty())
    {
        SetNotFound(m_state);
    }
}

template <typename Function>
Function* RendererLibrary::EntryPoint(const char* name) const noexcept
{
    return std::bit_cast<Function*>(::GetProcAddress(m_library.Get(), name));
}

void RendererLibrary::Start()
{
    Require();
    const std::int32_t result =
        EntryPoint<RendererAPI::InitRendererFunction>("InitRenderer")(RendererAPI::kStartMode);
    ThrowRecordedMessageBoxes(m_state.path);
    if (result != 0)
    {
        throw HostError(m_state.path,
                        "the renderer did not start (InitRenderer answered " +
                            std::to_string(result) + ")",
                        "check that this machine has what the renderer needs");
    }
}

void RendererLibrary::Shutdown() noexcept
{
    EntryPoint<RendererAPI::ExitRendererFunction>("ExitRenderer")();
}

std::optional<std::vector<std::byte>> RendererLibrary::LastProduced() const
{
    const std::uint32_t size =
        EntryPoint<RendererAPI::GetSessionDataSizeFunction>("GetSessionDataSize")();
    // A size beyond all reason must not become an allocation.
    std::vector<std::byte> bytes(size <= kLargestDescription ? size : 0U);
    if (!bytes.empty() &&
        EntryPoint<RendererAPI::GetSessionDataFunction>("GetSessionData")(bytes.data(), size) == 0)
    {
        return std::nullopt; // what the buffer holds is nobody's
    }
    return bytes;
}

DescriptionText RendererLibrary::Describe(const std::string& path, std::uint32_t options) const
{
    EntryPoint<RendererAPI::LoadSessionFileFunction>("LoadSessionFile")(
        path.c_str(), options | RendererAPI::kImportDescribe);
    const std::vector<std::byte> text = LastProduced().value_or(std::vector<std::byte>());
    const std::string_view json(reinterpret_cast<const char*>(text.data()), text.size());
    // A renderer without descriptions leaves something else there.
    return ParseDescription(json).value_or(DescriptionText{});
}

RendererLook RendererLibrary::ImportLook(const std::string& path, std::uint32_t options) const
{
    Require();
    const std::int32_t result =
        EntryPoint<RendererAPI::LoadSessionFileFunction>("LoadSessionFile")(path.c_str(), options);
    ThrowRecordedMessageBoxes(m_state.path);
    if (result != RendererAPI::kImportDone)
    {
        const std::string said = OneLine(Describe(path, options).error);
        if (!said.empty())
        {
            throw HostError(said);
        }
        throw HostError(path,
                        "the renderer cannot import this look (LoadSessionFile answered " +
                            std::to_string(result) + ")",
                        "check that the file is there and of a kind that the renderer reads");
    }
    std::optional<std::vector<std::byte>> record = LastProduced();
    if (!record)
    {
        throw HostError(path,
                        "the renderer imported this look but does not hand it out (GetSessionData "
                        "answered 0)",
                        "use another renderer for this look");
    }
    RendererLook look{std::move(*record), {}};
    if (look.record.empty() || look.record.size() > kLargestRecord)
    {
        throw HostError(path,
                        "the renderer made a record of " + std::to_string(look.record.size()) +
                            " bytes, where 1 to " + std::to_string(kLargestRecord) + " are allowed",
                        "use another renderer for this look");
    }
    DescriptionText text = Describe(path, options);
    if (!text.error.empty()) // the file is read again for it
    {
        throw HostError(OneLine(text.error));
    }
    look.description = std::move(text.description);
    return look;
}

void RendererLibrary::Grade(std::span<const std::byte> record,
                            std::span<ReferenceRenderer::Rgb> colours) const
{
    Require();
    constexpr std::size_t kWidth = 1024; // a frame as renderers know them
    const std::size_t height = (colours.size() + kWidth - 1) / kWidth;
    using Pixel = std::array<float, 4>; // blue, green, red, alpha
    std::vector<Pixel> source(kWidth * height, Pixel{0.0F, 0.0F, 0.0F, 1.0F});
    std::ranges::transform(colours, source.begin(), [](const ReferenceRenderer::Rgb& colour) {
        return Pixel{colour.b, colour.g, colour.r, 1.0F};
    });
    constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
    std::vector<Pixel> target(source.size(), Pixel{kNone, kNone, kNone, kNone});
    const auto describe = [height](std::vector<Pixel>& pixels) {
        FrameBufferDesc image{};
        image.format = kFormatBgraFloat;
        image.pixels = pixels.data();
        image.width = image.rowPitch = kWidth;
        image.height = static_cast<std::uint32_t>(height);
        return image;
    };
    FrameBufferDesc from = describe(source);
    FrameBufferDesc to = describe(target);
    EntryPoint<RendererAPI::RenderFrameFunction>("RenderFrame")(
        &from, &to, record.data(), static_cast<std::uint32_t>(record.size()),
        RendererAPI::kRenderFrame, 0);
    ThrowRecordedMessageBoxes(m_state.path);
    for (std::size_t i = 0; i < colours.size(); ++i)
    {
        const auto& [blue, green, red, alpha] = target[i];
        if (!std::isfinite(red) || !std::isfinite(green) || !std::isfinite(blue))
        {
            throw HostError(m_state.path, "the renderer did not grade the colours of a cube",
                            "write a .look file");
        }
        colours[i] = {red, green, blue};
    }
}

} // namespace GlazelHost
