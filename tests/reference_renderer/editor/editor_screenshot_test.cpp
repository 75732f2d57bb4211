// Pictures of the editor for the documentation, and for whoever changes how it looks.
#include "tests/reference_renderer/editor/editor_fixture.h"

#include "support/win32/com_scope.h"
#include "tools/glazelhost/media/open_frames.h"

#include <array>
#include <cstring>
#include <filesystem>
#include <set>

#include <objbase.h>

using namespace GlazelHost;

namespace ReferenceRenderer
{

namespace
{

constexpr char kFolder[] = GLAZEL_SCREENSHOTS;

Image ReadPicture(const std::string& path)
{
    Image image;
    SourceOptions options;
    options.path = path;
    EXPECT_TRUE(OpenSource(options)->Read(image, SampleType::Byte));
    return image;
}

// A window with its children and its frame. From its own context: the display may be behind what
// another thread has painted.
Image Photograph(HWND window)
{
    RECT area{};
    ::GetWindowRect(window, &area);
    Image image;
    image.width = area.right - area.left;
    image.height = area.bottom - area.top;
    image.pixels.resize(image.RowBytes() * static_cast<std::size_t>(image.height));

    const HDC screen = ::GetWindowDC(window);
    const HDC memory = ::CreateCompatibleDC(screen);
    const HBITMAP bitmap = ::CreateCompatibleBitmap(screen, image.width, image.height);
    const HGDIOBJ before = ::SelectObject(memory, bitmap);
    ::BitBlt(memory, 0, 0, image.width, image.height, screen, 0, 0, SRCCOPY);
    ::SelectObject(memory, before);
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = image.width;
    info.bmiHeader.biHeight = -image.height; // the top row first
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    ::GetDIBits(memory, bitmap, 0, static_cast<UINT>(image.height), image.pixels.data(), &info,
                DIB_RGB_COLORS);
    ::DeleteObject(bitmap);
    ::DeleteDC(memory);
    ::ReleaseDC(window, screen);
    return image;
}

void WritePicture(const Image& image, const std::string& name)
{
    std::filesystem::create_directories(kFolder);
    SinkOptions options;
    options.path = std::string(kFolder) + "/" + name;
    options.overwrite = true;
    const auto sink = OpenSink(options, {});
    sink->Write(image);
    sink->Finish();
}

class EditorScreenshot : public EditorTest
{
protected:
    // The preview is this file of samples/images.
    void Load(const std::string& file)
    {
        m_picture = ReadPicture(GLAZEL_SOURCE_DIR "/samples/images/" + file);
        m_preview.pixels = m_picture.pixels.data();
        m_preview.width = static_cast<std::uint32_t>(m_picture.width);
        m_preview.height = static_cast<std::uint32_t>(m_picture.height);
        m_preview.rowPitch = m_preview.width;
    }
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
    static std::size_t CountColours(HWND window)
    {
        const Image shown = Photograph(window);
        std::set<std::uint32_t> colours;
        for (std::size_t i = 0; i < shown.pixels.size(); i += sizeof(std::uint32_t))
        {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel, shown.pixels.data() + i, sizeof pixel);
            colours.insert(pixel);
        }
        return colours.size();
    }
    // Whether a window and all its children are: asked from another thread, a window says so late.
    static bool IsPainted(HWND window)
    {
        bool painted = ::GetUpdateRect(window, nullptr, FALSE) == FALSE;
        ::EnumChildWindows(
            window,
            [](HWND child, LPARAM result) {
                *reinterpret_cast<bool*>(result) &= ::GetUpdateRect(child, nullptr, FALSE) == FALSE;
                return TRUE;
            },
            reinterpret_cast<LPARAM>(&painted));
        ::SendMessageW(window, WM_NULL, 0, 0); // the paint under way is done
        return painted;
    }
    // Writes what is shown of the editor, which must be more than an empty window.
    static void Take(const OpenEditor& editor, const std::string& name)
    {
        ::SendMessageW(editor.Child(IDC_PICTURE), WM_TIMER, 1, 0); // graded whole, as it soon is
        ::RedrawWindow(editor.Window(), nullptr, nullptr,
                       RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
        ASSERT_TRUE(Eventually([&] { return IsPainted(editor.Window()); }));
        EXPECT_GT(CountColours(editor.Window()), 1000U) << "a photograph";
        WritePicture(Photograph(editor.Window()), name);
    }

    ComScope m_com{true}; // for the picture codecs
    Image m_picture;
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
