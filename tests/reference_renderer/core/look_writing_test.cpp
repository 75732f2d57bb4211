#include "reference_renderer/core/look_writing.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

namespace ReferenceRenderer
{

namespace
{

void Invert(std::span<Rgb> colours)
{
    for (Rgb& colour : colours)
    {
        colour = Inverted(colour);
    }
}

TEST(LookWriting, ACubeFileHasTheTitleAndAsManyPointsAsAreAskedFor)
{
    const WrittenLook file = WriteCubeFile(nullptr, 2, Invert, "Mine");
    EXPECT_EQ(file.bytes, "TITLE \"Mine\"\nLUT_3D_SIZE 2\n1 1 1\n0 1 1\n1 0 1\n0 0 1\n"
                          "1 1 0\n0 1 0\n1 0 0\n0 0 0\n");
    EXPECT_EQ(file.contents, "3D LUT of 2 points a side");
}

TEST(LookWriting, ACorrectionFileSaysWhatItDoesNotKeep)
{
    StoredLook look;
    look.cdl.slope[0] = 1.5F;
    look.cdlMode = CdlMode::Clamped;
    EXPECT_EQ(WhyNoCorrection(look), "");
    const WrittenLook clamped = WriteCorrectionFile(look, "Mine");
    EXPECT_NE(clamped.bytes.find("<Slope>1.5 1 1</Slope>"), std::string::npos);
    EXPECT_TRUE(clamped.losses.empty());
    look.cdlMode = CdlMode::Unclamped;
    const WrittenLook free = WriteCorrectionFile(look, "Mine");
    EXPECT_EQ(free.bytes, clamped.bytes);
    EXPECT_EQ(free.losses.size(), 1U);
    look = {};
    EXPECT_NE(WriteCorrectionFile(look, "Mine").losses.at(0).find("beyond 0 and 1"),
              std::string::npos)
        << "there is no CDL that would not clamp";
}

TEST(LookWriting, ALookWithTablesIsNoCorrection)
{
    StoredLook look;
    look.cubeSize = 2;
    EXPECT_EQ(WhyNoCorrection(look),
              "the look has a 3D LUT, and a .cc file holds nothing but a CDL");
    look.curveSize = 2;
    EXPECT_NE(WhyNoCorrection(look).find("a 1D and a 3D LUT"), std::string::npos);
}

} // namespace

} // namespace ReferenceRenderer
