// Taking back, doing again, and the two states between which a key goes.
#include "tests/reference_renderer/editor/editor_fixture.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <array>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

constexpr char kLut[] = "TITLE \"Cool\"\nLUT_3D_SIZE 2\n0 0 0\n1 0 0\n0 1 0\n1 1 0\n"
                        "0 0 1\n1 0 1\n0 1 1\n1 1 0.5\n";

class EditorUndo : public EditorTest
{
protected:
    static void Undo(const OpenEditor& editor) { editor.PressKey('Z', {VK_CONTROL}); }
    static void Redo(const OpenEditor& editor) { editor.PressKey('Y', {VK_CONTROL}); }
    static std::string Red(const OpenEditor& editor)
    {
        return editor.NumberText(Control::SlopeRed);
    }
    // Drags the knob of red's slope from its middle by a share of the slider.
    static void Drag(const OpenEditor& editor, double share, WPARAM keys = 0)
    {
        const HWND slider = editor.Slider(Control::SlopeRed);
        RECT client{};
        ::GetClientRect(slider, &client);
        const LONG middle = client.right / 2;
        editor.Mouse(slider, WM_LBUTTONDOWN, {middle, 10}, MK_LBUTTON | keys);
        for (const double part : {0.25, 0.5, 1.0})
        {
            const auto moved = static_cast<LONG>(client.right * share * part);
            editor.Mouse(slider, WM_MOUSEMOVE, {middle + moved, 10}, MK_LBUTTON | keys);
        }
        editor.Mouse(slider, WM_LBUTTONUP, {middle, 10}, keys);
    }
    static std::wstring TextOf(const OpenEditor& editor, int id)
    {
        std::array<wchar_t, 32> text{};
        ::SendMessageW(editor.Child(id), WM_GETTEXT, text.size(),
                       reinterpret_cast<LPARAM>(text.data()));
        return text.data();
    }
};

TEST_F(EditorUndo, ADragIsOneStepAndTheLineAtTheBottomSaysWhatWasUndone)
{
    OpenEditor editor = Open();
    Drag(editor, -0.25);
    const std::string dragged = Red(editor);
    ASSERT_NE(dragged, "1.000");
    const COLORREF shown = PixelShown(editor, 0.5, 0.5);
    Undo(editor);
    EXPECT_EQ(Red(editor), "1.000");
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(128, 128, 128));
    EXPECT_EQ(editor.Status(), L"Undone: Slope, red");
    Redo(editor);
    EXPECT_EQ(Red(editor), dragged);
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), shown);
    EXPECT_EQ(editor.Status(), L"Done again: Slope, red");
    Redo(editor);
    EXPECT_EQ(editor.Status(), L"There is nothing to redo");
}

TEST_F(EditorUndo, ADragOfAllChannelsComesBackAsOne)
{
    OpenEditor editor = Open();
    Drag(editor, -0.25, MK_CONTROL);
    ASSERT_NE(editor.NumberText(Control::SlopeBlue), "1.000");
    Undo(editor);
    EXPECT_EQ(Red(editor), "1.000");
    EXPECT_EQ(editor.NumberText(Control::SlopeBlue), "1.000");
    EXPECT_EQ(editor.Status(), L"Undone: Slope, all channels");
    Undo(editor);
    EXPECT_EQ(editor.Status(), L"There is nothing to undo");
}

TEST_F(EditorUndo, ADragThatWasTakenBackIsNoStep)
{
    OpenEditor editor = Open();
    editor.SlideKey(Control::SlopeBlue, VK_RIGHT);
    const HWND slider = editor.Slider(Control::SlopeRed);
    editor.Mouse(slider, WM_LBUTTONDOWN, {2, 10}, MK_LBUTTON);
    ASSERT_EQ(Red(editor), "0.000");
    Undo(editor); // while the button is down: the drag
    EXPECT_EQ(Red(editor), "1.000");
    editor.Mouse(slider, WM_LBUTTONUP, {2, 10});
    Undo(editor);
    EXPECT_EQ(editor.Status(), L"Undone: Slope, blue");
    EXPECT_EQ(editor.NumberText(Control::SlopeBlue), "1.000");
}

TEST_F(EditorUndo, AWheelTurnedOnAndKeysPressedOnOneControlAreOneStep)
{
    OpenEditor editor = Open();
    for (int i = 0; i < 4; ++i)
    {
        ::SendMessageW(editor.Slider(Control::PowerRed), WM_MOUSEWHEEL, MAKEWPARAM(0, WHEEL_DELTA),
                       0);
        editor.SlideKey(Control::PowerRed, VK_RIGHT);
    }
    for (int i = 0; i < 4; ++i)
    {
        editor.SlideKey(Control::OffsetRed, VK_RIGHT);
    }
    EXPECT_EQ(editor.NumberText(Control::PowerRed), "1.080");
    Undo(editor);
    EXPECT_EQ(editor.NumberText(Control::OffsetRed), "0.000");
    EXPECT_EQ(editor.NumberText(Control::PowerRed), "1.080");
    Undo(editor);
    EXPECT_EQ(editor.NumberText(Control::PowerRed), "1.000");
}

TEST_F(EditorUndo, ATypedNumberIsOneStepAndUndoInItsBoxTakesBackWhatWasTyped)
{
    OpenEditor editor = Open();
    editor.ClickInto(editor.Number(Control::SlopeRed));
    editor.TypeLetters(L"1.25");
    Undo(editor);
    EXPECT_EQ(Red(editor), "1.000");
    editor.TypeLetters(L"0.5"); // it is selected again
    EXPECT_EQ(Red(editor), "0.5");
    editor.ClickInto(editor.Number(Control::SlopeGreen));
    editor.TypeLetters(L"0.75");
    Undo(editor);
    EXPECT_EQ(editor.NumberText(Control::SlopeGreen), "1.000");
    EXPECT_EQ(Red(editor), "0.500");
    Undo(editor);
    EXPECT_EQ(Red(editor), "1.000");
    Redo(editor);
    EXPECT_EQ(Red(editor), "0.500");
}

TEST_F(EditorUndo, TypingThatIsNoNumberYetIsAllThatUndoTakesBack)
{
    OpenEditor editor = Open();
    editor.SlideKey(Control::SlopeBlue, VK_RIGHT);
    editor.ClickInto(editor.Number(Control::SlopeRed));
    editor.TypeLetters(L"x");
    ASSERT_NE(editor.Status(), L"");
    Undo(editor);
    EXPECT_EQ(Red(editor), "1.000");
    EXPECT_EQ(editor.Status(), L"Undone: typing");
    EXPECT_EQ(editor.NumberText(Control::SlopeBlue), "1.010");
    editor.TypeLetters(L"1.5x"); // a number on the way to none
    Undo(editor);
    EXPECT_EQ(Red(editor), "1.000");
    EXPECT_EQ(editor.NumberText(Control::SlopeBlue), "1.010");
    Undo(editor);
    EXPECT_EQ(editor.NumberText(Control::SlopeBlue), "1.000");
}

TEST_F(EditorUndo, ResetsImportsAndRemovalsComeBackWithTheLutAndItsName)
{
    OpenEditor editor = Open(RecordOf(CubeLook(CubeOf(3, Inverted))));
    editor.Type(Control::SlopeRed, L"1.5");
    editor.Type(Control::Strength, L"0.5");
    editor.Click(IDC_RESET + static_cast<int>(IndexOf(Control::SlopeRed)));
    editor.Drop(WriteFile("undo.cube", kLut));
    editor.Type(Control::OffsetRed, L"0.1");
    editor.Click(IDC_RESET_ALL);
    editor.Click(IDC_REMOVE_TABLES);
    const std::pair<const wchar_t*, const char*> steps[] = {
        {L"removal of the LUT", "1.000 1.000"},  {L"reset of all numbers", "1.000 1.000"},
        {L"Offset, red", "1.000 1.000"},         {L"import of undo.cube", "1.000 0.500"},
        {L"reset of Slope, red", "1.500 0.500"}, {L"LUT strength", "1.500 1.000"},
        {L"Slope, red", "1.000 1.000"}};
    for (const auto& [what, numbers] : steps)
    {
        if (std::wstring(what) == L"import of undo.cube")
        {
            EXPECT_NE(PixelShown(editor, 0.5, 0.5), RGB(128, 128, 128)) << "its LUT is back";
        }
        Undo(editor);
        EXPECT_EQ(editor.Status(), std::wstring(L"Undone: ") + what);
        EXPECT_EQ(Red(editor) + ' ' + editor.NumberText(Control::Strength), numbers) << what;
    }
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(m_library.Produced(), RecordOf(CubeLook(CubeOf(3, Inverted))));
}

TEST_F(EditorUndo, AHundredStepsComeBack)
{
    OpenEditor editor = Open();
    for (int i = 0; i < 110; ++i)
    {
        editor.SlideKey(i % 2 == 0 ? Control::SlopeRed : Control::SlopeBlue, VK_RIGHT);
    }
    for (int i = 0; i < 110; ++i)
    {
        Undo(editor);
    }
    EXPECT_EQ(Red(editor), "1.050") << "the first ten are forgotten";
    EXPECT_EQ(editor.Status(), L"There is nothing to undo");
}

TEST_F(EditorUndo, CtrlShiftZDoesAgainToo)
{
    OpenEditor editor = Open();
    editor.SlideKey(Control::SlopeRed, VK_RIGHT);
    Undo(editor);
    EXPECT_EQ(Red(editor), "1.000");
    editor.PressKey('Z', {VK_CONTROL, VK_SHIFT});
    EXPECT_EQ(Red(editor), "1.010");
}

TEST_F(EditorUndo, AStoredStateAndTheOneOnTheWayChangePlacesWithAKey)
{
    OpenEditor editor = Open();
    EXPECT_EQ(TextOf(editor, IDC_SWAP_STATE), L"A / B");
    EXPECT_FALSE(::IsWindowEnabled(editor.Child(IDC_SWAP_STATE)));
    editor.PressKey(VK_F8, {});
    editor.Type(Control::SlopeRed, L"0.5");
    editor.PressKey(VK_F7, {});
    EXPECT_TRUE(::IsWindowEnabled(editor.Child(IDC_SWAP_STATE)));
    EXPECT_EQ(TextOf(editor, IDC_SWAP_STATE), L"Shows B");
    editor.Drop(WriteFile("memory.cube", kLut));
    editor.Type(Control::SlopeRed, L"0.25");
    editor.PressKey(VK_F8, {});
    EXPECT_EQ(TextOf(editor, IDC_SWAP_STATE), L"Shows A");
    EXPECT_EQ(Red(editor), "0.500");
    EXPECT_FALSE(::IsWindowEnabled(editor.Child(IDC_REMOVE_TABLES)));
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(64, 128, 128));
    editor.Click(IDC_SWAP_STATE);
    EXPECT_EQ(TextOf(editor, IDC_SWAP_STATE), L"Shows B");
    EXPECT_EQ(Red(editor), "0.250");
    EXPECT_TRUE(::IsWindowEnabled(editor.Child(IDC_REMOVE_TABLES)));
}

TEST_F(EditorUndo, UndoingASwapGivesTheMemoryBackWhatItHeld)
{
    OpenEditor editor = Open();
    editor.PressKey(VK_F7, {});
    editor.Type(Control::SlopeRed, L"0.5");
    editor.PressKey(VK_F8, {});
    EXPECT_EQ(Red(editor), "1.000");
    Undo(editor);
    EXPECT_EQ(Red(editor), "0.500");
    EXPECT_EQ(TextOf(editor, IDC_SWAP_STATE), L"Shows B");
    editor.PressKey(VK_F8, {});
    EXPECT_EQ(Red(editor), "1.000");
}

TEST_F(EditorUndo, AStateThatWasStoredAfterASwapOutlivesItsUndoing)
{
    OpenEditor editor = Open();
    editor.PressKey(VK_F7, {});
    editor.Type(Control::SlopeRed, L"0.5");
    editor.PressKey(VK_F8, {});
    editor.Type(Control::SlopeRed, L"0.75");
    editor.PressKey(VK_F7, {});
    Undo(editor);
    Undo(editor);
    EXPECT_EQ(Red(editor), "0.500");
    editor.PressKey(VK_F8, {});
    EXPECT_EQ(Red(editor), "0.750");
}

} // namespace

} // namespace ReferenceRenderer
