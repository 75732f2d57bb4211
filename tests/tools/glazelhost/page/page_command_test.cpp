// The page's window as a user works it, over the product and the reference renderer.
#include "tools/glazelhost/commands/commands.h"

#include "support/win32/clipboard_text.h"
#include "support/win32/utf8.h"
#include "tests/propertypage/page_frame.h"
#include "tests/reference_renderer/editor/open_editor.h"
#include "tests/tools/glazelhost/plugin/real_effect.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/open_frames.h"
#include "tools/glazelhost/media/windows_path.h"
#include "tools/glazelhost/page/page_window.h"
#include "tools/glazelhost/ui/reporter.h"

#include <dlgs.h>
#include <ole2.h>
#include <shellapi.h>

#include <filesystem>

namespace GlazelHost
{

using namespace ReferenceRenderer;

namespace
{

constexpr char kPicture[] = "gr\xC3\xA4y & co.png"; // which a prompt would take apart
constexpr char kGraded[] = "gr\xC3\xA4y & co_graded.png";

void WritePicture(const std::string& path, const Image& image)
{
    SinkOptions options;
    options.path = path;
    options.overwrite = true;
    const auto sink = OpenSink(options, {});
    sink->Write(image);
    sink->Finish();
}

Image ReadPicture(const std::string& path)
{
    SourceOptions options;
    options.path = path;
    Image image;
    EXPECT_TRUE(OpenSource(options)->Read(image, SampleType::Byte));
    return image;
}

BOOL CALLBACK FindPageWindow(HWND window, LPARAM found) noexcept
{
    wchar_t name[64] = L"";
    ::GetClassNameW(window, name, 64);
    if (std::wstring(name) != kPageWindowClass || !::IsWindowVisible(window))
    {
        return TRUE;
    }
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

// The first that EnumThreadWindows comes to stands in front.
BOOL CALLBACK FindVisible(HWND window, LPARAM found) noexcept
{
    *reinterpret_cast<HWND*>(found) = window;
    return ::IsWindowVisible(window) ? FALSE : TRUE;
}

HWND FrontWindowOf(DWORD thread)
{
    HWND found = nullptr;
    ::EnumThreadWindows(thread, FindVisible, reinterpret_cast<LPARAM>(&found));
    return found;
}

BOOL CALLBACK FindPopup(HWND window, LPARAM found) noexcept
{
    wchar_t owner[64] = L"";
    ::GetClassNameW(::GetWindow(window, GW_OWNER), owner, 64);
    if (std::wstring(owner) != kPageWindowClass || !::IsWindowVisible(window))
    {
        return TRUE;
    }
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

// "glazelhost page" on a thread of its own.
class ShownPage
{
public:
    explicit ShownPage(PageCommand command) : m_command(std::move(command))
    {
        m_thread = ::CreateThread(nullptr, 0, Run, this, 0, &m_threadId);
        EXPECT_TRUE(Eventually([&] {
            ::EnumThreadWindows(m_threadId, FindPageWindow, reinterpret_cast<LPARAM>(&m_window));
            return m_window != nullptr || HasEnded();
        }));
        WaitForPaint();
    }
    ~ShownPage()
    {
        if (!HasEnded())
        {
            ::PostMessageW(m_window, WM_CLOSE, 0, 0);
            ::WaitForSingleObject(m_thread, INFINITE); // the test's own deadline ends it
        }
        ::CloseHandle(m_thread);
    }
    ShownPage(const ShownPage&) = delete;
    ShownPage& operator=(const ShownPage&) = delete;

    HWND Window() const { return m_window; }
    DWORD Thread() const { return m_threadId; }
    bool HasEnded() const { return ::WaitForSingleObject(m_thread, 0) == WAIT_OBJECT_0; }
    // Waits until nothing is left to be painted.
    void WaitForPaint() const
    {
        for (const HWND window : {m_window, Page()})
        {
            EXPECT_TRUE(HasEnded() ||
                        Eventually([window] { return !::GetUpdateRect(window, nullptr, FALSE); }));
            ::SendMessageW(window, WM_NULL, 0, 0); // answered when the paint is over
        }
    }
    // Without waiting for what the button does.
    void Press(int id) const
    {
        ::PostMessageW(m_window, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), 0);
    }
    std::wstring Title() const
    {
        wchar_t title[64] = L"";
        ::GetWindowTextW(m_window, title, 64);
        return title;
    }
    // To the control that a user would have at hand.
    void PressKey(WPARAM key) const
    {
        ::PostMessageW(::GetDlgItem(m_window, kSaveLookId), WM_KEYDOWN, key, 0);
    }
    std::wstring Status() const
    {
        wchar_t text[1024] = L"";
        ::SendDlgItemMessageW(m_window, kStatusId, WM_GETTEXT, 1024,
                              reinterpret_cast<LPARAM>(text));
        return text;
    }
    HWND Page() const
    {
        for (HWND child = ::GetWindow(m_window, GW_CHILD); child != nullptr;
             child = ::GetWindow(child, GW_HWNDNEXT))
        {
            if (::GetDlgCtrlID(child) < kStatusId)
            {
                return child;
            }
        }
        return nullptr;
    }
    void ClickPage(Geometry::Point point) const
    {
        MovePointer(Page(), point);
        ::SendMessageW(Page(), WM_LBUTTONDOWN, MK_LBUTTON, 0);
        ::PostMessageW(Page(), WM_LBUTTONUP, 0, 0); // may open the editor
    }
    COLORREF PixelAt(int x, int y) const
    {
        const HDC dc = ::GetDC(m_window);
        const COLORREF colour = ::GetPixel(dc, x, y);
        ::ReleaseDC(m_window, dc);
        return colour;
    }
    // The dialog or box that stands over the window.
    HWND Popup() const
    {
        HWND popup = nullptr;
        EXPECT_TRUE(Eventually([&] {
            ::EnumThreadWindows(m_threadId, FindPopup, reinterpret_cast<LPARAM>(&popup));
            return popup != nullptr;
        }));
        return popup;
    }
    // Presses a button of the box over the window, which is gone then.
    void Answer(int button) const
    {
        const HWND box = Popup();
        ::PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
        EXPECT_TRUE(Eventually([box] { return !::IsWindow(box); }));
    }
    // Names a file in the dialog over the window.
    void NameFile(const std::string& path) const
    {
        const HWND dialog = Popup();
        for (const int name : {edt1, cmb13}) // one or the other, depending on the system
        {
            ::SetDlgItemTextA(dialog, name, path.c_str());
        }
        ::PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    }
    // What the command threw when it is over; empty when it succeeded.
    std::string Close()
    {
        ::PostMessageW(m_window, WM_CLOSE, 0, 0);
        return Error();
    }
    std::string Error()
    {
        EXPECT_EQ(::WaitForSingleObject(m_thread, kDeadlineMs), WAIT_OBJECT_0);
        return m_error;
    }
    std::vector<std::string> warnings;

private:
    static DWORD WINAPI Run(void* self) noexcept
    {
        auto* const page = static_cast<ShownPage*>(self);
        if (FAILED(::OleInitialize(nullptr)))
        {
            return 1;
        }
        Reporter reporter(ReportStyle::Plain,
                          {[page](const std::string& line) { page->warnings.push_back(line); },
                           [] { return 0.0; }, [] { return 80; }});
        try
        {
            RunCommand(page->m_command, reporter);
        }
        catch (const HostError& error)
        {
            page->m_error = error.what();
        }
        ::OleUninitialize();
        return 0;
    }

    PageCommand m_command;
    std::string m_error; // after m_thread ended
    HWND m_window = nullptr;
    HANDLE m_thread = nullptr;
    DWORD m_threadId = 0;
};

class PageCommands : public testing::Test
{
protected:
    PageCommands()
    {
        EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        Image grey{64, 32, SampleType::Byte, false, {64 * 32 * 4, std::byte{}}};
        for (std::size_t i = 0; i < grey.pixels.size(); ++i)
        {
            grey.pixels[i] = std::byte{i % 4 == 3 ? std::uint8_t{255} : std::uint8_t{80}};
        }
        WritePicture(m_folder / kPicture, grey);
        m_folder.Put("red.cc", "<ColorCorrection id=\"a\"><SOPNode><Slope>2 1 1</Slope><Offset>0 0 "
                               "0</Offset><Power>1 1 1</Power></SOPNode></ColorCorrection>");
        m_command.image = m_folder / kPicture;
        m_command.look = m_folder / "red.cc";
    }

    ~PageCommands() override { ::CoUninitialize(); }

    static std::wstring Clipboard()
    {
        std::optional<std::wstring> text;
        EXPECT_TRUE(Eventually([&] { return (text = TextOnClipboard(nullptr)).has_value(); }));
        return text.value_or(L"");
    }
    // What the button copies. Who looks into the clipboard meanwhile keeps the program out of it.
    static std::wstring CopiedCommand(const ShownPage& shown)
    {
        const DWORD before = ::GetClipboardSequenceNumber();
        shown.Press(kCopyCommandId);
        EXPECT_TRUE(Eventually([&] { return ::GetClipboardSequenceNumber() != before; }));
        EXPECT_TRUE(Eventually([&] { return shown.Status().starts_with(L"Command copied"); }));
        return Clipboard();
    }
    // Renders as the copied command says.
    static Image RepeatedPicture(const std::wstring& text, const std::string& output)
    {
        int count = 0;
        wchar_t** const words = ::CommandLineToArgvW(text.c_str(), &count);
        std::vector<std::string> arguments;
        for (int i = 1; i < count; ++i)
        {
            arguments.push_back(Utf8(words[i]));
        }
        ::LocalFree(words);
        const auto render = std::get<RenderCommand>(ParseCommandLine(arguments));
        EXPECT_EQ(render.sink.path, output);
        RendererLibrary renderer(ProgramFolder());
        PluginModule plugin(ProgramFolder() + "\\" + kPluginFileName);
        EffectSession session(plugin);
        RendererLook look = renderer.ImportLook(*render.look, RendererAPI::kImportRecord);
        EffectControls(session.Effect(), {}).LoadLook(look.record);
        Image graded;
        session.Render(ReadPicture(render.source.path), graded, {});
        return graded;
    }

    ScratchFolder m_folder;
    PageCommand m_command;
};

const std::wstring kTitle = L"gr\u00E4y & co.png, red.cc \u2013 Brellin Glazel";
constexpr int kPictureX = 240; // in the middle of a picture that is narrower than the window
constexpr int kPictureY = 45;  // and lower than the room for it

} // namespace

TEST_F(PageCommands, ShowThePictureGradedAndThePageBelowIt)
{
    ShownPage shown(m_command);
    ASSERT_NE(shown.Window(), nullptr) << shown.Error();
    EXPECT_EQ(shown.PixelAt(kPictureX, kPictureY), RGB(160, 80, 80)) << "red is doubled";
    RECT page{};
    ::GetWindowRect(shown.Page(), &page);
    ::MapWindowPoints(nullptr, shown.Window(), reinterpret_cast<POINT*>(&page), 2);
    EXPECT_EQ(page.top, 90) << "right below the picture's room";
    EXPECT_EQ(shown.Title(), kTitle);
    EXPECT_EQ(shown.Close(), "");
    EXPECT_TRUE(shown.warnings.empty());
}

TEST_F(PageCommands, KeepThePageBelowThePictureWhenTheWindowGrows)
{
    ShownPage shown(m_command);
    ASSERT_NE(shown.Window(), nullptr) << shown.Error();
    ::SetWindowPos(shown.Window(), nullptr, 0, 0, 900, 700, SWP_NOMOVE | SWP_NOZORDER);
    shown.WaitForPaint();
    RECT client{};
    ::GetClientRect(shown.Window(), &client);
    RECT page{};
    ::GetClientRect(shown.Page(), &page);
    EXPECT_EQ(page.right, client.right);
    const WindowLayout layout =
        LayoutOf({client.right, client.bottom}, PartHeights{static_cast<int>(page.bottom)});
    EXPECT_EQ(shown.PixelAt(client.right / 2, layout.picture.height / 2), RGB(160, 80, 80));
    EXPECT_EQ(shown.PixelAt(1, 1), RGB(32, 32, 32)) << "around the picture";
}

TEST_F(PageCommands, RenderAnewWhenTheEditorIsAcceptedAndSaveTheLook)
{
    m_command.savedLook = m_folder / "mine.look";
    ShownPage shown(m_command);
    ASSERT_NE(shown.Window(), nullptr) << shown.Error();
    shown.ClickPage(kOnEdit);
    {
        const ShownEditor editor(shown.Thread());
        ASSERT_NE(editor.Window(), nullptr);
        editor.Type(Control::SlopeRed, L"1");
        editor.Type(Control::SlopeBlue, L"2");
        editor.Click(IDOK);
    }
    EXPECT_TRUE(Eventually([&] { return shown.PixelAt(kPictureX, kPictureY) == RGB(80, 80, 160); }))
        << std::hex << shown.PixelAt(kPictureX, kPictureY);
    const std::wstring command = CopiedCommand(shown);
    EXPECT_NE(shown.Status().find(L"mine.look"), std::wstring::npos);
    const Image repeated = RepeatedPicture(command, m_folder / kGraded);
    EXPECT_EQ(repeated.pixels[0], std::byte{160});
    EXPECT_EQ(repeated.pixels[2], std::byte{80});
    EXPECT_EQ(shown.Close(), "");
    EXPECT_TRUE(std::filesystem::exists(m_folder / "mine.look"));
}

TEST_F(PageCommands, CopyTheLooksOwnFileWhileItIsUnchanged)
{
    ShownPage shown(m_command);
    ASSERT_NE(shown.Window(), nullptr) << shown.Error();
    const Image repeated = RepeatedPicture(CopiedCommand(shown), m_folder / kGraded);
    EXPECT_NE(shown.Status().find(L"red.cc"), std::wstring::npos);
    EXPECT_EQ(repeated.pixels[2], std::byte{160});
    shown.ClickPage(kOnCheckBox);
    EXPECT_NE(CopiedCommand(shown).find(L"--linear off"), std::wstring::npos);
    // The option was changed and nothing says where to keep it: the user is asked.
    ::PostMessageW(shown.Window(), WM_CLOSE, 0, 0);
    shown.Answer(IDCANCEL);
    EXPECT_FALSE(shown.HasEnded());
    ::PostMessageW(shown.Window(), WM_CLOSE, 0, 0);
    shown.Answer(IDNO);
    EXPECT_EQ(shown.Error(), "");
}

TEST_F(PageCommands, CopyWhenAnotherProgramIsDoneWithTheClipboard)
{
    ShownPage shown(m_command);
    ASSERT_NE(shown.Window(), nullptr) << shown.Error();
    const DWORD before = ::GetClipboardSequenceNumber();
    ASSERT_TRUE(Eventually([] { return ::OpenClipboard(nullptr) != FALSE; }));
    shown.Press(kCopyCommandId);
    const ULONGLONG start = ::GetTickCount64();
    EXPECT_TRUE(Eventually([&] { return ::GetTickCount64() > start + 100; })) << "so long it reads";
    EXPECT_EQ(::GetClipboardSequenceNumber(), before);
    ::CloseClipboard();
    EXPECT_TRUE(Eventually([&] { return shown.Status().starts_with(L"Command copied"); }));
    EXPECT_NE(::GetClipboardSequenceNumber(), before);
    EXPECT_EQ(shown.Close(), "");
}

TEST_F(PageCommands, CopyALineForTheShellThatStartedTheProgram)
{
    ::SetEnvironmentVariableW(L"GLAZEL_COMMAND", L"./glazel");
    std::wstring line;
    {
        ShownPage shown(m_command);
        ASSERT_NE(shown.Window(), nullptr) << shown.Error();
        line = CopiedCommand(shown);
        EXPECT_EQ(shown.Close(), "");
    }
    ::SetEnvironmentVariableW(L"GLAZEL_COMMAND", nullptr);
    if (UnixPath(m_folder / "red.cc") == m_folder / "red.cc")
    {
        GTEST_SKIP() << "there are no such shells here";
    }
    EXPECT_TRUE(line.starts_with(L"./glazel render '/")) << Utf8(line);
    EXPECT_NE(line.find(L"/gr\u00E4y & co.png' '/"), std::wstring::npos) << Utf8(line);
    EXPECT_EQ(line.find(L'\\'), std::wstring::npos) << Utf8(line);
}

TEST_F(PageCommands, StepThroughASequenceFromTheFrameThatWasNamed)
{
    for (const int number : {7, 8, 10, 11})
    {
        Image grey{64, number == 11 ? 16 : 32, SampleType::Byte, false, {}};
        grey.pixels.resize(static_cast<std::size_t>(grey.width) *
                           static_cast<std::size_t>(grey.height) * 4);
        std::fill(grey.pixels.begin(), grey.pixels.end(), static_cast<std::byte>(number * 8));
        WritePicture(m_folder / ("shot_" + std::to_string(number) + ".png"), grey);
    }
    m_command.image = m_folder / "shot_%d.png";
    m_command.frame = 8;
    ShownPage shown(m_command);
    ASSERT_NE(shown.Window(), nullptr) << shown.Error();
    const auto shows = [&shown](int number) {
        const int code = number * 8;
        const std::wstring name = L"shot_" + std::to_wstring(number) + L".png, red.cc";
        return Eventually([&] {
            return shown.Title().starts_with(name) &&
                   shown.PixelAt(kPictureX, kPictureY) == RGB(2 * code, code, code);
        });
    };
    const auto tells = [&shown](const wchar_t* words) {
        return Eventually([&] { return shown.Status().find(words) != std::wstring::npos; });
    };
    EXPECT_TRUE(shows(8));
    shown.PressKey(VK_NEXT);
    EXPECT_TRUE(shows(10)) << "the next that is there";
    EXPECT_TRUE(tells(L"shot_9.png")) << "and which is not";
    shown.PressKey(VK_NEXT);
    EXPECT_TRUE(shows(11)) << "which has another size";
    shown.PressKey(VK_NEXT);
    EXPECT_TRUE(tells(L"last picture"));
    shown.PressKey(VK_HOME);
    EXPECT_TRUE(shows(7));
    shown.PressKey(VK_PRIOR);
    EXPECT_TRUE(tells(L"first picture"));
    shown.PressKey(VK_END);
    EXPECT_TRUE(shows(11));
    shown.PressKey(VK_PRIOR);
    EXPECT_TRUE(shows(10));
    EXPECT_NE(CopiedCommand(shown).find(L"--frames 10"), std::wstring::npos);
    EXPECT_EQ(shown.Close(), "");
}

TEST_F(PageCommands, NameTheLookInTheTitleAsLongAsAFileHoldsIt)
{
    ShownPage shown(m_command);
    ASSERT_NE(shown.Window(), nullptr) << shown.Error();
    shown.ClickPage(kOnEdit);
    {
        const ShownEditor editor(shown.Thread());
        ASSERT_NE(editor.Window(), nullptr);
        editor.Type(Control::SlopeRed, L"1");
        editor.Click(IDOK);
    }
    const auto names = [&shown](const wchar_t* look) {
        return Eventually([&] { return shown.Title().find(look) != std::wstring::npos; });
    };
    EXPECT_TRUE(names(L", changed look"));
    shown.Press(kSaveLookId);
    shown.NameFile(m_folder / "kept.look");
    EXPECT_TRUE(names(L", kept.look"));
    EXPECT_EQ(shown.Close(), "");
}

TEST_F(PageCommands, SayWhatTheCheckBoxDoesAndHaveItInTheCommand)
{
    ShownPage inBytes(m_command);
    EXPECT_NE(inBytes.Status().find(L"does nothing here"), std::wstring::npos);
    EXPECT_EQ(inBytes.Close(), "");

    m_command.depth = SampleType::Float;
    ShownPage shown(m_command);
    ASSERT_NE(shown.Window(), nullptr) << shown.Error();
    EXPECT_NE(shown.Status().find(L"which this picture is not"), std::wstring::npos);
    EXPECT_NE(CopiedCommand(shown).find(L"--linear on"), std::wstring::npos)
        << "a render alone would go by the picture";
    shown.ClickPage(kOnCheckBox);
    EXPECT_TRUE(
        Eventually([&] { return shown.Status().find(L"not as linear") != std::wstring::npos; }));
    shown.ClickPage(kOnCheckBox);
    EXPECT_EQ(shown.Close(), "");
}

TEST_F(PageCommands, AskForAFileWhenAChangedLookWouldBeLost)
{
    ShownPage shown(m_command);
    ASSERT_NE(shown.Window(), nullptr) << shown.Error();
    shown.ClickPage(kOnCheckBox);
    ::PostMessageW(shown.Window(), WM_CLOSE, 0, 0);
    shown.Answer(IDYES);
    shown.NameFile(m_folder / "kept.look");
    EXPECT_EQ(shown.Error(), "");
    EXPECT_TRUE(std::filesystem::exists(m_folder / "kept.look"));
}

TEST_F(PageCommands, ATestChartHasNoCommand)
{
    m_command = {};
    ShownPage shown(m_command);
    ASSERT_NE(shown.Window(), nullptr) << shown.Error();
    EXPECT_FALSE(::IsWindowEnabled(::GetDlgItem(shown.Window(), kCopyCommandId)));
    EXPECT_NE(shown.Status().find(L"--image"), std::wstring::npos);
    shown.Press(kSaveLookId);
    EXPECT_TRUE(Eventually([&] { return shown.Status().find(L"no look") != std::wstring::npos; }));
    EXPECT_EQ(shown.Close(), "");
}

TEST_F(PageCommands, SayThatThereWasNoLookToSave)
{
    m_command.look.reset();
    m_command.savedLook = m_folder / "none.look";
    ShownPage shown(m_command);
    ASSERT_NE(shown.Window(), nullptr) << shown.Error();
    EXPECT_NE(shown.Close().find("no look was made"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(m_folder / "none.look"));
}

TEST_F(PageCommands, AskForAnotherFileWhenTheLookCannotBeSaved)
{
    m_command.savedLook = m_folder / "mine.look";
    ShownPage shown(m_command);
    ASSERT_NE(shown.Window(), nullptr) << shown.Error();
    m_folder.Put("mine.look", "somebody else's, which came meanwhile");
    ::PostMessageW(shown.Window(), WM_CLOSE, 0, 0);
    shown.Answer(IDCANCEL);
    EXPECT_FALSE(shown.HasEnded());
    ::PostMessageW(shown.Window(), WM_CLOSE, 0, 0);
    shown.Answer(IDYES);
    shown.NameFile(m_folder / "elsewhere.look");
    EXPECT_NE(shown.Error().find("mine.look"), std::string::npos) << "it has not got the look";
    EXPECT_TRUE(std::filesystem::exists(m_folder / "elsewhere.look"));
}

TEST_F(PageCommands, DoNotCloseUnderTheOpenEditor)
{
    m_command.savedLook = m_folder / "mine.look";
    ShownPage shown(m_command);
    ASSERT_NE(shown.Window(), nullptr) << shown.Error();
    shown.ClickPage(kOnEdit);
    {
        const ShownEditor editor(shown.Thread());
        ASSERT_NE(editor.Window(), nullptr);
        // It is visible before it has taken the focus, and disables its host after that.
        ASSERT_TRUE(Eventually([&] { return !::IsWindowEnabled(shown.Window()); }));
        EXPECT_EQ(::SendMessageW(shown.Window(), WM_QUERYENDSESSION, 0, 0), FALSE);
        ::SetForegroundWindow(shown.Window()); // as Alt+Tab may do
        EXPECT_TRUE(Eventually([&] { return FrontWindowOf(shown.Thread()) == shown.Window(); }));
        EXPECT_TRUE(PageWindow::AskToClose());
        EXPECT_TRUE(Eventually([&] { return FrontWindowOf(shown.Thread()) == editor.Window(); }))
            << "what the user is to close first is in front";
        editor.Type(Control::SlopeBlue, L"2");
        editor.Click(IDOK);
    }
    EXPECT_TRUE(
        Eventually([&] { return shown.PixelAt(kPictureX, kPictureY) == RGB(160, 80, 160); }));
    EXPECT_EQ(::SendMessageW(shown.Window(), WM_QUERYENDSESSION, 0, 0), TRUE);
    EXPECT_TRUE(std::filesystem::exists(m_folder / "mine.look")) << "saved before the session ends";
    EXPECT_TRUE(PageWindow::AskToClose());
    EXPECT_EQ(shown.Error(), "");
    EXPECT_FALSE(PageWindow::AskToClose()) << "none is open";
}

TEST_F(PageCommands, LeaveNothingBehindWhenTheWindowShrinks)
{
    ShownPage shown(m_command);
    ASSERT_NE(shown.Window(), nullptr) << shown.Error();
    for (const SIZE size : {SIZE{900, 700}, SIZE{1200, 400}, SIZE{520, 300}, SIZE{10, 10}})
    {
        ::SetWindowPos(shown.Window(), nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER);
        shown.WaitForPaint();
        const Picture seen = ScreenOf(shown.Page());
        ::InvalidateRect(shown.Page(), nullptr, FALSE);
        shown.WaitForPaint();
        EXPECT_EQ(FirstDifference(seen, ScreenOf(shown.Page())), "") << size.cx << " x " << size.cy;
    }
    RECT client{};
    ::GetClientRect(shown.Window(), &client);
    RECT page{};
    ::GetClientRect(shown.Page(), &page);
    const Geometry::Extent least = LeastClient(PartHeights{static_cast<int>(page.bottom)});
    EXPECT_EQ(client.right, least.width) << "it does not get smaller than that";
    EXPECT_EQ(client.bottom, least.height);
}

TEST_F(PageCommands, FailBeforeAnyWindowWhenTheyCannotSucceed)
{
    const auto errorOf = [](const PageCommand& command) {
        ShownPage shown(command);
        EXPECT_EQ(shown.Window(), nullptr);
        return shown.Error();
    };
    PageCommand noImage = m_command;
    noImage.image = m_folder / "missing.png";
    EXPECT_NE(errorOf(noImage).find("missing.png"), std::string::npos);
    PageCommand noFrame = m_command;
    noFrame.frame = 2;
    EXPECT_NE(errorOf(noFrame).find("it has no frame 2"), std::string::npos);
    PageCommand raw = m_command;
    for (const char* name : {"frames.BGRA", "frames.raw"})
    {
        raw.image = m_folder / name;
        EXPECT_NE(errorOf(raw).find("how large"), std::string::npos) << name;
    }
    PageCommand noLook = m_command;
    noLook.look = m_folder / "missing.cube";
    EXPECT_NE(errorOf(noLook).find("missing.cube"), std::string::npos);
    m_folder.Put("there.look", "");
    PageCommand taken = m_command;
    taken.savedLook = m_folder / "there.look";
    EXPECT_NE(errorOf(taken).find("there.look"), std::string::npos);
    PageCommand noPlugin = m_command;
    noPlugin.tools.plugin = m_folder / "none.dll";
    EXPECT_NE(errorOf(noPlugin).find("none.dll"), std::string::npos);
}

} // namespace GlazelHost
