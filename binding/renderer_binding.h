// The process-wide binding to the renderer library: loads it on first use and forwards to its entry
// points. Nothing else in the product calls the library. Tests:
// tests/binding/renderer_binding_test.cpp.
#pragma once

#include "contract/entry_points.h"

#include <windows.h>

#include <cstdint>
#include <type_traits>

namespace RendererAPI
{

// Results of Start and Load besides InitRenderer's own.
inline constexpr std::int32_t kLibraryMissing = -1;
inline constexpr std::int32_t kEntryPointMissing = -2;

// A Win32 critical section with a name of its own inside the binding.
class CriticalSection
{
public:
    CriticalSection() noexcept { ::InitializeCriticalSection(&m_section); }
    virtual ~CriticalSection() { ::DeleteCriticalSection(&m_section); }
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

private:
    CRITICAL_SECTION m_section;
};

// Any thread. Takes no lock: calls into the renderer are serialised by the callers, and two effects
// that start at once load the same module twice, which is harmless. Each forwarder answers a fixed
// value, stated at its declaration, while the library is not loaded. What the library throws comes
// out of the forwarders and of Start; of another compiler's exceptions as ForeignException.
class RendererBinding
{
public:
    RendererBinding() noexcept = default;
    // Runs Shutdown. The library itself stays loaded: this runs while the module is being unloaded,
    // when freeing another library is not allowed.
    ~RendererBinding();
    RendererBinding(const RendererBinding&) = delete;
    RendererBinding& operator=(const RendererBinding&) = delete;

    // Loads the library unless it is loaded, then starts it: InitRenderer's result, or Load's.
    // Every effect calls it once.
    std::int32_t Start(std::uint32_t mode);
    // Looks the library up by its plain name, in the system's search order, and its entry points.
    // 0, kLibraryMissing or kEntryPointMissing. An incomplete library is not freed again.
    std::int32_t Load() noexcept;
    // Ends the renderer when it is loaded. What it throws then is dropped.
    void Shutdown() noexcept;
    // Frees the library and forgets it.
    void Unload() noexcept;
    bool IsLoaded() const noexcept { return m_loaded; }

    // The editor: DoModalUI2 where the library has it, else DoModalUI, which knows no option. 0.
    std::int32_t RunEditor(FrameBufferDesc* preview, const void* record, std::uint32_t recordSize,
                           std::uint32_t linear) const;

    std::int32_t DoModalUI(FrameBufferDesc* preview, const void* record,
                           std::uint32_t recordSize) const; // 0
    std::int32_t DoModalUI2(FrameBufferDesc* preview, const void* record, std::uint32_t recordSize,
                            std::uint32_t linear) const; // 0
    std::int32_t DoModalUIWithProfile(FrameBufferDesc* preview, const void* record,
                                      std::uint32_t recordSize, const void* profile,
                                      std::uint32_t profileSize,
                                      std::uint32_t linear) const; // 0
    std::int32_t RenderFrame(FrameBufferDesc* source, FrameBufferDesc* destination,
                             const void* record, std::uint32_t recordSize, std::uint32_t flags,
                             std::int32_t frameNumber) const;                    // -1
    std::int32_t LoadSessionFile(const void* path, std::uint32_t options) const; // 0
    std::int32_t GetSessionIcon(const void* record, std::uint32_t recordSize,
                                FrameBufferDesc* icon) const;                  // 0
    std::uint32_t GetSessionDataSize() const;                                  // 0
    std::int32_t GetSessionData(void* buffer, std::uint32_t bufferSize) const; // 0
    void InterpolateSessionData(const void* recordA, std::uint32_t sizeA, const void* recordB,
                                std::uint32_t sizeB, double fraction,
                                void* output) const;       // nothing is written
    std::int32_t BeginToolChain() const;                   // 0
    std::int32_t AddToolToChain(std::uint32_t tool) const; // -1
    void SetToolParameterValue(std::uint32_t tool, std::uint32_t parameter, double value) const;
    void EnableFeature(std::uint32_t feature, std::uint32_t on) const;
    void SetTopLevelMaskParameterValue(std::uint32_t parameter, double value) const;

private:
    bool ResolveEntryPoints() noexcept;
    template <typename Result, typename... Parameters>
    Result Ask(Result (*entryPoint)(Parameters...), std::type_identity_t<Result> otherwise,
               std::type_identity_t<Parameters>... arguments) const;
    template <typename... Parameters>
    void Tell(void (*entryPoint)(Parameters...),
              std::type_identity_t<Parameters>... arguments) const;

    HMODULE m_module = nullptr;
    EntryPoints m_entryPoints{};
    bool m_loaded = false;
    [[maybe_unused]] bool m_enabled = true;     // read nowhere
    [[maybe_unused]] CriticalSection m_section; // never entered, see the class comment
};

// The process's one binding; it lives from the module's load to its unload.
RendererBinding& Binding() noexcept;

} // namespace RendererAPI
