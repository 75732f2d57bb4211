// What the pictures must show; how the letters look is free.
#include "propertypage/panel_layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <set>
#include <tuple>

namespace
{

using Colour = std::tuple<int, int, int>; // red, green, blue

constexpr Colour kPanel{48, 48, 48};
constexpr Colour kLabel{240, 240, 240};
constexpr Colour kGold{255, 215, 0};
constexpr int kBoxLeft = 112; // the check box's first column

std::size_t Offset(const ButtonImage& image, int x, int y, std::size_t pixelBytes)
{
    return static_cast<std::size_t>(y * image.size.width + x) * pixelBytes;
}

Colour ColourAt(const ButtonImage& image, int x, int y)
{
    if (image.form == StoredForm::Bgra)
    {
        const auto pixel = image.bytes.subspan(Offset(image, x, y, 4), 4);
        return {pixel[2], pixel[1], pixel[0]};
    }
    const auto pixel = image.bytes.subspan(Offset(image, x, y, 3), 3);
    return {pixel[0], pixel[1], pixel[2]};
}

bool IsRim(const ButtonImage& image, int x, int y)
{
    return x == 0 || y == 0 || x == image.size.width - 1 || y == image.size.height - 1;
}

void ExpectRim(const ButtonImage& image, Colour rim)
{
    for (int y = 0; y < image.size.height; ++y)
    {
        for (int x = 0; x < image.size.width; ++x)
        {
            if (IsRim(image, x, y))
            {
                ASSERT_EQ(ColourAt(image, x, y), rim) << x << ", " << y;
            }
            else
            {
                ASSERT_NE(ColourAt(image, x, y), rim) << x << ", " << y;
            }
        }
    }
}

// The share of the face inside the rim, in percent.
int PercentOfFace(const ButtonImage& image, Colour face)
{
    int count = 0;
    for (int y = 1; y < image.size.height - 1; ++y)
    {
        for (int x = 1; x < image.size.width - 1; ++x)
        {
            count += ColourAt(image, x, y) == face ? 1 : 0;
        }
    }
    return count * 100 / ((image.size.width - 2) * (image.size.height - 2));
}

// How many pixels of the letters have that colour; the box beside a label does not count.
int LetterPixels(const ButtonImage& image, Colour colour)
{
    int count = 0;
    for (int y = 0; y < image.size.height; ++y)
    {
        for (int x = 0; x < std::min(image.size.width, kBoxLeft); ++x)
        {
            count += ColourAt(image, x, y) == colour ? 1 : 0;
        }
    }
    return count;
}

// Columns left of the box in which anything is drawn.
std::set<int> LabelColumns(const ButtonImage& image)
{
    std::set<int> columns;
    for (int y = 0; y < image.size.height; ++y)
    {
        for (int x = 0; x < kBoxLeft; ++x)
        {
            if (ColourAt(image, x, y) != kPanel)
            {
                columns.insert(x);
            }
        }
    }
    return columns;
}

} // namespace

TEST(ButtonImages, TheEditImagesAreFortyByTwentyOpaqueBgra)
{
    for (const bool pressed : {false, true})
    {
        const ButtonImage image = PictureOf(PanelControl::Edit, pressed);
        EXPECT_EQ(image.form, StoredForm::Bgra);
        EXPECT_EQ(image.size, (Geometry::Extent{40, 20}));
        ASSERT_EQ(image.bytes.size(), 3200U);
        for (std::size_t alpha = 3; alpha < image.bytes.size(); alpha += 4)
        {
            ASSERT_EQ(image.bytes[alpha], 255);
        }
    }
}

TEST(ButtonImages, TheCheckBoxImagesAre125By16Rgb)
{
    for (const bool checked : {false, true})
    {
        const ButtonImage image = PictureOf(PanelControl::LinearGamma, checked);
        EXPECT_EQ(image.form, StoredForm::Rgb);
        EXPECT_EQ(image.size, (Geometry::Extent{125, 16}));
        EXPECT_EQ(image.bytes.size(), 6000U);
    }
}

TEST(ButtonImages, TheNormalButtonIsGreyWithALighterRimAndNearWhiteLetters)
{
    const ButtonImage image = PictureOf(PanelControl::Edit, false);
    ExpectRim(image, {105, 106, 106});
    EXPECT_GT(PercentOfFace(image, {77, 78, 79}), 75);
    EXPECT_GE(LetterPixels(image, {240, 240, 240}), 30);
}

TEST(ButtonImages, ThePressedButtonIsAmberWithABrightRimAndWhiteLetters)
{
    const ButtonImage image = PictureOf(PanelControl::Edit, true);
    ExpectRim(image, {255, 189, 0});
    EXPECT_GT(PercentOfFace(image, {111, 78, 0}), 75);
    EXPECT_GE(LetterPixels(image, {255, 255, 255}), 30);
}

TEST(ButtonImages, BothButtonsShowTheSameLetters)
{
    for (int y = 1; y < 19; ++y)
    {
        for (int x = 1; x < 39; ++x)
        {
            EXPECT_EQ(ColourAt(PictureOf(PanelControl::Edit, false), x, y) == Colour(77, 78, 79),
                      ColourAt(PictureOf(PanelControl::Edit, true), x, y) == Colour(111, 78, 0))
                << x << ", " << y;
        }
    }
}

TEST(ButtonImages, TheLabelBeginsInColumn2AndStaysClearOfTheBox)
{
    const ButtonImage image = PictureOf(PanelControl::LinearGamma, false);
    const std::set<int> columns = LabelColumns(image);
    ASSERT_FALSE(columns.empty());
    EXPECT_EQ(*columns.begin(), 2);
    EXPECT_LT(*columns.rbegin(), 110);
    EXPECT_GT(*columns.rbegin(), 90);
}

TEST(ButtonImages, TheLabelsStemsHaveItsFullColour)
{
    for (const bool checked : {false, true})
    {
        EXPECT_GE(LetterPixels(PictureOf(PanelControl::LinearGamma, checked), kLabel), 60);
    }
}

TEST(ButtonImages, TheBoxIsAnOutlineFromColumn112To121AndRow3To12)
{
    const ButtonImage image = PictureOf(PanelControl::LinearGamma, false);
    for (int y = 0; y < 16; ++y)
    {
        for (int x = 111; x < 125; ++x)
        {
            const bool within = x >= 112 && x <= 121 && y >= 3 && y <= 12;
            const bool edge = within && (x == 112 || x == 121 || y == 3 || y == 12);
            EXPECT_EQ(ColourAt(image, x, y) != kPanel, edge) << x << ", " << y;
        }
    }
}

TEST(ButtonImages, ACheckedBoxDiffersOnlyByItsGoldInside)
{
    for (int y = 0; y < 16; ++y)
    {
        for (int x = 0; x < 125; ++x)
        {
            const bool inside = x >= 114 && x <= 119 && y >= 5 && y <= 10;
            EXPECT_EQ(ColourAt(PictureOf(PanelControl::LinearGamma, true), x, y),
                      inside ? kGold : ColourAt(PictureOf(PanelControl::LinearGamma, false), x, y))
                << x << ", " << y;
        }
    }
}
