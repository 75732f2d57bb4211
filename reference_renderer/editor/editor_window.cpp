#include "reference_renderer/editor/editor_window.h"

#include "reference_renderer/editor/display_scale.h"
#include "reference_renderer/editor/editor_memory.h"
#include "reference_renderer/editor/resource.h"

#include <algorithm>

#include <windowsx.h>

namespace ReferenceRenderer
{

namespace
{

constexpr DWORD kStyle = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;

bool IsButton(HWND window) noexcept
{
    return (::SendMessageW(window, WM_GETDLGCODE, 0, 0) & DLGC_BUTTON) != 0;
}

RECT WorkAreaOf(HWND window) noexcept
{
    MONITORINFO display{};
    display.cbSize = sizeof display;
    ::GetMonitorInfoW(::MonitorFromWindow(window, MONITOR_DEFAULTTONEAREST), &display);
    return display.rcWork;
}

// For which the window is laid out on its display, which has `dpi`.
int LayoutDpi(HWND window, int dpi) noexcept
{
    const SIZE frame = WindowSizeFor(window, {0, 0}, dpi);
    const RECT room = WorkAreaOf(window);
    return FittingDpi(dpi, {static_cast<int>(room.right - room.left - frame.cx),
                            static_cast<int>(room.bottom - room.top - frame.cy)});
}

// The first control of a view.
std::size_t FirstIn(View view) noexcept
{
    const auto* const first =
        std::find_if(kControls.begin(), kControls.end(),
                     [&](const ControlFacts& facts) { return IsIn(facts.step, view); });
    return static_cast<std::size_t>(first - kControls.begin());
}

} // namespace

EditorWindow::EditorWindow(const FrameBufferDesc* preview, std::span<const std::uint8_t> record,
                           bool linear, RowRunner& runner)
    : m_actions(preview, record, linear, runner), m_view(LastView())
{
}

bool EditorWindow::Open(HWND host)
{
    const bool created = Create(EDITOR_CLASS, L"GlazelBuilder", WS_EX_APPWINDOW | WS_EX_ACCEPTFILES,
                                kStyle, nullptr, 0);
    if (!created)
    {
        return false;
    }
    PlaceOn(host);
    m_theme.emplace(LayoutDpi(Window(), DpiOf(Window())));
    if (!m_actions.Create(Window(), *m_theme))
    {
        return false;
    }
    if (!IsHighContrast())
    {
        DarkenTitle(Window());
    }
    m_actions.ShowLook();
    Lay();
    return true;
}

bool EditorWindow::RunModal() noexcept
{
    ::ShowWindow(Window(), SW_SHOWNORMAL);
    ::SetFocus(m_actions.Controls().Slider(FirstIn(m_view)));
    MSG message{};
    while (!m_done)
    {
        const BOOL got = ::GetMessageW(&message, nullptr, 0, 0);
        if (got == 0)
        {
            ::PostQuitMessage(static_cast<int>(message.wParam)); // the host's loop is to see it
        }
        if (got <= 0)
        {
            return false;
        }
        bool translated = false;
        try
        {
            translated = Translate(message);
        }
        catch (const std::exception&)
        {
            translated = true; // no memory for what the key does
        }
        if (!translated)
        {
            ::TranslateMessage(&message);
            ::DispatchMessageW(&message);
        }
    }
    return m_accepted;
}

bool EditorWindow::Translate(MSG& message)
{
    if (message.message == WM_KEYDOWN)
    {
        if (m_actions.OnKey(message.hwnd, message.wParam))
        {
            return true;
        }
        if (message.wParam == VK_RETURN && ::IsChild(Window(), message.hwnd) &&
            IsButton(message.hwnd))
        {
            ::SendMessageW(message.hwnd, BM_CLICK, 0, 0); // and not the default button
            return true;
        }
    }
    if (message.message == WM_LBUTTONDOWN && m_actions.OnPress(message.hwnd))
    {
        return true;
    }
    if (message.message == WM_MOUSEWHEEL && ::IsChild(Window(), message.hwnd) &&
        m_actions.IsOverPicture({GET_X_LPARAM(message.lParam), GET_Y_LPARAM(message.lParam)}))
    {
        message.hwnd = m_actions.Picture(); // and not the slider that happens to have the keyboard
    }
    return ::IsDialogMessageW(Window(), &message) != FALSE;
}

// The two that end it are the window's, the others the look's.
void EditorWindow::OnCommand(int id, int what, HWND from)
{
    if (id == IDC_PICTURE_ALONE || (m_pictureAlone && (id == IDOK || id == IDCANCEL)))
    {
        ShowPictureAlone(!m_pictureAlone); // Enter and Esc lead back, not out
    }
    else if (const std::optional<ScopeKind> scope = ScopeOfCommand(id))
    {
        if (IsChosen(what, from) && !m_pictureAlone)
        {
            m_actions.ToggleScope(*scope);
            Lay();
        }
    }
    else if (id >= IDC_VIEW && id < IDC_VIEW + static_cast<int>(kViewCount))
    {
        if (IsChosen(what, from))
        {
            ShowView(static_cast<View>(id - IDC_VIEW));
        }
    }
    else if (id != IDOK && id != IDCANCEL)
    {
        m_actions.OnCommand(id, what, from);
    }
    else if (IsChosen(what, from) && (id == IDCANCEL || m_actions.CanAccept()))
    {
        End(id == IDOK);
    }
}

void EditorWindow::ShowView(View view)
{
    m_view = view;
    RememberView(view);
    Lay();
    for (std::size_t of = 0; of < kViewCount; ++of)
    {
        const HWND button = ::GetDlgItem(Window(), IDC_VIEW + static_cast<int>(of));
        ::InvalidateRect(button, nullptr, FALSE);
    }
    ::SetFocus(m_actions.Controls().Slider(FirstIn(view))); // what had it may be hidden
}

void EditorWindow::ShowPictureAlone(bool alone)
{
    const HWND focus = ::GetFocus();
    m_pictureAlone = alone;
    if (alone)
    {
        ::SetFocus(m_actions.Picture()); // the keyboard must not stay with a window that is hidden
    }
    Lay();
    if (!alone && ::IsChild(Window(), m_focusBefore))
    {
        ::SetFocus(m_focusBefore);
    }
    m_focusBefore = focus;
}

void EditorWindow::End(bool accepted) noexcept
{
    m_accepted = accepted;
    m_done = true;
    ::EndMenu();                             // one that is open has a loop of its own
    ::PostMessageW(Window(), WM_NULL, 0, 0); // the loop may be waiting inside GetMessage
}

LRESULT EditorWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case DM_GETDEFID:
        return MAKELRESULT(IDOK, DC_HASDEFID);
    case WM_NEXTDLGCTL: // what the letter of a heading comes to
        FocusNext(wParam, LOWORD(lParam) != 0);
        return 0;
    case WM_COMMAND:
        OnCommand(LOWORD(wParam), HIWORD(wParam), reinterpret_cast<HWND>(lParam));
        return 0;
    case WM_DROPFILES:
        m_actions.OnDrop(reinterpret_cast<HDROP>(wParam));
        return 0;
    case WM_CLOSE:
        End(false);
        return 0;
    case WM_DESTROY:
        m_done = true; // somebody else's doing, while it is open
        return 0;
    case WM_ERASEBKGND:
        return 1;
    case WM_PAINT:
        PaintGroundOf();
        return 0;
    case WM_DRAWITEM:
        OnDrawItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        return TRUE;
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORSTATIC:
        return ColoursOf(reinterpret_cast<HDC>(wParam), reinterpret_cast<HWND>(lParam));
    case WM_SIZE:
        Lay();
        return 0;
    case WM_GETMINMAXINFO:
        OnGetLimits(*reinterpret_cast<MINMAXINFO*>(lParam));
        return 0;
    case WM_DPICHANGED:
        OnDpiChanged(LOWORD(wParam), *reinterpret_cast<const RECT*>(lParam));
        return 0;
    case WM_SETTINGCHANGE:
    case WM_SYSCOLORCHANGE:
        OnColoursChanged();
        return 0;
    case WM_ACTIVATE:
        OnActivate(LOWORD(wParam) != WA_INACTIVE);
        return 0;
    default:
        return ::DefWindowProcW(Window(), message, wParam, lParam);
    }
}

void EditorWindow::Lay()
{
    if (!m_theme || ::IsIconic(Window()))
    {
        return;
    }
    const Geometry::Extent client = ClientSize(Window());
    const bool hasScope = m_actions.ShownScope().has_value();
    m_layout = m_pictureAlone ? PictureAloneIn(client)
                              : LayoutOf(client, m_theme->Dpi(), m_view, hasScope);
    m_actions.Place(m_layout);
    ::InvalidateRect(Window(), nullptr, FALSE);
}

void EditorWindow::OnGetLimits(MINMAXINFO& limits) const noexcept
{
    const int dpi = m_theme ? m_theme->Dpi() : kUnscaledDpi;
    const Geometry::Extent client = SmallestClient(dpi);
    const SIZE size = WindowSizeFor(Window(), {client.width, client.height}, dpi);
    limits.ptMinTrackSize = {size.cx, size.cy};
}

void EditorWindow::ChangeTheme(int dpi)
{
    EditorTheme theme(dpi);
    m_actions.SetTheme(theme); // before the fonts of the old one go
    m_theme = std::move(theme);
    m_actions.SetTheme(*m_theme);
}

void EditorWindow::OnColoursChanged()
{
    if (m_theme)
    {
        ChangeTheme(m_theme->Dpi());
        ::RedrawWindow(Window(), nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
    }
}

void EditorWindow::OnDpiChanged(int dpi, const RECT& place)
{
    if (!m_theme)
    {
        return; // on its way to the display on which it is to open: the controls are made for that
    }
    ChangeTheme(LayoutDpi(Window(), dpi));
    ::SetWindowPos(Window(), nullptr, place.left, place.top, place.right - place.left,
                   place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
    Lay();
}

// As in any dialog: to a given window, else to the next one for `what` 0 and the one before for 1.
void EditorWindow::FocusNext(WPARAM what, bool isWindow) const noexcept
{
    ::SetFocus(isWindow ? reinterpret_cast<HWND>(what)
                        : ::GetNextDlgTabItem(Window(), ::GetFocus(), what != 0));
}

// The keyboard comes back to where it was.
void EditorWindow::OnActivate(bool active) noexcept
{
    if (!active)
    {
        m_lastFocus = ::GetFocus();
    }
    else if (m_lastFocus != nullptr && ::IsChild(Window(), m_lastFocus))
    {
        ::SetFocus(m_lastFocus);
    }
}

// In the middle of the display that the host's window is on, within what the taskbar leaves.
void EditorWindow::PlaceOn(HWND host) noexcept
{
    const RECT room = WorkAreaOf(host != nullptr ? host : Window());
    // The resolution that counts is the one of that display.
    ::SetWindowPos(Window(), nullptr, room.left, room.top, 0, 0,
                   SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOSIZE);
    const int dpi = LayoutDpi(Window(), DpiOf(Window()));
    const Geometry::Extent client = OpeningClient(dpi);
    const SIZE wanted = WindowSizeFor(Window(), {client.width, client.height}, dpi);
    const LONG width = std::min(wanted.cx, room.right - room.left);
    const LONG height = std::min(wanted.cy, room.bottom - room.top);
    ::SetWindowPos(Window(), nullptr, room.left + (room.right - room.left - width) / 2,
                   room.top + (room.bottom - room.top - height) / 2, width, height,
                   SWP_NOZORDER | SWP_NOACTIVATE);
}

void EditorWindow::PaintGroundOf() const
{
    const BufferedPaint paint(Window());
    PaintGround(paint.Dc(), paint.Size(), m_layout, *m_theme, m_actions.Texts());
}

void EditorWindow::OnDrawItem(const DRAWITEMSTRUCT& item) const
{
    const auto id = static_cast<int>(item.CtlID);
    if (id >= IDC_RESET && id < IDC_RESET + static_cast<int>(kControlCount))
    {
        PaintResetButton(item, *m_theme);
        return;
    }
    if (id == IDC_STATUS || id == IDC_PIXEL)
    {
        PaintStatus(item, *m_theme, id == IDC_STATUS && m_actions.StatusIsWrong());
        return;
    }
    const bool chosen = id == IDC_VIEW + static_cast<int>(m_view) ||
                        (id == IDC_SHOW_GRADED && m_actions.Shown() == Compare::Graded) ||
                        (id == IDC_SHOW_SPLIT && m_actions.Shown() == Compare::Split) ||
                        (id == IDC_SHOW_ORIGINAL && m_actions.Shown() == Compare::Original);
    const std::optional<ScopeKind> scope = ScopeOfCommand(id);
    PaintButton(item, *m_theme, chosen || id == IDOK || (scope && scope == m_actions.ShownScope()));
}

LRESULT EditorWindow::ColoursOf(HDC dc, HWND child) const noexcept
{
    const EditorControls& controls = m_actions.Controls();
    if (controls.IsHeading(child))
    {
        ::SetTextColor(dc, m_theme->Inks().text);
        ::SetBkColor(dc, m_theme->Inks().panelGround);
        ::SetDCBrushColor(dc, m_theme->Inks().panelGround);
        return reinterpret_cast<LRESULT>(::GetStockObject(DC_BRUSH));
    }
    const std::optional<std::size_t> number = controls.NumberOf(child);
    const bool wrong = number && m_actions.Texts().wrongNumber == number;
    // A disabled box asks with WM_CTLCOLORSTATIC.
    const bool enabled = ::IsWindowEnabled(child) != FALSE;
    ::SetTextColor(dc, wrong     ? m_theme->Inks().wrong
                       : enabled ? m_theme->Inks().text
                                 : m_theme->Inks().disabledText);
    ::SetBkColor(dc, m_theme->Inks().field);
    return reinterpret_cast<LRESULT>(m_theme->FieldBrush());
}

} // namespace ReferenceRenderer
