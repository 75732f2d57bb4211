// What self-registration writes to the registry and takes out of it. The scripts are plugin.rgs and
// plugin_pp.rgs; only the effect's class has ProgID and TypeLib keys, and that TypeLib is not the
// library registered here: see MAINLib.idl. Entries of the type library's interfaces that belong to
// another library are kept aside meanwhile and put back in the end: IDXEffect is not ours alone.
// Tests: tests/registration/.
#pragma once

#include <windows.h>

// The type library that the module carries; its interface definition says the same.
inline constexpr GUID LIBID_MAINLib{
    0xCF41FD25, 0xF1F3, 0x4B65, {0xA2, 0x40, 0x3D, 0x4E, 0x88, 0x0D, 0x86, 0x8D}};

// The classes' registry scripts in the object map's order, then the type library. The first failure
// ends it and is returned unchanged.
HRESULT RegisterModule(HINSTANCE module) noexcept;
// Takes out all of it, whatever fails; returns the first failure.
HRESULT UnregisterModule(HINSTANCE module) noexcept;
