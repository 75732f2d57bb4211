// The page's window: activation, messages and its tie to the effect.
#include "tests/doubles/failing_allocation.h"
#include "tests/effect/effect_fixture.h"
#include "tests/propertypage/page_fixture.h"

namespace
{

class PageWindowTest : public PageTest
{
protected:
    bool NeedsPaint() const { return ::GetUpdateRect(PageWindow(), nullptr, FALSE) != FALSE; }
    // What the dialog procedure answers by itself: whether the message was handled.
    bool Handles(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const
    {
        return CPluginPP::DialogProc(PageWindow(), message, wParam, lParam) != FALSE;
    }
};

RECT ScreenRectOf(HWND window)
{
    RECT rect{};
    ::GetWindowRect(window, &rect);
    return rect;
}

} // namespace

TEST_F(PageWindowTest, ActivatingMakesAChildAtTheRectangleThatIsHiddenUntilShown)
{
    const PageFrame host({400, 200});
    const RECT rect{20, 10, 320, 110};
    EXPECT_EQ(page->Activate(host.Window(), nullptr, FALSE), E_POINTER);
    EXPECT_EQ(host.PageWindow(), nullptr);
    ASSERT_EQ(page->Activate(host.Window(), &rect, FALSE), S_OK);
    const HWND window = host.PageWindow();
    ASSERT_NE(window, nullptr);
    EXPECT_FALSE(::IsWindowVisible(window));
    RECT actual = ScreenRectOf(window);
    ::MapWindowPoints(nullptr, host.Window(), reinterpret_cast<POINT*>(&actual), 2);
    EXPECT_TRUE(::EqualRect(&actual, &rect));
    EXPECT_EQ(page->m_size.cx, 300);
    EXPECT_EQ(page->m_size.cy, 100);
    EXPECT_EQ(page->Show(SW_SHOW), S_OK);
    EXPECT_TRUE(::IsWindowVisible(window));
    EXPECT_EQ(page->Show(SW_HIDE), S_OK);
    EXPECT_FALSE(::IsWindowVisible(window));
    EXPECT_EQ(page->Activate(host.Window(), &rect, FALSE), E_UNEXPECTED) << "it is active";
    EXPECT_EQ(page->Deactivate(), S_OK);
    EXPECT_EQ(host.PageWindow(), nullptr);
    EXPECT_EQ(page->Deactivate(), S_OK) << "nothing is left to do";
}

TEST_F(PageWindowTest, MovingTakesTheRectangle)
{
    Open({300, 120});
    const RECT rect{5, 6, 105, 66};
    EXPECT_EQ(page->Move(nullptr), E_POINTER);
    EXPECT_EQ(page->Move(&rect), S_OK);
    RECT actual = ScreenRectOf(PageWindow());
    ::MapWindowPoints(nullptr, frame->Window(), reinterpret_cast<POINT*>(&actual), 2);
    EXPECT_TRUE(::EqualRect(&actual, &rect));
    EXPECT_EQ(page->m_size.cx, 300) << "the size is that of the activation";
}

TEST_F(PageWindowTest, MovingRepaints)
{
    Open({300, 120});
    const RECT smaller{0, 0, 150, 60};
    EXPECT_EQ(page->Move(&smaller), S_OK);
    ::UpdateWindow(PageWindow());
    ASSERT_FALSE(NeedsPaint());
    const RECT larger{0, 0, 300, 120};
    EXPECT_EQ(page->Move(&larger), S_OK);
    EXPECT_TRUE(NeedsPaint());
}

TEST_F(PageWindowTest, ActivatingInNoWindowOfTheSystemFailsAndLeavesNone)
{
    const PageFrame host;
    const RECT rect = host.PageRect();
    const HWND gone = reinterpret_cast<HWND>(std::uintptr_t{0x7FFE});
    EXPECT_TRUE(FAILED(page->Activate(gone, &rect, FALSE)));
    EXPECT_EQ(page->Show(SW_SHOW), E_UNEXPECTED);
    EXPECT_EQ(page->Activate(host.Window(), &rect, FALSE), S_OK);
}

TEST_F(PageWindowTest, ActivatingRegistersTheWindowThenReadsTheRecord)
{
    exchange.bytes = PageRecord(0x31, 0, 77);
    Open();
    ASSERT_EQ(exchange.notices.size(), 1U);
    EXPECT_EQ(exchange.notices[0].window, PageWindow());
    EXPECT_EQ(exchange.notices[0].command, 0x7F00U);
    EXPECT_EQ(exchange.calls, (std::vector<std::string>{"SetNotifyWindow", "GetProps"}));
    EXPECT_EQ(page->Apply(), S_OK);
    EXPECT_EQ(exchange.bytes, PageRecord(0x31, 0, 77));
}

TEST_F(PageWindowTest, EveryWmInitDialogRegistersAndReadsAgainAndAnswers0)
{
    Open();
    const HWND window = PageWindow();
    FakeExchange stranger; // not the page, whatever a message says
    for (const LPARAM forged : {LPARAM{0}, LPARAM{1}, reinterpret_cast<LPARAM>(&stranger)})
    {
        exchange.calls.clear();
        EXPECT_EQ(CPluginPP::DialogProc(window, WM_INITDIALOG, 0, forged), 0);
        EXPECT_EQ(::SendMessageW(window, WM_INITDIALOG, 0, forged), 0);
        EXPECT_EQ(exchange.calls, (std::vector<std::string>{"SetNotifyWindow", "GetProps",
                                                            "SetNotifyWindow", "GetProps"}));
        EXPECT_EQ(exchange.notices.back().window, window);
        EXPECT_EQ(exchange.notices.back().command, 0x7F00U);
    }
}

TEST_F(PageWindowTest, DeactivatingEndsTheRegistration)
{
    Open();
    const HWND window = PageWindow();
    Close();
    ASSERT_EQ(exchange.notices.size(), 2U);
    EXPECT_EQ(exchange.notices[1].window, window);
    EXPECT_EQ(exchange.notices[1].command, 0U);
}

TEST_F(PageWindowTest, AWindowThatItsFrameDestroysIsGoneForThePageToo)
{
    Open();
    frame.reset();
    EXPECT_EQ(page->Show(SW_SHOW), E_UNEXPECTED);
    EXPECT_EQ(exchange.notices.back().command, 0U);
    EXPECT_EQ(page->Deactivate(), S_OK);
    Open();
    EXPECT_NE(PageWindow(), nullptr) << "it opens again";
}

TEST_F(PageWindowTest, TheChangeCommandRereadsTheRecordAndRepaints)
{
    exchange.bytes = PageRecord(1, 1);
    Open();
    exchange.bytes = PageRecord(2, 0);
    EXPECT_EQ(::SendMessageW(PageWindow(), WM_COMMAND, MAKEWPARAM(0x7F00, 3), 0), 0);
    EXPECT_EQ(exchange.gets, 2);
    EXPECT_TRUE(NeedsPaint());
    ::UpdateWindow(PageWindow());
    const Picture screen = ScreenOf(PageWindow());
    EXPECT_EQ(FirstDifference(screen, ExpectedPanel(screen.size, {.checked = false})), "");
    EXPECT_TRUE(Handles(WM_COMMAND, 0x7F00));
}

TEST_F(PageWindowTest, TheChangeCommandLetsTheGroundBeErased)
{
    Open();
    ::InvalidateRect(PageWindow(), nullptr, FALSE);
    ASSERT_FALSE(TakeErase()) << "seen to be told apart";
    ::SendMessageW(PageWindow(), WM_COMMAND, ID_PROPS_CHANGED, 0);
    EXPECT_TRUE(TakeErase());
}

TEST_F(PageWindowTest, AnyOtherCommandDoesNothingAndIsHandled)
{
    Open();
    for (const WPARAM command :
         {WPARAM{0}, WPARAM{1}, WPARAM{2}, WPARAM{0x7F01}, WPARAM{MAKEWPARAM(1, 0x7F00)}})
    {
        EXPECT_TRUE(Handles(WM_COMMAND, command)) << command;
        EXPECT_EQ(::SendMessageW(PageWindow(), WM_COMMAND, command, 0), 0) << command;
    }
    EXPECT_EQ(exchange.gets, 1);
    EXPECT_FALSE(NeedsPaint());
}

TEST_F(PageWindowTest, AFailedReadKeepsTheRecord)
{
    exchange.bytes = PageRecord(9);
    Open();
    exchange.getResult = E_FAIL;
    exchange.bytes = PageRecord(10);
    ::SendMessageW(PageWindow(), WM_COMMAND, ID_PROPS_CHANGED, 0);
    EXPECT_EQ(page->Apply(), S_OK);
    EXPECT_EQ(exchange.bytes, PageRecord(9));
}

TEST_F(PageWindowTest, KeepsItsControlParentStyleWhenStylesChange)
{
    Open();
    STYLESTRUCT styles{0, 0};
    const auto lParam = reinterpret_cast<LPARAM>(&styles);
    const auto exStyle = static_cast<WPARAM>(GWL_EXSTYLE);
    EXPECT_TRUE(Handles(WM_STYLECHANGING, exStyle, lParam));
    EXPECT_EQ(::SendMessageW(PageWindow(), WM_STYLECHANGING, exStyle, lParam), 0);
    EXPECT_EQ(styles.styleNew, static_cast<DWORD>(WS_EX_CONTROLPARENT));
    styles = {};
    const auto style = static_cast<WPARAM>(GWL_STYLE);
    EXPECT_TRUE(Handles(WM_STYLECHANGING, style, lParam));
    EXPECT_EQ(::SendMessageW(PageWindow(), WM_STYLECHANGING, style, lParam), 1);
    EXPECT_EQ(styles.styleNew, 0U);
    EXPECT_EQ(::SendMessageW(PageWindow(), WM_STYLECHANGING, exStyle, 0), 0) << "from anybody";
    ::SetWindowLongW(PageWindow(), GWL_EXSTYLE, 0);
    EXPECT_TRUE(::GetWindowLongW(PageWindow(), GWL_EXSTYLE) & WS_EX_CONTROLPARENT);
}

TEST_F(PageWindowTest, ErasesNothing)
{
    Open();
    EXPECT_TRUE(Handles(WM_ERASEBKGND));
    EXPECT_EQ(::SendMessageW(PageWindow(), WM_ERASEBKGND, 0, 0), 0);
}

TEST_F(PageWindowTest, HandsKeysAndMouseMessagesToTheDialogManagerAndNothingElse)
{
    Open();
    EXPECT_EQ(page->TranslateAccelerator(nullptr), E_POINTER);
    for (const UINT id : {0x0100U, 0x0109U, 0x0200U, 0x020EU})
    {
        MSG message{PageWindow(), id, 0, 0, 0, {}};
        EXPECT_EQ(page->TranslateAccelerator(&message), S_OK) << id;
    }
    for (const UINT id : {0x00FFU, 0x010AU, 0x01FFU, 0x020FU, UINT{WM_TIMER}, UINT{WM_COMMAND}})
    {
        MSG message{PageWindow(), id, 0, 0, 0, {}};
        EXPECT_EQ(page->TranslateAccelerator(&message), S_FALSE) << id;
    }
    MSG elsewhere{frame->Window(), WM_KEYDOWN, VK_TAB, 0, 0, {}};
    EXPECT_EQ(page->TranslateAccelerator(&elsewhere), S_FALSE) << "not the page's";
}

TEST_F(PageWindowTest, OpensWithoutAnyObjectAndPaintsAnEmptyRecord)
{
    const PageFrame host;
    const RECT rect = host.PageRect();
    ASSERT_EQ(page->Activate(host.Window(), &rect, FALSE), S_OK);
    ASSERT_EQ(page->Show(SW_SHOWNA), S_OK);
    ::UpdateWindow(host.PageWindow());
    const Picture screen = ScreenOf(host.PageWindow());
    EXPECT_EQ(FirstDifference(screen, ExpectedPanel(screen.size, {.checked = true})), "");
    EXPECT_EQ(page->Deactivate(), S_OK);
}

TEST_F(PageWindowTest, AnElementWithoutMemoryIsLeftOutOfThePaint)
{
    Thumbnail thumbnail = SampleThumbnail({20, 20});
    Show(thumbnail);
    Open();
    {
        const std::size_t before = NothrowAllocations();
        const NoMemory noMemory;
        Repaint();
        EXPECT_EQ(NothrowAllocations(), before + 4)
            << "button, check box, thumbnail and the record's copy for it";
    }
    const Picture screen = ScreenOf(PageWindow());
    for (int y = 1; y < screen.size.height - 1; ++y)
    {
        for (int x = 1; x < screen.size.width - 1; ++x)
        {
            ASSERT_EQ(screen.At(x, y), 0x303030U) << x << ", " << y;
        }
    }
}

TEST_F(PageWindowTest, FollowsTheEffectByPostedMessagesOnly)
{
    CComObject<OpenPlugin>* object = nullptr;
    ASSERT_EQ(CComObject<OpenPlugin>::CreateInstance(&object), S_OK);
    const CComPtr<OpenPlugin> effect = object;
    Open();
    Close();
    SetObject(static_cast<IDXEffect*>(effect.p));
    const RECT rect = frame->PageRect();
    ASSERT_EQ(page->Activate(frame->Window(), &rect, FALSE), S_OK);
    ASSERT_EQ(page->Show(SW_SHOWNA), S_OK);
    HandleMessages();
    FakeStream look(PageRecord(0x66, 0, 99));
    ASSERT_EQ(effect->LoadProps(&look), S_OK);
    EXPECT_FALSE(NeedsPaint()) << "nothing was sent";
    EXPECT_TRUE(HandleMessagesUntil([&] {
        return CallsOf(Call::GetSessionIcon) > 0 && LastOf(Call::GetSessionIcon).sizeA == 99;
    }));
    EXPECT_EQ(LastOf(Call::GetSessionIcon).bytesA[30], 0x66);
    Fill(effect->m_current, {});
    ASSERT_EQ(page->Apply(), S_OK);
    EXPECT_EQ(BytesOf(effect->m_current), PageRecord(0x66, 0, 99));
    EXPECT_EQ(page->Deactivate(), S_OK);
}

TEST_F(PageWindowTest, CanBeClosedWhileANotificationIsInTheQueue)
{
    Open();
    const HWND window = PageWindow();
    ASSERT_TRUE(::PostMessageW(window, WM_COMMAND, ID_PROPS_CHANGED, 0));
    Close();
    HandleMessages();
    EXPECT_EQ(exchange.gets, 1);
    EXPECT_FALSE(::IsWindow(window));
}
