// A plug-in under judgement, with the renderer that it works with and a look of that.
#pragma once

#include "platform/atl/atlcomcli.h"
#include "tools/glazelhost/plugin/com_calls.h"
#include "tools/glazelhost/plugin/effect_controls.h"
#include "tools/glazelhost/plugin/plugin_module.h"
#include "tools/glazelhost/plugin/renderer_library.h"
#include "tools/glazelhost/validate/check.h"
#include "tools/glazelhost/validate/judged_renderer.h"

#include <windows.h>

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace GlazelHost
{

// In the order in which they are loaded. Everything throws HostError when a host could not go on.
struct JudgedPlugIn
{
    explicit JudgedPlugIn(Check& check) : renderer(check.RendererFolder()), module(check.File())
    {
        renderer.Require();
    }

    CComPtr<IUnknown> Create(REFCLSID classId) const;
    // The record of a look. After the first effect, which starts the renderer.
    Record LookOf(std::string_view cube = kCubeText) const;

    RendererLibrary renderer;
    PluginModule module;
};

// One effect of it.
struct JudgedEffect
{
    explicit JudgedEffect(Check& check)
        : plugIn(check), object(plugIn.module.CreateEffect()), controls(*object, check.File())
    {
    }

    template <typename Interface>
    CComPtr<Interface> As(REFIID iid, const char* name) const
    {
        return QueryEffect<Interface>(*object, iid, name, plugIn.module.Path());
    }

    JudgedPlugIn plugIn;
    CComPtr<IUnknown> object;
    EffectControls controls;
};

// No object answers it.
inline constexpr IID kUnknownInterface{
    0x6A0F2C11, 0x93D7, 0x4B52, {0x8E, 0x41, 0x5D, 0x27, 0xC9, 0x0B, 0x77, 0x3E}};

// The record with its option on or off.
Record WithOption(Record record, bool on);

} // namespace GlazelHost
