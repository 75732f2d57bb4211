// What the page's panel has, in client pixels of the page window: its ground, the thumbnail's
// place, and its controls, a row for each. Pure: no windows.h. Tests:
// tests/propertypage/panel_layout_test.cpp.
#pragma once

#include "propertypage/button_images.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

inline constexpr Geometry::Point kThumbnailOrigin{50, 18};

// Each of the panel's three channels, and the ground that the thumbnail is blended over.
inline constexpr std::uint8_t kPanelGrey = 48;

enum class PanelControl : std::size_t // of kPanelControls
{
    Edit,
    LinearGamma,
};

// With the left mouse button down on the page, wherever it went down.
enum class ActsWhen
{
    ReleasedOnIt, // and is shown as on while the pointer is on it
    FirstTouched, // of this press
};

struct PanelControlRow
{
    Geometry::Rect rect;
    StoredForm form;
    std::span<const std::uint8_t> offPixels;
    std::span<const std::uint8_t> onPixels; // pressed or checked
    ActsWhen actsWhen;
};

inline constexpr std::array kPanelControls{
    PanelControlRow{{5, 25, 40, 20},
                    StoredForm::Bgra,
                    kEditNormalPixels,
                    kEditPressedPixels,
                    ActsWhen::ReleasedOnIt},
    PanelControlRow{{7, 70, 125, 16},
                    StoredForm::Rgb,
                    kCheckBoxOffPixels,
                    kCheckBoxOnPixels,
                    ActsWhen::FirstTouched},
};

constexpr const PanelControlRow& RowOf(PanelControl control) noexcept
{
    return kPanelControls[static_cast<std::size_t>(control)];
}

constexpr ButtonImage PictureOf(PanelControl control, bool on) noexcept
{
    const PanelControlRow& row = RowOf(control);
    return {row.form, row.rect.Size(), on ? row.onPixels : row.offPixels};
}
