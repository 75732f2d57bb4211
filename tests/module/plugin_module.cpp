#include "tests/module/plugin_module.h"

#include "effect/iplugin.h"
#include "tests/doubles/renderers/renderer_variant.h"

#include <bit>
#include <stdexcept>
#include <string>

PluginModule::PluginModule()
    : m_module(::LoadLibraryW((BinFolder() + L"\\GlazelDX_x64.dll").c_str()))
{
    if (m_module == nullptr)
    {
        throw std::runtime_error("cannot load the plug-in: " + std::to_string(::GetLastError()));
    }
}

PluginModule::~PluginModule()
{
    ::FreeLibrary(m_module);
}

template <typename Function>
Function* PluginModule::Export(const char* name) const
{
    return std::bit_cast<Function*>(::GetProcAddress(m_module, name));
}

HRESULT PluginModule::CanUnloadNow() const
{
    return Export<HRESULT()>("DllCanUnloadNow")();
}

HRESULT PluginModule::GetClassObject(REFCLSID clsid, REFIID iid, void** object) const
{
    return Export<HRESULT(REFCLSID, REFIID, void**)>("DllGetClassObject")(clsid, iid, object);
}

HRESULT PluginModule::RegisterServer() const
{
    return Export<HRESULT()>("DllRegisterServer")();
}

HRESULT PluginModule::UnregisterServer() const
{
    return Export<HRESULT()>("DllUnregisterServer")();
}

HRESULT PluginModule::CreateEffect(REFIID iid, void** object) const
{
    CComPtr<IClassFactory> factory;
    const HRESULT result =
        GetClassObject(CLSID_Plugin, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    return SUCCEEDED(result) ? factory->CreateInstance(nullptr, iid, object) : result;
}
