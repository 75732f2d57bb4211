#include "reference_renderer/editor/picture_window.h"

#include "reference_renderer/editor/resource.h"
#include "support/win32/window_glue.h"

#include <algorithm>
#include <cmath>
#include <new>

#include <windowsx.h>

namespace ReferenceRenderer
{

namespace
{

constexpr UINT_PTR kSharpenTimer = 1;
constexpr UINT kStillMs = 120; // the look stands still: time for every pixel

double NowMs() noexcept
{
    constexpr double kMsPerSecond = 1000.0;
    LARGE_INTEGER ticks{};
    LARGE_INTEGER perSecond{};
    ::QueryPerformanceCounter(&ticks);
    ::QueryPerformanceFrequency(&perSecond);
    return static_cast<double>(ticks.QuadPart) * kMsPerSecond /
           static_cast<double>(perSecond.QuadPart);
}

std::size_t PixelsOf(PixelSize size) noexcept
{
    return size.width * size.height;
}

} // namespace

bool PictureWindow::Create(HWND parent, const EditorTheme& theme, int id) noexcept
{
    m_theme = &theme;
    return WindowObject::Create(EDITOR_PICTURE_CLASS, L"Picture", 0,
                                WS_CHILD | WS_VISIBLE | WS_TABSTOP, parent, id);
}

void PictureWindow::Regrade() noexcept
{
    const bool fine = !m_picture.HasCoarse() || m_pace.Allows(PixelsOf(m_picture.ScaledSize()));
    Grade(fine ? Detail::Fine : Detail::Coarse);
    if (m_shown == Detail::Coarse)
    {
        ::SetTimer(Window(), kSharpenTimer, kStillMs, nullptr); // anew with every step
    }
    ::RedrawWindow(Window(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
}

void PictureWindow::Sharpen() noexcept
{
    ::KillTimer(Window(), kSharpenTimer);
    if (m_shown == Detail::Coarse)
    {
        Grade(Detail::Fine);
        ::InvalidateRect(Window(), nullptr, FALSE);
    }
}

void PictureWindow::SetCompare(Compare compare) noexcept
{
    m_compare = compare;
    ::InvalidateRect(Window(), nullptr, FALSE);
}

double PictureWindow::Zoom() const noexcept
{
    return m_hasPixels ? m_view.Scale() : 0.0;
}

void PictureWindow::Fit() noexcept
{
    m_view.Fit();
    Viewed();
}

void PictureWindow::ShowOwnSize() noexcept
{
    m_view.ZoomTo(1.0, m_view.Middle());
    Viewed();
}

LRESULT PictureWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    const POINT point{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}; // of mouse messages
    switch (message)
    {
    case WM_GETDLGCODE: // NOLINT(bugprone-branch-clone): two different answers are both 1
        return DLGC_WANTARROWS;
    case WM_ERASEBKGND:
        return 1;
    case WM_PAINT:
        Paint();
        return 0;
    case WM_TIMER:
        Sharpen();
        return 0;
    case WM_SIZE:
        Resize();
        return 0;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        ::InvalidateRect(Window(), nullptr, FALSE);
        return 0;
    case WM_LBUTTONDOWN:
    case WM_MBUTTONDOWN:
        Press(point, message == WM_MBUTTONDOWN);
        return 0;
    case WM_MOUSEMOVE:
        Move(point);
        Pointed(Geometry::Point{point.x, point.y});
        return 0;
    case WM_MOUSELEAVE:
        Pointed({});
        return 0;
    case WM_LBUTTONUP:
    case WM_MBUTTONUP:
        ::ReleaseCapture();
        return 0;
    case WM_CAPTURECHANGED:
        m_drag = Drag::None;
        return 0;
    case WM_MOUSEWHEEL:
        OnWheel(wParam, point);
        return 0;
    case WM_KEYDOWN:
        if (OnKey(wParam))
        {
            return 0;
        }
        break;
    default:
        break;
    }
    return ::DefWindowProcW(Window(), message, wParam, lParam);
}

void PictureWindow::Resize() noexcept
{
    m_hasPixels = false;
    const Geometry::Extent room = ClientSize(Window());
    if (m_picture.IsEmpty() || room.width <= 0 || room.height <= 0)
    {
        return;
    }
    m_view.SetRoom(room);
    Scale();
    Grade(Detail::Fine);
    ::InvalidateRect(Window(), nullptr, FALSE);
}

void PictureWindow::Scale() noexcept
{
    try
    {
        const ViewPlace place = m_view.Place();
        const PixelSize size = place.part.size;
        const bool fits = m_hasPixels && size == m_picture.ScaledSize();
        m_hasPixels = false;
        PixelBitmap original = fits ? std::move(m_original) : PixelBitmap(size.width, size.height);
        PixelBitmap graded = fits ? std::move(m_graded) : PixelBitmap(size.width, size.height);
        m_picture.Scale(place.whole, place.part);
        PixelBitmap coarse = fits ? std::move(m_coarse) : PixelBitmap();
        if (m_picture.HasCoarse() && !fits)
        {
            const PixelSize smaller = m_picture.ScaledSize(Detail::Coarse);
            coarse = PixelBitmap(smaller.width, smaller.height);
        }
        m_original = std::move(original);
        m_graded = std::move(graded);
        m_coarse = std::move(coarse);
        m_picture.WriteOriginal(m_original.Pixels());
        m_hasPixels = true;
    }
    catch (const std::bad_alloc&)
    {
        m_original = {};
        m_graded = {};
        m_coarse = {}; // Paint says so
    }
}

// Shows what the view has come to.
void PictureWindow::Viewed() noexcept
{
    if (m_picture.IsEmpty())
    {
        return;
    }
    Scale();
    Regrade();
    TellParent(PICTURE_VIEWED);
}

void PictureWindow::TellParent(int what) const noexcept
{
    ::SendMessageW(::GetParent(Window()), WM_COMMAND, MAKEWPARAM(::GetDlgCtrlID(Window()), what),
                   reinterpret_cast<LPARAM>(Window()));
}

void PictureWindow::Pointed(std::optional<Geometry::Point> at) noexcept
{
    if (at && !m_pointer)
    {
        TRACKMOUSEEVENT leaving{sizeof leaving, TME_LEAVE, Window(), 0};
        ::TrackMouseEvent(&leaving);
    }
    m_pointer = at;
    TellParent(PICTURE_POINTED);
}

std::optional<PicturePixel> PictureWindow::PixelPointedAt() const noexcept
{
    return m_pointer && m_hasPixels ? m_view.PixelAt(*m_pointer, m_picture.Size()) : std::nullopt;
}

void PictureWindow::OnWheel(WPARAM wParam, POINT screen) noexcept
{
    POINT point = screen;
    ::ScreenToClient(Window(), &point);
    const double notches = static_cast<double>(GET_WHEEL_DELTA_WPARAM(wParam)) / WHEEL_DELTA;
    m_view.ZoomBy(notches, {point.x, point.y});
    Viewed();
}

// The middle button always takes the picture; the left one does where it does not take the line,
// which a picture that is shown whole leaves to it everywhere.
void PictureWindow::Press(POINT point, bool middle) noexcept
{
    ::SetFocus(Window());
    m_splitBefore = m_split;
    m_viewBefore = m_view;
    const bool canPan = m_view.CanPan();
    if (!middle && m_compare == Compare::Split && (!canPan || IsOnSplit(point)))
    {
        ::SetCapture(Window());
        m_drag = Drag::Split;
        DragSplit(point.x);
    }
    else if (canPan)
    {
        ::SetCapture(Window());
        m_drag = Drag::Picture;
        m_last = point;
    }
}

bool PictureWindow::CancelDrag() noexcept
{
    if (m_drag == Drag::None)
    {
        return false;
    }
    ::ReleaseCapture();
    m_split = m_splitBefore;
    m_view = m_viewBefore;
    Viewed();
    ::InvalidateRect(Window(), nullptr, FALSE);
    return true;
}

void PictureWindow::Move(POINT point) noexcept
{
    if (m_drag == Drag::Split)
    {
        DragSplit(point.x);
    }
    else if (m_drag == Drag::Picture)
    {
        m_view.PanBy(point.x - m_last.x, point.y - m_last.y);
        m_last = point;
        Viewed();
    }
    else if (IsOnSplit(point))
    {
        ::SetCursor(::LoadCursorW(nullptr, IDC_SIZEWE));
    }
    else if (m_view.CanPan())
    {
        ::SetCursor(::LoadCursorW(nullptr, IDC_SIZEALL));
    }
}

void PictureWindow::Grade(Detail detail) noexcept
{
    m_shown = detail;
    if (m_hasPixels)
    {
        const PixelBitmap& target = detail == Detail::Coarse ? m_coarse : m_graded;
        const FrameJob job = m_picture.GradingJob(m_look, target.Pixels(), detail);
        const double start = NowMs();
        m_runner.Run(job);
        m_pace.Took(NowMs() - start, job.width * job.height);
    }
}

RECT PictureWindow::Area() const noexcept
{
    return RectOf(m_view.Place().shown);
}

// The column, within the picture, where the graded part begins.
LONG PictureWindow::SplitColumn() const noexcept
{
    const RECT area = Area();
    const double share = m_compare == Compare::Graded     ? 0.0
                         : m_compare == Compare::Original ? 1.0
                                                          : m_split;
    return static_cast<LONG>(std::lround(share * (area.right - area.left)));
}

void PictureWindow::SplitAt(double share) noexcept
{
    m_split = std::clamp(share, 0.0, 1.0);
    ::RedrawWindow(Window(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
}

void PictureWindow::DragSplit(int pixel) noexcept
{
    const RECT area = Area();
    SplitAt(static_cast<double>(pixel - area.left) / std::max<LONG>(area.right - area.left, 1));
}

// Left and Right move the line where there is one; with Ctrl, as the other arrows do, the picture.
bool PictureWindow::OnKey(WPARAM key) noexcept
{
    constexpr double kStep = 0.01;
    const bool sideways = key == VK_LEFT || key == VK_RIGHT;
    if (sideways && m_compare == Compare::Split && !IsDown(VK_CONTROL))
    {
        SplitAt(m_split + (key == VK_LEFT ? -kStep : kStep));
        return true;
    }
    const int step = m_theme->Px(40);
    switch (key)
    {
    case VK_LEFT:
        m_view.PanBy(step, 0);
        break;
    case VK_RIGHT:
        m_view.PanBy(-step, 0);
        break;
    case VK_UP:
        m_view.PanBy(0, step);
        break;
    case VK_DOWN:
        m_view.PanBy(0, -step);
        break;
    case VK_ADD:
    case VK_OEM_PLUS:
        m_view.ZoomBy(1.0, m_view.Middle());
        break;
    case VK_SUBTRACT:
    case VK_OEM_MINUS:
        m_view.ZoomBy(-1.0, m_view.Middle());
        break;
    default:
        return false;
    }
    Viewed();
    return true;
}

bool PictureWindow::IsOnSplit(POINT point) const noexcept
{
    const RECT area = Area();
    return m_compare == Compare::Split && m_hasPixels && ::PtInRect(&area, point) &&
           std::abs(point.x - area.left - SplitColumn()) <= m_theme->Px(6);
}

void PictureWindow::Paint() const noexcept
{
    const BufferedPaint paint(Window());
    const HDC dc = paint.Dc();
    const RECT client{0, 0, paint.Size().cx, paint.Size().cy};
    Fill(dc, client, kPictureGround);
    if (m_picture.IsEmpty())
    {
        Say(dc, L"There is no picture to show");
    }
    else if (!m_hasPixels)
    {
        Say(dc, L"There is not enough memory to show the picture");
    }
    else
    {
        const RECT area = Area();
        const bool coarse = m_shown == Detail::Coarse;
        PaintPart(dc, m_original, m_picture.ScaledSize(), 0, SplitColumn());
        PaintPart(dc, coarse ? m_coarse : m_graded, m_picture.ScaledSize(m_shown), SplitColumn(),
                  area.right - area.left);
        PaintSplit(dc);
    }
    if (::GetFocus() == Window())
    {
        Frame(dc, client, m_theme->Inks().focus, m_theme->Px(1));
    }
}

// Columns `from` up to but without `to` of the picture, from a bitmap of all of it.
void PictureWindow::PaintPart(HDC dc, const PixelBitmap& bitmap, PixelSize size, LONG from,
                              LONG to) const noexcept
{
    const DcHandle source(::CreateCompatibleDC(dc));
    if (source && to > from)
    {
        const RECT area = Area();
        const Selection selected(source.get(), bitmap.Get());
        if (size == m_picture.ScaledSize())
        {
            ::BitBlt(dc, area.left + from, area.top, to - from, area.bottom - area.top,
                     source.get(), from, 0, SRCCOPY);
            return;
        }
        const int saved = ::SaveDC(dc);
        ::IntersectClipRect(dc, area.left + from, area.top, area.left + to, area.bottom);
        ::SetStretchBltMode(dc, COLORONCOLOR);
        ::StretchBlt(dc, area.left, area.top, area.right - area.left, area.bottom - area.top,
                     source.get(), 0, 0, static_cast<int>(size.width),
                     static_cast<int>(size.height), SRCCOPY);
        ::RestoreDC(dc, saved);
    }
}

void PictureWindow::PaintSplit(HDC dc) const noexcept
{
    if (m_compare != Compare::Split)
    {
        return;
    }
    const RECT area = Area();
    const LONG column = area.left + SplitColumn();
    const LONG half = m_theme->Px(1);
    Fill(dc, {column - half, area.top, column + half, area.bottom}, Grey(0xE6));
    const LONG gap = m_theme->Px(10);
    const LONG height = m_theme->Px(20);
    const LONG width = m_theme->Px(70);
    const LONG bottom = area.bottom - gap;
    const auto label = [&](LONG left, const wchar_t* text) {
        const RECT plate{left, bottom - height, left + width, bottom};
        Fill(dc, plate, kPictureGround);
        WriteLine(dc, m_theme->Text(), kPictureText, plate, text, DT_CENTER);
    };
    if (column - area.left > width + 2 * gap)
    {
        label(column - gap - width, L"Original");
    }
    if (area.right - column > width + 2 * gap)
    {
        label(column + gap, L"Graded");
    }
}

void PictureWindow::Say(HDC dc, const wchar_t* text) const noexcept
{
    RECT client{};
    ::GetClientRect(Window(), &client);
    WriteLine(dc, m_theme->Text(), kPictureQuietText, client, text, DT_CENTER);
}

} // namespace ReferenceRenderer
