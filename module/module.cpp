// The library's face to the system: its four exports, the object map and the module object.
#include "effect/plugin.h"
#include "effect/preset_table.h"
#include "module/registration.h"
#include "module/resource.h"
#include "platform/atl/atlcom.h"
#include "platform/runtime/exception_state.h"
#include "propertypage/plugin_pp.h"

#include <windows.h>

#include <olectl.h>

// The folders below cannot see the resources that they name.
static_assert(CPluginPP::IDD == IDD_PLUGINPP);
static_assert(kPresetNameBase == IDS_PRESET_DEFAULT);

CComModule _Module;

namespace
{

BEGIN_OBJECT_MAP(g_objectMap)
OBJECT_ENTRY(CLSID_Plugin, CPlugin)
OBJECT_ENTRY(CLSID_PluginPP, CPluginPP)
END_OBJECT_MAP()

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void* /*reserved*/)
{
    switch (reason)
    {
    case DLL_PROCESS_ATTACH:
        return HasExceptionState() && SUCCEEDED(_Module.Init(g_objectMap, instance, &LIBID_MAINLib))
                   ? TRUE
                   : FALSE;
    case DLL_THREAD_DETACH:
        EndThreadExceptionState();
        return TRUE;
    case DLL_PROCESS_DETACH:
        _Module.Term();
        return TRUE;
    default:
        return TRUE;
    }
}

STDAPI DllCanUnloadNow()
{
    return _Module.GetLockCount() == 0 ? S_OK : S_FALSE;
}

STDAPI DllGetClassObject(REFCLSID classId, REFIID interfaceId, void** object)
{
    return _Module.GetClassObject(classId, interfaceId, object);
}

STDAPI DllRegisterServer()
{
    return RegisterModule(_Module.GetModuleInstance());
}

STDAPI DllUnregisterServer()
{
    return UnregisterModule(_Module.GetModuleInstance());
}
