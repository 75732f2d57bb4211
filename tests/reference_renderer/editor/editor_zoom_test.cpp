// The picture from near and from far, dragged, and alone in the window.
#include "tests/reference_renderer/editor/editor_fixture.h"

#include <initializer_list>
#include <vector>

namespace ReferenceRenderer
{

namespace
{

// A picture of 1000 x 600 whose blue counts columns and whose green counts rows, in fours.
class EditorZoom : public EditorTest
{
protected:
    EditorZoom() : m_large(std::size_t{1000} * 600)
    {
        for (std::uint32_t i = 0; i < m_large.size(); ++i)
        {
            m_large[i] = 0xFF000000U | (i / 1000 / 4) << 8 | (i % 1000 / 4);
        }
        m_preview.pixels = m_large.data();
        m_preview.width = 1000;
        m_preview.height = 600;
        m_preview.rowPitch = 1000;
    }

    // To a window with less room than the picture needs in both directions.
    static void Shrink(const OpenEditor& editor) { editor.Resize(0, 0); }
    static SIZE RoomOf(const OpenEditor& editor)
    {
        RECT client{};
        ::GetClientRect(editor.Child(IDC_PICTURE), &client);
        return {client.right, client.bottom};
    }
    // Column and row of the picture, in fours, that a place of its window shows.
    static POINT Shown(const OpenEditor& editor, POINT at)
    {
        const HWND picture = editor.Child(IDC_PICTURE);
        ::RedrawWindow(picture, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
        ::SendMessageW(picture, WM_NULL, 0, 0);
        const HDC dc = ::GetDC(picture);
        const COLORREF pixel = ::GetPixel(dc, at.x, at.y);
        ::ReleaseDC(picture, dc);
        return {GetBValue(pixel), GetGValue(pixel)};
    }
    // The wheel with the pointer there, as the system gives it to the window with the keyboard.
    static void Wheel(const OpenEditor& editor, POINT at, int notches)
    {
        const HWND picture = editor.Child(IDC_PICTURE);
        POINT screen = at;
        ::ClientToScreen(picture, &screen);
        EXPECT_TRUE(Eventually([&] { // another program's window may still be coming up over it
            ::SetWindowPos(editor.Window(), HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
            return ::WindowFromPoint(screen) == picture;
        }));
        ::PostMessageW(editor.Focus(), WM_MOUSEWHEEL, MAKEWPARAM(0, notches * WHEEL_DELTA),
                       MAKELPARAM(screen.x, screen.y));
        editor.PressKey(VK_NONAME, {}); // until the loop has taken it
    }
    static void Near(POINT found, POINT expected, const char* what)
    {
        EXPECT_NEAR(found.x, expected.x, 1) << what;
        EXPECT_NEAR(found.y, expected.y, 1) << what;
    }

    std::vector<std::uint32_t> m_large;
};

TEST_F(EditorZoom, TheWheelZoomsAboutThePointerWhereverTheKeyboardIs)
{
    OpenEditor editor = Open();
    Shrink(editor);
    ASSERT_TRUE(Eventually([&] { return editor.Focus() == editor.Slider(Control::SlopeRed); }));
    const POINT pointer{RoomOf(editor).cx / 3, RoomOf(editor).cy / 2};
    const POINT before = Shown(editor, pointer);
    const POINT corner = Shown(editor, {0, RoomOf(editor).cy / 2});
    Wheel(editor, pointer, 6);
    Near(Shown(editor, pointer), before, "under the pointer");
    EXPECT_GT(Shown(editor, {0, RoomOf(editor).cy / 2}).x, corner.x + 20) << "nearer";
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.000") << "the slider was not meant";
    Wheel(editor, pointer, -20);
    Near(Shown(editor, pointer), before, "as it was");
}

TEST_F(EditorZoom, APictureInItsOwnSizeIsShownPixelByPixelAndDragged)
{
    OpenEditor editor = Open();
    Shrink(editor);
    const HWND picture = editor.Child(IDC_PICTURE);
    editor.PressKey('1', {VK_CONTROL});
    const POINT middle{RoomOf(editor).cx / 2, RoomOf(editor).cy / 2};
    const POINT before = Shown(editor, middle);
    Near(before, {125, 75}, "the middle of the picture");
    Near(Shown(editor, {middle.x + 80, middle.y + 40}), {145, 85}, "a pixel for each pixel");
    editor.Mouse(picture, WM_LBUTTONDOWN, middle, MK_LBUTTON);
    editor.Mouse(picture, WM_MOUSEMOVE, {middle.x + 60, middle.y + 20}, MK_LBUTTON);
    editor.Mouse(picture, WM_LBUTTONUP, {middle.x + 60, middle.y + 20});
    Near(Shown(editor, {middle.x + 60, middle.y + 20}), before, "it went with the mouse");
    editor.Mouse(picture, WM_MOUSEMOVE, middle);
    Near(Shown(editor, {middle.x + 60, middle.y + 20}), before, "the button is up");
    editor.PressKey('0', {VK_CONTROL});
    Near(Shown(editor, middle), {125, 75}, "all of it");
    EXPECT_LE(Shown(editor, {2, middle.y}).x, 2);
}

TEST_F(EditorZoom, TheLookCountsInThePartThatIsShown)
{
    OpenEditor editor = Open();
    Shrink(editor);
    editor.PressKey('1', {VK_CONTROL});
    const POINT middle{RoomOf(editor).cx / 2, RoomOf(editor).cy / 2};
    const LONG before = Shown(editor, middle).x;
    editor.Type(Control::SlopeBlue, L"0.5");
    EXPECT_NEAR(Shown(editor, middle).x, before / 2, 1);
    Wheel(editor, middle, 3);
    EXPECT_NEAR(Shown(editor, middle).x, before / 2, 1);
}

TEST_F(EditorZoom, TheLineOfTheSplitStaysWhereItIsInTheWindow)
{
    OpenEditor editor = Open();
    Shrink(editor);
    editor.Type(Control::SlopeBlue, L"0");
    editor.Click(IDC_SHOW_SPLIT);
    const HWND picture = editor.Child(IDC_PICTURE);
    const POINT middle{RoomOf(editor).cx / 2, RoomOf(editor).cy / 2};
    for (int zoom = 0; zoom < 3; ++zoom)
    {
        EXPECT_GT(Shown(editor, {middle.x - 20, middle.y}).x, 0) << "original";
        EXPECT_EQ(Shown(editor, {middle.x + 20, middle.y}).x, 0) << "graded";
        Wheel(editor, {middle.x + 90, middle.y}, 3);
    }
    // Now the line is dragged where it is, and the picture elsewhere.
    editor.Mouse(picture, WM_LBUTTONDOWN, {middle.x + 50, middle.y}, MK_LBUTTON);
    editor.Mouse(picture, WM_LBUTTONUP, {middle.x + 50, middle.y});
    EXPECT_EQ(Shown(editor, {middle.x + 20, middle.y}).x, 0) << "a press beside it";
    editor.Mouse(picture, WM_LBUTTONDOWN, middle, MK_LBUTTON);
    editor.Mouse(picture, WM_MOUSEMOVE, {middle.x + 50, middle.y}, MK_LBUTTON);
    editor.Mouse(picture, WM_LBUTTONUP, {middle.x + 50, middle.y});
    EXPECT_GT(Shown(editor, {middle.x + 20, middle.y}).x, 0) << "a press on it";
}

TEST_F(EditorZoom, KeysZoomAndMoveThePictureThatHasTheKeyboard)
{
    OpenEditor editor = Open();
    Shrink(editor);
    const POINT middle{RoomOf(editor).cx / 2, RoomOf(editor).cy / 2};
    editor.Mouse(editor.Child(IDC_PICTURE), WM_LBUTTONDOWN, middle, MK_LBUTTON);
    editor.Mouse(editor.Child(IDC_PICTURE), WM_LBUTTONUP, middle);
    const POINT whole = Shown(editor, {4, middle.y});
    for (int i = 0; i < 6; ++i)
    {
        editor.PressKey(VK_OEM_PLUS, {});
    }
    const POINT closer = Shown(editor, {4, middle.y});
    EXPECT_GT(closer.x, whole.x + 20);
    editor.PressKey(VK_LEFT, {});
    EXPECT_LT(Shown(editor, {4, middle.y}).x, closer.x);
    const POINT above = Shown(editor, middle);
    editor.PressKey(VK_DOWN, {});
    EXPECT_GT(Shown(editor, middle).y, above.y);
}

TEST_F(EditorZoom, AKeyShowsThePictureAloneInTheWholeWindowAndBack)
{
    OpenEditor editor = Open();
    Shrink(editor);
    editor.ClickInto(editor.Number(Control::SlopeRed));
    const RECT before = editor.AreaOf(editor.Child(IDC_PICTURE));
    editor.PressKey(VK_F11, {});
    RECT client{};
    ::GetClientRect(editor.Window(), &client);
    const RECT alone = editor.AreaOf(editor.Child(IDC_PICTURE));
    EXPECT_TRUE(::EqualRect(&alone, &client));
    EXPECT_FALSE(::IsWindowVisible(editor.Slider(Control::SlopeRed)));
    EXPECT_EQ(editor.Focus(), editor.Child(IDC_PICTURE));
    for (const WPARAM key : std::initializer_list<WPARAM>{VK_F11, VK_ESCAPE, VK_RETURN})
    {
        editor.PressKey(key, {});
        const RECT after = editor.AreaOf(editor.Child(IDC_PICTURE));
        EXPECT_TRUE(::EqualRect(&after, &before)) << key;
        EXPECT_TRUE(::IsWindowVisible(editor.Slider(Control::SlopeRed)));
        EXPECT_EQ(editor.Focus(), editor.Number(Control::SlopeRed));
        editor.PressKey(VK_F11, {});
    }
    EXPECT_TRUE(::IsWindow(editor.Window()));
}

} // namespace

} // namespace ReferenceRenderer
