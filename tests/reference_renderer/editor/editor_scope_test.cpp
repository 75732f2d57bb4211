// The scopes below the picture, and what the line between them and the buttons says of a pixel.
#include "tests/reference_renderer/editor/editor_fixture.h"

#include "reference_renderer/editor/editor_layout.h"
#include "reference_renderer/editor/scope_picture.h"
#include "support/win32/utf8.h"
#include "tests/reference_renderer/core/look_fixtures.h"
#include "tests/reference_renderer/editor/gui_objects.h"

#include <array>
#include <cstdio>

#include <commctrl.h>
#include <tlhelp32.h>
#include <winternl.h>

namespace ReferenceRenderer
{

namespace
{

constexpr std::array<WPARAM, kScopeKinds> kScopeKeys{VK_F2, VK_F3, VK_F4, VK_F5};

std::string TextOf(HWND window)
{
    std::array<wchar_t, 256> text{};
    ::SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    return Utf8(text.data());
}

// How many threads of this process began in `module`.
int ThreadsOf(HMODULE module)
{
    const auto* const start = reinterpret_cast<const std::byte*>(module);
    const auto* const header = reinterpret_cast<const IMAGE_NT_HEADERS*>(
        start + reinterpret_cast<const IMAGE_DOS_HEADER*>(start)->e_lfanew);
    int count = 0;
    const HANDLE threads = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL found = ::Thread32First(threads, &entry); found;
         found = ::Thread32Next(threads, &entry))
    {
        if (entry.th32OwnerProcessID != ::GetCurrentProcessId())
        {
            continue;
        }
        const HANDLE thread = ::OpenThread(THREAD_QUERY_INFORMATION, FALSE, entry.th32ThreadID);
        const std::byte* began = nullptr;
        constexpr auto kStartAddress = static_cast<THREADINFOCLASS>(9);
        ::NtQueryInformationThread(thread, kStartAddress, &began, sizeof began, nullptr);
        ::CloseHandle(thread);
        count += began >= start && began < start + header->OptionalHeader.SizeOfImage ? 1 : 0;
    }
    ::CloseHandle(threads);
    return count;
}

class EditorScopes : public EditorTest
{
protected:
    static bool IsOpen(const OpenEditor& editor)
    {
        const RECT area = editor.AreaOf(editor.Child(IDC_SCOPE));
        return area.bottom > area.top;
    }
    static bool Says(const OpenEditor& editor, const std::string& text)
    {
        return Eventually([&] { return TextOf(editor.Child(IDC_SCOPE)) == text; });
    }
    static Geometry::Extent SizeOf(const OpenEditor& editor)
    {
        const RECT area = editor.AreaOf(editor.Child(IDC_SCOPE));
        return {static_cast<int>(area.right - area.left), static_cast<int>(area.bottom - area.top)};
    }
    // How bright a place of the scope is, red, green and blue together.
    static int Brightness(const OpenEditor& editor, Geometry::Point at)
    {
        const HDC dc = ::GetDC(editor.Child(IDC_SCOPE));
        const COLORREF pixel = ::GetPixel(dc, at.x, at.y);
        ::ReleaseDC(editor.Child(IDC_SCOPE), dc);
        return GetRValue(pixel) + GetGValue(pixel) + GetBValue(pixel);
    }
    // Whether the trace of a plot comes to run through a level.
    static bool Traces(const OpenEditor& editor, ScopeKind kind, std::size_t plot, double level)
    {
        const Geometry::Rect room = ScopePlacesIn(kind, SizeOf(editor), 96).plots[plot];
        const Geometry::Point at{room.left + room.width / 2, LevelRow(room, level)};
        return Eventually([&] { return Brightness(editor, at) > 330; });
    }
};

TEST_F(EditorScopes, AKeyOpensEachScopeAndClosesItAgain)
{
    OpenEditor editor = Open();
    const RECT picture = editor.AreaOf(editor.Child(IDC_PICTURE));
    for (std::size_t i = 0; i < kScopeKinds; ++i)
    {
        EXPECT_FALSE(IsOpen(editor));
        editor.PressKey(kScopeKeys[i], {});
        EXPECT_TRUE(IsOpen(editor));
        EXPECT_TRUE(Says(editor, kScopeNames[i]));
        const RECT shorter = editor.AreaOf(editor.Child(IDC_PICTURE));
        EXPECT_LT(shorter.bottom, editor.AreaOf(editor.Child(IDC_SCOPE)).top);
        editor.PressKey(kScopeKeys[i], {});
        const RECT after = editor.AreaOf(editor.Child(IDC_PICTURE));
        EXPECT_TRUE(::EqualRect(&after, &picture));
    }
}

TEST_F(EditorScopes, AnotherKeyOrButtonShowsAnotherScopeAndWorksFromANumberToo)
{
    OpenEditor editor = Open();
    editor.ClickInto(editor.Number(Control::SlopeRed));
    for (const std::size_t i : {0U, 1U, 2U, 3U, 1U})
    {
        editor.PressKey(kScopeKeys[i], {});
        EXPECT_TRUE(Says(editor, kScopeNames[i]));
    }
    EXPECT_EQ(editor.NumberText(Control::SlopeRed), "1.000");
    editor.Click(IDC_SCOPE_BUTTON + 3);
    EXPECT_TRUE(Says(editor, kScopeNames[3]));
    editor.Click(IDC_SCOPE_BUTTON + 3);
    EXPECT_FALSE(IsOpen(editor));
    editor.PressKey(VK_F4, {VK_CONTROL});
    EXPECT_FALSE(IsOpen(editor)) << "not that key";
}

TEST_F(EditorScopes, EnterOnAButtonOfAScopeIsNotOk)
{
    OpenEditor editor = Open();
    editor.ClickInto(editor.Child(IDC_SCOPE_BUTTON));
    EXPECT_TRUE(IsOpen(editor));
    ASSERT_EQ(editor.Focus(), editor.Child(IDC_SCOPE_BUTTON));
    editor.PressKey(VK_RETURN, {});
    EXPECT_FALSE(IsOpen(editor));
    EXPECT_TRUE(::IsWindow(editor.Window()));
}

TEST_F(EditorScopes, EveryButtonHasATipWithItsKey)
{
    OpenEditor editor = Open();
    HWND tips = nullptr;
    ::EnumThreadWindows(
        editor.Thread(),
        [](HWND window, LPARAM found) {
            std::array<wchar_t, 64> name{};
            ::GetClassNameW(window, name.data(), static_cast<int>(name.size()));
            if (std::wstring(name.data()) == TOOLTIPS_CLASSW)
            {
                *reinterpret_cast<HWND*>(found) = window;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&tips));
    ASSERT_NE(tips, nullptr);
    constexpr std::array<const wchar_t*, kScopeKinds> kTips{
        L"RGB parade (F2)", L"Luma waveform, % (F3)", L"Vectorscope (F4)", L"RGB histogram (F5)"};
    for (std::size_t i = 0; i < kScopeKinds; ++i)
    {
        std::array<wchar_t, 80> text{};
        TTTOOLINFOW tool{};
        tool.cbSize = TTTOOLINFOW_V1_SIZE;
        tool.uFlags = TTF_IDISHWND;
        tool.hwnd = editor.Window();
        tool.uId = reinterpret_cast<UINT_PTR>(editor.Child(IDC_SCOPE_BUTTON + static_cast<int>(i)));
        tool.lpszText = text.data();
        ::SendMessageW(tips, TTM_GETTEXTW, text.size(), reinterpret_cast<LPARAM>(&tool));
        EXPECT_STREQ(text.data(), kTips[i]);
    }
}

TEST_F(EditorScopes, TheCountsFollowASlider)
{
    OpenEditor editor = Open(); // 128 all over
    editor.PressKey(VK_F2, {});
    EXPECT_TRUE(Traces(editor, ScopeKind::Parade, 0, 128));
    EXPECT_TRUE(Traces(editor, ScopeKind::Parade, 1, 128));
    for (int i = 0; i < 20; ++i)
    {
        editor.SlideKey(Control::OffsetRed, VK_PRIOR); // to its end, 0.5
    }
    EXPECT_TRUE(Says(editor, "RGB parade, 255: R 100 %"));
    EXPECT_TRUE(Traces(editor, ScopeKind::Parade, 0, 255));
    EXPECT_TRUE(Traces(editor, ScopeKind::Parade, 1, 128));
    editor.SlideKey(Control::SlopeGreen, VK_HOME);
    EXPECT_TRUE(Says(editor, "RGB parade, 0: G 100 %, 255: R 100 %"));
    EXPECT_TRUE(Traces(editor, ScopeKind::Parade, 1, 0));
    editor.PressKey(VK_F3, {});
    // 255, 0, 128.
    const LumaCodes codes = LumaCodesOf(255, 0, 128);
    EXPECT_TRUE(Traces(editor, ScopeKind::Waveform, 0, codes.luma));
    editor.PressKey(VK_F4, {});
    const Geometry::Rect plot = ScopePlacesIn(ScopeKind::Vectors, SizeOf(editor), 96).plots[0];
    EXPECT_TRUE(Eventually([&] { return Brightness(editor, VectorPlace(plot, codes)) > 330; }));
    editor.Click(IDC_RESET_ALL);
    EXPECT_TRUE(Says(editor, "Vectorscope"));
}

TEST_F(EditorScopes, TheNewestLookIsTheOneThatStays)
{
    OpenEditor editor = Open();
    editor.PressKey(VK_F5, {});
    for (int i = 0; i < 200; ++i)
    {
        ::PostMessageW(editor.Slider(Control::SlopeBlue), WM_KEYDOWN, i % 2 == 0 ? VK_HOME : VK_END,
                       0);
    }
    editor.PressKey(VK_NONAME, {}); // until the loop has taken them all
    EXPECT_TRUE(Says(editor, "RGB histogram, 255: B 100 %"));
    editor.SlideKey(Control::SlopeBlue, VK_HOME);
    EXPECT_TRUE(Says(editor, "RGB histogram, 0: B 100 %"));
}

TEST_F(EditorScopes, AFrameThatIsCountedInPartAtFirstIsCountedWholeOnceTheLookStandsStill)
{
    // One pixel in a place that is left out at first.
    std::vector<std::uint32_t> pixels(std::size_t{1920} * 1080, 0xFF808080);
    pixels[1921] = 0xFFFF8080;
    m_preview.pixels = pixels.data();
    m_preview.width = m_preview.rowPitch = 1920;
    m_preview.height = 1080;
    OpenEditor editor = Open();
    editor.PressKey(VK_F5, {});
    EXPECT_TRUE(Says(editor, "RGB histogram, 255: R <0.1 %"));
}

TEST_F(EditorScopes, ThePictureAloneHasNoScopeAndItComesBackWithTheRest)
{
    OpenEditor editor = Open();
    editor.PressKey(VK_F2, {});
    editor.PressKey(VK_F11, {});
    EXPECT_FALSE(IsOpen(editor));
    editor.PressKey(VK_F3, {});
    EXPECT_FALSE(IsOpen(editor));
    editor.PressKey(VK_F11, {});
    EXPECT_TRUE(IsOpen(editor));
    EXPECT_EQ(TextOf(editor.Child(IDC_SCOPE)), "RGB parade");
    EXPECT_TRUE(Traces(editor, ScopeKind::Parade, 2, 128));
}

TEST_F(EditorScopes, TheScopeFollowsTheSizeOfTheWindow)
{
    OpenEditor editor = Open();
    editor.PressKey(VK_F3, {});
    for (const auto& [width, height] : {std::pair(1270, 1000), std::pair(0, 0)})
    {
        editor.Resize(width, height);
        EXPECT_TRUE(Traces(editor, ScopeKind::Waveform, 0, 126));
    }
    RECT place{0, 0, 1280, 980};
    ::SendMessageW(editor.Window(), WM_DPICHANGED, MAKEWPARAM(144, 144),
                   reinterpret_cast<LPARAM>(&place));
    const Geometry::Rect plot = ScopePlacesIn(ScopeKind::Waveform, SizeOf(editor), 144).plots[0];
    EXPECT_TRUE(Eventually([&] {
        return Brightness(editor, {plot.left + 9, LevelRow(plot, 126)}) > 330;
    }));
}

TEST_F(EditorScopes, WithoutAPictureAScopeDoesNoHarm)
{
    m_preview.pixels = nullptr;
    OpenEditor editor = Open();
    for (const WPARAM key : kScopeKeys)
    {
        editor.PressKey(key, {});
        EXPECT_TRUE(IsOpen(editor));
    }
    editor.Mouse(editor.Child(IDC_PICTURE), WM_MOUSEMOVE, {100, 100});
    EXPECT_EQ(TextOf(editor.Child(IDC_PIXEL)), "");
    EXPECT_EQ(ThreadsOf(m_library.Module()), 0);
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
}

TEST_F(EditorScopes, TheThreadEndsWithTheScopeAndWithTheWindow)
{
    // Work for much longer than closing takes: floats in linear light.
    std::vector<float> floats(std::size_t{3840} * 2160 * 4, 0.25F);
    m_preview.format = kFormatBgraFloat;
    m_preview.pixels = floats.data();
    m_preview.width = m_preview.rowPitch = 3840;
    m_preview.height = 2160;
    OpenEditor editor = Open({}, 1);
    EXPECT_EQ(ThreadsOf(m_library.Module()), 0);
    editor.PressKey(VK_F2, {});
    EXPECT_EQ(ThreadsOf(m_library.Module()), 1);
    editor.PressKey(VK_F3, {});
    EXPECT_EQ(ThreadsOf(m_library.Module()), 1);
    editor.PressKey(VK_F3, {});
    EXPECT_EQ(ThreadsOf(m_library.Module()), 0);
    editor.PressKey(VK_F4, {});
    EXPECT_EQ(ThreadsOf(m_library.Module()), 1);
    EXPECT_EQ(editor.CloseWith(IDCANCEL), 0);
    EXPECT_EQ(ThreadsOf(m_library.Module()), 0);
}

TEST_F(EditorScopes, ManyOpeningsLeaveNoGdiObjectsBehind)
{
    OpenEditor editor = Open();
    const auto openAll = [&] {
        for (std::size_t i = 0; i < kScopeKinds; ++i)
        {
            editor.PressKey(kScopeKeys[i], {});
            EXPECT_TRUE(Says(editor, kScopeNames[i]));
        }
        editor.PressKey(kScopeKeys.back(), {});
        ::RedrawWindow(editor.Window(), nullptr, nullptr,
                       RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
        ::SendMessageW(editor.Window(), WM_NULL, 0, 0);
    };
    openAll();
    const GuiObjects first = CountGuiObjects();
    for (int i = 0; i < 25; ++i)
    {
        openAll();
    }
    EXPECT_TRUE(Eventually([&] { return CountGuiObjects() == first; }))
        << first.gdi << " became " << CountGuiObjects().gdi;
}

// Every other pixel of 1000 x 600 is black; each of the others is of a code of its own row.
class EditorPixels : public EditorScopes
{
protected:
    EditorPixels() : m_large(std::size_t{1000} * 600, 0xFF000000)
    {
        for (std::uint32_t i = 0; i < m_large.size(); ++i)
        {
            if ((i % 1000 + i / 1000) % 2 != 0)
            {
                m_large[i] = 0xFF00C840 | (i / 1000 % 200 + 1) << 16;
            }
        }
        m_preview.pixels = m_large.data();
        m_preview.width = m_preview.rowPitch = 1000;
        m_preview.height = 600;
    }

    // What is to be said of a pixel with that green after the look.
    std::string Expected(std::uint32_t column, std::uint32_t row, int green,
                         const std::string& greenValue) const
    {
        const std::uint32_t pixel = m_large[row * 1000 + column];
        const int red = static_cast<int>(pixel >> 16 & 0xFF);
        std::array<char, 16> share{};
        std::snprintf(share.data(), share.size(), "%.3f", red / 255.0);
        const std::string reds = std::to_string(red) + " ";
        const std::string value = std::string(share.data()) + " ";
        return std::to_string(column) + ", " + std::to_string(row) + ":  " + reds +
               "200 64 \u2192 " + reds + std::to_string(green) + " 64   " + value +
               "0.784 0.251 \u2192 " + value + greenValue + " 0.251";
    }
    static std::string Black(std::uint32_t column, std::uint32_t row)
    {
        return std::to_string(column) + ", " + std::to_string(row) +
               ":  0 0 0 \u2192 0 0 0   0.000 0.000 0.000 \u2192 0.000 0.000 0.000";
    }
    static std::string PointedAt(const OpenEditor& editor, POINT at)
    {
        editor.Mouse(editor.Child(IDC_PICTURE), WM_MOUSEMOVE, at);
        return TextOf(editor.Child(IDC_PIXEL));
    }
    static POINT MiddleOf(const OpenEditor& editor)
    {
        RECT client{};
        ::GetClientRect(editor.Child(IDC_PICTURE), &client);
        return {client.right / 2, client.bottom / 2};
    }

    std::vector<std::uint32_t> m_large;
};

TEST_F(EditorPixels, TheLineSaysTheCodesOfThePixelInItsOwnSize)
{
    OpenEditor editor = Open();
    editor.Resize(0, 0);
    editor.PressKey('1', {VK_CONTROL});
    editor.Type(Control::SlopeGreen, L"0.5");
    const POINT middle = MiddleOf(editor);
    for (int i = -20; i < 20; ++i)
    {
        const POINT at{middle.x + i, middle.y + 2 * i};
        const std::string said = PointedAt(editor, at);
        const auto column = static_cast<std::uint32_t>(std::stoi(said));
        const auto row = static_cast<std::uint32_t>(std::stoi(said.substr(said.find(',') + 1)));
        EXPECT_EQ(said, (column + row) % 2 != 0 ? Expected(column, row, 100, "0.392")
                                                : Black(column, row));
        const HDC dc = ::GetDC(editor.Child(IDC_PICTURE));
        const COLORREF shown = ::GetPixel(dc, at.x, at.y);
        ::ReleaseDC(editor.Child(IDC_PICTURE), dc);
        EXPECT_NE(said.find("\u2192 " + std::to_string(GetRValue(shown)) + " " +
                            std::to_string(GetGValue(shown)) + " " +
                            std::to_string(GetBValue(shown)) + "   "),
                  std::string::npos)
            << said << " of " << std::hex << shown;
    }
}

TEST_F(EditorPixels, WhereThePictureIsShownAveragedItIsTheFramesOwnPixelAllTheSame)
{
    OpenEditor editor = Open();
    editor.Resize(0, 0); // less than half of its size
    for (int x = 40; x < 60; ++x)
    {
        const std::string said = PointedAt(editor, {MiddleOf(editor).x + x, MiddleOf(editor).y});
        const auto column = static_cast<std::uint32_t>(std::stoi(said));
        const auto row = static_cast<std::uint32_t>(std::stoi(said.substr(said.find(',') + 1)));
        EXPECT_EQ(said, (column + row) % 2 != 0 ? Expected(column, row, 200, "0.784")
                                                : Black(column, row));
    }
}

TEST_F(EditorPixels, TheLineFollowsTheLookAndTheViewAndGoesWithThePointer)
{
    OpenEditor editor = Open();
    editor.Resize(0, 0);
    editor.PressKey('1', {VK_CONTROL});
    POINT at = MiddleOf(editor);
    std::string said = PointedAt(editor, at);
    if (said.find(":  0 0 0") != std::string::npos)
    {
        ++at.x;
        said = PointedAt(editor, at);
    }
    const auto column = static_cast<std::uint32_t>(std::stoi(said));
    const auto row = static_cast<std::uint32_t>(std::stoi(said.substr(said.find(',') + 1)));
    EXPECT_EQ(said, Expected(column, row, 200, "0.784"));
    editor.SlideKey(Control::SlopeGreen, VK_HOME);
    EXPECT_EQ(TextOf(editor.Child(IDC_PIXEL)), Expected(column, row, 0, "0.000"));
    editor.Type(Control::SlopeGreen, L"0.5");
    EXPECT_EQ(TextOf(editor.Child(IDC_PIXEL)), Expected(column, row, 100, "0.392"));
    editor.PressKey('0', {VK_CONTROL});
    EXPECT_NE(TextOf(editor.Child(IDC_PIXEL)).find(std::to_string(column) + ", "), 0U);
    editor.Mouse(editor.Child(IDC_PICTURE), WM_MOUSEMOVE, {1, 1});
    EXPECT_EQ(TextOf(editor.Child(IDC_PIXEL)), "") << "beside the picture";
    EXPECT_NE(PointedAt(editor, at), "");
    editor.Mouse(editor.Child(IDC_PICTURE), WM_MOUSELEAVE, {});
    EXPECT_EQ(TextOf(editor.Child(IDC_PIXEL)), "");
}

} // namespace

} // namespace ReferenceRenderer
