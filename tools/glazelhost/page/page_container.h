// Embeds the property page of an effect in a window, with the calls of a property-page container in
// their order. Tests: tests/tools/glazelhost/page/page_container_test.cpp.
#pragma once

#include "platform/atl/atlcomcli.h"
#include "tools/glazelhost/plugin/plugin_module.h"

#include <windows.h>

#include <ocidl.h>

#include <string>

namespace GlazelHost
{

// On the thread of the window; the module outlives it. Every failure of the page throws HostError.
class PageContainer
{
public:
    // Creates the first page that the effect names, from the module or else as it is registered,
    // and hands it the effect.
    PageContainer(const PluginModule& module, IUnknown& effect);
    ~PageContainer(); // takes the page's window away and releases the page
    PageContainer(const PageContainer&) = delete;
    PageContainer& operator=(const PageContainer&) = delete;

    const std::wstring& Title() const noexcept { return m_title; }
    SIZE Size() const noexcept { return m_size; } // that the page asks for, pixels

    // Shows the page as a child of `parent` at `area`, in its client coordinates.
    void Activate(HWND parent, const RECT& area);
    void Move(const RECT& area);
    // Applies what the page holds back, and takes its window away. Harmless when repeated.
    void Deactivate() noexcept;
    // Whether the page took the message; it is then not to be dispatched.
    bool Translate(MSG& message) noexcept;

private:
    void Check(HRESULT result, const char* what) const;

    std::string m_path; // of the plug-in, for errors
    CComPtr<IPropertyPage> m_page;
    std::wstring m_title;
    SIZE m_size{};
    bool m_isActive = false;
};

} // namespace GlazelHost
