// Pictures of the editor for the documentation, and for whoever changes how it looks.
#include "tests/reference_renderer/editor/photograph_fixture.h"

#include <array>

namespace ReferenceRenderer
{

namespace
{

class EditorScreenshot : public PhotographTest
{
protected:
    static void Grade(const OpenEditor& editor)
    {
        editor.Drop(L"" GLAZEL_SOURCE_DIR "/samples/looks/warm_print.cube");
        editor.Type(Control::SlopeRed, L"1.08");
        editor.Type(Control::SlopeBlue, L"0.94");
        editor.Type(Control::OffsetBlue, L"0.02");
        editor.Type(Control::PowerGreen, L"0.95");
        editor.Type(Control::Saturation, L"1.15");
        editor.Type(Control::Strength, L"0.85");
    }
};

TEST_F(EditorScreenshot, ShowsAPhotographWithALookBesideItsOriginal)
{
    Load("rocket.jpg");
    // A part in the shape of a film's: a file for a document is to be small.
    m_preview.height = 268;
    m_preview.pixels = m_picture.pixels.data() + 150 * m_picture.RowBytes();
    OpenEditor editor = Open();
    ASSERT_NE(editor.Window(), nullptr);
    editor.Resize(0, 0); // the smallest: a document has no more room
    Grade(editor);
    editor.Click(IDC_SHOW_SPLIT);
    Take(editor, "editor.png");
    EXPECT_EQ(editor.CloseWith(IDCANCEL), 0);
}

TEST_F(EditorScreenshot, ShowsTheOtherViewsWithAScope)
{
    Load("coffee.png");
    m_preview.height = 250; // as above
    OpenEditor editor = Open();
    ASSERT_NE(editor.Window(), nullptr);
    editor.Resize(0, 0);
    editor.Type(Control::Temperature, L"-0.6");
    editor.Type(Control::Exposure, L"-0.4");
    editor.Type(Control::Contrast, L"1.15");
    editor.PressKey(VK_F3, {});
    ASSERT_TRUE(Eventually([&] { return CountColours(editor.Child(IDC_SCOPE)) > 100; }));
    Take(editor, "editor-light.png");
    editor.Type(Control::LiftBlue, L"0.02");
    editor.Type(Control::GainRed, L"1.02");
    editor.PressKey(VK_F4, {});
    ASSERT_TRUE(Eventually([&] { return CountColours(editor.Child(IDC_SCOPE)) > 100; }));
    Take(editor, "editor-wheels.png");
}

TEST_F(EditorScreenshot, ShowsAWindowOfItsFirstSizeWithoutALut)
{
    Load("coffee.png");
    OpenEditor editor = Open();
    ASSERT_NE(editor.Window(), nullptr);
    editor.Drop(L"" GLAZEL_SOURCE_DIR "/samples/looks/cool_night.cc");
    Take(editor, "editor-first-size.png");
    EXPECT_EQ(editor.CloseWith(IDCANCEL), 0);
}

TEST_F(EditorScreenshot, ShowsAPartOfAPhotographInMoreThanItsOwnSize)
{
    Load("rocket.jpg");
    OpenEditor editor = Open();
    ASSERT_NE(editor.Window(), nullptr);
    editor.Click(IDC_STORE_STATE);
    Grade(editor);
    editor.Click(IDC_SHOW_SPLIT);
    POINT pointer{300, 400};
    ::ClientToScreen(editor.Child(IDC_PICTURE), &pointer);
    ::SendMessageW(editor.Child(IDC_PICTURE), WM_MOUSEWHEEL, MAKEWPARAM(0, 5 * WHEEL_DELTA),
                   MAKELPARAM(pointer.x, pointer.y));
    Take(editor, "editor-close-up.png");
    editor.PressKey(VK_F11, {});
    Take(editor, "editor-picture-alone.png");
}

TEST_F(EditorScreenshot, ShowsADisplayOf144DotsPerInch)
{
    Load("coffee.png");
    OpenEditor editor = Open();
    ASSERT_NE(editor.Window(), nullptr);
    RECT place{0, 0, 1280, 980};
    ::SendMessageW(editor.Window(), WM_DPICHANGED, MAKEWPARAM(144, 144),
                   reinterpret_cast<LPARAM>(&place));
    Grade(editor);
    editor.Drop(L"Z:\\a folder with a name that is long\\and another one\\no such look.cube");
    Take(editor, "editor-144-dpi.png");
    EXPECT_EQ(editor.CloseWith(IDCANCEL), 0);
}

TEST_F(EditorScreenshot, ShowsEachScopeBelowThePicture)
{
    Load("rocket.jpg");
    OpenEditor editor = Open();
    ASSERT_NE(editor.Window(), nullptr);
    Grade(editor);
    const HWND picture = editor.Child(IDC_PICTURE);
    const std::array names{"parade", "waveform", "vectorscope", "histogram"};
    for (std::size_t i = 0; i < names.size(); ++i)
    {
        editor.PressKey(VK_F2 + i, {});
        editor.Mouse(picture, WM_MOUSEMOVE, {400, 150});
        ASSERT_TRUE(Eventually([&] { return CountColours(editor.Child(IDC_SCOPE)) > 100; }));
        Take(editor, std::string("editor-") + names[i] + ".png");
    }
    // In the smallest window, with codes at both ends.
    editor.Click(IDC_REMOVE_TABLES);
    editor.Type(Control::SlopeRed, L"2.5");
    editor.Type(Control::OffsetBlue, L"-0.15");
    editor.Resize(0, 0);
    for (std::size_t i = 0; i < names.size(); ++i)
    {
        editor.PressKey(VK_F2 + i, {});
        ASSERT_TRUE(Eventually([&] { return CountColours(editor.Child(IDC_SCOPE)) > 100; }));
        Take(editor, std::string("editor-") + names[i] + "-clipped.png");
    }
}

} // namespace

} // namespace ReferenceRenderer
