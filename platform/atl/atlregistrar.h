// ATL's self-registration: registry scripts, run by the system's registrar, and the module's type
// library. Stands in for the parts of the platform's atlbase.h that do it; category maps are left
// out. Tests: tests/registration/.
#pragma once

#include <windows.h>

// Runs the script in the resource `id` of type "REGISTRY", adding to the registry or taking from
// it. In the script %MODULE% is the module's full path as it stands inside quotes, %MODULE_RAW% the
// path itself. Failures are the registrar's own.
HRESULT AtlUpdateRegistryFromResource(HINSTANCE module, UINT id, bool registering) noexcept;

// The type library in the module's first TYPELIB resource. Failures are the loader's own.
HRESULT AtlRegisterTypeLib(HINSTANCE module) noexcept;
HRESULT AtlUnregisterTypeLib(HINSTANCE module) noexcept;
