// The product's DLL as a host meets it: loaded by path and used through its exports.
#pragma once

#include "platform/atl/atlcomcli.h"

#include <windows.h>

#include <objbase.h>

// Loads on construction (throws std::runtime_error when it cannot), frees on destruction.
class PluginModule
{
public:
    PluginModule();
    ~PluginModule();
    PluginModule(const PluginModule&) = delete;
    PluginModule& operator=(const PluginModule&) = delete;

    HMODULE Handle() const { return m_module; }
    HRESULT CanUnloadNow() const;
    HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** object) const;
    HRESULT RegisterServer() const;
    HRESULT UnregisterServer() const;
    // Creates an effect through its class object.
    HRESULT CreateEffect(REFIID iid, void** object) const;

private:
    template <typename Function>
    Function* Export(const char* name) const;

    HMODULE m_module;
};
