#include "tools/glazelhost/page/page_container.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/page/page_site.h"
#include "tools/glazelhost/plugin/com_calls.h"

#include <array>
#include <memory>
#include <new>
#include <tuple>

namespace GlazelHost
{

namespace
{

struct TaskMemoryDeleter
{
    void operator()(void* memory) const noexcept { ::CoTaskMemFree(memory); }
};

CLSID FirstPageOf(IUnknown& effect, const std::string& path)
{
    const auto pages = QueryEffect<ISpecifyPropertyPages>(effect, IID_ISpecifyPropertyPages,
                                                          "ISpecifyPropertyPages", path);
    CAUUID classes{};
    CheckEffectCall(pages->GetPages(&classes), path, "the effect did not name its pages");
    const std::unique_ptr<GUID, TaskMemoryDeleter> owner(classes.pElems);
    if (classes.cElems == 0 || classes.pElems == nullptr)
    {
        throw HostError(path, "the effect has no property page",
                        "name the plug-in's DLL with --plugin FILE");
    }
    return classes.pElems[0];
}

HRESULT CreatePage(const PluginModule& module, REFCLSID classId, CComPtr<IPropertyPage>& page)
{
    const auto place = reinterpret_cast<void**>(&page);
    CComPtr<IClassFactory> factory;
    if (SUCCEEDED(module.GetClassObject(classId, factory)) && factory)
    {
        return factory->CreateInstance(nullptr, IID_IPropertyPage, place);
    }
    return ::CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_IPropertyPage, place);
}

} // namespace

PageContainer::PageContainer(const PluginModule& module, IUnknown& effect) : m_path(module.Path())
{
    Check(CreatePage(module, FirstPageOf(effect, m_path), m_page),
          "the effect's page was not created");
    CComPtr<IPropertyPageSite> site(new CPageSite);
    Check(m_page->SetPageSite(site), "the page refused its site");
    IUnknown* object = &effect;
    Check(m_page->SetObjects(1, &object), "the page refused the effect");
    PROPPAGEINFO info{};
    info.cb = sizeof info;
    const HRESULT informed = m_page->GetPageInfo(&info);
    const std::array<std::unique_ptr<WCHAR, TaskMemoryDeleter>, 3> texts{
        std::unique_ptr<WCHAR, TaskMemoryDeleter>(info.pszTitle),
        std::unique_ptr<WCHAR, TaskMemoryDeleter>(info.pszDocString),
        std::unique_ptr<WCHAR, TaskMemoryDeleter>(info.pszHelpFile)};
    Check(informed, "the page did not say how large it is");
    m_title = info.pszTitle != nullptr ? info.pszTitle : L"";
    m_size = info.size;
}

PageContainer::~PageContainer()
{
    Deactivate();
    // The page lets go of the effect before it goes; there is nobody left to tell of a failure.
    IUnknown* none = nullptr;
    std::ignore = m_page->SetObjects(0, &none);
    std::ignore = m_page->SetPageSite(nullptr);
}

void PageContainer::Check(HRESULT result, const char* what) const
{
    CheckEffectCall(result, m_path, what);
}

void PageContainer::Activate(HWND parent, const RECT& area)
{
    Check(m_page->Activate(parent, &area, FALSE), "the page did not open");
    m_isActive = true;
    Check(m_page->Show(SW_SHOW), "the page did not show itself");
}

void PageContainer::Move(const RECT& area)
{
    if (m_isActive)
    {
        Check(m_page->Move(&area), "the page did not move");
    }
}

void PageContainer::Deactivate() noexcept
{
    if (!m_isActive)
    {
        return;
    }
    m_isActive = false;
    if (m_page->IsPageDirty() == S_OK)
    {
        std::ignore = m_page->Apply(); // the page is closing, it keeps nothing to try again with
    }
    std::ignore = m_page->Deactivate();
}

bool PageContainer::Translate(MSG& message) noexcept
{
    return m_isActive && m_page->TranslateAccelerator(&message) == S_OK;
}

} // namespace GlazelHost
