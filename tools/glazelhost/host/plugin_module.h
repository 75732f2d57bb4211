// The plug-in's DLL: what it is called, loading it and getting its class objects the way COM does,
// without its registration. Tests: tests/e2e/test_bad_input.py.
#pragma once

#include "platform/atl/atlcomcli.h"
#include "tools/glazelhost/host/library_file.h"

#include <string>

inline constexpr char kPluginFileName[] = "GlazelDX_x64.dll";

// clang-format off
inline constexpr CLSID CLSID_GlazelEffect{0xB47A199B, 0x15E2, 0x4836, {0xBD, 0x39, 0x41, 0x99, 0x04, 0xB5, 0xD2, 0x92}};
inline constexpr CLSID CLSID_GlazelPropertyPage{0xEE3AFD2C, 0xFB57, 0x41AC, {0xAB, 0xDE, 0x90, 0x42, 0x1C, 0x41, 0x40, 0xC3}};
// clang-format on

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
