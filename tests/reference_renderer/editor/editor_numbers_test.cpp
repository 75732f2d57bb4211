// The numbers of the look: sliders, boxes, resetting.
#include "tests/reference_renderer/editor/editor_fixture.h"

#include "tests/reference_renderer/core/look_fixtures.h"

namespace ReferenceRenderer
{

namespace
{

class EditorNumbers : public EditorTest
{
protected:
    // A mouse message to a slider; x counts from its left edge.
    static void Mouse(HWND slider, UINT message, int x, WPARAM keys = MK_LBUTTON)
    {
        ::SendMessageW(slider, message, keys, MAKELPARAM(x, 10));
    }

    static int WidthOf(HWND window)
    {
        RECT client{};
        ::GetClientRect(window, &client);
        return client.right;
    }

    // Red in the middle of its slider, green with a tenth to the left of it, blue beyond all.
    static Bytes Uneven()
    {
        Cdl cdl;
        cdl.slope = {1.0F, 0.1F, 150.0F};
        return RecordOf(CdlLook(cdl));
    }
    static constexpr WPARAM kWithCtrl = MK_LBUTTON | MK_CONTROL;

    // Takes red's knob in the middle and moves it by a share of the slider's width.
    static void TakeRed(const OpenEditor& editor, WPARAM keys)
    {
        Mouse(editor.Slider(Control::SlopeRed), WM_LBUTTONDOWN,
              WidthOf(editor.Slider(Control::SlopeRed)) / 2, keys);
    }
    static void MoveRed(const OpenEditor& editor, double share, WPARAM keys)
    {
        const HWND slider = editor.Slider(Control::SlopeRed);
        const int width = WidthOf(slider);
        Mouse(slider, WM_MOUSEMOVE, width / 2 + static_cast<int>(width * share), keys);
    }
    static std::string SlopeOf(const OpenEditor& editor)
    {
        return editor.NumberText(Control::SlopeRed) + ' ' + editor.NumberText(Control::SlopeGreen) +
               ' ' + editor.NumberText(Control::SlopeBlue);
    }
    // What Esc makes of the three; "" when it changes nothing.
    static std::string SlopeAfterEscape(const OpenEditor& editor)
    {
        const std::string before = SlopeOf(editor);
        editor.PostKey(VK_ESCAPE);
        return Eventually([&] { return SlopeOf(editor) != before; }) ? SlopeOf(editor) : "";
    }
};

constexpr char kUnevenText[] = "1.000 0.100 150.000";

TEST_F(EditorNumbers, ArrowKeysMoveASliderByHundredthsAndTheNewLookIsHandedOut)
{
    OpenEditor editor = Open();
    editor.SlideKey(Control::SlopeRed, VK_RIGHT);
    editor.SlideKey(Control::SlopeRed, VK_UP);
    editor.SlideKey(Control::OffsetBlue, VK_LEFT);
    editor.SlideKey(Control::PowerGreen, VK_PRIOR);
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.020");
    EXPECT_EQ(editor.NumberText(Control::OffsetBlue), "-0.010");
    EXPECT_EQ(editor.NumberText(Control::PowerGreen), "1.100");
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    const auto look = Produced();
    EXPECT_EQ(look->cdlMode, CdlMode::Clamped);
    EXPECT_FLOAT_EQ(look->cdl.slope[0], 1.02F);
    EXPECT_FLOAT_EQ(look->cdl.offset[2], -0.01F);
    EXPECT_FLOAT_EQ(look->cdl.power[1], 1.1F);
    EXPECT_EQ(look->cdl.slope[1], 1.0F);
}

TEST_F(EditorNumbers, HomeAndEndGoToTheEndsOfASlider)
{
    OpenEditor editor = Open();
    editor.SlideKey(Control::PowerRed, VK_END);
    editor.SlideKey(Control::Saturation, VK_HOME);
    EXPECT_EQ(editor.NumberText(Control::PowerRed), "4.000");
    EXPECT_EQ(editor.NumberText(Control::Saturation), "0.000");
}

TEST_F(EditorNumbers, TheMouseDragsASliderAndThePictureFollows)
{
    OpenEditor editor = Open();
    const HWND slider = editor.Slider(Control::SlopeRed);
    const int width = WidthOf(slider);
    Mouse(slider, WM_LBUTTONDOWN, width / 2);
    Mouse(slider, WM_MOUSEMOVE, width / 2 - 30);
    const COLORREF during = PixelShown(editor, 0.5, 0.5);
    EXPECT_LT(GetRValue(during), 100);
    EXPECT_EQ(GetGValue(during), 128);
    Mouse(slider, WM_MOUSEMOVE, width + 50);
    Mouse(slider, WM_LBUTTONUP, width + 50, 0);
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "2.000");
    Mouse(slider, WM_MOUSEMOVE, 0, 0); // after the button is up
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "2.000");
}

TEST_F(EditorNumbers, ShiftDragsATenthAsFar)
{
    OpenEditor editor = Open();
    const HWND slider = editor.Slider(Control::SlopeRed);
    const int middle = WidthOf(slider) / 2;
    Mouse(slider, WM_LBUTTONDOWN, middle);
    Mouse(slider, WM_MOUSEMOVE, middle + 40);
    const float coarse = std::stof(editor.NumberText(Control::SlopeRed)) - 1.0F;
    Mouse(slider, WM_MOUSEMOVE, middle);
    Mouse(slider, WM_MOUSEMOVE, middle + 40, MK_LBUTTON | MK_SHIFT);
    const float fine = std::stof(editor.NumberText(Control::SlopeRed)) - 1.0F;
    Mouse(slider, WM_LBUTTONUP, middle + 40, 0);
    EXPECT_NEAR(fine, coarse / 10.0F, 0.002F);
    EXPECT_GT(fine, 0.0F);
}

TEST_F(EditorNumbers, CtrlMovesAllChannelsOfAStep)
{
    OpenEditor editor = Open();
    const HWND slider = editor.Slider(Control::OffsetGreen);
    const int middle = WidthOf(slider) / 2;
    Mouse(slider, WM_LBUTTONDOWN, middle, MK_LBUTTON | MK_CONTROL);
    Mouse(slider, WM_MOUSEMOVE, middle + 20, MK_LBUTTON | MK_CONTROL);
    Mouse(slider, WM_LBUTTONUP, middle + 20, MK_CONTROL);
    const std::string moved = editor.NumberText(Control::OffsetGreen);
    EXPECT_NE(moved, "0.000");
    EXPECT_EQ(editor.NumberText(Control::OffsetRed), moved);
    EXPECT_EQ(editor.NumberText(Control::OffsetBlue), moved);
    EXPECT_EQ(editor.NumberText(Control::SlopeGreen), "1.000");
}

TEST_F(EditorNumbers, TheWheelMovesASlider)
{
    OpenEditor editor = Open();
    ::SendMessageW(editor.Slider(Control::SlopeBlue), WM_MOUSEWHEEL, MAKEWPARAM(0, 2 * WHEEL_DELTA),
                   0);
    EXPECT_EQ(editor.NumberText(Control::SlopeBlue), "1.020");
}

TEST_F(EditorNumbers, EscapeTakesADragBackAndLeavesTheWindowOpen)
{
    OpenEditor editor = Open();
    editor.Type(Control::SlopeRed, L"1.5");
    const HWND slider = editor.Slider(Control::SlopeRed);
    Mouse(slider, WM_LBUTTONDOWN, WidthOf(slider) / 4);
    EXPECT_NE(editor.NumberText(Control::SlopeRed), "1.500");
    editor.PostKey(VK_ESCAPE);
    EXPECT_TRUE(Eventually([&] { return editor.NumberText(Control::SlopeRed) == "1.500"; }));
    Mouse(slider, WM_MOUSEMOVE, 0);
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.500");
    EXPECT_TRUE(::IsWindow(editor.Window()));
}

TEST_F(EditorNumbers, EscapeTakesADragOfAllChannelsBack)
{
    OpenEditor editor = Open(Uneven());
    TakeRed(editor, kWithCtrl);
    MoveRed(editor, -0.25, kWithCtrl);
    EXPECT_EQ(editor.NumberText(Control::SlopeGreen), "0.000") << "as far as it goes";
    EXPECT_EQ(editor.NumberText(Control::SlopeBlue), "150.000") << "not cut to what can be typed";
    EXPECT_EQ(SlopeAfterEscape(editor), kUnevenText);
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(m_library.Produced(), Uneven());
}

TEST_F(EditorNumbers, EscapeTakesAllChannelsBackAfterCtrlWasLetGo)
{
    OpenEditor editor = Open(Uneven());
    TakeRed(editor, kWithCtrl);
    MoveRed(editor, -0.25, kWithCtrl);
    MoveRed(editor, -0.125, MK_LBUTTON);
    EXPECT_EQ(editor.NumberText(Control::SlopeGreen), "0.000") << "red moves alone now";
    EXPECT_EQ(SlopeAfterEscape(editor), kUnevenText);
}

TEST_F(EditorNumbers, EscapeTakesAllChannelsBackWhereCtrlCameLate)
{
    OpenEditor editor = Open(Uneven());
    TakeRed(editor, MK_LBUTTON);
    MoveRed(editor, 0.125, MK_LBUTTON);
    EXPECT_EQ(editor.NumberText(Control::SlopeGreen), "0.100");
    MoveRed(editor, 0.25, kWithCtrl);
    EXPECT_NE(editor.NumberText(Control::SlopeGreen), "0.100");
    EXPECT_EQ(SlopeAfterEscape(editor), kUnevenText);
}

TEST_F(EditorNumbers, EscapeBringsBackANumberThatCannotBeTyped)
{
    OpenEditor editor = Open(Uneven());
    const HWND slider = editor.Slider(Control::SlopeBlue);
    Mouse(slider, WM_LBUTTONDOWN, WidthOf(slider) / 4);
    EXPECT_EQ(SlopeAfterEscape(editor), kUnevenText);
}

TEST_F(EditorNumbers, ADragOfAllChannelsToALimitAndBackKeepsTheirDistance)
{
    OpenEditor editor = Open(Uneven());
    TakeRed(editor, kWithCtrl);
    MoveRed(editor, -0.75, kWithCtrl);
    EXPECT_EQ(SlopeOf(editor), "0.000 0.000 150.000");
    MoveRed(editor, 0.0, kWithCtrl);
    Mouse(editor.Slider(Control::SlopeRed), WM_LBUTTONUP, 0, MK_CONTROL);
    EXPECT_EQ(SlopeOf(editor), kUnevenText);
    editor.SlideKey(Control::SlopeRed, VK_RIGHT);
    EXPECT_EQ(SlopeOf(editor), "1.010 0.100 150.000") << "the drag is over";
}

TEST_F(EditorNumbers, ADoubleClickOrDeleteOnASliderResetsIt)
{
    OpenEditor editor = Open();
    editor.SlideKey(Control::PowerBlue, VK_END);
    Mouse(editor.Slider(Control::PowerBlue), WM_LBUTTONDBLCLK, 10);
    EXPECT_EQ(editor.NumberText(Control::PowerBlue), "1.000");
    editor.SlideKey(Control::PowerBlue, VK_END);
    editor.SlideKey(Control::PowerBlue, VK_DELETE);
    EXPECT_EQ(editor.NumberText(Control::PowerBlue), "1.000");
}

TEST_F(EditorNumbers, ATypedNumberCountsAtOnceAndMovesItsSlider)
{
    OpenEditor editor = Open();
    editor.Type(Control::SlopeGreen, L"0,5");
    EXPECT_EQ(GetGValue(PixelShown(editor, 0.5, 0.5)), 64);
    editor.SlideKey(Control::SlopeGreen, VK_RIGHT); // goes on from there
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_FLOAT_EQ(Produced()->cdl.slope[1], 0.51F);
}

TEST_F(EditorNumbers, NumbersBeyondTheSliderCanBeTyped)
{
    OpenEditor editor = Open();
    editor.Type(Control::SlopeRed, L"3.5");
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(Produced()->cdl.slope[0], 3.5F);
}

TEST_F(EditorNumbers, AWrongNumberChangesNothingAndIsExplained)
{
    OpenEditor editor = Open();
    editor.Type(Control::PowerRed, L"1.5");
    editor.Type(Control::PowerRed, L"0");
    EXPECT_EQ(editor.Status(), L"Power, red takes a number from 0.01 to 100");
    editor.Type(Control::SlopeRed, L"1.1"); // leaving the box brings its number back
    EXPECT_EQ(editor.NumberText(Control::PowerRed), "1.500");
    EXPECT_EQ(editor.Status(), L"");
}

TEST_F(EditorNumbers, AWrongNumberIsNotAcceptedBehindTheUsersBack)
{
    OpenEditor editor = Open();
    editor.Type(Control::OffsetRed, L"abc");
    editor.Click(IDOK);
    ::SendMessageW(editor.Window(), WM_NULL, 0, 0);
    EXPECT_TRUE(::IsWindow(editor.Window()));
    EXPECT_EQ(editor.Focus(), editor.Number(Control::OffsetRed));
    EXPECT_NE(editor.Status(), L"");
    editor.Type(Control::OffsetRed, L"0.25");
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(Produced()->cdl.offset[0], 0.25F);
}

TEST_F(EditorNumbers, UpAndDownInABoxMoveItsNumber)
{
    OpenEditor editor = Open();
    editor.Type(Control::Saturation, L"1.2");
    editor.PostKey(VK_UP);
    EXPECT_TRUE(Eventually([&] { return editor.NumberText(Control::Saturation) == "1.210"; }));
    editor.PostKey(VK_NEXT);
    EXPECT_TRUE(Eventually([&] { return editor.NumberText(Control::Saturation) == "1.110"; }));
}

TEST_F(EditorNumbers, AClickIntoANumberSelectsItSoThatTypingReplacesIt)
{
    OpenEditor editor = Open();
    editor.ClickInto(editor.Number(Control::SlopeRed));
    editor.TypeLetters(L"1.5");
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.5");
    EXPECT_EQ(editor.Status(), L"") << "no red mark";
    editor.ClickInto(editor.Number(Control::SlopeGreen));
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.500");
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(Produced()->cdl.slope[0], 1.5F);
}

TEST_F(EditorNumbers, ASecondClickIntoANumberPlacesTheCaret)
{
    OpenEditor editor = Open();
    const HWND number = editor.Number(Control::SlopeRed);
    editor.ClickInto(number);
    RECT client{};
    ::GetClientRect(number, &client);
    const POINT end{client.right - 1, client.bottom / 2}; // behind the last digit
    editor.Mouse(number, WM_LBUTTONDOWN, end, MK_LBUTTON);
    editor.Mouse(number, WM_LBUTTONUP, end);
    editor.TypeLetters(L"5");
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.0005");
}

TEST_F(EditorNumbers, TheTabKeySelectsTheNumberThatItReaches)
{
    OpenEditor editor = Open();
    ASSERT_TRUE(Eventually([&] { return editor.Focus() == editor.Slider(Control::SlopeRed); }));
    editor.PressKey(VK_TAB, {});
    ASSERT_EQ(editor.Focus(), editor.Number(Control::SlopeRed));
    editor.TypeLetters(L".75");
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), ".75");
}

TEST_F(EditorNumbers, ShiftMakesArrowKeysFineAndCtrlCoarse)
{
    OpenEditor editor = Open();
    for (const HWND from : {editor.Slider(Control::SlopeRed), editor.Number(Control::SlopeRed)})
    {
        editor.Click(IDC_RESET_ALL);
        editor.ClickInto(from); // in the middle of the slider is where it stands already
        editor.PressKey(VK_UP, {VK_SHIFT});
        EXPECT_EQ(SlopeOf(editor), "1.001 1.000 1.000");
        editor.PressKey(VK_UP, {VK_CONTROL});
        EXPECT_EQ(SlopeOf(editor), "1.101 1.000 1.000");
        editor.PressKey(VK_DOWN, {VK_CONTROL, VK_SHIFT});
        EXPECT_EQ(SlopeOf(editor), "1.091 0.990 0.990") << "both: all channels";
        editor.PressKey(VK_PRIOR, {VK_CONTROL});
        EXPECT_EQ(SlopeOf(editor), "1.191 1.090 1.090");
    }
}

TEST_F(EditorNumbers, TheButtonBesideANumberResetsThatOneAlone)
{
    OpenEditor editor = Open();
    EXPECT_FALSE(::IsWindowEnabled(editor.Reset(Control::SlopeRed)));
    editor.Type(Control::SlopeRed, L"1.5");
    editor.Type(Control::SlopeGreen, L"1.6");
    EXPECT_TRUE(::IsWindowEnabled(editor.Reset(Control::SlopeGreen)));
    editor.Click(IDC_RESET + static_cast<int>(IndexOf(Control::SlopeGreen)));
    EXPECT_EQ(editor.NumberText(Control::SlopeGreen), "1.000");
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.500");
    EXPECT_FALSE(::IsWindowEnabled(editor.Reset(Control::SlopeGreen)));
}

TEST_F(EditorNumbers, ResettingAllGivesANeutralLook)
{
    OpenEditor editor = Open();
    editor.Type(Control::SlopeRed, L"1.5");
    editor.Type(Control::Saturation, L"0");
    editor.Click(IDC_RESET_ALL);
    EXPECT_EQ(editor.NumberText(Control::Saturation), "1.000");
    EXPECT_FALSE(::IsWindowEnabled(editor.Child(IDC_RESET_ALL)));
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(m_library.Produced(), RecordOf(Look()));
}

} // namespace

} // namespace ReferenceRenderer
