#include "reference_renderer/editor/editor_layout.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ReferenceRenderer
{

namespace
{

constexpr View kViews[] = {View::Light, View::Wheels, View::Cdl};
constexpr int kDpis[] = {96, 120, 144, 168, 192, 288};

struct Named
{
    std::string name;
    Geometry::Rect box;
};

// Everything that must not touch anything else.
std::vector<Named> Parts(const EditorLayout& layout, View view)
{
    std::vector<Named> parts{{"picture", layout.picture},   {"facts", layout.pictureFacts},
                             {"store", layout.storeState},  {"swap", layout.swapState},
                             {"pixel", layout.pixel},       {"tables", layout.tables},
                             {"import", layout.importFile}, {"recent", layout.recentLooks},
                             {"export", layout.exportFile}, {"remove", layout.removeTables},
                             {"status", layout.status},     {"reset all", layout.resetAll},
                             {"cancel", layout.cancel},     {"ok", layout.accept}};
    if (layout.hints.height > 0)
    {
        parts.push_back({"hints", layout.hints});
    }
    for (const Geometry::Rect& button : layout.compare)
    {
        parts.push_back({"compare", button});
    }
    if (layout.scope.height > 0)
    {
        parts.push_back({"scope", layout.scope});
    }
    for (const Geometry::Rect& button : layout.scopeButtons)
    {
        parts.push_back({"scope button", button});
    }
    for (const Geometry::Rect& button : layout.views)
    {
        parts.push_back({"view", button});
    }
    for (std::size_t i = 0; i < kStepCount; ++i)
    {
        if (IsIn(static_cast<Step>(i), view))
        {
            parts.push_back({"heading", layout.headings[i]});
        }
    }
    for (std::size_t i = 0; i < kPadCount; ++i)
    {
        if (IsIn(FactsOf(kPads[i].first).step, view))
        {
            parts.push_back({kPads[i].name, layout.pads[i]});
        }
    }
    for (std::size_t i = 0; i < kControlCount; ++i)
    {
        if (!IsIn(kControls[i].step, view))
        {
            EXPECT_EQ(layout.controls[i].slider.width, 0) << kControls[i].name;
            continue;
        }
        const ControlBoxes& boxes = layout.controls[i];
        const std::string name = kControls[i].name;
        parts.push_back({name + " letter", boxes.letter});
        parts.push_back({name + " slider", boxes.slider});
        parts.push_back({name + " frame", boxes.frame});
        parts.push_back({name + " reset", boxes.reset});
    }
    return parts;
}

bool Overlap(const Geometry::Rect& a, const Geometry::Rect& b)
{
    return a.left < b.Right() && b.left < a.Right() && a.top < b.Bottom() && b.top < a.Bottom();
}

void ExpectGood(Geometry::Extent client, int dpi, View view, bool hasScope)
{
    SCOPED_TRACE(testing::Message()
                 << client.width << " x " << client.height << " at " << dpi << ", view "
                 << static_cast<int>(view) << (hasScope ? " with a scope" : ""));
    const EditorLayout layout = LayoutOf(client, dpi, view, hasScope);
    EXPECT_EQ(layout.scope.height > 0, hasScope);
    EXPECT_GE(layout.picture.height, Scaled(200, dpi));
    EXPECT_GE(layout.pictureFacts.width, Scaled(150, dpi));
    const std::vector<Named> parts = Parts(layout, view);
    for (std::size_t i = 0; i < parts.size(); ++i)
    {
        const Geometry::Rect& box = parts[i].box;
        if (parts[i].name.find("letter") == std::string::npos)
        {
            EXPECT_GT(box.width, 0) << parts[i].name;
            EXPECT_GT(box.height, 0) << parts[i].name;
        }
        EXPECT_GE(box.left, 0) << parts[i].name;
        EXPECT_GE(box.top, 0) << parts[i].name;
        EXPECT_LE(box.Right(), client.width) << parts[i].name;
        EXPECT_LE(box.Bottom(), client.height) << parts[i].name;
        for (std::size_t j = i + 1; j < parts.size(); ++j)
        {
            EXPECT_FALSE(Overlap(box, parts[j].box)) << parts[i].name << ", " << parts[j].name;
        }
    }
    EXPECT_LE(layout.removeTables.Bottom(), layout.footerTop);
    EXPECT_LE(layout.picture.Right(), layout.panel.left);
    EXPECT_EQ(layout.panel.Right(), client.width);
}

TEST(EditorLayout, NothingOverlapsOrLeavesTheWindowAtAnyResolution)
{
    for (const bool hasScope : {false, true})
    {
        for (const View view : kViews)
        {
            for (const int dpi : kDpis)
            {
                const Geometry::Extent least = SmallestClient(dpi);
                ExpectGood(least, dpi, view, hasScope);
                ExpectGood(OpeningClient(dpi), dpi, view, hasScope);
                ExpectGood({least.width + 1, least.height + 1}, dpi, view, hasScope);
                ExpectGood({Scaled(3840, dpi), Scaled(2160, dpi)}, dpi, view, hasScope);
                // Where the buttons below the picture go from two rows to one.
                for (int width = 1100; width < 1240; width += 10)
                {
                    ExpectGood({Scaled(width, dpi), Scaled(720, dpi)}, dpi, view, hasScope);
                }
            }
            ExpectGood({1280, 720}, 96, view, hasScope);
        }
    }
}

TEST(EditorLayout, AWindowThatIsTooSmallIsLaidOutAsTheSmallest)
{
    const EditorLayout smallest = LayoutOf(SmallestClient(96), 96, View::Light);
    const EditorLayout tiny = LayoutOf({0, 0}, 96, View::Light);
    EXPECT_EQ(tiny.picture, smallest.picture);
    EXPECT_EQ(tiny.accept, smallest.accept);
}

TEST(EditorLayout, ThePictureGetsTheRoomThatAWiderWindowHas)
{
    const EditorLayout narrow = LayoutOf({1600, 900}, 96, View::Cdl);
    const EditorLayout wide = LayoutOf({2600, 900}, 96, View::Cdl);
    EXPECT_GT(wide.picture.width, narrow.picture.width + 900);
}

TEST(EditorLayout, SlidersAndNumbersStandInColumns)
{
    for (const int dpi : kDpis)
    {
        const auto boxesOf = [&](Control control, View view) {
            return LayoutOf(OpeningClient(dpi), dpi, view).controls[IndexOf(control)];
        };
        const ControlBoxes first = boxesOf(Control::Temperature, View::Light);
        for (const ControlFacts& facts : kControls)
        {
            for (const View view : kViews)
            {
                if (IsIn(facts.step, view))
                {
                    const ControlBoxes boxes = boxesOf(facts.control, view);
                    EXPECT_EQ(boxes.slider.left, first.slider.left);
                    EXPECT_EQ(boxes.slider.width, first.slider.width);
                    EXPECT_EQ(boxes.frame.left, first.frame.left);
                    EXPECT_EQ(boxes.reset.left, first.reset.left);
                }
            }
        }
    }
}

TEST(EditorLayout, HintsStandWhereThereIsRoomForThem)
{
    for (const int dpi : kDpis)
    {
        EXPECT_GE(LayoutOf(OpeningClient(dpi), dpi, View::Cdl).hints.height, Scaled(36, dpi) - 1);
        EXPECT_EQ(LayoutOf(SmallestClient(dpi), dpi, View::Cdl).hints.height, 0);
    }
}

TEST(EditorLayout, EveryNumberStandsInsideItsFrame)
{
    for (const int dpi : kDpis)
    {
        const EditorLayout layout = LayoutOf(SmallestClient(dpi), dpi, View::Cdl);
        for (std::size_t i = IndexOf(Control::SlopeRed); i < kControlCount; ++i)
        {
            const ControlBoxes& boxes = layout.controls[i];
            EXPECT_GT(boxes.number.left, boxes.frame.left);
            EXPECT_GT(boxes.number.top, boxes.frame.top);
            EXPECT_LT(boxes.number.Right(), boxes.frame.Right());
            EXPECT_LT(boxes.number.Bottom(), boxes.frame.Bottom());
            EXPECT_GE(boxes.number.height, Scaled(16, dpi) - 1) << "a line of text";
        }
    }
}

TEST(EditorLayout, TheSmallestWindowFitsASmallDisplay)
{
    // 1366 x 768 at 125 % leaves about this much.
    EXPECT_LE(SmallestClient(120).width, 1350);
    EXPECT_LE(SmallestClient(120).height, 700);
}

TEST(EditorLayout, ADisplayThatIsTooSmallForItsResolutionIsLaidOutForLess)
{
    EXPECT_EQ(FittingDpi(144, {1900, 1000}), 144);
    for (const int dpi : {96, 120, 144, 192, 288})
    {
        const Geometry::Extent room{1272, 690}; // of 1280 x 720 within a frame
        const Geometry::Extent smallest = SmallestClient(FittingDpi(dpi, room));
        EXPECT_LE(smallest.width, room.width);
        EXPECT_LE(smallest.height, room.height);
        EXPECT_GE(FittingDpi(dpi, room), 96);
    }
    EXPECT_EQ(FittingDpi(192, {10, 10}), 72) << "but can be read";
}

} // namespace

} // namespace ReferenceRenderer
