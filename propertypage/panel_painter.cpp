#include "propertypage/panel_painter.h"

#include "propertypage/panel_image.h"

namespace
{

constexpr COLORREF kFrameColour = RGB(0, 0, 0);
constexpr COLORREF kPanelColour = RGB(kPanelGrey, kPanelGrey, kPanelGrey);
constexpr LONG kPixelsPerMetre = 3780; // 96 per inch

void FrameOnePixel(HDC dc, const RECT& rect, COLORREF colour) noexcept
{
    auto* const brush = ::CreateSolidBrush(colour);
    if (brush != nullptr)
    {
        ::FrameRect(dc, &rect, brush);
        ::DeleteObject(brush);
    }
}

// By an opaque text without letters: takes no brush.
void Fill(HDC dc, const RECT& rect, COLORREF colour) noexcept
{
    if (::IsRectEmpty(&rect) == FALSE)
    {
        ::SetBkColor(dc, colour);
        ::ExtTextOutW(dc, 0, 0, ETO_OPAQUE, &rect, L"", 0, nullptr);
    }
}

// The one way onto the screen for every picture of the panel.
void Draw(const WindowContext& context, const PanelImage& image, Geometry::Point position) noexcept
{
    if (context.Dc() == nullptr || image.pixels == nullptr)
    {
        return;
    }
    const auto width = static_cast<DWORD>(image.size.width);
    const auto height = static_cast<DWORD>(image.size.height);
    BITMAPINFO info{};
    info.bmiHeader = {.biSize = sizeof(BITMAPINFOHEADER),
                      .biWidth = image.size.width,
                      .biHeight = -image.size.height, // top row first
                      .biPlanes = 1,
                      .biBitCount = 32,
                      .biCompression = BI_RGB,
                      .biSizeImage = width * height * 4,
                      .biXPelsPerMeter = kPixelsPerMetre,
                      .biYPelsPerMeter = kPixelsPerMetre,
                      .biClrUsed = 0,
                      .biClrImportant = 0};
    const POINT origin = context.Origin();
    ::SetDIBitsToDevice(context.Dc(), origin.x + position.x, origin.y + position.y, width, height,
                        0, 0, 0, height, image.pixels.get(), &info, DIB_RGB_COLORS);
}

} // namespace

void DrawGround(const WindowContext& context, Geometry::Extent page) noexcept
{
    const POINT origin = context.Origin();
    RECT rect{origin.x, origin.y, origin.x + page.width, origin.y + page.height};
    FrameOnePixel(context.Dc(), rect, kFrameColour);
    ::InflateRect(&rect, -1, -1);
    Fill(context.Dc(), rect, kPanelColour);
}

void DrawControl(const WindowContext& context, PanelControl control, bool on) noexcept
{
    const Geometry::Rect& rect = RowOf(control).rect;
    Draw(context, ImageOf(PictureOf(control, on)), {rect.left, rect.top});
}

void DrawThumbnail(const WindowContext& context, const FrameBufferDesc& thumbnail,
                   Geometry::Extent page) noexcept
{
    Draw(context, ImageOf(thumbnail, page), kThumbnailOrigin);
}
