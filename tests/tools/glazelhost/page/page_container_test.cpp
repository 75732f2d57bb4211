#include "tools/glazelhost/page/page_container.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/page/page_site.h"
#include "tools/glazelhost/plugin/library_file.h"

#include <gtest/gtest.h>

#include <ole2.h>

#include <string>
#include <vector>

namespace GlazelHost
{

namespace
{

// clang-format off
constexpr CLSID CLSID_FakePage{0x7D2E0B4A, 0x5C1F, 0x4E7B, {0x9A, 0x33, 0x10, 0x6B, 0xD8, 0x24, 0x71, 0xE5}};
// clang-format on

using Calls = std::vector<std::string>;

// What the page is asked, in order, and what it answers.
struct Script
{
    Calls calls;
    std::string failing; // this call fails
    bool dirty = false;
    int alive = 0;

    HRESULT Note(const std::string& call)
    {
        calls.push_back(call);
        return call == failing ? E_FAIL : S_OK;
    }
};
Script* script = nullptr;

class CFakePage final : public CCallback<IPropertyPage, &IID_IPropertyPage>
{
public:
    CFakePage() { ++script->alive; }
    HRESULT STDMETHODCALLTYPE SetPageSite(IPropertyPageSite* site) noexcept override
    {
        m_site = site;
        return script->Note(site != nullptr ? "SetPageSite" : "SetPageSite(null)");
    }
    HRESULT STDMETHODCALLTYPE Activate(HWND, const RECT* area, BOOL) noexcept override
    {
        return script->Note("Activate at " + std::to_string(area->top));
    }
    HRESULT STDMETHODCALLTYPE Deactivate() noexcept override { return script->Note("Deactivate"); }
    HRESULT STDMETHODCALLTYPE GetPageInfo(PROPPAGEINFO* info) noexcept override
    {
        EXPECT_EQ(info->cb, sizeof *info);
        constexpr wchar_t kTitle[] = L"Fake";
        info->pszTitle = static_cast<LPOLESTR>(::CoTaskMemAlloc(sizeof kTitle));
        std::copy(std::begin(kTitle), std::end(kTitle), info->pszTitle);
        info->pszDocString = nullptr;
        info->pszHelpFile = nullptr;
        info->size = {300, 90};
        return script->Note("GetPageInfo");
    }
    HRESULT STDMETHODCALLTYPE SetObjects(ULONG count, IUnknown** objects) noexcept override
    {
        m_object = count > 0 ? objects[0] : nullptr;
        return script->Note("SetObjects " + std::to_string(count));
    }
    HRESULT STDMETHODCALLTYPE Show(UINT) noexcept override { return script->Note("Show"); }
    HRESULT STDMETHODCALLTYPE Move(const RECT* area) noexcept override
    {
        return script->Note("Move to " + std::to_string(area->top));
    }
    HRESULT STDMETHODCALLTYPE IsPageDirty() noexcept override
    {
        script->calls.emplace_back("IsPageDirty");
        return script->dirty ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Apply() noexcept override { return script->Note("Apply"); }
    HRESULT STDMETHODCALLTYPE Help(LPCOLESTR) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG* message) noexcept override
    {
        return message->message == WM_KEYDOWN ? S_OK : S_FALSE;
    }

private:
    ~CFakePage() override { --script->alive; }
    CComPtr<IPropertyPageSite> m_site;
    CComPtr<IUnknown> m_object;
};

class CFakeFactory final : public CCallback<IClassFactory, &IID_IClassFactory>
{
public:
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID iid, void** object) noexcept override
    {
        CComPtr<IPropertyPage> page(new CFakePage);
        return page->QueryInterface(iid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) noexcept override { return S_OK; }
};

// An effect that has pages and nothing else.
class CPagesOnly final : public CCallback<ISpecifyPropertyPages, &IID_ISpecifyPropertyPages>
{
public:
    explicit CPagesOnly(ULONG count) : m_count(count) {}
    HRESULT STDMETHODCALLTYPE GetPages(CAUUID* pages) noexcept override
    {
        pages->cElems = m_count;
        pages->pElems = static_cast<GUID*>(::CoTaskMemAlloc(sizeof(GUID)));
        pages->pElems[0] = CLSID_FakePage;
        return S_OK;
    }

private:
    ULONG m_count;
};

class CNoPages final : public CCallback<IUnknown>
{
};

class PageContainers : public testing::Test
{
protected:
    PageContainers()
    {
        script = &m_script;
        EXPECT_EQ(::OleInitialize(nullptr), S_OK);
        const CComPtr<IClassFactory> factory(new CFakeFactory);
        EXPECT_EQ(::CoRegisterClassObject(CLSID_FakePage, factory, CLSCTX_INPROC_SERVER,
                                          REGCLS_MULTIPLEUSE, &m_cookie),
                  S_OK);
    }
    ~PageContainers() override
    {
        ::CoRevokeClassObject(m_cookie);
        ::OleUninitialize();
        EXPECT_EQ(m_script.alive, 0) << "a page is left over";
    }

    std::string ErrorOf(IUnknown& effect)
    {
        try
        {
            const PageContainer container(m_module, effect);
        }
        catch (const HostError& error)
        {
            return error.what();
        }
        return "";
    }

    PluginModule m_module{ProgramFolder() + "\\" + kPluginFileName};
    Script m_script;
    CComPtr<ISpecifyPropertyPages> m_effect{new CPagesOnly(1)};
    const RECT m_area{0, 400, 300, 490};

private:
    DWORD m_cookie = 0;
};

} // namespace

TEST_F(PageContainers, CallThePageInTheOrderOfItsLife)
{
    {
        PageContainer container(m_module, *m_effect);
        EXPECT_EQ(m_script.calls, (Calls{"SetPageSite", "SetObjects 1", "GetPageInfo"}));
        EXPECT_EQ(container.Title(), L"Fake");
        EXPECT_EQ(container.Size().cx, 300);
        EXPECT_EQ(container.Size().cy, 90);
        m_script.calls.clear();
        container.Activate(nullptr, m_area);
        container.Move({0, 500, 300, 590});
        EXPECT_EQ(m_script.calls, (Calls{"Activate at 400", "Show", "Move to 500"}));
        m_script.calls.clear();
    }
    EXPECT_EQ(m_script.calls,
              (Calls{"IsPageDirty", "Deactivate", "SetObjects 0", "SetPageSite(null)"}));
}

TEST_F(PageContainers, ApplyWhatAPageHoldsBackWhenItCloses)
{
    PageContainer container(m_module, *m_effect);
    container.Activate(nullptr, m_area);
    m_script.calls.clear();
    m_script.dirty = true;
    container.Deactivate();
    container.Deactivate();
    EXPECT_EQ(m_script.calls, (Calls{"IsPageDirty", "Apply", "Deactivate"}));
}

TEST_F(PageContainers, OfferMessagesToAPageThatIsOpen)
{
    PageContainer container(m_module, *m_effect);
    MSG key{};
    key.message = WM_KEYDOWN;
    MSG other{};
    other.message = WM_TIMER;
    EXPECT_FALSE(container.Translate(key)) << "not open yet";
    container.Activate(nullptr, m_area);
    EXPECT_TRUE(container.Translate(key));
    EXPECT_FALSE(container.Translate(other));
    container.Deactivate();
    EXPECT_FALSE(container.Translate(key));
}

TEST_F(PageContainers, SayWhichCallOfThePageFailed)
{
    m_script.failing = "SetObjects 1";
    EXPECT_NE(ErrorOf(*m_effect).find("the page refused the effect"), std::string::npos);
    m_script.failing = "GetPageInfo";
    EXPECT_NE(ErrorOf(*m_effect).find("how large"), std::string::npos);
    m_script.failing.clear();
    PageContainer container(m_module, *m_effect);
    m_script.failing = "Activate at 400";
    EXPECT_THROW(container.Activate(nullptr, m_area), HostError);
    m_script.calls.clear();
    container.Deactivate();
    EXPECT_EQ(m_script.calls, Calls{}) << "it was never active";
}

TEST_F(PageContainers, RefuseAnEffectWithoutPages)
{
    const CComPtr<IUnknown> without(new CNoPages);
    EXPECT_NE(ErrorOf(*without).find("ISpecifyPropertyPages"), std::string::npos);
    const CComPtr<ISpecifyPropertyPages> empty(new CPagesOnly(0));
    EXPECT_NE(ErrorOf(*empty).find("has no property page"), std::string::npos);
}

TEST(PageSites, AnswerWhatAPageMayAsk)
{
    const CComPtr<IPropertyPageSite> site(new CPageSite);
    LCID locale = 0;
    EXPECT_EQ(site->GetLocaleID(&locale), S_OK);
    EXPECT_NE(locale, 0U);
    EXPECT_EQ(site->GetLocaleID(nullptr), E_POINTER);
    IUnknown* container = site;
    EXPECT_EQ(site->GetPageContainer(&container), E_NOTIMPL);
    EXPECT_EQ(container, nullptr);
    EXPECT_EQ(site->OnStatusChange(PROPPAGESTATUS_DIRTY), S_OK);
    MSG message{};
    EXPECT_EQ(site->TranslateAccelerator(&message), S_FALSE);
    CComPtr<IClassFactory> other;
    EXPECT_EQ(site.QueryInterface(&other), E_NOINTERFACE);
}

} // namespace GlazelHost
