// Pictures in the one form in which the panel draws them, and how they get into it.
// Pure: no windows.h. Tests: tests/propertypage/panel_image_test.cpp.
#pragma once

#include "contract/frame_buffer_desc.h"
#include "propertypage/panel_layout.h"

#include <cstdint>
#include <memory>

// Rows from the top, without padding; a pixel is 0xAARRGGBB, in memory blue, green, red, alpha.
// Without pixels, for want of memory or of a picture, there is nothing to draw.
struct PanelImage
{
    Geometry::Extent size;
    std::unique_ptr<std::uint32_t[]> pixels;
};

PanelImage ImageOf(const ButtonImage& button) noexcept;

// The part of the renderer's thumbnail that fits on a page of that client size, blended over the
// panel's grey. The thumbnail's pixels are 0xAARRGGBB with straight alpha and its rows follow each
// other at its full width, whatever its pitch says.
PanelImage ImageOf(const FrameBufferDesc& thumbnail, Geometry::Extent page) noexcept;

// How much of a thumbnail shows: on the right and at the bottom the panel's frame stays free. No
// width or no height means that nothing does.
Geometry::Extent VisibleThumbnail(std::uint32_t width, std::uint32_t height,
                                  Geometry::Extent page) noexcept;

// One channel over the panel's grey. The product is divided by 256, not by 255, and rounded down,
// also below zero; full alpha keeps the channel.
constexpr std::uint8_t BlendOverPanel(std::uint8_t channel, std::uint8_t alpha) noexcept
{
    // 256 makes the division exact: so every alpha takes the same path, without a branch.
    const int weight = alpha == 255 ? 256 : alpha;
    return static_cast<std::uint8_t>(kPanelGrey + (((channel - kPanelGrey) * weight) >> 8));
}
