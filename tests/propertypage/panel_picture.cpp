#include "tests/propertypage/panel_picture.h"

#include "propertypage/button_images.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace
{

constexpr std::uint32_t kColourBits = 0x00FFFFFF;

std::size_t Index(Geometry::Extent size, int x, int y)
{
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width) +
           static_cast<std::size_t>(x);
}

std::uint32_t Colour(std::uint32_t red, std::uint32_t green, std::uint32_t blue)
{
    return red << 16 | green << 8 | blue;
}

// Nothing happens outside the picture.
void Put(Picture& picture, int x, int y, std::uint32_t colour)
{
    if (x >= 0 && y >= 0 && x < picture.size.width && y < picture.size.height)
    {
        picture.At(x, y) = colour;
    }
}

void PutEdit(Picture& picture, bool pressed)
{
    const auto& bytes = pressed ? kEditPressedPixels : kEditNormalPixels;
    for (int i = 0; i < 40 * 20; ++i)
    {
        const std::uint8_t* const bgra = bytes.data() + i * 4;
        Put(picture, 5 + i % 40, 25 + i / 40, Colour(bgra[2], bgra[1], bgra[0]));
    }
}

void PutCheckBox(Picture& picture, bool checked)
{
    const auto& bytes = checked ? kCheckBoxOnPixels : kCheckBoxOffPixels;
    for (int i = 0; i < 125 * 16; ++i)
    {
        const std::uint8_t* const rgb = bytes.data() + i * 3;
        Put(picture, 7 + i % 125, 70 + i / 125, Colour(rgb[0], rgb[1], rgb[2]));
    }
}

std::uint32_t Blend(std::uint32_t channel, std::uint32_t alpha)
{
    if (alpha == 0 || alpha == 255)
    {
        return alpha == 0 ? 48 : channel;
    }
    const double product = (static_cast<double>(channel) - 48.0) * static_cast<double>(alpha);
    return static_cast<std::uint32_t>(48.0 + std::floor(product / 256.0));
}

// One pixel of the page's frame stays free on the right and below.
void PutThumbnail(Picture& picture, const Thumbnail& thumbnail)
{
    for (int y = 0; y < thumbnail.size.height && 18 + y < picture.size.height - 1; ++y)
    {
        for (int x = 0; x < thumbnail.size.width && 50 + x < picture.size.width - 1; ++x)
        {
            const std::uint32_t pixel = thumbnail.pixels[Index(thumbnail.size, x, y)];
            const std::uint32_t alpha = pixel >> 24;
            picture.At(50 + x, 18 + y) =
                Colour(Blend(pixel >> 16 & 255, alpha), Blend(pixel >> 8 & 255, alpha),
                       Blend(pixel & 255, alpha));
        }
    }
}

} // namespace

std::uint32_t& Picture::At(int x, int y)
{
    return pixels[Index(size, x, y)];
}

std::uint32_t Picture::At(int x, int y) const
{
    return pixels[Index(size, x, y)];
}

Picture ScreenOf(HWND window)
{
    RECT client{};
    ::GetClientRect(window, &client);
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = client.right;
    info.bmiHeader.biHeight = -client.bottom;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const HDC source = ::GetDC(window);
    const HDC target = ::CreateCompatibleDC(source);
    const HBITMAP bitmap = ::CreateDIBSection(target, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ old = ::SelectObject(target, bitmap);
    const BOOL copied = ::BitBlt(target, 0, 0, client.right, client.bottom, source, 0, 0, SRCCOPY);
    ::GdiFlush();
    Picture picture{{static_cast<int>(client.right), static_cast<int>(client.bottom)}, {}};
    if (copied != FALSE && bits != nullptr)
    {
        const auto* const first = static_cast<const std::uint32_t*>(bits);
        picture.pixels.assign(first, first + Index(picture.size, 0, picture.size.height));
    }
    ::SelectObject(target, old);
    ::DeleteObject(bitmap);
    ::DeleteDC(target);
    ::ReleaseDC(window, source);
    if (picture.pixels.empty())
    {
        throw std::runtime_error("cannot read the window; is there a display?");
    }
    for (std::uint32_t& pixel : picture.pixels)
    {
        pixel &= kColourBits;
    }
    return picture;
}

Thumbnail SampleThumbnail(Geometry::Extent size)
{
    Thumbnail thumbnail{size, {}};
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            const auto column = static_cast<std::uint32_t>(x);
            const auto row = static_cast<std::uint32_t>(y);
            const std::uint32_t alpha = row % 3 == 0 ? 255 : column * 5 + row * 7;
            thumbnail.pixels.push_back(
                (alpha & 255) << 24 | Colour(column * 3 & 255, row * 11 & 255, 255 - column % 256));
        }
    }
    return thumbnail;
}

Picture ExpectedPanel(Geometry::Extent size, const PanelState& state)
{
    Picture picture{size, std::vector<std::uint32_t>(Index(size, 0, size.height), 0x303030)};
    for (int y = 0; y < size.height; ++y)
    {
        for (int x = 0; x < size.width; ++x)
        {
            if (x == 0 || y == 0 || x == size.width - 1 || y == size.height - 1)
            {
                picture.At(x, y) = 0;
            }
        }
    }
    PutEdit(picture, state.editPressed);
    PutCheckBox(picture, state.checked);
    if (state.thumbnail != nullptr)
    {
        PutThumbnail(picture, *state.thumbnail);
    }
    return picture;
}

Picture LeftPart(const Picture& picture, int width)
{
    Picture part{{std::min(width, picture.size.width), picture.size.height}, {}};
    for (int y = 0; y < part.size.height; ++y)
    {
        for (int x = 0; x < part.size.width; ++x)
        {
            part.pixels.push_back(picture.At(x, y));
        }
    }
    return part;
}

std::string FirstDifference(const Picture& actual, const Picture& expected)
{
    char text[128] = "";
    if (actual.size != expected.size)
    {
        std::snprintf(text, sizeof text, "%d x %d instead of %d x %d", actual.size.width,
                      actual.size.height, expected.size.width, expected.size.height);
        return text;
    }
    for (int y = 0; y < expected.size.height; ++y)
    {
        for (int x = 0; x < expected.size.width; ++x)
        {
            if (actual.At(x, y) != expected.At(x, y))
            {
                std::snprintf(text, sizeof text, "at %d, %d: %06x instead of %06x", x, y,
                              static_cast<unsigned>(actual.At(x, y)),
                              static_cast<unsigned>(expected.At(x, y)));
                return text;
            }
        }
    }
    return text;
}
