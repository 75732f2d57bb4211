#include "tools/glazelhost/page/window_layout.h"

#include <algorithm>

namespace GlazelHost
{

namespace
{

constexpr int kLeastPicture = 90; // rows

// Lengths in pixels for a font, from those for lines of 14.
struct Bar
{
    explicit Bar(PartHeights heights) noexcept
        : gap(Of(heights, 8)), button{Of(heights, 120), Of(heights, 26)}, status(2 * heights.line),
          height(status + button.height + 3 * gap), leastWidth(Of(heights, 480))
    {
    }

    int gap;
    Geometry::Extent button;
    int status; // two lines
    int height;
    int leastWidth; // what the longest status fills twice

private:
    static int Of(PartHeights heights, int length) noexcept
    {
        return length * heights.line / PartHeights().line;
    }
};

} // namespace

WindowLayout LayoutOf(Geometry::Extent client, PartHeights heights) noexcept
{
    const Bar bar(heights);
    const int barTop = std::max(client.height - bar.height, 0);
    const int pageTop = std::max(barTop - heights.page, 0);
    const auto buttonAt = [&](int placesFromRight) {
        const int x = client.width - placesFromRight * (bar.button.width + bar.gap);
        return Geometry::RectAt({x, barTop + bar.status + 2 * bar.gap}, bar.button);
    };
    WindowLayout layout;
    layout.picture = {0, 0, client.width, pageTop};
    layout.page = {0, pageTop, client.width, barTop - pageTop};
    layout.copyCommand = buttonAt(1);
    layout.saveLook = buttonAt(2);
    layout.status = {bar.gap, barTop + bar.gap, std::max(client.width - 2 * bar.gap, 0),
                     bar.status};
    return layout;
}

Geometry::Extent LeastClient(PartHeights heights) noexcept
{
    const Bar bar(heights);
    return {bar.leastWidth, kLeastPicture + heights.page + bar.height};
}

Geometry::Extent ClientFor(Geometry::Extent picture, PartHeights heights,
                           Geometry::Extent most) noexcept
{
    const Geometry::Extent least = LeastClient(heights);
    const int below = least.height - kLeastPicture;
    const Geometry::Extent whole{std::max(picture.width, least.width),
                                 std::max(picture.height + below, least.height)};
    return {std::min(whole.width, most.width), std::min(whole.height, most.height)};
}

} // namespace GlazelHost
