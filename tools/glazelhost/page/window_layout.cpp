#include "tools/glazelhost/page/window_layout.h"

#include <algorithm>

namespace GlazelHost
{

namespace
{

constexpr int kGap = 8;
constexpr Geometry::Extent kButton{120, 26};
constexpr int kStatus = 28; // two lines
constexpr int kBar = kStatus + kButton.height + 3 * kGap;
constexpr int kLeastWidth = 480;  // what the longest status fills twice
constexpr int kLeastPicture = 90; // rows

} // namespace

WindowLayout LayoutOf(Geometry::Extent client, int pageHeight) noexcept
{
    const int barTop = std::max(client.height - kBar, 0);
    const int pageTop = std::max(barTop - pageHeight, 0);
    const auto buttonAt = [&](int placesFromRight) {
        const int x = client.width - placesFromRight * (kButton.width + kGap);
        return Geometry::RectAt({x, barTop + kStatus + 2 * kGap}, kButton);
    };
    WindowLayout layout;
    layout.picture = {0, 0, client.width, pageTop};
    layout.page = {0, pageTop, client.width, barTop - pageTop};
    layout.copyCommand = buttonAt(1);
    layout.saveLook = buttonAt(2);
    layout.status = {kGap, barTop + kGap, std::max(client.width - 2 * kGap, 0), kStatus};
    return layout;
}

Geometry::Extent LeastClient(int pageHeight) noexcept
{
    return {kLeastWidth, kLeastPicture + pageHeight + kBar};
}

Geometry::Extent ClientFor(Geometry::Extent picture, int pageHeight, Geometry::Extent most) noexcept
{
    const Geometry::Extent least = LeastClient(pageHeight);
    const Geometry::Extent whole{std::max(picture.width, least.width),
                                 std::max(picture.height + pageHeight + kBar, least.height)};
    return {std::min(whole.width, most.width), std::min(whole.height, most.height)};
}

} // namespace GlazelHost
