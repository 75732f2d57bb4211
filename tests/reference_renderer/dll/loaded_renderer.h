// The built renderer library, loaded as a host loads it.
#pragma once

#include "contract/entry_points.h"

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ReferenceRenderer
{

// Loads the library that lies beside the test program and starts it. Throws std::runtime_error when
// it or one of its entry points is missing.
class LoadedRenderer : public RendererAPI::EntryPoints
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

private:
    HMODULE m_module;
};

} // namespace ReferenceRenderer
