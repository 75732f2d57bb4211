// One effect at work: a look put in through the plug-in's own interfaces, and frames driven through
// its transform on surfaces in memory. Tests:
// tests/tools/glazelhost/plugin/effect_session_test.cpp.
#pragma once

#include "contract/host_interfaces.h"
#include "platform/dxtransform/dxtrans.h"
#include "tools/glazelhost/media/frame_io.h"
#include "tools/glazelhost/plugin/plugin_module.h"
#include "tools/glazelhost/surface/host_surface.h"

#include <cstddef>

namespace GlazelHost
{

// How the surfaces are kept in memory. Both surfaces alike: the effect tells the renderer the
// orientation of one of them only.
struct SurfaceOptions
{
    bool bottomUp = false;
    bool premultiplied = false; // of 8-bit surfaces
    int padding = 0;            // bytes behind each row
};

// On one thread, which has initialised COM; the module outlives it.
class EffectSession
{
public:
    // Throws HostError when the effect is not created or lacks an interface.
    explicit EffectSession(const PluginModule& module, const SurfaceOptions& options = {});
    ~EffectSession();
    EffectSession(const EffectSession&) = delete;
    EffectSession& operator=(const EffectSession&) = delete;

    // For what a host does with an effect besides frames. Lives as long as the session.
    IUnknown& Effect() const noexcept { return *m_effect.p; }
    const std::string& Path() const noexcept { return m_module.Path(); } // of its plug-in

    // Renders `input` into `output`, whose memory is reused and which gets the input's size, type
    // and alpha. Throws HostError when the effect fails, writes no picture, breaks the surfaces'
    // contract or wants to show a message box.
    void Render(const Image& input, Image& output, const FrameInformation& information);

private:
    // Surfaces whose rows are those of an Image show the images' own memory.
    bool ShowsImages() const noexcept
    {
        return !m_options.bottomUp && !m_options.premultiplied && m_options.padding == 0;
    }
    void SetUp(const SurfaceLayout& layout);
    void Execute();
    void CheckSurfaces();

    const PluginModule& m_module;
    SurfaceOptions m_options;
    CComPtr<IUnknown> m_effect;
    CComPtr<IDXTransform> m_transform;
    CComPtr<CHostSurface> m_input;  // null until the first frame, and while a set-up has failed
    CComPtr<CHostSurface> m_output; // of the input's layout
};

} // namespace GlazelHost
