// The page as an object: everything that needs no window on the screen.
#include "contract/class_ids.h"
#include "tests/doubles/failing_allocation.h"
#include "tests/propertypage/page_fixture.h"

#include <array>
#include <cstring>
#include <cwchar>
#include <functional>
#include <limits>
#include <utility>

namespace
{

class PageObject : public PageTest
{
};

// A host's site or object of which only the references count.
class Counted : public IPropertyPageSite
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        *object = iid == IID_IUnknown || iid == IID_IPropertyPageSite ? this : nullptr;
        return *object != nullptr ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        if (const auto call = std::exchange(onAddRef, nullptr))
        {
            call();
        }
        return ++references;
    }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE OnStatusChange(DWORD) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetLocaleID(LCID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPageContainer(IUnknown**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG*) override { return E_NOTIMPL; }

    ULONG references = 0;
    std::function<void()> onAddRef; // once
};

std::wstring Taken(LPOLESTR text)
{
    const std::wstring copy = text != nullptr ? text : L"(null)";
    ::CoTaskMemFree(text);
    return copy;
}

} // namespace

TEST_F(PageObject, ASecondSiteIsRefusedAndTheFirstIsKept)
{
    Counted first;
    Counted second;
    EXPECT_EQ(page->SetPageSite(&first), S_OK);
    EXPECT_EQ(page->SetPageSite(&second), E_UNEXPECTED);
    EXPECT_EQ(page->SetPageSite(&first), E_UNEXPECTED);
    EXPECT_EQ(first.references, 1U);
    EXPECT_EQ(second.references, 0U);
    EXPECT_EQ(page->SetPageSite(nullptr), S_OK);
    EXPECT_EQ(first.references, 0U);
    EXPECT_EQ(page->SetPageSite(nullptr), S_OK);
    EXPECT_EQ(page->SetPageSite(&second), S_OK);
    page.Release();
    EXPECT_EQ(second.references, 0U) << "the page lets its site go";
}

TEST_F(PageObject, HelpAlwaysFails)
{
    EXPECT_EQ(page->Help(nullptr), E_FAIL);
    EXPECT_EQ(page->Help(L"C:\\Help"), E_FAIL);
}

TEST_F(PageObject, ANewPageIsNotDirty)
{
    EXPECT_EQ(page->IsPageDirty(), S_FALSE);
}

TEST_F(PageObject, AppliesItsRecordAndIsCleanWhateverTheEffectAnswers)
{
    SetObject(&exchange);
    page->m_bDirty = TRUE;
    EXPECT_EQ(page->IsPageDirty(), S_OK);
    exchange.setResult = E_ACCESSDENIED;
    EXPECT_EQ(page->Apply(), S_OK);
    EXPECT_EQ(exchange.sets, 1);
    EXPECT_TRUE(exchange.bytes.empty()) << "a page that was never open holds an empty record";
    EXPECT_EQ(exchange.flag, 1U);
    EXPECT_EQ(page->IsPageDirty(), S_FALSE);
}

TEST_F(PageObject, ApplyingWithoutAnEffectFailsAndStaysDirty)
{
    page->m_bDirty = TRUE;
    EXPECT_EQ(page->Apply(), E_UNEXPECTED) << "no object was ever set";
    IUnknown* object = nullptr;
    EXPECT_EQ(page->SetObjects(0, &object), S_OK);
    EXPECT_EQ(page->Apply(), E_UNEXPECTED) << "none is left";
    EXPECT_EQ(page->SetObjects(1, &object), S_OK);
    EXPECT_EQ(page->Apply(), E_UNEXPECTED) << "a null object";
    exchange.hasExchange = false;
    SetObject(&exchange);
    EXPECT_EQ(page->Apply(), E_NOINTERFACE) << "not an effect of ours";
    EXPECT_EQ(page->IsPageDirty(), S_OK);
}

TEST_F(PageObject, UsesObject0Only)
{
    FakeExchange other;
    IUnknown* objects[] = {&exchange, &other};
    EXPECT_EQ(page->SetObjects(2, objects), S_OK);
    EXPECT_EQ(page->Apply(), S_OK);
    EXPECT_EQ(exchange.sets, 1);
    EXPECT_EQ(other.sets, 0);
    page.Release();
    EXPECT_EQ(other.references, 0U);
}

TEST_F(PageObject, HoldsItsObjectsUntilOthersAreSet)
{
    Counted first;
    Counted second;
    IUnknown* objects[] = {&first, &second, &first};
    EXPECT_EQ(page->SetObjects(3, objects), S_OK);
    EXPECT_EQ(first.references, 2U);
    EXPECT_EQ(second.references, 1U);
    EXPECT_EQ(page->SetObjects(1, nullptr), E_POINTER);
    EXPECT_EQ(first.references, 2U) << "refused: the old ones stay";
    IUnknown* again[] = {&second};
    EXPECT_EQ(page->SetObjects(1, again), S_OK);
    EXPECT_EQ(first.references, 0U);
    EXPECT_EQ(second.references, 1U);
    EXPECT_EQ(page->SetObjects(0, again), S_OK);
    EXPECT_EQ(second.references, 0U);
    EXPECT_EQ(page->SetObjects(1, again), S_OK);
    page.Release();
    EXPECT_EQ(second.references, 0U);
}

TEST_F(PageObject, AnObjectThatSetsOthersWhenItIsTakenDoesNotGetInTheWay)
{
    Counted other;
    Counted object;
    IUnknown* others[] = {&other};
    IUnknown* objects[] = {&object, &other};
    object.onAddRef = [&] { EXPECT_EQ(page->SetObjects(1, others), S_OK); };
    EXPECT_EQ(page->SetObjects(2, objects), S_OK);
    EXPECT_EQ(object.references, 1U) << "the outer call is the last that ends";
    EXPECT_EQ(other.references, 1U);
    page.Release();
    EXPECT_EQ(object.references, 0U);
    EXPECT_EQ(other.references, 0U);
}

TEST_F(PageObject, WithoutMemoryForObjectsThereAreNone)
{
    Counted object;
    IUnknown* objects[] = {&object};
    ASSERT_EQ(page->SetObjects(1, objects), S_OK);
    {
        const NoMemory noMemory;
        EXPECT_EQ(page->SetObjects(1, objects), E_OUTOFMEMORY);
    }
    EXPECT_EQ(object.references, 0U);
    EXPECT_EQ(page->Apply(), E_UNEXPECTED);
}

TEST_F(PageObject, TellsItsTextsInTaskMemory)
{
    PROPPAGEINFO info{};
    EXPECT_EQ(page->GetPageInfo(nullptr), E_POINTER);
    ASSERT_EQ(page->GetPageInfo(&info), S_OK);
    EXPECT_EQ(info.cb, 48U);
    CComPtr<IMalloc> taskMemory;
    ASSERT_EQ(::CoGetMalloc(1, &taskMemory), S_OK);
    for (const LPOLESTR text : {info.pszTitle, info.pszDocString, info.pszHelpFile})
    {
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(taskMemory->GetSize(text), (std::wcslen(text) + 1) * sizeof(WCHAR))
            << "with room for the end";
    }
    EXPECT_EQ(Taken(info.pszTitle), L"Brellin Glazel");
    EXPECT_EQ(Taken(info.pszDocString), L"Brellin Glazel Doc");
    EXPECT_EQ(Taken(info.pszHelpFile), L"Brellin Glazel Help");
    EXPECT_EQ(info.dwHelpContext, 0U);
}

TEST_F(PageObject, TellsTheSizeOfItsDialogAsTheDialogManagerMakesIt)
{
    PROPPAGEINFO info{};
    ASSERT_EQ(page->GetPageInfo(&info), S_OK);
    Taken(info.pszTitle);
    Taken(info.pszDocString);
    Taken(info.pszHelpFile);
    Open();
    RECT units{0, 0, 1000, 56};
    ASSERT_TRUE(::MapDialogRect(PageWindow(), &units));
    EXPECT_EQ(info.size.cx, units.right);
    EXPECT_EQ(info.size.cy, units.bottom);
    EXPECT_GT(info.size.cx, 1000);
    EXPECT_GT(info.size.cy, 80);
}

TEST_F(PageObject, TheDialogTemplateHasNoControlsAndAnEightPointFont)
{
    struct Head
    {
        std::uint16_t version = 1;
        std::uint16_t signature = 0xFFFF;
        std::uint32_t helpId = 0;
        std::uint32_t extendedStyle = 0x00010000;
        std::uint32_t style = 0x40000040;
        std::uint16_t controls = 0;
        std::int16_t rect[4] = {0, 0, 1000, 56};
        std::uint16_t menuClassAndTitle[3] = {};
        std::uint16_t points = 8;
        std::uint16_t weight = 0;
        std::uint8_t italic = 0;
        std::uint8_t charset = 1;
        char16_t face[14] = u"MS Sans Serif";
    };
    const Head expected;
    constexpr std::size_t bytes = offsetof(Head, face) + sizeof expected.face;
    const HRSRC resource = ::FindResourceW(nullptr, MAKEINTRESOURCEW(CPluginPP::IDD), RT_DIALOG);
    ASSERT_NE(resource, nullptr);
    ASSERT_GE(::SizeofResource(nullptr, resource), bytes);
    const void* const actual = ::LockResource(::LoadResource(nullptr, resource));
    EXPECT_EQ(std::memcmp(actual, &expected, bytes), 0);
}

TEST_F(PageObject, WithoutAWindowItCanNeitherBeShownNorMoved)
{
    const RECT rect{0, 0, 10, 10};
    EXPECT_EQ(page->Show(SW_SHOW), E_UNEXPECTED);
    EXPECT_EQ(page->Move(&rect), E_UNEXPECTED);
    EXPECT_EQ(page->Move(nullptr), E_UNEXPECTED);
    EXPECT_EQ(page->Deactivate(), S_OK);
    MSG message{nullptr, WM_KEYDOWN, VK_TAB, 0, 0, {}};
    EXPECT_EQ(page->TranslateAccelerator(&message), S_FALSE);
}

TEST_F(PageObject, IsAPropertyPageAndNothingElse)
{
    CComPtr<IPropertyPage> propertyPage;
    EXPECT_EQ(page->QueryInterface(IID_IPropertyPage, reinterpret_cast<void**>(&propertyPage)),
              S_OK);
    void* none = &none;
    EXPECT_EQ(page->QueryInterface(IID_IPersist, &none), E_NOINTERFACE);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(CPluginPP::GetObjectCLSID(), CLSID_PluginPP);
}
