#include "module/registration.h"

#include "module/resource.h"
#include "platform/atl/atlregistrar.h"

namespace
{

constexpr UINT kScripts[]{IDR_PLUGIN, IDR_PLUGINPP};

} // namespace

HRESULT RegisterModule(HINSTANCE module) noexcept
{
    for (const UINT script : kScripts)
    {
        const HRESULT result = AtlUpdateRegistryFromResource(module, script, true);
        if (FAILED(result))
        {
            return result;
        }
    }
    return AtlRegisterTypeLib(module);
}

HRESULT UnregisterModule(HINSTANCE module) noexcept
{
    HRESULT first = S_OK;
    for (const UINT script : kScripts)
    {
        const HRESULT result = AtlUpdateRegistryFromResource(module, script, false);
        first = FAILED(first) ? first : result;
    }
    const HRESULT result = AtlUnregisterTypeLib(module);
    return FAILED(first) ? first : result;
}
