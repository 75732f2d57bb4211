// The plug-in's DLL: what it is called, loading it and getting its class objects the way COM does,
// without its registration. Tests: tests/e2e/test_bad_input.py.
#pragma once

#include "platform/atl/atlcomcli.h"
#include "tools/glazelhost/plugin/library_file.h"

#include <string>

namespace GlazelHost
{

inline constexpr char kPluginFileName[] = "GlazelDX_x64.dll";

// On one thread, which has initialised COM.
class PluginModule
{
public:
    // `path` is UTF-8; empty means the plug-in beside this program. Throws HostError when it does
    // not load or is no COM server.
    explicit PluginModule(const std::string& path);
    // Unloads the plug-in if that says that nothing of it is in use.
    ~PluginModule();
    PluginModule(const PluginModule&) = delete;
    PluginModule& operator=(const PluginModule&) = delete;

    const std::string& Path() const noexcept { return m_path; }
    HMODULE Get() const noexcept { return m_library.Get(); }
    HRESULT CanUnloadNow() const noexcept { return m_canUnloadNow(); }
    HRESULT GetClassObject(REFCLSID classId, CComPtr<IClassFactory>& factory) const noexcept;
    // Throws HostError; a message box that the creation wanted to show is part of its line.
    CComPtr<IUnknown> CreateEffect() const;

private:
    using GetClassObjectFunction = HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**);
    using CanUnloadNowFunction = HRESULT STDAPICALLTYPE();

    std::string m_path;
    LoadedLibrary m_library;
    GetClassObjectFunction* m_getClassObject = nullptr;
    CanUnloadNowFunction* m_canUnloadNow = nullptr;
};

} // namespace GlazelHost
