#include "reference_renderer/editor/editor_window.h"

#include "reference_renderer/editor/display_scale.h"
#include "reference_renderer/editor/resource.h"

#include <algorithm>
#include <cmath>

namespace ReferenceRenderer
{

namespace
{

constexpr DWORD kStyle = WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN;

const wchar_t* OriginText(RecordState origin) noexcept
{
    switch (origin)
    {
    case RecordState::Usable:
    case RecordState::Empty:
        break;
    case RecordState::Foreign:
        return L"The look is not one of this renderer, or of a newer version: starting neutral";
    case RecordState::Damaged:
        return L"The look is damaged: starting neutral";
    }
    return L"";
}

} // namespace

EditorWindow::EditorWindow(const FrameBufferDesc* preview, std::span<const std::uint8_t> record,
                           bool linear, RowRunner& runner)
    : m_preview(preview, linear), m_draft(record), m_record(kRecordSize),
      m_picture(m_preview, m_look, runner)
{
    PrepareLook();
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
    m_theme.emplace(DpiOf(Window()));
    if (!m_controls.Create(Window(), *m_theme) ||
        !m_picture.Create(Window(), *m_theme, IDC_PICTURE))
    {
        return false;
    }
    DarkenTitle(Window());
    m_controls.Show(m_draft);
    Say(OriginText(m_draft.Origin()));
    Changed();
    Lay();
    return true;
}

bool EditorWindow::RunModal() noexcept
{
    ::ShowWindow(Window(), SW_SHOWNORMAL);
    ::SetFocus(m_controls.Slider(0));
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
        const std::optional<std::size_t> number = m_controls.NumberOf(message.hwnd);
        if (number && TranslateNumberKey(*number, message.wParam))
        {
            return true;
        }
        if (message.wParam == VK_ESCAPE && m_controls.CancelDrag())
        {
            return true;
        }
        if (message.wParam == VK_RETURN && m_controls.IsButton(message.hwnd))
        {
            ::SendMessageW(message.hwnd, BM_CLICK, 0, 0); // and not the default button
            return true;
        }
    }
    return ::IsDialogMessageW(Window(), &message) != FALSE;
}

bool EditorWindow::TranslateNumberKey(std::size_t index, WPARAM key)
{
    const float small = ::GetKeyState(VK_SHIFT) < 0 ? kFineStep : kKeyStep;
    float amount = 0.0F;
    switch (key)
    {
    case VK_UP:
        amount = small;
        break;
    case VK_DOWN:
        amount = -small;
        break;
    case VK_PRIOR:
        amount = kPageStep;
        break;
    case VK_NEXT:
        amount = -kPageStep;
        break;
    default:
        return false;
    }
    const ControlFacts& facts = kControls[index];
    if (m_draft.Set(facts.control, Nudged(facts, m_draft.Value(facts.control), amount)))
    {
        m_controls.ShowText(facts.control, m_draft.Value(facts.control));
        ::SendMessageW(m_controls.Number(index), EM_SETSEL, 0, -1);
        OnNumberTyped(index); // it may have been wrong before
    }
    return true;
}

void EditorWindow::End(bool accepted) noexcept
{
    m_accepted = accepted;
    m_done = true;
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
        OnDrop(wParam);
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
    case WM_ACTIVATE:
        OnActivate(LOWORD(wParam) != WA_INACTIVE);
        return 0;
    default:
        return ::DefWindowProcW(Window(), message, wParam, lParam);
    }
}

void EditorWindow::Lay() noexcept
{
    if (!m_theme || ::IsIconic(Window()))
    {
        return;
    }
    RECT client{};
    ::GetClientRect(Window(), &client);
    m_layout = LayoutOf({client.right, client.bottom}, m_theme->Dpi());
    m_controls.Place(m_layout);
    const Box& picture = m_layout.picture;
    ::SetWindowPos(m_picture.Window(), nullptr, picture.left, picture.top, picture.width,
                   picture.height, SWP_NOZORDER | SWP_NOACTIVATE);
    TellPicture();
    ::InvalidateRect(Window(), nullptr, FALSE);
}

void EditorWindow::OnGetLimits(MINMAXINFO& limits) const noexcept
{
    const int dpi = m_theme ? m_theme->Dpi() : kUnscaledDpi;
    const Extent client = SmallestClient(dpi);
    const SIZE size = WindowSizeFor(Window(), {client.width, client.height}, dpi);
    limits.ptMinTrackSize = {size.cx, size.cy};
}

void EditorWindow::OnDpiChanged(int dpi, const RECT& place)
{
    if (!m_theme)
    {
        return; // on its way to the display on which it is to open: the controls are made for that
    }
    EditorTheme theme(dpi);
    m_controls.SetTheme(theme); // before the fonts of the old one go
    m_theme = std::move(theme);
    m_controls.SetTheme(*m_theme);
    m_picture.SetTheme(*m_theme);
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
    MONITORINFO display{};
    display.cbSize = sizeof display;
    ::GetMonitorInfoW(
        ::MonitorFromWindow(host != nullptr ? host : Window(), MONITOR_DEFAULTTONEAREST), &display);
    const RECT& room = display.rcWork;
    // The resolution that counts is the one of that display.
    ::SetWindowPos(Window(), nullptr, room.left, room.top, 0, 0,
                   SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOSIZE);
    const int dpi = DpiOf(Window());
    const Extent client = OpeningClient(dpi);
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
    PaintGround(paint.Dc(), paint.Size(), m_layout, *m_theme, m_texts);
}

void EditorWindow::OnDrawItem(const DRAWITEMSTRUCT& item) const
{
    const auto id = static_cast<int>(item.CtlID);
    if (id >= IDC_RESET && id < IDC_RESET + static_cast<int>(kControlCount))
    {
        PaintResetButton(item);
        return;
    }
    if (id == IDC_STATUS)
    {
        PaintStatus(item, *m_theme, m_statusIsWrong);
        return;
    }
    const bool chosen = (id == IDC_SHOW_GRADED && m_picture.Shown() == Compare::Graded) ||
                        (id == IDC_SHOW_SPLIT && m_picture.Shown() == Compare::Split) ||
                        (id == IDC_SHOW_ORIGINAL && m_picture.Shown() == Compare::Original);
    PaintButton(item, *m_theme, chosen || id == IDOK);
}

LRESULT EditorWindow::ColoursOf(HDC dc, HWND child) const noexcept
{
    if (m_controls.IsHeading(child))
    {
        ::SetTextColor(dc, kText);
        ::SetBkColor(dc, kPanelGround);
        ::SetDCBrushColor(dc, kPanelGround);
        return reinterpret_cast<LRESULT>(::GetStockObject(DC_BRUSH));
    }
    const std::optional<std::size_t> number = m_controls.NumberOf(child);
    const bool wrong = number && m_texts.wrongNumber == number;
    // A disabled box asks with WM_CTLCOLORSTATIC.
    const bool enabled = ::IsWindowEnabled(child) != FALSE;
    ::SetTextColor(dc, wrong ? kWrong : enabled ? kText : kFaintText);
    ::SetBkColor(dc, kField);
    return reinterpret_cast<LRESULT>(m_theme->FieldBrush());
}

} // namespace ReferenceRenderer
