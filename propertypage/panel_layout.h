// Where things stand on the page's panel, in client pixels of the page window.
// Pure: no windows.h. Tests: tests/propertypage/panel_layout_test.cpp.
#pragma once

#include "support/geometry.h"

#include <cstdint>

inline constexpr Geometry::Extent kEditSize{40, 20};
inline constexpr Geometry::Extent kCheckBoxSize{125, 16};

inline constexpr Geometry::Point kEditOrigin{5, 25};
inline constexpr Geometry::Point kCheckBoxOrigin{7, 70};
inline constexpr Geometry::Point kThumbnailOrigin{50, 18};

inline constexpr Geometry::Rect kEditRect = Geometry::RectAt(kEditOrigin, kEditSize);
inline constexpr Geometry::Rect kCheckBoxRect = Geometry::RectAt(kCheckBoxOrigin, kCheckBoxSize);

// Each of the panel's three channels, and the ground that the thumbnail is blended over.
inline constexpr std::uint8_t kPanelGrey = 48;
