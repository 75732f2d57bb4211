#include "tests/reference_renderer/dll/loaded_renderer.h"

#include <bit>
#include <stdexcept>

namespace ReferenceRenderer
{

LoadedRenderer::LoadedRenderer() : m_module(::LoadLibraryA(RendererAPI::kLibraryName))
{
    if (m_module == nullptr)
    {
        throw std::runtime_error("the renderer library does not load");
    }
#define RESOLVE(pointer, name, required)                                                           \
    pointer = std::bit_cast<RendererAPI::name##Function*>(::GetProcAddress(m_module, #name));
    RENDERER_ENTRY_POINTS(RESOLVE)
#undef RESOLVE
    initRenderer(RendererAPI::kStartMode);
}

LoadedRenderer::~LoadedRenderer()
{
    exitRenderer();
    ::FreeLibrary(m_module);
}

std::vector<std::uint8_t> LoadedRenderer::Produced() const
{
    std::vector<std::uint8_t> bytes(getSessionDataSize());
    if (!bytes.empty())
    {
        getSessionData(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    }
    return bytes;
}

std::string LoadedRenderer::ProducedText() const
{
    const std::vector<std::uint8_t> bytes = Produced();
    return {bytes.begin(), bytes.end()};
}

std::vector<std::uint8_t> LoadedRenderer::Import(const std::string& path) const
{
    if (loadSessionFile(path.c_str(), RendererAPI::kImportRecord) != RendererAPI::kImportDone)
    {
        throw std::runtime_error("cannot import " + path);
    }
    return Produced();
}

} // namespace ReferenceRenderer
