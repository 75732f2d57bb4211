#include "reference_renderer/editor/scope_window.h"

#include "reference_renderer/editor/resource.h"
#include "support/win32/utf8.h"
#include "support/win32/window_glue.h"

namespace ReferenceRenderer
{

namespace
{

constexpr COLORREF ColourOf(std::uint32_t pixel) noexcept
{
    return (pixel & 0xFF) << 16 | (pixel & 0xFF00) | (pixel >> 16 & 0xFF);
}

std::wstring NameOf(ScopeKind kind)
{
    return Wide(kScopeNames[static_cast<std::size_t>(kind)]);
}

} // namespace

bool ScopeWindow::Create(HWND parent, const EditorTheme& theme, int id) noexcept
{
    m_theme = &theme;
    return WindowObject::Create(EDITOR_SCOPE_CLASS, L"Scope", 0, WS_CHILD | WS_VISIBLE, parent, id);
}

void ScopeWindow::Toggle(ScopeKind kind)
{
    m_kind = m_kind == kind ? std::nullopt : std::optional(kind);
    m_answer = {};
    m_trouble = nullptr;
    if (!m_kind)
    {
        m_worker.Stop();
    }
    Name();
    Follow();
    ::InvalidateRect(Window(), nullptr, FALSE);
}

void ScopeWindow::Follow()
{
    const Geometry::Extent size = ClientSize(Window());
    const bool isSeen = m_kind && size.width > 0 && size.height > 0 && ::IsWindowVisible(Window());
    if (isSeen && !m_picture.IsEmpty() &&
        !m_worker.Ask({{*m_kind, size, m_theme->Dpi()}, m_record}, Window(), SCOPE_ANSWERED))
    {
        m_trouble = L"The system has no thread for the scope: close other programs";
    }
}

LRESULT ScopeWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_ERASEBKGND:
        return 1;
    case WM_PAINT:
        Paint();
        return 0;
    case WM_SIZE:
        Follow();
        ::InvalidateRect(Window(), nullptr, FALSE);
        return 0;
    case SCOPE_ANSWERED:
        TakeAnswer();
        return 0;
    case WM_DESTROY:
        m_worker.Stop();
        return 0;
    default:
        break;
    }
    return ::DefWindowProcW(Window(), message, wParam, lParam);
}

void ScopeWindow::TakeAnswer()
{
    std::optional<ScopeAnswer> answer = m_worker.Take();
    if (!answer)
    {
        return; // a newer message has brought it
    }
    m_trouble = answer->pixels.empty() ? L"There is not enough memory for the scope" : nullptr;
    if (answer->view.kind == m_kind)
    {
        m_answer = std::move(*answer);
        Name();
    }
    ::RedrawWindow(Window(), nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
}

// Its text is what those read who do not see it.
void ScopeWindow::Name()
{
    std::wstring name = m_kind ? NameOf(*m_kind) : L"Scope";
    if (!m_answer.clipped.empty())
    {
        name += L", " + Wide(m_answer.clipped);
    }
    ::SetWindowTextW(Window(), name.c_str());
}

void ScopeWindow::Paint() const
{
    const BufferedPaint paint(Window());
    const HDC dc = paint.Dc();
    const RECT client{0, 0, paint.Size().cx, paint.Size().cy};
    Fill(dc, client, ColourOf(kScopeGround));
    if (!m_kind)
    {
        return;
    }
    const wchar_t* const trouble =
        m_picture.IsEmpty() ? L"There is no picture to measure" : m_trouble;
    if (trouble != nullptr)
    {
        WriteLine(dc, m_theme->Text(), kPictureQuietText, client, trouble, DT_CENTER);
        return;
    }
    const Geometry::Extent size = m_answer.view.size;
    if (!m_answer.pixels.empty())
    {
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = size.width;
        info.bmiHeader.biHeight = -size.height; // negative: the top row first
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        ::SetDIBitsToDevice(
            dc, 0, 0, static_cast<DWORD>(size.width), static_cast<DWORD>(size.height), 0, 0, 0,
            static_cast<UINT>(size.height), m_answer.pixels.data(), &info, DIB_RGB_COLORS);
    }
    PaintLabels(dc, {static_cast<int>(paint.Size().cx), static_cast<int>(paint.Size().cy)});
}

void ScopeWindow::PaintLabels(HDC dc, Geometry::Extent size) const
{
    const int dpi = m_theme->Dpi();
    for (const ScopeLabel& label : ScopeLabels(*m_kind, size, dpi))
    {
        const UINT format = label.side == ScopeLabel::Side::Left    ? DT_LEFT
                            : label.side == ScopeLabel::Side::Right ? DT_RIGHT
                                                                    : DT_CENTER;
        WriteLine(dc, m_theme->Text(), ColourOf(label.colour), RectOf(label.box), Wide(label.text),
                  format);
    }
    const ScopePlaces places = ScopePlacesIn(*m_kind, size, dpi);
    WriteLine(dc, m_theme->Text(), kPictureQuietText, RectOf(places.header), NameOf(*m_kind));
    const bool isClipped = !m_answer.clipped.empty();
    const COLORREF colour = isClipped ? ColourOf(kClipMark) : kPictureFaintText;
    const std::wstring text = isClipped                 ? Wide(m_answer.clipped)
                              : m_answer.pixels.empty() ? L""
                                                        : L"nothing at 0 or 255";
    if (places.clipped.height > places.header.height)
    {
        WriteLines(dc, m_theme->Text(), colour, RectOf(places.clipped), text);
    }
    else
    {
        WriteLine(dc, m_theme->Text(), colour, RectOf(places.clipped), text, DT_RIGHT);
    }
}

} // namespace ReferenceRenderer
