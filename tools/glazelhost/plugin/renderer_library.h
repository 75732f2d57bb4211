// The renderer's DLL as the host meets it: loaded and checked before the effect asks for it, kept
// loaded so that the effect gets the very same file, and used to import and to sample looks. The
// host never renders pictures with it. Tests:
// tests/tools/glazelhost/plugin/renderer_library_test.cpp; where it is looked for:
// tests/e2e/test_renderer_search.py.
#pragma once

#include "contract/entry_points.h"
#include "reference_renderer/core/look.h"
#include "tools/glazelhost/plugin/library_file.h"
#include "tools/glazelhost/plugin/look.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace GlazelHost
{

struct RendererState
{
    LibraryState library;
    std::string path; // UTF-8; the plain file name when it was not found
    std::string version;
    std::vector<std::string> missingEntryPoints; // required ones: the renderer is unusable
    std::vector<std::string> absentOptions;      // optional ones

    bool IsUsable() const noexcept
    {
        return library.problem == LibraryProblem::None && missingEntryPoints.empty();
    }
};

// Throws HostError unless the renderer is usable.
void RequireRenderer(const RendererState& state);
// What its file tells of the renderer that RendererLibrary would load: nothing of it runs.
RendererState StateOfRendererFile(const std::string& folder);

// One at a time in a process, on one thread.
class RendererLibrary
{
public:
    // Looks in `folder` (UTF-8), or, when that is empty, where the system looks for a DLL by its
    // name. Never throws for a renderer that is missing or bad: State says so.
    explicit RendererLibrary(const std::string& folder);
    RendererLibrary(const RendererLibrary&) = delete;
    RendererLibrary& operator=(const RendererLibrary&) = delete;

    const RendererState& State() const noexcept { return m_state; }
    void Require() const { RequireRenderer(m_state); }

    // Starts the renderer as an effect does, for an import without an effect. Throws HostError.
    void Start();
    void Shutdown() noexcept;

    // `path` names the look for the renderer: FILE, FILE#ID or CDL|LUT. `options`: kImport... bits.
    // The renderer has been started. Throws HostError.
    RendererLook ImportLook(const std::string& path, std::uint32_t options) const;

    // Grades display values in place: as floats that are no linear light. The renderer has been
    // started. Throws HostError when it leaves one as it was not asked to: untouched or not finite.
    void Grade(std::span<const std::byte> record, std::span<ReferenceRenderer::Rgb> colours) const;

private:
    template <typename Function>
    Function* EntryPoint(const char* name) const noexcept;
    void LoadAsTheEffectDoes();
    // What the renderer last produced, empty when that is nothing; none when it does not copy it.
    std::optional<std::vector<std::byte>> LastProduced() const;
    // The renderer's own words about a look or its failure; empty parts when it has none.
    DescriptionText Describe(const std::string& path, std::uint32_t options) const;

    RendererState m_state;
    LoadedLibrary m_library;
};

} // namespace GlazelHost
