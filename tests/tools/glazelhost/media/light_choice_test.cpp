#include "tools/glazelhost/media/light_choice.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

namespace
{

const Light kDisplay{false, "D"};
const Light kScene{true, "S"};

} // namespace

TEST(LightChoice, TheOptionCountsOnlyWhereThePictureIsLinear)
{
    EXPECT_EQ(OptionToRender(SampleType::Float, std::nullopt, kScene), std::nullopt);
    EXPECT_EQ(OptionToRender(SampleType::Float, std::nullopt, kDisplay), false);
}

TEST(LightChoice, WhatTheUserAskedForIsDone)
{
    for (const bool asked : {true, false})
    {
        EXPECT_EQ(OptionToRender(SampleType::Float, asked, kScene), asked);
        EXPECT_EQ(OptionToRender(SampleType::Float, asked, kDisplay), asked);
    }
}

TEST(LightChoice, EightBitsLeaveEveryRecordAsItIs)
{
    EXPECT_EQ(OptionToRender(SampleType::Byte, std::nullopt, kDisplay), std::nullopt);
    EXPECT_EQ(RenderText(SampleType::Byte, true, kScene, LookOptions::On),
              "8 bits, not as linear light (8 bits never are)");
}

TEST(LightChoice, EveryReasonIsNamed)
{
    const auto text = [](std::optional<bool> asked, const Light& light, LookOptions looks) {
        return RenderText(SampleType::Float, asked, light, looks);
    };
    EXPECT_EQ(text({}, kScene, LookOptions::On), "float, as linear light (S)");
    EXPECT_EQ(text({}, kScene, LookOptions::Mixed),
              "float, as linear light where a keyframe's option is on (S)");
    EXPECT_EQ(text({}, kScene, LookOptions::Off),
              "float, not as linear light (the look's option is off)");
    EXPECT_EQ(text({}, kDisplay, LookOptions::On), "float, not as linear light (D)");
    EXPECT_EQ(text(true, kDisplay, LookOptions::On), "float, as linear light (--linear on)");
    EXPECT_EQ(text(false, kScene, LookOptions::Off), "float, not as linear light (--linear off)");
    EXPECT_EQ(text({}, kScene, LookOptions::None), "float");
}

TEST(LightChoice, TheCheckBoxIsToldWhatItDoesForThePicture)
{
    EXPECT_EQ(CheckBoxText(SampleType::Float, kScene, true), "Graded as linear light: S.");
    EXPECT_EQ(CheckBoxText(SampleType::Float, kDisplay, true),
              "Graded as linear light, which this picture is not: D. Clear \"Assume Linear "
              "Gamma\".");
    EXPECT_EQ(CheckBoxText(SampleType::Float, kDisplay, false),
              "Graded as it is, not as linear light: D.");
    EXPECT_EQ(CheckBoxText(SampleType::Float, kScene, false),
              "Graded as it is, not as linear light, which this picture is: S.");
    EXPECT_EQ(CheckBoxText(SampleType::Byte, kDisplay, true),
              "\"Assume Linear Gamma\" does nothing here: the picture is rendered in 8 bits.");
    EXPECT_EQ(CheckBoxText(SampleType::Float, kScene, std::nullopt), "");
}

} // namespace GlazelHost
