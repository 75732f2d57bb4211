// The editor as a window: modal, keyboard, sizes, resolutions, and what it gives back.
#include "tests/reference_renderer/editor/editor_fixture.h"

#include "reference_renderer/editor/editor_layout.h"
#include "tests/reference_renderer/core/look_fixtures.h"
#include "tests/reference_renderer/editor/gui_objects.h"

#include <array>
#include <cstdlib>

namespace ReferenceRenderer
{

namespace
{

class EditorWindowTest : public EditorTest
{
protected:
    std::int32_t Show() { return m_library.doModalUI2(&m_preview, nullptr, 0, 0); }
};

HWND MakeHostWindow()
{
    return ::CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 200,
                             100, nullptr, nullptr, nullptr, nullptr);
}

void Drain()
{
    MSG message{};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
    {
        ::DispatchMessageW(&message);
    }
}

TEST_F(EditorWindowTest, EscapeCancelsAndEnterAccepts)
{
    OpenEditor cancelled = Open();
    cancelled.PostKey(VK_ESCAPE);
    EXPECT_EQ(cancelled.Result(), 0);
    OpenEditor accepted = Open();
    accepted.PostKey(VK_RETURN);
    EXPECT_EQ(accepted.Result(), RendererAPI::kEditorAccepted);
}

TEST_F(EditorWindowTest, EnterInANumberBoxAcceptsTheNumber)
{
    OpenEditor editor = Open();
    editor.Type(Control::PowerBlue, L"1.75");
    editor.PostKey(VK_RETURN);
    EXPECT_EQ(editor.Result(), RendererAPI::kEditorAccepted);
    EXPECT_EQ(Produced()->cdl.power[2], 1.75F);
}

TEST_F(EditorWindowTest, ClosingTheWindowCancels)
{
    OpenEditor editor = Open();
    ::PostMessageW(editor.Window(), WM_CLOSE, 0, 0);
    EXPECT_EQ(editor.Result(), 0);
}

TEST_F(EditorWindowTest, TabGoesThroughSlidersAndNumbersInTheOrderOfTheWindow)
{
    OpenEditor editor = Open();
    ASSERT_TRUE(Eventually([&] { return editor.Focus() == editor.Slider(Control::SlopeRed); }));
    std::vector<HWND> expected;
    for (const ControlFacts& facts : kControls)
    {
        if (facts.control != Control::Strength && IsIn(facts.step, View::Cdl)) // without tables
        {
            expected.push_back(editor.Slider(facts.control));
            expected.push_back(editor.Number(facts.control));
        }
        for (std::size_t i = 0; i < kPadCount; ++i)
        {
            if (LastOf(kPads[i]) == facts.control && IsIn(facts.step, View::Cdl))
            {
                expected.push_back(editor.Pad(i));
            }
        }
    }
    for (const int id :
         {IDC_IMPORT, IDC_RECENT, IDC_EXPORT, IDC_SHOW_GRADED, IDC_SHOW_SPLIT, IDC_SHOW_ORIGINAL,
          IDC_STORE_STATE, IDOK, IDCANCEL, IDC_PICTURE, IDC_VIEW, IDC_VIEW + 1, IDC_VIEW + 2})
    {
        expected.push_back(editor.Child(id));
    }
    for (std::size_t i = 1; i <= expected.size(); ++i)
    {
        const HWND next = expected[i % expected.size()];
        editor.PostKey(VK_TAB);
        ASSERT_TRUE(Eventually([&] { return editor.Focus() == next; })) << "step " << i;
    }
}

TEST_F(EditorWindowTest, EnterOnAButtonPressesThatButton)
{
    OpenEditor editor = Open(RecordOf(CubeLook(CubeOf(2, Inverted))));
    editor.Type(Control::Strength, L"0.5"); // the box before the buttons
    editor.PostKey(VK_TAB);
    for (const int id : {IDC_IMPORT, IDC_RECENT, IDC_EXPORT, IDC_REMOVE_TABLES})
    {
        ASSERT_TRUE(Eventually([&] { return editor.Focus() == editor.Child(id); }));
        editor.PostKey(id == IDC_REMOVE_TABLES ? VK_RETURN : VK_TAB);
    }
    EXPECT_TRUE(Eventually([&] { return editor.Status() == L"The LUT is removed"; }));
    EXPECT_TRUE(::IsWindow(editor.Window()));
    EXPECT_TRUE(Eventually([&] { return ::IsWindowEnabled(editor.Focus()) != FALSE; }))
        << "the keyboard is not left on a button that is off";
}

TEST_F(EditorWindowTest, AltWithTheUnderlinedLetterPressesAButton)
{
    OpenEditor editor = Open();
    editor.Type(Control::SlopeRed, L"0");
    constexpr LPARAM kAltIsDown = LPARAM{1} << 29;
    ::PostMessageW(editor.Focus(), WM_SYSCHAR, 'o', kAltIsDown);
    EXPECT_TRUE(Eventually([&] { return PixelShown(editor, 0.5, 0.5) == RGB(128, 128, 128); }));
}

TEST_F(EditorWindowTest, AltWithTheUnderlinedLetterOfAHeadingLeadsToItsFirstSlider)
{
    OpenEditor editor = Open(RecordOf(CubeLook(CubeOf(2, Inverted))));
    constexpr LPARAM kAltIsDown = LPARAM{1} << 29;
    const std::pair<WPARAM, Control> ways[] = {{'f', Control::OffsetRed},
                                               {'p', Control::PowerRed},
                                               {'u', Control::Saturation},
                                               {'t', Control::Strength},
                                               {'l', Control::SlopeRed}};
    editor.Type(Control::PowerBlue, L"1.5"); // from a box that takes letters itself too
    for (const auto& [letter, control] : ways)
    {
        ::PostMessageW(editor.Focus(), WM_SYSCHAR, letter, kAltIsDown);
        EXPECT_TRUE(Eventually([&] { return editor.Focus() == editor.Slider(control); }))
            << static_cast<char>(letter);
    }
}

TEST_F(EditorWindowTest, OnASliderTheLetterAloneWillDo)
{
    OpenEditor editor = Open();
    editor.SlideKey(Control::SlopeRed, VK_HOME);
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(0, 128, 128));
    ASSERT_TRUE(Eventually([&] { return editor.Focus() == editor.Slider(Control::SlopeRed); }));
    ::PostMessageW(editor.Focus(), WM_CHAR, 'o', 0);
    EXPECT_TRUE(Eventually([&] { return PixelShown(editor, 0.5, 0.5) == RGB(128, 128, 128); }));
    ::PostMessageW(editor.Focus(), WM_CHAR, 'g', 0);
    EXPECT_TRUE(Eventually([&] { return PixelShown(editor, 0.5, 0.5) == RGB(0, 128, 128); }));
}

TEST_F(EditorWindowTest, FollowsEachDisplayAndLeavesTheHostsThreadAsItWas)
{
    DPI_AWARENESS_CONTEXT after = nullptr;
    OpenEditor editor([&] {
        ::SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_UNAWARE);
        const std::int32_t result = Show();
        after = ::GetThreadDpiAwarenessContext();
        return result;
    });
    ASSERT_NE(editor.Window(), nullptr);
    EXPECT_EQ(
        ::GetAwarenessFromDpiAwarenessContext(::GetWindowDpiAwarenessContext(editor.Window())),
        DPI_AWARENESS_PER_MONITOR_AWARE);
    EXPECT_EQ(editor.CloseWith(IDCANCEL), 0);
    EXPECT_EQ(::GetAwarenessFromDpiAwarenessContext(after), DPI_AWARENESS_UNAWARE);
}

TEST_F(EditorWindowTest, TheActiveWindowIsDisabledMeanwhileAndActiveAgainAfterwards)
{
    HWND host = nullptr;
    bool enabledAfter = false;
    bool activeAfter = false;
    OpenEditor editor([&] {
        host = MakeHostWindow();
        ::SetActiveWindow(host);
        const std::int32_t result = Show();
        enabledAfter = ::IsWindowEnabled(host) != FALSE;
        activeAfter = ::GetActiveWindow() == host;
        ::DestroyWindow(host);
        return result;
    });
    ASSERT_NE(editor.Window(), nullptr);
    EXPECT_FALSE(::IsWindowEnabled(host));
    EXPECT_EQ(editor.CloseWith(IDCANCEL), 0);
    EXPECT_TRUE(enabledAfter);
    EXPECT_TRUE(activeAfter);
}

TEST_F(EditorWindowTest, TheHostIsActiveAfterwardsWhateverWindowStandsBetween)
{
    HWND host = nullptr;
    bool activeAfter = false;
    OpenEditor editor([&] {
        host = MakeHostWindow();
        ::SetActiveWindow(host);
        const std::int32_t result = Show();
        activeAfter = ::GetActiveWindow() == host;
        ::DestroyWindow(host);
        return result;
    });
    ASSERT_NE(editor.Window(), nullptr);
    const HWND other = MakeHostWindow(); // of this thread
    ::SetForegroundWindow(editor.Window());
    ::SetWindowPos(other, editor.Window(), 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    EXPECT_EQ(::GetWindow(editor.Window(), GW_HWNDNEXT), other);
    EXPECT_EQ(editor.CloseWith(IDCANCEL), 0);
    EXPECT_TRUE(activeAfter);
    ::DestroyWindow(other);
}

TEST_F(EditorWindowTest, AHostWindowThatWasDisabledBeforeStaysSo)
{
    bool enabledAfter = true;
    OpenEditor editor([&] {
        const HWND host = MakeHostWindow();
        ::SetActiveWindow(host);
        ::EnableWindow(host, FALSE);
        const std::int32_t result = Show();
        enabledAfter = ::IsWindowEnabled(host) != FALSE;
        ::DestroyWindow(host);
        return result;
    });
    EXPECT_EQ(editor.CloseWith(IDCANCEL), 0);
    EXPECT_FALSE(enabledAfter);
}

TEST_F(EditorWindowTest, AHostWindowThatIsGoneMeanwhileDoesNoHarm)
{
    HWND host = nullptr;
    OpenEditor editor([&] {
        host = MakeHostWindow();
        ::SetActiveWindow(host);
        return Show();
    });
    ASSERT_NE(editor.Window(), nullptr);
    ::PostMessageW(host, WM_CLOSE, 0, 0); // its window procedure destroys it
    EXPECT_TRUE(Eventually([&] { return !::IsWindow(host); }));
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
}

TEST_F(EditorWindowTest, TheHostsWishToQuitEndsTheEditorAndIsPassedOn)
{
    bool quitSeen = false;
    OpenEditor editor([&] {
        const std::int32_t result = Show();
        MSG message{};
        quitSeen = ::GetMessageW(&message, nullptr, 0, 0) == 0 && message.wParam == 42;
        return result;
    });
    ASSERT_NE(editor.Window(), nullptr);
    ::PostThreadMessageW(editor.Thread(), WM_QUIT, 42, 0);
    EXPECT_EQ(editor.Result(), 0);
    EXPECT_TRUE(quitSeen);
}

TEST_F(EditorWindowTest, AWindowThatSomebodyElseDestroysCountsAsCancelled)
{
    constexpr UINT kDestroy = WM_APP + 1;
    OpenEditor editor([&] {
        // A window of the same thread that destroys the editor when it is told to.
        const HWND other = MakeHostWindow();
        ::SetWindowLongPtrW(
            other, GWLP_WNDPROC,
            reinterpret_cast<LONG_PTR>(+[](HWND window, UINT message, WPARAM w, LPARAM l) {
                return message == kDestroy ? ::DestroyWindow(reinterpret_cast<HWND>(w))
                                           : ::DefWindowProcW(window, message, w, l);
            }));
        const std::int32_t result = Show();
        ::DestroyWindow(other);
        return result;
    });
    ASSERT_NE(editor.Window(), nullptr);
    HWND other = nullptr;
    ::EnumThreadWindows(
        editor.Thread(),
        [](HWND window, LPARAM found) {
            std::array<wchar_t, 16> text{};
            ::GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
            if (std::wstring(text.data()) == L"host")
            {
                *reinterpret_cast<HWND*>(found) = window;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&other));
    ::PostMessageW(other, kDestroy, reinterpret_cast<WPARAM>(editor.Window()), 0);
    EXPECT_EQ(editor.Result(), 0);
}

TEST_F(EditorWindowTest, CannotBeMadeSmallerThanItsContentsNeed)
{
    OpenEditor editor = Open();
    editor.Resize(100, 100);
    RECT client{};
    ::GetClientRect(editor.Window(), &client);
    const Geometry::Extent smallest = SmallestClient(96);
    EXPECT_GE(client.right, smallest.width);
    EXPECT_GE(client.bottom, smallest.height);
    const RECT accept = editor.AreaOf(editor.Child(IDOK));
    EXPECT_LE(accept.right, client.right);
    EXPECT_LE(accept.bottom, client.bottom);
}

TEST_F(EditorWindowTest, ThePictureGrowsAndShrinksWithTheWindow)
{
    OpenEditor editor = Open(RecordOf(CubeLook(CubeOf(2, Inverted))));
    editor.Type(Control::SlopeRed, L"0");
    const RECT before = editor.AreaOf(editor.Child(IDC_PICTURE));
    editor.Resize(1270, 1000);
    const RECT large = editor.AreaOf(editor.Child(IDC_PICTURE));
    EXPECT_GT(large.bottom - large.top, before.bottom - before.top);
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(255, 127, 127));
    editor.Resize(0, 0);
    const RECT small = editor.AreaOf(editor.Child(IDC_PICTURE));
    EXPECT_LT(small.right - small.left, before.right - before.left);
    EXPECT_EQ(PixelShown(editor, 0.5, 0.5), RGB(255, 127, 127));
}

TEST_F(EditorWindowTest, FollowsTheResolutionOfTheDisplayItIsMovedTo)
{
    OpenEditor editor = Open();
    RECT place{0, 0, 1260, 1000};
    ::SendMessageW(editor.Window(), WM_DPICHANGED, MAKEWPARAM(144, 144),
                   reinterpret_cast<LPARAM>(&place));
    RECT client{};
    ::GetClientRect(editor.Window(), &client);
    const EditorLayout layout = LayoutOf({client.right, client.bottom}, 144, View::Cdl);
    const RECT slider = editor.AreaOf(editor.Slider(Control::PowerGreen));
    const Geometry::Rect& expected = layout.controls[IndexOf(Control::PowerGreen)].slider;
    EXPECT_EQ(slider.left, expected.left);
    EXPECT_EQ(slider.top, expected.top);
    EXPECT_EQ(slider.right - slider.left, expected.width);
    const auto font =
        reinterpret_cast<HFONT>(::SendMessageW(editor.Number(Control::SlopeRed), WM_GETFONT, 0, 0));
    LOGFONTW facts{};
    EXPECT_NE(::GetObjectW(font, sizeof facts, &facts), 0) << "the font that it has still exists";
    EXPECT_EQ(facts.lfHeight, -18) << "9 points";
}

TEST_F(EditorWindowTest, TakesOverTheColoursThatTheUserChoosesMeanwhile)
{
    OpenEditor editor = Open();
    ::SendMessageW(editor.Window(), WM_SYSCOLORCHANGE, 0, 0); // what there is may be the same
    const GuiObjects before = CountGuiObjects();
    for (int i = 0; i < 20; ++i)
    {
        ::SendMessageW(editor.Window(), i % 2 == 0 ? WM_SYSCOLORCHANGE : WM_SETTINGCHANGE, 0, 0);
    }
    EXPECT_TRUE(Eventually([&] { return CountGuiObjects() == before; })) << "it paints meanwhile";
    const auto font =
        reinterpret_cast<HFONT>(::SendMessageW(editor.Number(Control::SlopeRed), WM_GETFONT, 0, 0));
    LOGFONTW facts{};
    EXPECT_NE(::GetObjectW(font, sizeof facts, &facts), 0) << "the font that it has still exists";
}

// Tells the editor that its thread is making of another resolution while it has no controls yet, as
// the system does when it comes to another display; once, and for as long as this lives.
class EarlyResolution
{
public:
    EarlyResolution()
        : m_hook(::SetWindowsHookExW(WH_CALLWNDPROC, Watch, nullptr, ::GetCurrentThreadId()))
    {
        told = repainted = false;
        host = MakeHostWindow();
    }
    ~EarlyResolution()
    {
        ::UnhookWindowsHookEx(m_hook);
        ::DestroyWindow(host);
    }
    EarlyResolution(const EarlyResolution&) = delete;
    EarlyResolution& operator=(const EarlyResolution&) = delete;

    static thread_local bool told;
    static thread_local bool repainted; // a window that has nothing to do with it

private:
    static LRESULT CALLBACK Watch(int code, WPARAM wParam, LPARAM lParam) noexcept
    {
        const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lParam);
        std::array<wchar_t, 64> name{};
        ::GetClassNameW(sent.hwnd, name.data(), static_cast<int>(name.size()));
        if (code == HC_ACTION && !told && sent.message == WM_WINDOWPOSCHANGED &&
            std::wstring(name.data()) == EDITOR_CLASS &&
            ::GetWindow(sent.hwnd, GW_CHILD) == nullptr)
        {
            told = true;
            ::ValidateRect(host, nullptr);
            RECT place{0, 0, 1260, 1000};
            ::SendMessageW(sent.hwnd, WM_DPICHANGED, MAKEWPARAM(144, 144),
                           reinterpret_cast<LPARAM>(&place));
            repainted = ::GetUpdateRect(host, nullptr, FALSE) != FALSE;
        }
        return ::CallNextHookEx(nullptr, code, wParam, lParam);
    }

    static thread_local HWND host;
    HHOOK m_hook;
};

thread_local bool EarlyResolution::told = false;
thread_local bool EarlyResolution::repainted = false;
thread_local HWND EarlyResolution::host = nullptr;

TEST_F(EditorWindowTest, AResolutionThatComesBeforeTheControlsLeavesOtherWindowsAlone)
{
    bool told = false;
    bool repainted = true;
    OpenEditor editor([&] {
        const EarlyResolution early;
        const std::int32_t result = Show();
        told = EarlyResolution::told;
        repainted = EarlyResolution::repainted;
        return result;
    });
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_TRUE(told);
    EXPECT_FALSE(repainted);
}

TEST_F(EditorWindowTest, TwoEditorsAreOpenAtOnceWithoutKnowingOfEachOther)
{
    OpenEditor first = Open();
    OpenEditor second = Open();
    first.Type(Control::SlopeRed, L"1.5");
    EXPECT_EQ(second.NumberText(Control::SlopeRed), "1.000");
    EXPECT_EQ(second.CloseWith(IDCANCEL), 0);
    EXPECT_EQ(first.CloseWith(IDOK), RendererAPI::kEditorAccepted);
    EXPECT_EQ(Produced()->cdl.slope[0], 1.5F);
}

// Refuses the window number `countdown` that its thread is about to make; 0 = none.
thread_local int countdown = 0;

LRESULT CALLBACK RefuseOne(int code, WPARAM wParam, LPARAM lParam) noexcept
{
    if (code == HCBT_CREATEWND && countdown > 0 && --countdown == 0)
    {
        return 1;
    }
    return ::CallNextHookEx(nullptr, code, wParam, lParam);
}

TEST_F(EditorWindowTest, AWindowThatTheSystemRefusesMakesTheEditorUnavailable)
{
    const HHOOK hook = ::SetWindowsHookExW(WH_CBT, RefuseOne, nullptr, ::GetCurrentThreadId());
    ASSERT_NE(hook, nullptr);
    const HWND host = MakeHostWindow();
    ::SetActiveWindow(host);
    Open().CloseWith(IDCANCEL); // what the system makes at first use it keeps
    // The window itself, a slider, a number and a reset button for each control, headings, pads,
    // views, thirteen more controls, the picture; the scopes' buttons, the line for a pixel, the
    // tips and the scope.
    constexpr int kWindows =
        1 + 13 + 1 + 3 +
        static_cast<int>(3 * kControlCount + kStepCount + kPadCount + kViewCount + kScopeKinds);
    const GuiObjects before = CountGuiObjects();
    for (int refused = 1; refused <= kWindows; ++refused)
    {
        countdown = refused;
        EXPECT_EQ(Show(), RendererAPI::kEditorUnavailable) << "window " << refused;
        EXPECT_EQ(countdown, 0) << "there are " << refused << " windows at least";
        EXPECT_TRUE(::IsWindowEnabled(host));
    }
    ::UnhookWindowsHookEx(hook);
    Drain();
    EXPECT_EQ(CountGuiObjects(), before);
    ::DestroyWindow(host);
    EXPECT_EQ(m_library.getSessionDataSize(), 0U);
}

TEST_F(EditorWindowTest, AWindowClassThatIsTakenMakesTheEditorUnavailableUntilItIsFree)
{
    WNDCLASSEXW taken{};
    taken.cbSize = sizeof taken;
    taken.lpfnWndProc = ::DefWindowProcW;
    taken.hInstance = m_library.Module();
    taken.lpszClassName = EDITOR_PICTURE_CLASS;
    ASSERT_NE(::RegisterClassExW(&taken), 0);
    EXPECT_EQ(Show(), RendererAPI::kEditorUnavailable);
    ::UnregisterClassW(EDITOR_PICTURE_CLASS, m_library.Module());
    OpenEditor editor = Open();
    EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
}

TEST(EditorClasses, GoWithTheLibrary)
{
    HINSTANCE module = nullptr;
    {
        LoadedRenderer library;
        module = library.Module();
        OpenEditor editor([&] { return library.doModalUI2(nullptr, nullptr, 0, 0); });
        EXPECT_EQ(editor.CloseWith(IDOK), RendererAPI::kEditorAccepted);
        WNDCLASSEXW found{};
        found.cbSize = sizeof found;
        EXPECT_TRUE(::GetClassInfoExW(module, EDITOR_CLASS, &found));
    }
    ASSERT_EQ(::GetModuleHandleA(RendererAPI::kLibraryName), nullptr);
    for (const wchar_t* name : {EDITOR_CLASS, EDITOR_SLIDER_CLASS, EDITOR_PAD_CLASS,
                                EDITOR_PICTURE_CLASS, EDITOR_SCOPE_CLASS})
    {
        WNDCLASSEXW found{};
        found.cbSize = sizeof found;
        EXPECT_FALSE(::GetClassInfoExW(module, name, &found));
    }
}

// Works in the editor of its own thread once it is open, and then closes it.
void CALLBACK WorkAndClose(HWND, UINT, UINT_PTR timer, DWORD) noexcept
{
    HWND editor = nullptr;
    ::EnumThreadWindows(::GetCurrentThreadId(), FindEditor, reinterpret_cast<LPARAM>(&editor));
    if (editor == nullptr)
    {
        return; // comes again
    }
    ::KillTimer(nullptr, timer);
    ::SendMessageW(::GetDlgItem(editor, IDC_SLIDER), WM_KEYDOWN, VK_RIGHT, 0);
    ::SendMessageW(::GetDlgItem(editor, IDC_SHOW_SPLIT), BM_CLICK, 0, 0);
    ::SendMessageW(::GetDlgItem(editor, IDC_SCOPE_BUTTON), BM_CLICK, 0, 0);
    ::SetWindowPos(editor, nullptr, 0, 0, 1000, 700, SWP_NOZORDER);
    ::RedrawWindow(editor, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
    ::SendMessageW(::GetDlgItem(editor, IDOK), BM_CLICK, 0, 0);
}

// A thousand where everything runs for long.
TEST_F(EditorWindowTest, SessionsInARowLeaveNoWindowsOrGdiObjectsBehind)
{
    // All on this thread: windows that are left behind go with their thread.
    const int sessions = std::getenv("GLAZEL_SOAK_PERCENT") != nullptr ? 1000 : 25;
    GuiObjects afterFirst;
    for (int i = 0; i <= sessions; ++i)
    {
        ASSERT_NE(::SetTimer(nullptr, 0, 1, WorkAndClose), 0U);
        ASSERT_EQ(Show(), RendererAPI::kEditorAccepted);
        Drain();
        if (i == 0)
        {
            afterFirst = CountGuiObjects();
        }
    }
    EXPECT_EQ(CountGuiObjects(), afterFirst);
}

} // namespace

} // namespace ReferenceRenderer
