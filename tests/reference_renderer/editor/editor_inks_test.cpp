#include "reference_renderer/editor/editor_inks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace ReferenceRenderer
{

namespace
{

// Relative luminance and contrast as the web's accessibility guidelines define them.
double LuminanceOf(COLORREF colour)
{
    const auto linear = [](unsigned code) {
        const double value = code / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(GetRValue(colour)) + 0.7152 * linear(GetGValue(colour)) +
           0.0722 * linear(GetBValue(colour));
}

double Contrast(COLORREF a, COLORREF b)
{
    const auto [dark, bright] = std::minmax(LuminanceOf(a), LuminanceOf(b));
    return (bright + 0.05) / (dark + 0.05);
}

TEST(EditorInks, DarkTextsCanBeReadOnTheirGrounds)
{
    const EditorInks inks = InksFor(false);
    for (const COLORREF ground : {inks.ground, inks.panelGround, inks.field})
    {
        EXPECT_GE(Contrast(inks.text, ground), 7.0);
        EXPECT_GE(Contrast(inks.quietText, ground), 4.5);
        EXPECT_GE(Contrast(inks.faintText, ground), 3.0);
        EXPECT_GE(Contrast(inks.wrong, ground), 4.5);
        EXPECT_GE(Contrast(inks.focus, ground), 3.0);
    }
    EXPECT_GE(Contrast(inks.buttonText, inks.button), 4.5);
    EXPECT_GE(Contrast(inks.chosenText, inks.buttonChosen), 3.0);
}

TEST(EditorInks, GreysAreNeutral)
{
    const EditorInks inks = InksFor(false);
    for (const COLORREF grey : {inks.ground, inks.panelGround, inks.line, inks.field, inks.text,
                                inks.button, inks.track, inks.knob, kPictureGround})
    {
        EXPECT_EQ(GetRValue(grey), GetGValue(grey));
        EXPECT_EQ(GetGValue(grey), GetBValue(grey));
    }
}

TEST(EditorInks, HighContrastIsTheSystemsOwn)
{
    const EditorInks inks = InksFor(true);
    EXPECT_EQ(inks.ground, ::GetSysColor(COLOR_WINDOW));
    EXPECT_EQ(inks.text, ::GetSysColor(COLOR_WINDOWTEXT));
    EXPECT_EQ(inks.faintText, inks.text);
    EXPECT_EQ(inks.buttonChosen, ::GetSysColor(COLOR_HIGHLIGHT));
    EXPECT_EQ(inks.chosenText, ::GetSysColor(COLOR_HIGHLIGHTTEXT));
    EXPECT_EQ(inks.disabledText, ::GetSysColor(COLOR_GRAYTEXT));
}

} // namespace

} // namespace ReferenceRenderer
