#include "tests/reference_renderer/dll/loaded_renderer.h"

#include <bit>
#include <stdexcept>

LoadedRenderer::LoadedRenderer() : m_module(::LoadLibraryA(RendererAPI::kLibraryName))
{
    if (m_module == nullptr)
    {
        throw std::runtime_error("the renderer library does not load");
    }
    Resolve("InitRenderer", initRenderer);
    Resolve("ExitRenderer", exitRenderer);
    Resolve("DoModalUI", doModalUI);
    Resolve("DoModalUI2", doModalUI2);
    Resolve("DoModalUIWithProfile", doModalUIWithProfile);
    Resolve("RenderFrame", renderFrame);
    Resolve("LoadSessionFile", loadSessionFile);
    Resolve("GetSessionIcon", getSessionIcon);
    Resolve("GetSessionDataSize", getSessionDataSize);
    Resolve("GetSessionData", getSessionData);
    Resolve("InterpolateSessionData", interpolateSessionData);
    Resolve("BeginToolChain", beginToolChain);
    Resolve("AddToolToChain", addToolToChain);
    Resolve("SetToolParameterValue", setToolParameterValue);
    Resolve("EnableFeature", enableFeature);
    Resolve("SetTopLevelMaskParameterValue", setTopLevelMaskParameterValue);
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

template <typename Function>
void LoadedRenderer::Resolve(const char* name, Function*& entryPoint)
{
    entryPoint = std::bit_cast<Function*>(::GetProcAddress(m_module, name));
    if (entryPoint == nullptr)
    {
        ::FreeLibrary(m_module);
        throw std::runtime_error(std::string("no entry point ") + name);
    }
}
