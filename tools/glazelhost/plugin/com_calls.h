// How the host asks things of the effect: interfaces that it must have, calls that must succeed.
#pragma once

#include "platform/atl/atlcomcli.h"

#include <windows.h>

#include <objbase.h>

#include <string>

namespace GlazelHost
{

// Throws HostError for a failure of the effect in the plug-in at `path`, or for a message box that
// it wanted to show; `what` failed, in words.
void CheckEffectCall(HRESULT result, const std::string& path, const char* what);

// Throws HostError when QueryInterface for the interface called `name` gave `result`.
void CheckEffectInterface(HRESULT result, const std::string& path, const char* name);

// Throws HostError when the effect lacks the interface.
template <typename Interface>
CComPtr<Interface> QueryEffect(IUnknown& effect, REFIID iid, const char* name,
                               const std::string& path)
{
    CComPtr<Interface> found;
    const HRESULT result = effect.QueryInterface(iid, reinterpret_cast<void**>(&found));
    CheckEffectInterface(SUCCEEDED(result) && !found ? E_NOINTERFACE : result, path, name);
    return found;
}

} // namespace GlazelHost
