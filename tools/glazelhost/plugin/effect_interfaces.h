// The interfaces that an effect answers, by name.
#pragma once

#include "contract/host_interfaces.h"
#include "platform/dxtransform/dxtrans.h"

#include <windows.h>

#include <objsafe.h>
#include <ocidl.h>

#include <array>

namespace GlazelHost
{

struct NamedInterface
{
    const char* name;
    IID iid;
};

// The plug-in's own interface, which only scripts use.
// clang-format off
inline constexpr IID kPluginInterface{0xAC047D4A, 0xB6BB, 0x41DA, {0x82, 0x84, 0x91, 0x0F, 0xC0, 0xBA, 0x31, 0x65}};
// clang-format on

// Not constexpr: the system's identifiers are objects of its library.
inline const std::array kEffectInterfaces{
    NamedInterface{"ISfVideoPluginExtension", IID_ISfVideoPluginExtension},
    NamedInterface{"IDXTSfAutomation", IID_IDXTSfAutomation},
    NamedInterface{"IStaticFilterPreset", IID_IStaticFilterPreset},
    NamedInterface{"IPersistStreamInit", IID_IPersistStreamInit},
    NamedInterface{"ISfExchangeProps", IID_ISfExchangeProps},
    NamedInterface{"IPlugin", kPluginInterface},
    NamedInterface{"IDispatch", IID_IDispatch},
    NamedInterface{"IMarshal", IID_IMarshal},
    NamedInterface{"IDXEffect", IID_IDXEffect},
    NamedInterface{"IObjectSafety", IID_IObjectSafety},
    NamedInterface{"IPersistStorage", IID_IPersistStorage},
    NamedInterface{"ISpecifyPropertyPages", IID_ISpecifyPropertyPages},
    NamedInterface{"IPersistPropertyBag", IID_IPersistPropertyBag},
    NamedInterface{"IDXTransform", IID_IDXTransform},
    NamedInterface{"IDXBaseObject", IID_IDXBaseObject},
    NamedInterface{"IDXSurfacePick", IID_IDXSurfacePick},
    NamedInterface{"IObjectWithSite", IID_IObjectWithSite},
};

} // namespace GlazelHost
