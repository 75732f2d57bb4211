// The views of a correction and the colour pads.
#include "tests/reference_renderer/editor/editor_fixture.h"

#include "reference_renderer/editor/number_text.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <array>
#include <cwctype>
#include <set>

namespace ReferenceRenderer
{

namespace
{

constexpr std::size_t kBalancePad = 0;
constexpr std::size_t kSlopePad = 4;

class EditorGrading : public EditorTest
{
protected:
    static void Undo(const OpenEditor& editor) { editor.PressKey('Z', {VK_CONTROL}); }
    static float Number(const OpenEditor& editor, Control control)
    {
        return TypedNumber(editor.NumberText(control)).value_or(-1000.0F);
    }
    static POINT MiddleOf(HWND window)
    {
        RECT client{};
        ::GetClientRect(window, &client);
        return {client.right / 2, client.bottom / 2};
    }
    // Drags a pad from its middle; `release` leaves the button down when it is false.
    static void Drag(const OpenEditor& editor, std::size_t pad, POINT by, WPARAM keys = 0,
                     bool release = true)
    {
        const HWND window = editor.Pad(pad);
        const POINT middle = MiddleOf(window);
        editor.Mouse(window, WM_LBUTTONDOWN, middle, MK_LBUTTON | keys);
        for (const LONG part : {4, 2, 1})
        {
            editor.Mouse(window, WM_MOUSEMOVE, {middle.x + by.x / part, middle.y + by.y / part},
                         MK_LBUTTON | keys);
        }
        if (release)
        {
            editor.Mouse(window, WM_LBUTTONUP, {middle.x + by.x, middle.y + by.y}, keys);
        }
    }
};

TEST_F(EditorGrading, TheViewsAreOneLook)
{
    OpenEditor editor = Open();
    editor.Type(Control::Exposure, L"1");
    EXPECT_TRUE(::IsWindowVisible(editor.Slider(Control::Tint)));
    EXPECT_FALSE(::IsWindowVisible(editor.Slider(Control::SlopeRed)));
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.37035");
    editor.Type(Control::LiftBlue, L"0.1");
    EXPECT_FALSE(::IsWindowVisible(editor.Slider(Control::Tint)));
    editor.Type(Control::GainBlue, L"0.9");
    editor.Type(Control::GammaBlue, L"2");
    EXPECT_EQ(editor.NumberText(Control::SlopeBlue), "0.800");
    EXPECT_EQ(editor.NumberText(Control::OffsetBlue), "0.100");
    EXPECT_EQ(editor.NumberText(Control::PowerBlue), "0.500");
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_NEAR(Produced()->cdl.slope[0], 1.37035, 1e-5);
    EXPECT_NEAR(Produced()->cdl.slope[2], 0.8, 1e-6);
    EXPECT_EQ(Produced()->cdl.power[2], 0.5F);
}

TEST_F(EditorGrading, AViewShowsItsControlsAndNoOthers)
{
    OpenEditor editor = Open();
    for (const View view : {View::Light, View::Wheels, View::Cdl})
    {
        editor.ShowView(view);
        for (const ControlFacts& facts : kControls)
        {
            EXPECT_EQ(::IsWindowVisible(editor.Slider(facts.control)) != FALSE,
                      IsIn(facts.step, view))
                << facts.name;
        }
    }
}

TEST_F(EditorGrading, OnlyTheButtonOfTheViewThatIsShownIsLit)
{
    OpenEditor editor = Open();
    const auto face = [&editor](View view) {
        const HWND button = editor.Child(IDC_VIEW + static_cast<int>(view));
        ::UpdateWindow(button); // draws nothing that is not to be drawn anew
        const HDC dc = ::GetDC(button);
        const COLORREF colour = ::GetPixel(dc, 5, 5);
        ::ReleaseDC(button, dc);
        return colour;
    };
    for (const View shown : {View::Wheels, View::Cdl, View::Light, View::Wheels})
    {
        editor.ShowView(shown);
        for (const View other : {View::Light, View::Wheels, View::Cdl})
        {
            EXPECT_EQ(face(other) == face(shown), other == shown);
        }
    }
}

TEST_F(EditorGrading, ANumberWithItsSignAndAllItsDecimalsFitsIntoItsBox)
{
    OpenEditor editor = Open();
    editor.ShowView(View::Cdl);
    const HWND number = editor.Number(Control::OffsetGreen);
    RECT room{};
    ::SendMessageW(number, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&room));
    const HDC dc = ::GetDC(number);
    const auto font = reinterpret_cast<HGDIOBJ>(::SendMessageW(number, WM_GETFONT, 0, 0));
    const HGDIOBJ before = ::SelectObject(dc, font);
    for (const std::wstring_view text : {L"-0.44444", L"-12.3456"})
    {
        SIZE size{};
        ::GetTextExtentPoint32W(dc, text.data(), static_cast<int>(text.size()), &size);
        EXPECT_LE(size.cx, room.right - room.left);
    }
    ::SelectObject(dc, before);
    ::ReleaseDC(number, dc);
}

TEST_F(EditorGrading, ContrastShowsInThePictureAndGoesBackInOneStep)
{
    OpenEditor editor = Open();
    editor.Type(Control::Pivot, L"0.3"); // the picture is brighter
    const COLORREF before = PixelShown(editor, 0.5, 0.5);
    editor.Type(Control::Contrast, L"1.5");
    EXPECT_GT(PixelShown(editor, 0.5, 0.5), before);
    Undo(editor);
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), before);
    EXPECT_EQ(editor.NumberText(Control::Contrast), "1.000");
    EXPECT_EQ(editor.NumberText(Control::Pivot), "0.300");
    Undo(editor);
    EXPECT_EQ(editor.NumberText(Control::Pivot), "0.460");
}

TEST_F(EditorGrading, ANumberThatTheOthersDoNotAllowIsMarkedAndKeepsTheWindowOpen)
{
    OpenEditor editor = Open();
    editor.Type(Control::LiftRed, L"0.5");
    editor.Type(Control::GainRed, L"0.3");
    EXPECT_EQ(editor.Status().find(L"Gain, red cannot go there"), 0U) << "it says why";
    editor.Click(IDOK);
    EXPECT_TRUE(::IsWindow(editor.Window()));
    EXPECT_EQ(editor.Status().find(L"Gain, red cannot go there"), 0U);
    editor.Type(Control::GainRed, L"0.7");
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_NEAR(Produced()->cdl.slope[0], 0.2, 1e-6);
}

TEST_F(EditorGrading, OfANumberThatIsRefusedNothingStaysInTheLook)
{
    OpenEditor editor = Open();
    editor.Type(Control::SlopeRed, L"1.2");
    editor.Type(Control::SlopeRed, L"150"); // by way of 1 and 15
    EXPECT_NE(editor.Status().find(L"takes a number from 0 to 100"), std::wstring::npos);
    editor.ClickInto(editor.Slider(Control::SlopeGreen));
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.200");
    Undo(editor);
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.000") << "it was no step";
}

TEST_F(EditorGrading, AWheelThatIsTouchedPullsNoStrongColoursIn)
{
    OpenEditor editor = Open();
    editor.Type(Control::Temperature, L"2");
    editor.Type(Control::Tint, L"0.3");
    ::SendMessageW(editor.Pad(kBalancePad), WM_KEYDOWN, VK_UP, 0);
    EXPECT_NEAR(Number(editor, Control::Temperature), 2.0, 0.1);
}

TEST_F(EditorGrading, ASliderThatComesBackLeavesNoCorrection)
{
    OpenEditor editor = Open();
    editor.ShowView(View::Light);
    const HWND slider = editor.Slider(Control::Temperature);
    const POINT middle = MiddleOf(slider);
    editor.Mouse(slider, WM_LBUTTONDOWN, middle, MK_LBUTTON);
    for (LONG x = 1; x < 60; ++x)
    {
        editor.Mouse(slider, WM_MOUSEMOVE, {middle.x + x, middle.y}, MK_LBUTTON);
    }
    editor.Mouse(slider, WM_LBUTTONUP, middle);
    ASSERT_GT(Number(editor, Control::Temperature), 0.5F);
    ::SendMessageW(slider, WM_KEYDOWN, VK_DELETE, 0);
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(Produced()->cdlMode, CdlMode::None);
}

TEST_F(EditorGrading, EscapeTakesADragOfTheSplitBackAndNotTheEditor)
{
    OpenEditor editor = Open();
    editor.Click(IDC_SHOW_SPLIT);
    const HWND picture = editor.Child(IDC_PICTURE);
    const POINT middle = MiddleOf(picture);
    editor.Type(Control::SlopeRed, L"0");
    editor.Mouse(picture, WM_LBUTTONDOWN, middle, MK_LBUTTON);
    editor.Mouse(picture, WM_MOUSEMOVE, {middle.x + 150, middle.y}, MK_LBUTTON);
    ASSERT_EQ(PixelShown(editor, 0.55, 0.5), RGB(128, 128, 128));
    editor.PressKey(VK_ESCAPE, {});
    ASSERT_TRUE(::IsWindow(editor.Window()));
    EXPECT_EQ(PixelShown(editor, 0.55, 0.5), RGB(0, 128, 128));
}

TEST_F(EditorGrading, AnImportInTheMiddleOfADragIsAStepAfterIt)
{
    const std::wstring file =
        WriteFile("half.cc", "<ColorCorrection id=\"a\"><SOPNode><Slope>0.5 0.5 0.5"
                             "</Slope><Offset>0 0 0</Offset><Power>1 1 1</Power>"
                             "</SOPNode></ColorCorrection>");
    OpenEditor editor = Open();
    const HWND slider = editor.Slider(Control::SlopeRed);
    const POINT middle = MiddleOf(slider);
    editor.Mouse(slider, WM_LBUTTONDOWN, middle, MK_LBUTTON);
    editor.Mouse(slider, WM_MOUSEMOVE, {middle.x + 30, middle.y}, MK_LBUTTON);
    const std::string dragged = editor.NumberText(Control::SlopeRed);
    editor.Drop(file);
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "0.500");
    Undo(editor);
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), dragged);
    Undo(editor);
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.000");
}

TEST_F(EditorGrading, WhatCanBeDoneAgainOutlivesADragThatIsTakenBack)
{
    OpenEditor editor = Open();
    editor.Type(Control::SlopeRed, L"1.2");
    Undo(editor);
    Drag(editor, kSlopePad, {20, 0}, 0, false);
    editor.PressKey('Y', {VK_CONTROL}); // takes the drag back
    EXPECT_EQ(editor.NumberText(Control::SlopeBlue), "1.000");
    editor.PressKey('Y', {VK_CONTROL});
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.200");
}

TEST_F(EditorGrading, AKeyOnANumberBeyondItsLimitLeavesItAndTheWindowCanBeAccepted)
{
    Cdl cdl;
    cdl.slope[0] = 150.0F;
    OpenEditor editor = Open(RecordOf(CdlLook(cdl)));
    editor.ClickInto(editor.Number(Control::SlopeRed));
    editor.PressKey(VK_UP, {});
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "150.000");
    EXPECT_EQ(editor.Status(), L"");
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(Produced()->cdl.slope[0], 150.0F);
}

TEST_F(EditorGrading, ASliderStopsWhereTheOthersDoNotAllowMore)
{
    OpenEditor editor = Open();
    editor.Type(Control::LiftGreen, L"0.5");
    editor.SlideKey(Control::GainGreen, VK_HOME); // 0
    EXPECT_NEAR(Number(editor, Control::GainGreen), 0.5, 1e-4);
    EXPECT_NEAR(Number(editor, Control::SlopeGreen), 0.0, 1e-4);
}

TEST_F(EditorGrading, APadMovesTheChannelsTowardsAHueAndBackInOneStep)
{
    OpenEditor editor = Open();
    Drag(editor, kSlopePad, {20, 0}); // blue lies at the right
    EXPECT_GT(Number(editor, Control::SlopeBlue), 1.05F);
    EXPECT_LT(Number(editor, Control::SlopeGreen), 0.95F);
    EXPECT_NEAR(Number(editor, Control::SlopeRed) + Number(editor, Control::SlopeGreen) +
                    Number(editor, Control::SlopeBlue),
                3.0, 0.003);
    Undo(editor);
    EXPECT_EQ(editor.Status(), L"Undone: Slope, colour");
    EXPECT_EQ(editor.NumberText(Control::SlopeBlue), "1.000");
}

TEST_F(EditorGrading, APadThatIsDraggedWithShiftGoesATenthOfTheWay)
{
    OpenEditor editor = Open();
    Drag(editor, kSlopePad, {20, 0});
    const float coarse = Number(editor, Control::SlopeBlue) - 1.0F;
    Undo(editor);
    Drag(editor, kSlopePad, {20, 0}, MK_SHIFT);
    EXPECT_NEAR(Number(editor, Control::SlopeBlue) - 1.0F, coarse / 10.0F, 0.002F);
}

TEST_F(EditorGrading, EscapeTakesADragOnAPadBack)
{
    OpenEditor editor = Open();
    editor.Type(Control::SlopeGreen, L"0.8");
    Drag(editor, kSlopePad, {20, 0}, 0, false);
    ASSERT_NE(editor.NumberText(Control::SlopeGreen), "0.800");
    editor.PostKey(VK_ESCAPE);
    EXPECT_TRUE(Eventually([&] { return editor.NumberText(Control::SlopeGreen) == "0.800"; }));
    EXPECT_TRUE(::IsWindow(editor.Window()));
}

TEST_F(EditorGrading, ADoubleClickOrDeleteOnAPadBringsTheChannelsTogether)
{
    OpenEditor editor = Open();
    editor.Type(Control::SlopeRed, L"1.3");
    for (const UINT message :
         std::initializer_list<UINT>{WM_LBUTTONDOWN, WM_LBUTTONUP, WM_LBUTTONDBLCLK, WM_LBUTTONUP})
    {
        editor.Mouse(editor.Pad(kSlopePad), message, MiddleOf(editor.Pad(kSlopePad)));
    }
    for (const Control control : {Control::SlopeRed, Control::SlopeGreen, Control::SlopeBlue})
    {
        EXPECT_EQ(editor.NumberText(control), "1.100");
    }
    Undo(editor);
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.300");
    ::SendMessageW(editor.Pad(kSlopePad), WM_KEYDOWN, VK_DELETE, 0);
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.100");
}

TEST_F(EditorGrading, TheKeysOfAPadAreOneStepWhileTheyFollowEachOther)
{
    OpenEditor editor = Open();
    editor.ShowView(View::Light);
    for (int i = 0; i < 3; ++i)
    {
        ::SendMessageW(editor.Pad(kBalancePad), WM_KEYDOWN, VK_LEFT, 0); // away from blue
    }
    EXPECT_GT(Number(editor, Control::Temperature), 0.05F);
    EXPECT_LT(Number(editor, Control::Tint), 0.0F) << "green lies to the left";
    EXPECT_NEAR(Number(editor, Control::Exposure), 0.0, 0.001);
    Undo(editor);
    EXPECT_EQ(editor.NumberText(Control::Temperature), "0.000");
    EXPECT_EQ(editor.Status(), L"Undone: White balance, colour");
}

// The letters of what is shown, buttons and headings.
std::multiset<wchar_t> LettersOf(const OpenEditor& editor)
{
    std::multiset<wchar_t> letters;
    for (HWND child = ::GetWindow(editor.Window(), GW_CHILD); child != nullptr;
         child = ::GetWindow(child, GW_HWNDNEXT))
    {
        std::array<wchar_t, 64> text{};
        ::SendMessageW(child, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
        const std::wstring_view read = text.data();
        const std::size_t mark = read.find(L'&');
        if (::IsWindowVisible(child) && mark != std::wstring_view::npos)
        {
            letters.insert(static_cast<wchar_t>(std::towlower(read[mark + 1])));
        }
    }
    return letters;
}

TEST_F(EditorGrading, NoTwoThingsThatAreShownHaveTheSameLetter)
{
    OpenEditor editor = Open(RecordOf(CubeLook(CubeOf(2, Inverted))));
    for (const View view : {View::Light, View::Wheels, View::Cdl})
    {
        editor.ShowView(view);
        const std::multiset<wchar_t> letters = LettersOf(editor);
        EXPECT_GE(letters.size(), 15U);
        for (const wchar_t letter : letters)
        {
            EXPECT_EQ(letters.count(letter), 1U) << static_cast<char>(letter);
        }
    }
}

TEST_F(EditorGrading, ALetterLeadsToAView)
{
    OpenEditor editor = Open();
    constexpr LPARAM kAltIsDown = LPARAM{1} << 29;
    ASSERT_TRUE(Eventually([&] { return editor.Focus() == editor.Slider(Control::SlopeRed); }));
    ::PostMessageW(editor.Focus(), WM_SYSCHAR, 'w', kAltIsDown);
    EXPECT_TRUE(Eventually([&] { return editor.Focus() == editor.Slider(Control::LiftRed); }));
    ::PostMessageW(editor.Focus(), WM_SYSCHAR, 'm', kAltIsDown);
    EXPECT_TRUE(Eventually([&] { return editor.Focus() == editor.Slider(Control::GammaRed); }));
}

TEST_F(EditorGrading, ThePictureAloneHidesThePadsAndBringsBackThoseOfTheView)
{
    OpenEditor editor = Open();
    editor.ShowView(View::Wheels);
    editor.PressKey(VK_F11, {});
    EXPECT_FALSE(::IsWindowVisible(editor.Pad(1)));
    editor.PressKey(VK_F11, {});
    EXPECT_TRUE(::IsWindowVisible(editor.Pad(1)));
    EXPECT_FALSE(::IsWindowVisible(editor.Pad(kSlopePad)));
}

} // namespace

} // namespace ReferenceRenderer
