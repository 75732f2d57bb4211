// Orders in which hosts take page, effect and window apart, and what is left afterwards.
#include "tests/effect/effect_fixture.h"
#include "tests/propertypage/page_fixture.h"

namespace
{

class PageLife : public PageTest
{
protected:
    static CComPtr<OpenPlugin> NewEffect()
    {
        CComObject<OpenPlugin>* object = nullptr;
        if (FAILED(CComObject<OpenPlugin>::CreateInstance(&object)))
        {
            throw std::runtime_error("the effect was not created");
        }
        return object;
    }
    static CComPtr<CPluginPP> NewPage()
    {
        CComObject<CPluginPP>* object = nullptr;
        if (FAILED(CComObject<CPluginPP>::CreateInstance(&object)))
        {
            throw std::runtime_error("the page was not created");
        }
        return object;
    }
    static void OpenOn(CPluginPP* opened, IUnknown* effect, const PageFrame& host)
    {
        ASSERT_EQ(opened->SetObjects(1, &effect), S_OK);
        const RECT rect = host.PageRect();
        ASSERT_EQ(opened->Activate(host.Window(), &rect, FALSE), S_OK);
        ASSERT_EQ(opened->Show(SW_SHOWNA), S_OK);
        ::UpdateWindow(host.PageWindow());
    }
};

ULONG ReferencesOf(IUnknown* object)
{
    object->AddRef();
    return object->Release();
}

struct Resources
{
    DWORD gdi;
    DWORD user;
    bool operator==(const Resources&) const = default;
};

// Wine does not count GDI objects, but takes the low half of a handle for the whole of it.
DWORD CountGdiObjects()
{
    DWORD count = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
    if (count == 0)
    {
        for (std::uintptr_t handle = 1; handle <= 0xFFFF; ++handle)
        {
            count += ::GetObjectType(reinterpret_cast<HGDIOBJ>(handle)) != 0 ? 1U : 0U;
        }
    }
    return count;
}

BOOL CALLBACK CountWindow(HWND window, LPARAM count)
{
    ++*reinterpret_cast<DWORD*>(count);
    if (::GetAncestor(window, GA_PARENT) == ::GetDesktopWindow())
    {
        ::EnumChildWindows(window, CountWindow, count); // of all levels
    }
    return TRUE;
}

// Where the system does not count user objects, the windows are counted: the page makes no others.
DWORD CountUserObjects()
{
    DWORD count = ::GetGuiResources(::GetCurrentProcess(), GR_USEROBJECTS);
    if (count == 0)
    {
        ::EnumThreadWindows(::GetCurrentThreadId(), CountWindow, reinterpret_cast<LPARAM>(&count));
    }
    return count;
}

Resources ResourcesOfThisProcess()
{
    return {CountGdiObjects(), CountUserObjects()};
}

} // namespace

TEST_F(PageLife, APageOutlivesTheHostsReferenceToItsEffect)
{
    const PageFrame host;
    CComPtr<OpenPlugin> effect = NewEffect();
    OpenPlugin* const raw = effect;
    OpenOn(page, static_cast<IDXEffect*>(raw), host);
    EXPECT_EQ(ReferencesOf(static_cast<IDXEffect*>(raw)), 2U);
    effect.Release();
    EXPECT_EQ(page->Apply(), S_OK) << "the page holds it";
    ::SendMessageW(host.PageWindow(), WM_COMMAND, ID_PROPS_CHANGED, 0);
    EXPECT_EQ(page->Deactivate(), S_OK);
}

TEST_F(PageLife, AnEffectOutlivesItsPage)
{
    const PageFrame host;
    const CComPtr<OpenPlugin> effect = NewEffect();
    OpenOn(page, static_cast<IDXEffect*>(effect.p), host);
    page->Deactivate();
    page.Release();
    EXPECT_EQ(ReferencesOf(static_cast<IDXEffect*>(effect.p)), 1U);
    EXPECT_EQ(effect->ApplyPreset(0), S_OK) << "posts to a window that is gone";
    HandleMessages();
}

TEST_F(PageLife, APageThatIsLetGoWhileActiveTakesItsWindowAlong)
{
    Open();
    const HWND window = PageWindow();
    page.Release();
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_EQ(exchange.notices.back().command, 0U);
    EXPECT_EQ(exchange.references, 0U);
}

TEST_F(PageLife, AnAggregatedPageThatIsLetGoWhileActiveTakesItsWindowAlong)
{
    const PageFrame host;
    CComPtr<IUnknown> inner;
    ASSERT_EQ(CPluginPP::_CreatorClass::CreateInstance(&exchange, IID_IUnknown,
                                                       reinterpret_cast<void**>(&inner)),
              S_OK);
    {
        CComPtr<IPropertyPage> aggregated;
        ASSERT_EQ(inner.QueryInterface(&aggregated), S_OK);
        IUnknown* effect = &exchange;
        ASSERT_EQ(aggregated->SetObjects(1, &effect), S_OK);
        const RECT rect = host.PageRect();
        ASSERT_EQ(aggregated->Activate(host.Window(), &rect, FALSE), S_OK);
    }
    const HWND window = host.PageWindow();
    inner.Release();
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_EQ(exchange.references, 0U);
}

TEST_F(PageLife, ObjectsMayBeSetAnewWhileThePageIsActive)
{
    FakeExchange other;
    other.bytes = PageRecord(0x55, 0);
    Open();
    SetObject(&other);
    EXPECT_EQ(exchange.references, 0U);
    ::SendMessageW(PageWindow(), WM_COMMAND, ID_PROPS_CHANGED, 0);
    EXPECT_EQ(other.gets, 1);
    SetObject(&other);
    IUnknown* none = nullptr;
    EXPECT_EQ(page->SetObjects(0, &none), S_OK);
    ::SendMessageW(PageWindow(), WM_COMMAND, ID_PROPS_CHANGED, 0);
    Close();
    EXPECT_EQ(other.references, 0U);
    EXPECT_TRUE(other.notices.empty()) << "the page had nobody left to tell";
}

TEST_F(PageLife, TwoPagesOnOneEffectCloseInAnyOrder)
{
    for (const bool firstGoesFirst : {true, false})
    {
        const PageFrame firstHost;
        const PageFrame secondHost;
        const CComPtr<OpenPlugin> effect = NewEffect();
        CComPtr<CPluginPP> first = NewPage();
        CComPtr<CPluginPP> second = NewPage();
        OpenOn(first, static_cast<IDXEffect*>(effect.p), firstHost);
        OpenOn(second, static_cast<IDXEffect*>(effect.p), secondHost);
        EXPECT_EQ(effect->ApplyPreset(0), S_OK);
        HandleMessages();
        (firstGoesFirst ? first : second)->Deactivate();
        (firstGoesFirst ? first : second).Release();
        EXPECT_EQ(effect->ApplyPreset(0), S_OK);
        HandleMessages();
        (firstGoesFirst ? second : first)->Deactivate();
        (firstGoesFirst ? second : first).Release();
        EXPECT_EQ(ReferencesOf(static_cast<IDXEffect*>(effect.p)), 1U);
    }
}

TEST_F(PageLife, AThousandOpenedPaintedAndClosedPagesLeaveNoGdiOrUserObject)
{
    Thumbnail thumbnail = SampleThumbnail({100, 50});
    Show(thumbnail);
    const PageFrame host;
    const auto cycle = [&] {
        const CComPtr<CPluginPP> opened = NewPage();
        OpenOn(opened, &exchange, host);
        // Draws the controls alone too.
        ::SendMessageW(host.PageWindow(), WM_LBUTTONDOWN, MK_LBUTTON, 0);
        ::SendMessageW(host.PageWindow(), WM_LBUTTONUP, 0, 0);
        opened->Deactivate();
    };
    const auto withOneMore = [] {
        const PageFrame window;
        const HBRUSH brush = ::CreateSolidBrush(RGB(1, 2, 3));
        const Resources more = ResourcesOfThisProcess();
        ::DeleteObject(brush);
        return more;
    };
    MovePointer(host.Window(), kOnCheckBox);
    cycle(); // the first of each leaves what the system keeps for good
    withOneMore();
    HandleMessages();
    const Resources before = ResourcesOfThisProcess();
    const Resources more = withOneMore();
    ASSERT_GT(more.gdi, before.gdi) << "an object more is seen";
    ASSERT_GT(more.user, before.user) << "a window more is seen";
    ASSERT_EQ(ResourcesOfThisProcess(), before);
    const ULONG references = exchange.references;
    for (int i = 0; i < 1000; ++i)
    {
        cycle();
        recording.count = 0;
    }
    HandleMessages();
    const Resources after = ResourcesOfThisProcess();
    EXPECT_EQ(after.gdi, before.gdi);
    EXPECT_EQ(after.user, before.user);
    EXPECT_EQ(exchange.references, references);
    EXPECT_GE(exchange.sets, 1000);
}
