#include "reference_renderer/core/cdl_writer.h"

#include "reference_renderer/core/cdl_reader.h"

#include <gtest/gtest.h>

namespace ReferenceRenderer
{

namespace
{

const Cdl kCdl{{1.1F, 0.333333343F, 1e-7F}, {-0.02F, 0.0F, 0.1F}, {0.9F, 1.0F, 2.4F}, 0.72F};

} // namespace

TEST(CdlWriter, ACorrectionReadsBackToTheLastBit)
{
    const CdlFile file = ReadCdl(CorrectionFileText(kCdl, "cool_night"), "a.cc", "");
    EXPECT_EQ(file.cdl.slope, kCdl.slope);
    EXPECT_EQ(file.cdl.offset, kCdl.offset);
    EXPECT_EQ(file.cdl.power, kCdl.power);
    EXPECT_EQ(file.cdl.saturation, kCdl.saturation);
    EXPECT_EQ(file.id, "cool_night");
    EXPECT_EQ(file.description, "cool_night");
    EXPECT_TRUE(file.warnings.empty());
}

TEST(CdlWriter, TheTextIsAColorCorrectionAsOthersWriteIt)
{
    EXPECT_EQ(CorrectionFileText({}, "plain"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<ColorCorrection xmlns=\"urn:ASC:CDL:v1.2\" id=\"plain\">\n"
              "    <SOPNode>\n"
              "        <Description>plain</Description>\n"
              "        <Slope>1 1 1</Slope>\n"
              "        <Offset>0 0 0</Offset>\n"
              "        <Power>1 1 1</Power>\n"
              "    </SOPNode>\n"
              "    <SatNode>\n"
              "        <Saturation>1</Saturation>\n"
              "    </SatNode>\n"
              "</ColorCorrection>\n");
}

TEST(CdlWriter, TitlesThatAreNoNameAreDescribedAndGetAnIdThatIs)
{
    const CdlFile file = ReadCdl(CorrectionFileText({}, "7 <dark> & \"cool\""), "a.cc", "");
    EXPECT_EQ(file.id, "look_7__dark_____cool_");
    EXPECT_EQ(file.description, "7 <dark> & \"cool\"");
    EXPECT_EQ(ReadCdl(CorrectionFileText({}, ""), "a.cc", "").id, "look_");
}

} // namespace ReferenceRenderer
