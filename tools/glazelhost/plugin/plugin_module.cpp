#include "tools/glazelhost/plugin/plugin_module.h"

#include "contract/class_ids.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/plugin/message_boxes.h"
#include "tools/glazelhost/windows_text.h"

#include <bit>

namespace GlazelHost
{

PluginModule::PluginModule(const std::string& path)
    : m_path(path.empty() ? ProgramFolder() + "\\" + kPluginFileName : FullPath(path))
{
    LibraryState state;
    m_library = LoadLibraryFile(m_path, state);
    if (!m_library)
    {
        const bool isDefault = path.empty() && state.problem == LibraryProblem::NotFound;
        throw HostError(m_path, state.why,
                        isDefault ? "name the plug-in with --plugin FILE" : state.remedy);
    }
    RedirectMessageBoxesOfLoadedModules();
    m_getClassObject = std::bit_cast<GetClassObjectFunction*>(
        ::GetProcAddress(m_library.Get(), "DllGetClassObject"));
    m_canUnloadNow =
        std::bit_cast<CanUnloadNowFunction*>(::GetProcAddress(m_library.Get(), "DllCanUnloadNow"));
    if (m_getClassObject == nullptr || m_canUnloadNow == nullptr)
    {
        throw HostError(m_path,
                        "it is not a COM server (DllGetClassObject or DllCanUnloadNow is missing)",
                        "name the plug-in's DLL with --plugin FILE");
    }
}

PluginModule::~PluginModule()
{
    if (m_canUnloadNow != nullptr && m_canUnloadNow() != S_OK)
    {
        m_library.Abandon();
    }
}

HRESULT PluginModule::GetClassObject(REFCLSID classId,
                                     CComPtr<IClassFactory>& factory) const noexcept
{
    factory.Release();
    return m_getClassObject(classId, IID_IClassFactory, reinterpret_cast<void**>(&factory));
}

CComPtr<IUnknown> PluginModule::CreateEffect() const
{
    CComPtr<IClassFactory> factory;
    const HRESULT found = GetClassObject(CLSID_Plugin, factory);
    if (FAILED(found) || !factory)
    {
        throw HostError(m_path, "it has no effect class: " + ResultText(found),
                        "name the plug-in's DLL with --plugin FILE");
    }
    CComPtr<IUnknown> effect;
    const HRESULT created =
        factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&effect));
    ThrowRecordedMessageBoxes(m_path);
    if (FAILED(created) || !effect)
    {
        throw HostError(m_path, "the effect was not created: " + ResultText(created),
                        "run \"glazelhost info\" to see what the plug-in and the renderer lack");
    }
    return effect;
}

} // namespace GlazelHost
