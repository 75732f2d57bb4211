#include "renderer/renderer_binding.h"

#include "renderer/entry_point_table.h"

#include <array>
#include <bit>

namespace RendererAPI
{

RendererBinding::~RendererBinding()
{
    Shutdown();
}

std::int32_t RendererBinding::Start(std::uint32_t mode) noexcept
{
    const std::int32_t loadResult = m_loaded ? 0 : Load();
    return m_loaded ? m_pointers.initRenderer(mode) : loadResult;
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
    std::array<FARPROC, kEntryPoints.size()> addresses{};
    bool complete = true;
    for (std::size_t index = 0; index < kEntryPoints.size(); ++index)
    {
        addresses[index] = ::GetProcAddress(m_module, kEntryPoints[index].name);
        complete = complete && (addresses[index] != nullptr || !kEntryPoints[index].required);
    }
    // The one cast from addresses to typed functions: both hold one pointer for each table row.
    m_pointers = std::bit_cast<Pointers>(addresses);
    return complete;
}

void RendererBinding::Shutdown() noexcept
{
    if (m_loaded)
    {
        m_pointers.exitRenderer();
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
    m_pointers = {};
}

std::int32_t RendererBinding::RunEditor(FrameBufferDesc* preview, const void* record,
                                        std::uint32_t recordSize,
                                        std::uint32_t linear) const noexcept
{
    return m_pointers.doModalUI2 != nullptr ? DoModalUI2(preview, record, recordSize, linear)
                                            : DoModalUI(preview, record, recordSize);
}

std::int32_t RendererBinding::DoModalUI(FrameBufferDesc* preview, const void* record,
                                        std::uint32_t recordSize) const noexcept
{
    return m_loaded ? m_pointers.doModalUI(preview, record, recordSize) : 0;
}

std::int32_t RendererBinding::DoModalUI2(FrameBufferDesc* preview, const void* record,
                                         std::uint32_t recordSize,
                                         std::uint32_t linear) const noexcept
{
    const bool available = m_loaded && m_pointers.doModalUI2 != nullptr;
    return available ? m_pointers.doModalUI2(preview, record, recordSize, linear) : 0;
}

std::int32_t RendererBinding::DoModalUIWithProfile(FrameBufferDesc* preview, const void* record,
                                                   std::uint32_t recordSize, const void* profile,
                                                   std::uint32_t profileSize,
                                                   std::uint32_t linear) const noexcept
{
    const bool available = m_loaded && m_pointers.doModalUIWithProfile != nullptr;
    return available ? m_pointers.doModalUIWithProfile(preview, record, recordSize, profile,
                                                       profileSize, linear)
                     : 0;
}

std::int32_t RendererBinding::RenderFrame(FrameBufferDesc* source, FrameBufferDesc* destination,
                                          const void* record, std::uint32_t recordSize,
                                          std::uint32_t flags,
                                          std::int32_t frameNumber) const noexcept
{
    return m_loaded
               ? m_pointers.renderFrame(source, destination, record, recordSize, flags, frameNumber)
               : -1;
}

std::int32_t RendererBinding::LoadSessionFile(const void* path,
                                              std::uint32_t options) const noexcept
{
    return m_loaded ? m_pointers.loadSessionFile(path, options) : 0;
}

std::int32_t RendererBinding::GetSessionIcon(const void* record, std::uint32_t recordSize,
                                             FrameBufferDesc* icon) const noexcept
{
    return m_loaded ? m_pointers.getSessionIcon(record, recordSize, icon) : 0;
}

std::uint32_t RendererBinding::GetSessionDataSize() const noexcept
{
    return m_loaded ? m_pointers.getSessionDataSize() : 0;
}

std::int32_t RendererBinding::GetSessionData(void* buffer, std::uint32_t bufferSize) const noexcept
{
    return m_loaded ? m_pointers.getSessionData(buffer, bufferSize) : 0;
}

void RendererBinding::InterpolateSessionData(const void* recordA, std::uint32_t sizeA,
                                             const void* recordB, std::uint32_t sizeB,
                                             double fraction, void* output) const noexcept
{
    if (m_loaded)
    {
        m_pointers.interpolateSessionData(recordA, sizeA, recordB, sizeB, fraction, output);
    }
}

std::int32_t RendererBinding::BeginToolChain() const noexcept
{
    return m_loaded ? m_pointers.beginToolChain() : 0;
}

std::int32_t RendererBinding::AddToolToChain(std::uint32_t tool) const noexcept
{
    return m_loaded ? m_pointers.addToolToChain(tool) : -1;
}

void RendererBinding::SetToolParameterValue(std::uint32_t tool, std::uint32_t parameter,
                                            double value) const noexcept
{
    if (m_loaded)
    {
        m_pointers.setToolParameterValue(tool, parameter, value);
    }
}

void RendererBinding::EnableFeature(std::uint32_t feature, std::uint32_t on) const noexcept
{
    if (m_loaded)
    {
        m_pointers.enableFeature(feature, on);
    }
}

void RendererBinding::SetTopLevelMaskParameterValue(std::uint32_t parameter,
                                                    double value) const noexcept
{
    if (m_loaded)
    {
        m_pointers.setTopLevelMaskParameterValue(parameter, value);
    }
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
