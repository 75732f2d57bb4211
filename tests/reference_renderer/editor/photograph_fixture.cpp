#include "tests/reference_renderer/editor/photograph_fixture.h"

#include "tools/glazelhost/media/open_frames.h"

#include <cstring>
#include <filesystem>
#include <set>

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

// Whether a window and all its children are: asked from another thread, a window says so late.
bool IsPainted(HWND window)
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

} // namespace

void PhotographTest::Load(const std::string& file)
{
    m_picture = ReadPicture(GLAZEL_SOURCE_DIR "/samples/images/" + file);
    m_preview.pixels = m_picture.pixels.data();
    m_preview.width = static_cast<std::uint32_t>(m_picture.width);
    m_preview.height = static_cast<std::uint32_t>(m_picture.height);
    m_preview.rowPitch = m_preview.width;
}

std::size_t PhotographTest::CountColours(HWND window)
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

void PhotographTest::Take(const OpenEditor& editor, const std::string& name)
{
    ::SendMessageW(editor.Child(IDC_PICTURE), WM_TIMER, 1, 0); // graded whole, as it soon is
    ::RedrawWindow(editor.Window(), nullptr, nullptr,
                   RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    ASSERT_TRUE(Eventually([&] { return IsPainted(editor.Window()); }));
    EXPECT_GT(CountColours(editor.Window()), 1000U) << "a photograph";
    WritePicture(Photograph(editor.Window()), name);
}

} // namespace ReferenceRenderer
