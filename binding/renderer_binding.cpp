#include "binding/renderer_binding.h"

#include "platform/runtime/foreign_call.h"

#include <array>
#include <bit>
#include <iterator>
#include <type_traits>

namespace RendererAPI
{

RendererBinding::~RendererBinding()
{
    Shutdown();
}

std::int32_t RendererBinding::Start(std::uint32_t mode)
{
    const std::int32_t loadResult = m_loaded ? 0 : Load();
    return Ask(m_entryPoints.initRenderer, loadResult, mode);
}

std::int32_t RendererBinding::Load() noexcept
{
    m_module = ::LoadLibraryA(kLibraryName);
    m_loaded = m_module != nullptr && ResolveEntryPoints();
    if (m_loaded)
    {
        return 0;
    }
    return m_module == nullptr ? kLibraryMissing : kEntryPointMissing;
}

bool RendererBinding::ResolveEntryPoints() noexcept
{
    std::array<FARPROC, std::size(kEntryPoints)> addresses{};
    bool complete = true;
    for (std::size_t index = 0; index < addresses.size(); ++index)
    {
        addresses[index] = ::GetProcAddress(m_module, kEntryPoints[index].name);
        complete = complete && (addresses[index] != nullptr || !kEntryPoints[index].required);
    }
    // The one cast from addresses to typed functions: both hold one pointer for each row.
    m_entryPoints = std::bit_cast<EntryPoints>(addresses);
    return complete;
}

void RendererBinding::Shutdown() noexcept
{
    if (m_loaded)
    {
        TryForeign(m_entryPoints.exitRenderer);
    }
}

void RendererBinding::Unload() noexcept
{
    if (m_module != nullptr)
    {
        ::FreeLibrary(m_module);
    }
    m_module = nullptr;
    m_loaded = false;
    m_entryPoints = {};
}

std::int32_t RendererBinding::RunEditor(FrameBufferDesc* preview, const void* record,
                                        std::uint32_t recordSize, std::uint32_t linear) const
{
    return m_entryPoints.doModalUI2 != nullptr ? DoModalUI2(preview, record, recordSize, linear)
                                               : DoModalUI(preview, record, recordSize);
}

// Runs an entry point; while there is none the answer is `otherwise`.
template <typename Result, typename... Parameters>
Result RendererBinding::Ask(Result (*entryPoint)(Parameters...),
                            std::type_identity_t<Result> otherwise,
                            std::type_identity_t<Parameters>... arguments) const
{
    if (!m_loaded || entryPoint == nullptr)
    {
        return otherwise;
    }
    return CallForeign([&] { return entryPoint(arguments...); });
}

template <typename... Parameters>
void RendererBinding::Tell(void (*entryPoint)(Parameters...),
                           std::type_identity_t<Parameters>... arguments) const
{
    if (m_loaded)
    {
        CallForeign([&] { entryPoint(arguments...); });
    }
}

std::int32_t RendererBinding::DoModalUI(FrameBufferDesc* preview, const void* record,
                                        std::uint32_t recordSize) const
{
    return Ask(m_entryPoints.doModalUI, 0, preview, record, recordSize);
}

std::int32_t RendererBinding::DoModalUI2(FrameBufferDesc* preview, const void* record,
                                         std::uint32_t recordSize, std::uint32_t linear) const
{
    return Ask(m_entryPoints.doModalUI2, 0, preview, record, recordSize, linear);
}

std::int32_t RendererBinding::DoModalUIWithProfile(FrameBufferDesc* preview, const void* record,
                                                   std::uint32_t recordSize, const void* profile,
                                                   std::uint32_t profileSize,
                                                   std::uint32_t linear) const
{
    return Ask(m_entryPoints.doModalUIWithProfile, 0, preview, record, recordSize, profile,
               profileSize, linear);
}

std::int32_t RendererBinding::RenderFrame(FrameBufferDesc* source, FrameBufferDesc* destination,
                                          const void* record, std::uint32_t recordSize,
                                          std::uint32_t flags, std::int32_t frameNumber) const
{
    return Ask(m_entryPoints.renderFrame, -1, source, destination, record, recordSize, flags,
               frameNumber);
}

std::int32_t RendererBinding::LoadSessionFile(const void* path, std::uint32_t options) const
{
    return Ask(m_entryPoints.loadSessionFile, 0, path, options);
}

std::int32_t RendererBinding::GetSessionIcon(const void* record, std::uint32_t recordSize,
                                             FrameBufferDesc* icon) const
{
    return Ask(m_entryPoints.getSessionIcon, 0, record, recordSize, icon);
}

std::uint32_t RendererBinding::GetSessionDataSize() const
{
    return Ask(m_entryPoints.getSessionDataSize, 0);
}

std::int32_t RendererBinding::GetSessionData(void* buffer, std::uint32_t bufferSize) const
{
    return Ask(m_entryPoints.getSessionData, 0, buffer, bufferSize);
}

void RendererBinding::InterpolateSessionData(const void* recordA, std::uint32_t sizeA,
                                             const void* recordB, std::uint32_t sizeB,
                                             double fraction, void* output) const
{
    Tell(m_entryPoints.interpolateSessionData, recordA, sizeA, recordB, sizeB, fraction, output);
}

std::int32_t RendererBinding::BeginToolChain() const
{
    return Ask(m_entryPoints.beginToolChain, 0);
}

std::int32_t RendererBinding::AddToolToChain(std::uint32_t tool) const
{
    return Ask(m_entryPoints.addToolToChain, -1, tool);
}

void RendererBinding::SetToolParameterValue(std::uint32_t tool, std::uint32_t parameter,
                                            double value) const
{
    Tell(m_entryPoints.setToolParameterValue, tool, parameter, value);
}

void RendererBinding::EnableFeature(std::uint32_t feature, std::uint32_t on) const
{
    Tell(m_entryPoints.enableFeature, feature, on);
}

void RendererBinding::SetTopLevelMaskParameterValue(std::uint32_t parameter, double value) const
{
    Tell(m_entryPoints.setTopLevelMaskParameterValue, parameter, value);
}

namespace
{

RendererBinding g_binding;

} // namespace

RendererBinding& Binding() noexcept
{
    return g_binding;
}

} // namespace RendererAPI
