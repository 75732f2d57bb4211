// The page as the product's DLL hands it out, also to the system's own container.
#include "contract/class_ids.h"
#include "contract/host_interfaces.h"
#include "tests/doubles/fake_exchange.h"
#include "tests/doubles/renderers/renderer_variant.h"
#include "tests/module/message_box_watch.h"
#include "tests/module/plugin_module.h"
#include "tests/propertypage/page_fixture.h"

#include <gtest/gtest.h>

#include <ocidl.h>
#include <olectl.h>

namespace
{

CComPtr<IClassFactory> PageFactory(const PluginModule& module)
{
    CComPtr<IClassFactory> factory;
    EXPECT_EQ(module.GetClassObject(CLSID_PluginPP, IID_IClassFactory,
                                    reinterpret_cast<void**>(&factory)),
              S_OK);
    return factory;
}

// An object that contains a page: its unknown is the page's outer.
class Outer : public IUnknown
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        if (iid != IID_IUnknown)
        {
            return inner->QueryInterface(iid, object);
        }
        *object = this;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    CComPtr<IUnknown> inner;
    ULONG references = 0;
};

// COM, and the page's class registered for this process, for as long as this lives.
class RegisteredPage
{
public:
    explicit RegisteredPage(const PluginModule& module)
    {
        EXPECT_EQ(::OleInitialize(nullptr), S_OK);
        EXPECT_EQ(::CoRegisterClassObject(CLSID_PluginPP, PageFactory(module), CLSCTX_INPROC_SERVER,
                                          REGCLS_MULTIPLEUSE, &m_cookie),
                  S_OK);
    }
    ~RegisteredPage()
    {
        ::CoRevokeClassObject(m_cookie);
        ::OleUninitialize();
    }
    RegisteredPage(const RegisteredPage&) = delete;
    RegisteredPage& operator=(const RegisteredPage&) = delete;

private:
    DWORD m_cookie = 0;
};

BOOL CALLBACK FindPage(HWND window, LPARAM found)
{
    WCHAR title[8] = L"";
    RECT client{};
    ::GetWindowTextW(window, title, 8);
    ::GetClientRect(window, &client);
    const bool isDialog = ::GetClassLongPtrW(window, GCW_ATOM) == 32770;
    if (isDialog && ::GetWindow(window, GW_CHILD) == nullptr && client.right > 140 &&
        client.bottom > 80)
    {
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }
    return TRUE;
}

// Works on the frame while it is open: toggles the check box on its page, then presses OK.
struct FrameUser
{
    HWND frame = nullptr;
    HWND page = nullptr;
    std::string difference = "not painted";
    int ticks = 0;

    static FrameUser* current;
    static void CALLBACK OnTimer(HWND, UINT, UINT_PTR timer, DWORD)
    {
        FrameUser& self = *current;
        ::EnumThreadWindows(::GetCurrentThreadId(), FindFrame, reinterpret_cast<LPARAM>(&self));
        if (self.frame == nullptr && ++self.ticks < 500)
        {
            return; // not open yet
        }
        ::KillTimer(nullptr, timer);
        if (self.frame != nullptr)
        {
            self.Work();
        }
    }
    static BOOL CALLBACK FindFrame(HWND window, LPARAM self)
    {
        HWND page = nullptr;
        ::EnumChildWindows(window, FindPage, reinterpret_cast<LPARAM>(&page));
        if (page == nullptr || ::IsWindowVisible(page) == FALSE)
        {
            return TRUE;
        }
        reinterpret_cast<FrameUser*>(self)->frame = window;
        reinterpret_cast<FrameUser*>(self)->page = page;
        return FALSE;
    }
    void Work()
    {
        ::UpdateWindow(page);
        // What stands beyond the edge of the screen cannot be read.
        POINT origin{};
        ::ClientToScreen(page, &origin);
        const auto width = static_cast<int>(::GetSystemMetrics(SM_CXSCREEN) - origin.x);
        const Picture screen = ScreenOf(page);
        difference =
            FirstDifference(LeftPart(screen, width),
                            LeftPart(ExpectedPanel(screen.size, {.checked = true}), width));
        MovePointer(page, kOnCheckBox);
        ::SendMessageW(page, WM_LBUTTONDOWN, MK_LBUTTON, 0);
        ::SendMessageW(page, WM_LBUTTONUP, 0, 0);
        ::PostMessageW(frame, WM_COMMAND, IDOK, 0);
    }
};

FrameUser* FrameUser::current = nullptr;

} // namespace

TEST(PageModule, AnObjectOfItsOwnHasOneIdentity)
{
    const PluginModule module;
    const CComPtr<IClassFactory> factory = PageFactory(module);
    CComPtr<IPropertyPage> page;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IPropertyPage, reinterpret_cast<void**>(&page)),
              S_OK);
    CComPtr<IUnknown> identity;
    CComPtr<IPropertyPage> again;
    ASSERT_EQ(page->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity)), S_OK);
    ASSERT_EQ(identity.QueryInterface(&again), S_OK);
    EXPECT_EQ(page.p, again.p);
}

TEST(PageModule, AnAggregatedPageBelongsToItsOuter)
{
    const PluginModule module;
    const CComPtr<IClassFactory> factory = PageFactory(module);
    Outer outer;
    IPropertyPage* none = nullptr;
    EXPECT_EQ(factory->CreateInstance(&outer, IID_IPropertyPage, reinterpret_cast<void**>(&none)),
              CLASS_E_NOAGGREGATION);
    ASSERT_EQ(factory->CreateInstance(&outer, IID_IUnknown, reinterpret_cast<void**>(&outer.inner)),
              S_OK);
    {
        CComPtr<IPropertyPage> page;
        ASSERT_EQ(outer.QueryInterface(IID_IPropertyPage, reinterpret_cast<void**>(&page)), S_OK);
        EXPECT_EQ(outer.references, 1U);
        CComPtr<IUnknown> identity;
        ASSERT_EQ(page.QueryInterface(&identity), S_OK);
        EXPECT_EQ(identity.p, &outer);
    }
    EXPECT_EQ(outer.references, 0U);
    EXPECT_EQ(module.CanUnloadNow(), S_FALSE);
    outer.inner.Release();
}

TEST(PageModule, CannotBeUnloadedWhileAPageIsAlive)
{
    const PluginModule module;
    CComPtr<IPropertyPage> page;
    ASSERT_EQ(PageFactory(module)->CreateInstance(nullptr, IID_IPropertyPage,
                                                  reinterpret_cast<void**>(&page)),
              S_OK);
    EXPECT_EQ(module.CanUnloadNow(), S_FALSE);
    page.Release();
    EXPECT_EQ(module.CanUnloadNow(), S_OK);
}

TEST(PageModule, TakesItsDialogAndTextsFromTheDll)
{
    const PluginModule module;
    CComPtr<IPropertyPage> page;
    ASSERT_EQ(PageFactory(module)->CreateInstance(nullptr, IID_IPropertyPage,
                                                  reinterpret_cast<void**>(&page)),
              S_OK);
    PROPPAGEINFO info{};
    ASSERT_EQ(page->GetPageInfo(&info), S_OK);
    EXPECT_STREQ(info.pszTitle, L"Brellin Glazel");
    EXPECT_GT(info.size.cx, 1000);
    ::CoTaskMemFree(info.pszTitle);
    ::CoTaskMemFree(info.pszDocString);
    ::CoTaskMemFree(info.pszHelpFile);
}

TEST(PageModule, WorksOnTheEffectOfTheSameDll)
{
    UseRenderer(L"complete");
    const PluginModule module;
    CComPtr<ISfExchangeProps<SessionData>> effect;
    ASSERT_EQ(module.CreateEffect(IID_ISfExchangeProps, reinterpret_cast<void**>(&effect)), S_OK);
    CComPtr<IPropertyPage> page;
    ASSERT_EQ(PageFactory(module)->CreateInstance(nullptr, IID_IPropertyPage,
                                                  reinterpret_cast<void**>(&page)),
              S_OK);
    IUnknown* object = effect;
    ASSERT_EQ(page->SetObjects(1, &object), S_OK);
    const PageFrame host;
    const RECT rect = host.PageRect();
    ASSERT_EQ(page->Activate(host.Window(), &rect, FALSE), S_OK);
    ASSERT_EQ(page->Show(SW_SHOWNA), S_OK);
    MovePointer(host.PageWindow(), kOnCheckBox);
    ::SendMessageW(host.PageWindow(), WM_LBUTTONDOWN, MK_LBUTTON, 0);
    ::SendMessageW(host.PageWindow(), WM_LBUTTONUP, 0, 0);
    SessionData record;
    ASSERT_EQ(effect->GetProps(&record), S_OK);
    EXPECT_EQ(record.flag, 0U) << "the check box is off now";
    EXPECT_EQ(page->Deactivate(), S_OK);
}

TEST(PageModule, WorksInTheSystemsOwnContainer)
{
    FakeExchange exchange;
    exchange.bytes = PageRecord(0x12, 1);
    const PluginModule module;
    {
        const RegisteredPage registered(module);
        FrameUser user;
        FrameUser::current = &user;
        ::SetTimer(nullptr, 0, 20, FrameUser::OnTimer);
        IUnknown* objects[] = {&exchange};
        CLSID pages[] = {CLSID_PluginPP};
        EXPECT_EQ(::OleCreatePropertyFrame(nullptr, 50, 50, L"Effect", 1, objects, 1, pages,
                                           LOCALE_USER_DEFAULT, 0, nullptr),
                  S_OK);
        ASSERT_NE(user.page, nullptr) << "the frame shows the page";
        EXPECT_EQ(user.difference, "");
        EXPECT_FALSE(::IsWindow(user.page));
    }
    EXPECT_GE(exchange.sets, 1);
    EXPECT_EQ(exchange.bytes, PageRecord(0x12, 0)) << "toggled";
    ASSERT_FALSE(exchange.notices.empty());
    EXPECT_EQ(exchange.notices.back().command, 0U);
    EXPECT_EQ(exchange.references, 0U);
    EXPECT_EQ(module.CanUnloadNow(), S_OK);
}
