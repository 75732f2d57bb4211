// The page under the real pointer and button.
#include "tests/propertypage/page_fixture.h"

namespace
{

class PageMouse : public PageTest
{
protected:
    // Each waits until the page has seen it.
    void Push() const
    {
        PushButton();
        ASSERT_TRUE(HandleMessagesUntil([&] { return ::GetCapture() == PageWindow(); }));
    }
    void Lift() const
    {
        LiftButton();
        ASSERT_TRUE(HandleMessagesUntil([&] { return ::GetCapture() == nullptr; }));
    }
    bool ShowsEditPressed() const
    {
        return ScreenOf(PageWindow()).At(6, 26) == 0x6F4E00; // the amber face
    }
    bool ShowsChecked() const
    {
        return ScreenOf(PageWindow()).At(7 + 116, 70 + 7) == 0xFFD700; // gold
    }
    // A step of the pointer that the page hears of even when the mouse is another window's.
    void MoveOver(Geometry::Point point) const
    {
        MovePointer(PageWindow(), point);
        ::SendMessageW(PageWindow(), WM_MOUSEMOVE, 0, 0);
    }
    std::size_t EditorCalls() const { return CallsOf(Call::DoModalUI2) + CallsOf(Call::DoModalUI); }
};

} // namespace

TEST_F(PageMouse, ThePressTakesTheMouseAndTheReleaseGivesItBack)
{
    Open();
    MovePointer(PageWindow(), kElsewhere);
    Push();
    EXPECT_EQ(::GetCapture(), PageWindow());
    Lift();
    EXPECT_EQ(::GetCapture(), nullptr);
}

TEST_F(PageMouse, EditOpensTheEditorOnTheReleaseNotOnThePress)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    MovePointer(PageWindow(), kOnEdit);
    Push();
    EXPECT_TRUE(ShowsEditPressed());
    EXPECT_EQ(EditorCalls(), 0U);
    Lift();
    EXPECT_TRUE(HandleMessagesUntil([&] { return EditorCalls() == 1; }));
    EXPECT_FALSE(ShowsEditPressed());
}

TEST_F(PageMouse, LeavingEditAndReleasingOutsideDoesNotOpenTheEditor)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    MovePointer(PageWindow(), kOnEdit);
    Push();
    MovePointer(PageWindow(), kElsewhere);
    EXPECT_TRUE(HandleMessagesUntil([&] { return !ShowsEditPressed(); }));
    Lift();
    EXPECT_EQ(EditorCalls(), 0U);
}

TEST_F(PageMouse, ComingBackToEditBeforeTheReleaseOpensTheEditor)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    MovePointer(PageWindow(), kOnEdit);
    Push();
    MovePointer(PageWindow(), kElsewhere);
    EXPECT_TRUE(HandleMessagesUntil([&] { return !ShowsEditPressed(); }));
    MovePointer(PageWindow(), kOnEdit);
    EXPECT_TRUE(HandleMessagesUntil([&] { return ShowsEditPressed(); }));
    Lift();
    EXPECT_TRUE(HandleMessagesUntil([&] { return EditorCalls() == 1; }));
}

TEST_F(PageMouse, TheEditorOpensAgainWhenItHasEnded)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    MovePointer(PageWindow(), kOnEdit);
    for (std::size_t calls = 1; calls <= 2; ++calls)
    {
        Push();
        Lift();
        EXPECT_TRUE(HandleMessagesUntil([&] { return EditorCalls() == calls; }));
    }
}

TEST_F(PageMouse, TheEditorOpensWithTheMouseGivenBackAndTheButtonDrawnAsNormal)
{
    struct Seen
    {
        HWND capture;
        std::uint32_t rim;
        HWND page;
    } seen{nullptr, 0, nullptr};
    exchange.ShowPreview(kFormatBgra8);
    Open();
    seen.capture = seen.page = PageWindow();
    recording.editContext = &seen;
    recording.onEdit = [](void* context) {
        auto& noted = *static_cast<Seen*>(context);
        noted.capture = ::GetCapture();
        noted.rim = ScreenOf(noted.page).At(5, 25);
    };
    MovePointer(PageWindow(), kOnEdit);
    Push();
    Lift();
    ASSERT_TRUE(HandleMessagesUntil([&] { return EditorCalls() == 1; }));
    EXPECT_EQ(seen.capture, nullptr);
    EXPECT_EQ(seen.rim, 0x696A6AU);
}

TEST_F(PageMouse, TheCheckBoxActsOnThePressAndAppliesAtOnce)
{
    exchange.bytes = PageRecord(5, 1);
    Open();
    ASSERT_TRUE(ShowsChecked());
    MovePointer(PageWindow(), kOnCheckBox);
    Push();
    EXPECT_EQ(exchange.sets, 1);
    EXPECT_EQ(exchange.bytes, PageRecord(5, 0)) << "the option stands in the block too";
    EXPECT_EQ(exchange.flag, 0U);
    EXPECT_FALSE(ShowsChecked());
    Lift();
    EXPECT_EQ(exchange.sets, 1);
    EXPECT_EQ(page->IsPageDirty(), S_FALSE);
}

TEST_F(PageMouse, EachPressTogglesTheCheckBoxAgain)
{
    exchange.bytes = PageRecord(5, 0);
    Open();
    MovePointer(PageWindow(), kOnCheckBox);
    for (int press = 1; press <= 3; ++press)
    {
        Push();
        EXPECT_EQ(exchange.sets, press);
        EXPECT_EQ(ShowsChecked(), press % 2 == 1);
        Lift();
    }
}

TEST_F(PageMouse, DraggingIntoTheCheckBoxTogglesItOnceInAPress)
{
    Open();
    MovePointer(PageWindow(), kElsewhere);
    Push();
    EXPECT_EQ(exchange.sets, 0);
    MovePointer(PageWindow(), kOnCheckBox);
    EXPECT_TRUE(HandleMessagesUntil([&] { return exchange.sets == 1; }));
    MovePointer(PageWindow(), kElsewhere);
    MovePointer(PageWindow(), kOnCheckBox);
    MovePointer(PageWindow(), kElsewhere);
    EXPECT_EQ(exchange.sets, 1);
    Lift();
    EXPECT_EQ(exchange.sets, 1);
}

TEST_F(PageMouse, MovingWithoutAPressDoesNothing)
{
    Open();
    MovePointer(PageWindow(), kOnCheckBox);
    MovePointer(PageWindow(), kOnEdit);
    HandleMessages();
    EXPECT_EQ(exchange.sets, 0);
    EXPECT_FALSE(ShowsEditPressed());
}

TEST_F(PageMouse, ADoubleClickCountsAsTwoPresses)
{
    exchange.bytes = PageRecord(5, 0);
    Open();
    MovePointer(PageWindow(), kOnCheckBox);
    ::SendMessageW(PageWindow(), WM_LBUTTONDOWN, MK_LBUTTON, 0);
    ::SendMessageW(PageWindow(), WM_LBUTTONUP, 0, 0);
    ::SendMessageW(PageWindow(), WM_LBUTTONDBLCLK, MK_LBUTTON, 0);
    EXPECT_EQ(::GetCapture(), PageWindow());
    ::SendMessageW(PageWindow(), WM_LBUTTONUP, 0, 0);
    EXPECT_EQ(exchange.sets, 2);
    EXPECT_EQ(exchange.bytes, PageRecord(5, 0));
}

TEST_F(PageMouse, ThePointersPlaceCountsNotTheMessages)
{
    Open();
    MovePointer(PageWindow(), kElsewhere);
    const LPARAM onCheckBox = MAKELPARAM(kOnCheckBox.x, kOnCheckBox.y);
    ::SendMessageW(PageWindow(), WM_LBUTTONDOWN, MK_LBUTTON, onCheckBox);
    ::SendMessageW(PageWindow(), WM_LBUTTONUP, 0, onCheckBox);
    EXPECT_EQ(exchange.sets, 0);
}

TEST_F(PageMouse, AReleaseThatThePageDidNotSeePressedDoesNothing)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    MovePointer(PageWindow(), kOnEdit);
    ::SendMessageW(PageWindow(), WM_LBUTTONUP, 0, 0);
    EXPECT_EQ(EditorCalls(), 0U);
}

TEST_F(PageMouse, AControlIsRedrawnAloneWithoutPaintingThePage)
{
    Open();
    const std::size_t paints = CallsOf(Call::GetSessionIcon);
    MovePointer(PageWindow(), kOnEdit);
    Push();
    MovePointer(PageWindow(), kOnCheckBox);
    EXPECT_TRUE(HandleMessagesUntil([&] { return exchange.sets == 1; }));
    EXPECT_FALSE(::GetUpdateRect(PageWindow(), nullptr, FALSE));
    Lift();
    EXPECT_EQ(CallsOf(Call::GetSessionIcon), paints);
}

TEST_F(PageMouse, AHostMayCloseAndLetThePageGoWhenItIsToldOfTheToggle)
{
    Open();
    const HWND window = PageWindow();
    ULONG references = 0;
    exchange.onSet = [&] {
        page->Deactivate();
        page.Release();
        references = exchange.references;
    };
    MovePointer(window, kOnCheckBox);
    ::SendMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, 0);
    EXPECT_EQ(exchange.sets, 1);
    EXPECT_EQ(references, 2U) << "the page lives on until its call is over";
    EXPECT_EQ(exchange.references, 0U) << "and no longer";
    EXPECT_FALSE(::IsWindow(window));
}

TEST_F(PageMouse, APressEndsWithItsWindow)
{
    Open();
    MovePointer(PageWindow(), kOnEdit);
    ::SendMessageW(PageWindow(), WM_LBUTTONDOWN, MK_LBUTTON, 0);
    Close();
    Open();
    EXPECT_EQ(FirstDifference(ScreenOf(PageWindow()), ExpectedPanel({300, 120}, {.checked = true})),
              "")
        << "no button is pressed";
    MovePointer(PageWindow(), kOnCheckBox);
    ::SendMessageW(PageWindow(), WM_MOUSEMOVE, 0, 0);
    EXPECT_EQ(exchange.sets, 0);
    MovePointer(PageWindow(), kOnEdit);
    ::SendMessageW(PageWindow(), WM_MOUSEMOVE, 0, 0);
    ::SendMessageW(PageWindow(), WM_LBUTTONUP, 0, 0);
    EXPECT_EQ(EditorCalls(), 0U);
}

TEST_F(PageMouse, APressDoesNotGoOnInTheNextWindowThoughItIsGivenTheMouse)
{
    Open();
    MovePointer(PageWindow(), kElsewhere);
    ::SendMessageW(PageWindow(), WM_LBUTTONDOWN, MK_LBUTTON, 0);
    Close();
    // Hidden, so that it comes to no paint, which would see that the press had lost the mouse.
    const RECT rect = frame->PageRect();
    ASSERT_EQ(page->Activate(frame->Window(), &rect, FALSE), S_OK);
    ::SetCapture(PageWindow());
    MoveOver(kOnCheckBox);
    EXPECT_EQ(exchange.sets, 0);
    ::ReleaseCapture();
}

TEST_F(PageMouse, APressEndsWhenTheSystemTakesTheMouseAway)
{
    Open();
    MovePointer(PageWindow(), kElsewhere);
    Push();
    ::SendMessageW(PageWindow(), WM_CANCELMODE, 0, 0);
    ASSERT_EQ(::GetCapture(), nullptr);
    MoveOver(kOnCheckBox);
    EXPECT_EQ(exchange.sets, 0);
    MoveOver(kOnEdit);
    EXPECT_FALSE(ShowsEditPressed());
    LiftButton();
    MoveOver(kOnCheckBox);
    Push();
    EXPECT_EQ(exchange.sets, 1) << "the next press is one like any other";
    Lift();
}

TEST_F(PageMouse, APressEndsWhenAnotherWindowTakesTheMouse)
{
    Open();
    MovePointer(PageWindow(), kElsewhere);
    Push();
    ::SetCapture(frame->Window());
    MoveOver(kOnCheckBox);
    MoveOver(kOnEdit);
    EXPECT_EQ(exchange.sets, 0);
    EXPECT_FALSE(ShowsEditPressed());
    EXPECT_EQ(::GetCapture(), frame->Window()) << "it is not the page's to give back";
    LiftButton();
    ::ReleaseCapture();
    MoveOver(kOnCheckBox);
    Push();
    EXPECT_EQ(exchange.sets, 1);
    Lift();
}

TEST_F(PageMouse, AReleaseAfterTheMouseWasTakenAwayDoesNotOpenTheEditor)
{
    exchange.ShowPreview(kFormatBgra8);
    Open();
    MovePointer(PageWindow(), kOnEdit);
    Push();
    EXPECT_TRUE(ShowsEditPressed());
    ::ReleaseCapture();
    ::SendMessageW(PageWindow(), WM_LBUTTONUP, 0, 0);
    EXPECT_EQ(EditorCalls(), 0U);
    EXPECT_FALSE(ShowsEditPressed());
    LiftButton();
}

TEST_F(PageMouse, APressAfterOneThatLostTheMouseTogglesTheCheckBoxAgain)
{
    Open();
    MovePointer(PageWindow(), kOnCheckBox);
    Push();
    EXPECT_EQ(exchange.sets, 1);
    ::ReleaseCapture(); // as by a box of the host's: the release goes there
    ::SendMessageW(PageWindow(), WM_LBUTTONDOWN, MK_LBUTTON, 0);
    EXPECT_EQ(exchange.sets, 2);
    Lift();
}

TEST_F(PageMouse, APaintAfterTheMouseWasTakenAwayShowsEditAsNormal)
{
    Open();
    MovePointer(PageWindow(), kOnEdit);
    Push();
    ::ReleaseCapture();
    Repaint();
    EXPECT_FALSE(ShowsEditPressed());
    LiftButton();
}
