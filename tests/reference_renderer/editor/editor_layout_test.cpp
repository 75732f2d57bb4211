#include "reference_renderer/editor/editor_layout.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ReferenceRenderer
{

namespace
{

constexpr int kDpis[] = {96, 120, 144, 168, 192, 288};

struct Named
{
    std::string name;
    Geometry::Rect box;
};

// Everything that must not touch anything else.
std::vector<Named> Parts(const EditorLayout& layout)
{
    std::vector<Named> parts{{"picture", layout.picture},   {"facts", layout.pictureFacts},
                             {"store", layout.storeState},  {"swap", layout.swapState},
                             {"pixel", layout.pixel},       {"tables", layout.tables},
                             {"import", layout.importFile}, {"remove", layout.removeTables},
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
    for (const Geometry::Rect& heading : layout.headings)
    {
        parts.push_back({"heading", heading});
    }
    for (std::size_t i = 0; i < kControlCount; ++i)
    {
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

void ExpectGood(Geometry::Extent client, int dpi, bool hasScope)
{
    SCOPED_TRACE(testing::Message() << client.width << " x " << client.height << " at " << dpi
                                    << (hasScope ? " with a scope" : ""));
    const EditorLayout layout = LayoutOf(client, dpi, hasScope);
    EXPECT_EQ(layout.scope.height > 0, hasScope);
    EXPECT_GE(layout.picture.height, Scaled(200, dpi));
    EXPECT_GE(layout.pictureFacts.width, Scaled(150, dpi));
    const std::vector<Named> parts = Parts(layout);
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
        for (const int dpi : kDpis)
        {
            const Geometry::Extent smallest = SmallestClient(dpi);
            ExpectGood(smallest, dpi, hasScope);
            ExpectGood(OpeningClient(dpi), dpi, hasScope);
            ExpectGood({smallest.width + 1, smallest.height + 1}, dpi, hasScope);
            ExpectGood({Scaled(3840, dpi), Scaled(2160, dpi)}, dpi, hasScope);
            // Where the buttons below the picture go from two rows to one.
            for (int width = 1100; width < 1240; width += 10)
            {
                ExpectGood({Scaled(width, dpi), Scaled(720, dpi)}, dpi, hasScope);
            }
        }
        ExpectGood({1280, 720}, 96, hasScope);
    }
}

TEST(EditorLayout, AWindowThatIsTooSmallIsLaidOutAsTheSmallest)
{
    const EditorLayout smallest = LayoutOf(SmallestClient(96), 96);
    const EditorLayout tiny = LayoutOf({0, 0}, 96);
    EXPECT_EQ(tiny.picture, smallest.picture);
    EXPECT_EQ(tiny.accept, smallest.accept);
}

TEST(EditorLayout, ThePictureGetsTheRoomThatAWiderWindowHas)
{
    const EditorLayout narrow = LayoutOf({1600, 900}, 96);
    const EditorLayout wide = LayoutOf({2600, 900}, 96);
    EXPECT_GT(wide.picture.width, narrow.picture.width + 900);
}

TEST(EditorLayout, SlidersAndNumbersStandInColumns)
{
    for (const int dpi : kDpis)
    {
        const EditorLayout layout = LayoutOf(OpeningClient(dpi), dpi);
        for (const ControlBoxes& boxes : layout.controls)
        {
            EXPECT_EQ(boxes.slider.left, layout.controls[0].slider.left);
            EXPECT_EQ(boxes.slider.width, layout.controls[0].slider.width);
            EXPECT_EQ(boxes.frame.left, layout.controls[0].frame.left);
            EXPECT_EQ(boxes.reset.left, layout.controls[0].reset.left);
        }
    }
}

TEST(EditorLayout, HintsStandWhereThereIsRoomForThem)
{
    for (const int dpi : kDpis)
    {
        EXPECT_GE(LayoutOf(OpeningClient(dpi), dpi).hints.height, Scaled(36, dpi) - 1);
        EXPECT_EQ(LayoutOf(SmallestClient(dpi), dpi).hints.height, 0);
    }
}

TEST(EditorLayout, EveryNumberStandsInsideItsFrame)
{
    for (const int dpi : kDpis)
    {
        for (const ControlBoxes& boxes : LayoutOf(SmallestClient(dpi), dpi).controls)
        {
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

} // namespace

} // namespace ReferenceRenderer
