// Message maps and modeless dialogs.
#include "platform/atl/atlwin.h"

#include "tests/doubles/test_thread.h"
#include "tests/platform/atl/import_patch.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <vector>

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names for the imports
extern "C"
{
extern decltype(&::CreateFontIndirectW) __imp_CreateFontIndirectW;
extern decltype(&::GetDC) __imp_GetDC;
extern decltype(&::ReleaseDC) __imp_ReleaseDC;
}
// NOLINTEND(bugprone-reserved-identifier)

namespace
{

constexpr UINT kHandled = WM_APP;
constexpr UINT kDeclined = WM_APP + 1;
constexpr UINT kOfBase = WM_APP + 2;
constexpr UINT kUnknown = WM_APP + 3;
constexpr UINT kClose = WM_APP + 4;

class CMapOfBase
{
public:
    BEGIN_MSG_MAP(CMapOfBase)
    MESSAGE_HANDLER(kOfBase, OnBase)
    END_MSG_MAP()

private:
    LRESULT OnBase(UINT, WPARAM, LPARAM, BOOL&) noexcept { return 77; }
};

class CSampleDialog : public CMapOfBase, public CDialogImpl<CSampleDialog>
{
public:
    static constexpr UINT IDD = 1;

    BEGIN_MSG_MAP(CSampleDialog)
    CHAIN_MSG_MAP(CMapOfBase)
    MESSAGE_HANDLER(WM_SETFONT, OnSetFont)
    MESSAGE_HANDLER(WM_INITDIALOG, OnInitDialog)
    MESSAGE_HANDLER(WM_CTLCOLORSTATIC, OnColour)
    MESSAGE_HANDLER(kHandled, OnHandled)
    MESSAGE_HANDLER(kDeclined, OnDeclined)
    MESSAGE_HANDLER(kDeclined, OnDeclinedByFirst)
    MESSAGE_HANDLER(kClose, OnClose)
    MESSAGE_HANDLER(WM_NCDESTROY, OnNcDestroy)
    END_MSG_MAP()

    LPARAM initParam = 0;
    int inits = 0;
    HWND atInit = nullptr;
    HWND atNcDestroy = nullptr;
    std::vector<UINT> declined;
    std::function<void()> onInit;

    HWND atSetFont = nullptr;

private:
    LRESULT OnSetFont(UINT, WPARAM, LPARAM, BOOL& handled) noexcept
    {
        atSetFont = m_hWnd;
        handled = FALSE;
        return 0;
    }
    LRESULT OnInitDialog(UINT, WPARAM, LPARAM lParam, BOOL&) noexcept
    {
        initParam = lParam;
        ++inits;
        atInit = m_hWnd;
        if (onInit)
        {
            onInit();
        }
        return TRUE;
    }
    LRESULT OnColour(UINT, WPARAM, LPARAM, BOOL&) noexcept { return 0x1234; }
    LRESULT OnHandled(UINT, WPARAM wParam, LPARAM lParam, BOOL&) noexcept
    {
        return static_cast<LRESULT>(wParam) * 100 + lParam;
    }
    LRESULT OnDeclined(UINT message, WPARAM, LPARAM, BOOL& handled) noexcept
    {
        declined.push_back(message);
        handled = FALSE;
        return 1;
    }
    LRESULT OnDeclinedByFirst(UINT message, WPARAM, LPARAM, BOOL&) noexcept
    {
        declined.push_back(message);
        return 2;
    }
    LRESULT OnClose(UINT, WPARAM, LPARAM, BOOL&) noexcept
    {
        DestroyWindow();
        return 0;
    }
    LRESULT OnNcDestroy(UINT, WPARAM, LPARAM, BOOL&) noexcept
    {
        atNcDestroy = m_hWnd;
        return 0;
    }
};

template <UINT id>
class CShape : public CDialogImpl<CShape<id>>
{
public:
    static constexpr UINT IDD = id;
    BEGIN_MSG_MAP(CShape)
    END_MSG_MAP()
};

} // namespace

TEST(Dialog, IsMadeFromItsTemplateAndKnowsItsWindowFromTheFirstMessageOn)
{
    CSampleDialog dialog;
    const HWND window = dialog.Create(nullptr, 4711);
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(dialog.m_hWnd, window);
    EXPECT_EQ(dialog.atSetFont, window) << "sent before WM_INITDIALOG";
    EXPECT_EQ(dialog.atInit, window);
    EXPECT_EQ(dialog.initParam, 4711);
    EXPECT_TRUE(dialog.DestroyWindow());
    EXPECT_EQ(dialog.atNcDestroy, window) << "still known to the last message";
    EXPECT_EQ(dialog.m_hWnd, nullptr);
    EXPECT_FALSE(dialog.DestroyWindow());
    EXPECT_NE(dialog.Create(nullptr), nullptr) << "it can be made again";
    dialog.DestroyWindow();
}

TEST(Dialog, RunsItsMapForEveryWmInitDialogWhateverComesWithIt)
{
    CSampleDialog dialog;
    CSampleDialog other;
    const HWND window = dialog.Create(nullptr, 4711);
    ASSERT_NE(window, nullptr);
    // Nothing, what cannot be an address, and the address of another object.
    for (const LPARAM forged : {LPARAM{0}, LPARAM{1}, reinterpret_cast<LPARAM>(&other)})
    {
        const int before = dialog.inits;
        EXPECT_EQ(::SendMessageW(window, WM_INITDIALOG, 0, forged), TRUE);
        EXPECT_EQ(dialog.inits, before + 1);
        EXPECT_EQ(dialog.initParam, forged);
        EXPECT_EQ(dialog.m_hWnd, window);
    }
    EXPECT_EQ(other.inits, 0);
    EXPECT_EQ(other.m_hWnd, nullptr);
    dialog.DestroyWindow();
}

TEST(Dialog, AWmInitDialogForAWindowWithoutItsObjectIsNotHandled)
{
    CSampleDialog dialog;
    dialog.Create(nullptr);
    const HWND window = dialog.Detach();
    EXPECT_EQ(::SendMessageW(window, WM_INITDIALOG, 0, reinterpret_cast<LPARAM>(&dialog)), 0);
    EXPECT_EQ(dialog.inits, 1);
    EXPECT_EQ(dialog.m_hWnd, nullptr);
    ::DestroyWindow(window);
}

TEST(Dialog, AWindowTakesTheObjectOfItsOwnThreadThatWasMadeKnownLast)
{
    CSampleDialog waiting; // of a thread that has not come to its window yet
    const _AtlCreateWndData creation(&waiting);
    CSampleDialog outer;
    CSampleDialog inner; // made within the making of the other
    outer.onInit = [&] { inner.Create(nullptr, 2); };
    void* left = &outer;
    {
        const TestThread thread([&] {
            EXPECT_EQ(outer.Create(nullptr, 1), outer.m_hWnd);
            EXPECT_EQ(outer.initParam, 1);
            EXPECT_NE(inner.m_hWnd, nullptr);
            EXPECT_EQ(inner.initParam, 2);
            inner.DestroyWindow();
            outer.DestroyWindow();
            left = _AtlCreateWndData::Extract();
        });
    }
    EXPECT_EQ(left, nullptr) << "the one that waits is not this thread's";
    EXPECT_EQ(_AtlCreateWndData::Extract(), &waiting);
    EXPECT_EQ(_AtlCreateWndData::Extract(), nullptr) << "once";
}

TEST(Dialog, WithoutItsTemplateItIsNotMade)
{
    CShape<999> dialog;
    EXPECT_EQ(dialog.Create(nullptr), nullptr);
    EXPECT_EQ(dialog.m_hWnd, nullptr);
    CSampleDialog next;
    EXPECT_NE(next.Create(nullptr), nullptr) << "nor does another window take it";
    EXPECT_EQ(dialog.m_hWnd, nullptr);
    next.DestroyWindow();
}

TEST(Dialog, AHandledMessageReturnsItsHandlersResult)
{
    CSampleDialog dialog;
    dialog.Create(nullptr);
    EXPECT_EQ(::SendMessageW(dialog, kHandled, 12, 34), 1234);
    EXPECT_EQ(::SendMessageW(dialog, WM_CTLCOLORSTATIC, 0, 0), 0x1234);
    EXPECT_EQ(::SendMessageW(dialog, kOfBase, 0, 0), 77) << "chained";
    dialog.DestroyWindow();
}

TEST(Dialog, AMessageThatNoEntryTakesIsLeftToTheDialogManager)
{
    CSampleDialog dialog;
    dialog.Create(nullptr);
    EXPECT_EQ(CSampleDialog::DialogProc(dialog, kUnknown, 0, 0), FALSE);
    EXPECT_EQ(CSampleDialog::DialogProc(dialog, kHandled, 0, 0), TRUE);
    dialog.DestroyWindow();
}

TEST(Dialog, AHandlerThatDeclinesLetsTheNextEntryTry)
{
    CSampleDialog dialog;
    dialog.Create(nullptr);
    EXPECT_EQ(::SendMessageW(dialog, kDeclined, 0, 0), 2);
    EXPECT_EQ(dialog.declined.size(), 2U);
    dialog.DestroyWindow();
}

TEST(Dialog, AHandlerMayDestroyItsWindow)
{
    CSampleDialog dialog;
    const HWND window = dialog.Create(nullptr);
    EXPECT_EQ(::SendMessageW(window, kClose, 0, 0), 0);
    EXPECT_FALSE(::IsWindow(window));
    EXPECT_EQ(dialog.m_hWnd, nullptr);
}

TEST(Dialog, AWindowThatOutlivesItsObjectDoesNotFindItAnyMore)
{
    auto dialog = std::make_unique<CSampleDialog>();
    const HWND window = dialog->Create(nullptr);
    dialog.reset();
    ASSERT_TRUE(::IsWindow(window));
    EXPECT_EQ(::SendMessageW(window, kHandled, 12, 34), 0);
    EXPECT_TRUE(::DestroyWindow(window));
}

template <UINT id>
void ExpectTheDialogManagersSize()
{
    SIZE size{};
    ASSERT_EQ(AtlGetDialogSize(AtlGetResourceInstance(), id, &size), S_OK);
    CShape<id> dialog;
    ASSERT_NE(dialog.Create(nullptr), nullptr);
    RECT client{};
    ::GetClientRect(dialog, &client);
    EXPECT_EQ(size.cx, client.right);
    EXPECT_EQ(size.cy, client.bottom);
    dialog.DestroyWindow();
}

TEST(Dialog, ItsSizeIsTheDialogManagersForAnExtendedTemplate)
{
    ExpectTheDialogManagersSize<1>();
}

TEST(Dialog, ItsSizeIsTheDialogManagersForAPlainTemplate)
{
    ExpectTheDialogManagersSize<2>();
}

TEST(Dialog, ItsSizeIsTheDialogManagersWithoutAFont)
{
    ExpectTheDialogManagersSize<3>();
}

TEST(Dialog, ItsSizeIsTheDialogManagersForABoldItalicFont)
{
    ExpectTheDialogManagersSize<4>();
}

TEST(Dialog, ItsSizeIsInTheSystemsBaseUnitsWhenItsFontCannotBeMade)
{
    const ImportPatch noFont(
        __imp_CreateFontIndirectW, +[](const LOGFONTW*) WINAPI -> HFONT { return nullptr; });
    const LONG units = ::GetDialogBaseUnits();
    SIZE size{};
    ASSERT_EQ(AtlGetDialogSize(AtlGetResourceInstance(), 4, &size), S_OK);
    EXPECT_EQ(size.cx, ::MulDiv(99, LOWORD(units), 4));
    EXPECT_EQ(size.cy, ::MulDiv(55, HIWORD(units), 8));
}

TEST(Dialog, MeasuringGivesItsDeviceContextsBack)
{
    static std::multiset<HDC> taken;
    static int count = 0;
    static decltype(&::GetDC) get = nullptr;
    static decltype(&::ReleaseDC) giveBack = nullptr;
    const ImportPatch getting(
        __imp_GetDC, +[](HWND window) WINAPI -> HDC {
            ++count;
            return *taken.insert(get(window));
        });
    const ImportPatch givingBack(
        __imp_ReleaseDC, +[](HWND window, HDC dc) WINAPI -> int {
            taken.erase(taken.find(dc));
            return giveBack(window, dc);
        });
    get = getting.original;
    giveBack = givingBack.original;
    SIZE size{};
    ASSERT_EQ(AtlGetDialogSize(AtlGetResourceInstance(), 4, &size), S_OK);
    EXPECT_GE(count, 1);
    EXPECT_TRUE(taken.empty());
}

TEST(Dialog, OfObjectsMadeKnownTheLastThatIsLeftIsTaken)
{
    int first = 0;
    int second = 0;
    int third = 0;
    std::optional<_AtlCreateWndData> early(std::in_place, &first);
    std::optional<_AtlCreateWndData> late(std::in_place, &second);
    early.reset();
    {
        const _AtlCreateWndData inner(&third);
        EXPECT_EQ(_AtlCreateWndData::Extract(), &third);
        EXPECT_EQ(_AtlCreateWndData::Extract(), &second);
    }
    late.reset();
    EXPECT_EQ(_AtlCreateWndData::Extract(), nullptr);
}

TEST(Dialog, TheSizeOfATemplateThatThereIsNotIsAnError)
{
    SIZE size{1, 2};
    EXPECT_EQ(AtlGetDialogSize(AtlGetResourceInstance(), 999, &size), E_UNEXPECTED);
    EXPECT_EQ(size.cx, 1);
}
