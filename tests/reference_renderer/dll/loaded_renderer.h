// The built renderer library, loaded as a host loads it.
#pragma once

#include "renderer/entry_points.h"

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

// Loads the library that lies beside the test program and starts it. Throws std::runtime_error when
// it or one of its entry points is missing.
class LoadedRenderer
{
public:
    LoadedRenderer();
    ~LoadedRenderer();
    LoadedRenderer(const LoadedRenderer&) = delete;
    LoadedRenderer& operator=(const LoadedRenderer&) = delete;

    HMODULE Module() const { return m_module; }
    // What was last produced.
    std::vector<std::uint8_t> Produced() const;
    std::string ProducedText() const;
    // The record of a file, which must import.
    std::vector<std::uint8_t> Import(const std::string& path) const;

    RendererAPI::InitRendererFunction* initRenderer = nullptr;
    RendererAPI::ExitRendererFunction* exitRenderer = nullptr;
    RendererAPI::DoModalUIFunction* doModalUI = nullptr;
    RendererAPI::DoModalUI2Function* doModalUI2 = nullptr;
    RendererAPI::DoModalUIWithProfileFunction* doModalUIWithProfile = nullptr;
    RendererAPI::RenderFrameFunction* renderFrame = nullptr;
    RendererAPI::LoadSessionFileFunction* loadSessionFile = nullptr;
    RendererAPI::GetSessionIconFunction* getSessionIcon = nullptr;
    RendererAPI::GetSessionDataSizeFunction* getSessionDataSize = nullptr;
    RendererAPI::GetSessionDataFunction* getSessionData = nullptr;
    RendererAPI::InterpolateSessionDataFunction* interpolateSessionData = nullptr;
    RendererAPI::BeginToolChainFunction* beginToolChain = nullptr;
    RendererAPI::AddToolToChainFunction* addToolToChain = nullptr;
    RendererAPI::SetToolParameterValueFunction* setToolParameterValue = nullptr;
    RendererAPI::EnableFeatureFunction* enableFeature = nullptr;
    RendererAPI::SetTopLevelMaskParameterValueFunction* setTopLevelMaskParameterValue = nullptr;

private:
    template <typename Function>
    void Resolve(const char* name, Function*& entryPoint);

    HMODULE m_module;
};
