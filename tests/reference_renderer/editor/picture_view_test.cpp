#include "reference_renderer/editor/picture_view.h"

#include <gtest/gtest.h>

namespace ReferenceRenderer
{

namespace
{

constexpr double kWide = 1.8;

PictureView ViewOf(double shape, double rows, Geometry::Extent room)
{
    PictureView view(shape, rows);
    view.SetRoom(room);
    return view;
}

// The point of a picture of `rows` rows that a pixel of the window shows, in its own pixels.
double RowAt(const PictureView& view, double rows, int y)
{
    const ViewPlace place = view.Place();
    const double inWhole = y + 0.5 - place.shown.top + static_cast<double>(place.part.top);
    return inWhole / static_cast<double>(place.whole.height) * rows;
}

double ColumnAt(const PictureView& view, double columns, int x)
{
    const ViewPlace place = view.Place();
    const double inWhole = x + 0.5 - place.shown.left + static_cast<double>(place.part.left);
    return inWhole / static_cast<double>(place.whole.width) * columns;
}

TEST(PictureView, AFittingPictureFillsOneDirectionAndStandsInTheMiddleOfTheOther)
{
    const ViewPlace tall = ViewOf(kWide, 40, {720, 1000}).Place();
    EXPECT_EQ(tall.whole, (PixelSize{720, 400}));
    EXPECT_EQ(tall.part, (PixelPart{0, 0, {720, 400}}));
    EXPECT_EQ(tall.shown, (Geometry::Rect{0, 300, 720, 400}));
    const ViewPlace wide = ViewOf(kWide, 40, {1000, 20}).Place();
    EXPECT_EQ(wide.shown, (Geometry::Rect{482, 0, 36, 20}));
    EXPECT_EQ(ViewOf(3.6, 40, {720, 1000}).Place().whole, (PixelSize{720, 200}));
    EXPECT_EQ(ViewOf(kWide, 40, {0, 0}).Place().whole, (PixelSize{1, 1}));
}

TEST(PictureView, ZoomsAboutThePointer)
{
    PictureView view = ViewOf(kWide, 2000, {720, 400});
    const Geometry::Point pointer{500, 90};
    const double row = RowAt(view, 2000, pointer.y);
    const double column = ColumnAt(view, 3600, pointer.x);
    for (int i = 0; i < 22; ++i)
    {
        view.ZoomBy(1, pointer);
        const double tolerance = 1.0 / view.Scale(); // a pixel of the window
        EXPECT_NEAR(RowAt(view, 2000, pointer.y), row, tolerance) << view.Scale();
        EXPECT_NEAR(ColumnAt(view, 3600, pointer.x), column, tolerance) << view.Scale();
    }
    EXPECT_EQ(view.Scale(), kLargestScale);
    EXPECT_EQ(view.Place().part.size, (PixelSize{720, 400})) << "the window is full";
}

TEST(PictureView, TheWheelStopsWhereThePictureHasItsOwnSizeAndWhereItFits)
{
    PictureView view = ViewOf(kWide, 2000, {720, 400}); // fits at a fifth
    view.ZoomBy(7, {10, 10});
    EXPECT_LT(view.Scale(), 1.0);
    view.ZoomBy(1, {10, 10});
    EXPECT_EQ(view.Scale(), 1.0);
    view.ZoomBy(1, {10, 10});
    EXPECT_GT(view.Scale(), 1.0);
    view.ZoomBy(-1.5, {10, 10});
    EXPECT_EQ(view.Scale(), 1.0);
    view.ZoomBy(-30, {10, 10});
    EXPECT_TRUE(view.IsFitted());
    view.ZoomBy(-1, {10, 10});
    EXPECT_TRUE(view.IsFitted()) << "no smaller";
    EXPECT_EQ(view.Place().shown, (Geometry::Rect{0, 0, 720, 400}));
}

TEST(PictureView, ASmallPictureZoomsOutToItsOwnSizeOnly)
{
    PictureView view = ViewOf(kWide, 40, {720, 400}); // fits ten times as large
    view.ZoomBy(-100, {10, 10});
    EXPECT_EQ(view.Scale(), 1.0);
    EXPECT_FALSE(view.IsFitted());
    EXPECT_EQ(view.Place().shown, (Geometry::Rect{324, 180, 72, 40}));
    view.ZoomTo(20.0, {10, 10});
    EXPECT_EQ(view.Scale(), kLargestScale);
}

TEST(PictureView, PanningMovesByPixelsAndStopsAtTheEdges)
{
    PictureView view = ViewOf(kWide, 2000, {720, 400});
    EXPECT_FALSE(view.CanPan());
    view.ZoomTo(1.0, view.Middle());
    EXPECT_TRUE(view.CanPan());
    const PixelPart before = view.Place().part;
    view.PanBy(37, -23);
    EXPECT_EQ(view.Place().part.left, before.left - 37);
    EXPECT_EQ(view.Place().part.top, before.top + 23);
    view.PanBy(100000, 100000);
    EXPECT_EQ(view.Place().part, (PixelPart{0, 0, {720, 400}}));
    view.PanBy(-1, 0);
    EXPECT_EQ(view.Place().part.left, 1U) << "nothing to take back first";
    view.PanBy(-100000, -100000);
    EXPECT_EQ(view.Place().part, (PixelPart{3600 - 720, 2000 - 400, {720, 400}}));
}

TEST(PictureView, AnotherRoomKeepsTheScaleAndThePointInTheMiddle)
{
    PictureView view = ViewOf(kWide, 2000, {720, 400});
    view.ZoomTo(2.0, {600, 100});
    const double row = RowAt(view, 2000, 200);
    view.SetRoom({500, 300});
    EXPECT_EQ(view.Scale(), 2.0);
    EXPECT_NEAR(RowAt(view, 2000, 150), row, 1.0);
    view.Fit();
    view.SetRoom({720, 400});
    EXPECT_EQ(view.Place().whole, (PixelSize{720, 400}));
}

TEST(PictureView, ARoomThatIsLargerThanThePictureWasEnlargesIt)
{
    PictureView view = ViewOf(kWide, 2000, {72, 40});
    view.ZoomTo(0.1, {0, 0});
    view.SetRoom({720, 400});
    EXPECT_DOUBLE_EQ(view.Scale(), 0.2);
}

TEST(PictureView, ThePixelAtAPlaceIsThePicturesOwnWhateverTheScale)
{
    constexpr PixelSize kSize{1800, 1000};
    PictureView view = ViewOf(kWide, 1000, {450, 300});
    EXPECT_EQ(view.PixelAt({0, 25}, kSize), (PicturePixel{2, 2})) << "one in four";
    EXPECT_EQ(view.PixelAt({449, 274}, kSize), (PicturePixel{1798, 998}));
    EXPECT_EQ(view.PixelAt({0, 24}, kSize), std::nullopt) << "above the picture";
    EXPECT_EQ(view.PixelAt({0, 275}, kSize), std::nullopt);
    EXPECT_EQ(view.PixelAt({450, 100}, kSize), std::nullopt);
    EXPECT_EQ(view.PixelAt({-1, 100}, kSize), std::nullopt);
    view.ZoomTo(1.0, view.Middle());
    const PicturePixel middle = *view.PixelAt(view.Middle(), kSize);
    EXPECT_EQ(view.PixelAt({view.Middle().x + 7, view.Middle().y - 3}, kSize),
              (PicturePixel{middle.column + 7, middle.row - 3}));
    view.PanBy(10, 5);
    EXPECT_EQ(view.PixelAt(view.Middle(), kSize),
              (PicturePixel{middle.column - 10, middle.row - 5}));
    view.ZoomTo(8.0, {100, 100});
    const PicturePixel beside = *view.PixelAt({100, 100}, kSize);
    EXPECT_NEAR(ColumnAt(view, 1800, 100), static_cast<double>(beside.column), 1.0);
    EXPECT_EQ(view.PixelAt({108, 92}, kSize), (PicturePixel{beside.column + 1, beside.row - 1}));
}

TEST(PictureView, PixelsOfAPictureWithWidePixelsAreCountedInItsOwnColumns)
{
    const PictureView view = ViewOf(2.0, 100, {400, 200}); // 100 columns, twice as wide
    EXPECT_EQ(view.PixelAt({399, 0}, {100, 100}), (PicturePixel{99, 0}));
    EXPECT_EQ(view.PixelAt({202, 100}, {100, 100}), (PicturePixel{50, 50}));
}

} // namespace

} // namespace ReferenceRenderer
