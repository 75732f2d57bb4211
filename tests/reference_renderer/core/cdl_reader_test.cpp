#include "reference_renderer/core/cdl_reader.h"

#include "reference_renderer/core/import_error.h"

#include <gtest/gtest.h>

namespace ReferenceRenderer
{

namespace
{

std::string Correction(const std::string& id, const std::string& slope = "1.1 1.0 0.9",
                       const std::string& saturation = "0.8")
{
    return "<ColorCorrection id=\"" + id + "\"><SOPNode><Slope>" + slope +
           "</Slope><Offset>0.01 -0.02 3e-2</Offset><Power>1 1.2 .9</Power></SOPNode><SatNode>"
           "<Saturation>" +
           saturation + "</Saturation></SatNode></ColorCorrection>";
}

ImportError Failure(const std::string& text, const std::string& id = "")
{
    try
    {
        ReadCdl(text, "test.cc", id);
        return {0, ""};
    }
    catch (const ImportError& error)
    {
        return error;
    }
}

bool Fails(const std::string& text, const std::string& words)
{
    const std::string message = Failure(text).message;
    EXPECT_NE(message.find(words), std::string::npos) << message;
    return message.find("test.cc: ") == 0;
}

} // namespace

TEST(CdlReader, ACorrectionIsReadWhole)
{
    const CdlFile file =
        ReadCdl("<?xml version=\"1.0\"?>\n<!-- x -->" + Correction("a"), "x.cc", "");
    EXPECT_EQ(file.id, "a");
    EXPECT_EQ(file.cdl.slope, (std::array{1.1F, 1.0F, 0.9F}));
    EXPECT_EQ(file.cdl.offset, (std::array{0.01F, -0.02F, 0.03F}));
    EXPECT_EQ(file.cdl.power, (std::array{1.0F, 1.2F, 0.9F}));
    EXPECT_EQ(file.cdl.saturation, 0.8F);
    EXPECT_TRUE(file.warnings.empty());
}

TEST(CdlReader, MissingStepsAreNeutral)
{
    const CdlFile file = ReadCdl("<ColorCorrection><SOPNode><Offset>1 2 3</Offset></SOPNode>"
                                 "</ColorCorrection>",
                                 "x.cc", "");
    EXPECT_EQ(file.cdl.slope, (std::array{1.0F, 1.0F, 1.0F}));
    EXPECT_EQ(file.cdl.offset, (std::array{1.0F, 2.0F, 3.0F}));
    EXPECT_EQ(file.cdl.saturation, 1.0F);
    EXPECT_EQ(ReadCdl("<ColorCorrection/>", "x.cc", "").cdl.power, (std::array{1.0F, 1.0F, 1.0F}));
}

TEST(CdlReader, PrefixesAndBothSpellingsOfTheNodesAreRead)
{
    const CdlFile file =
        ReadCdl("<cdl:ColorCorrection xmlns:cdl=\"urn:ASC:CDL:v1.2\"><cdl:SopNode><cdl:Slope>2 2 "
                "2</cdl:Slope></cdl:SopNode><cdl:SATNode><cdl:Saturation>0.5</cdl:Saturation>"
                "</cdl:SATNode></cdl:ColorCorrection>",
                "x.cc", "");
    EXPECT_EQ(file.cdl.slope[0], 2.0F);
    EXPECT_EQ(file.cdl.saturation, 0.5F);
}

TEST(CdlReader, CommentsAndLineBreaksInsideNumbersDoNotMatter)
{
    const CdlFile file = ReadCdl("<ColorCorrection><SOPNode><Slope>\n 1.5\n<!-- green -->1 1 "
                                 "</Slope></SOPNode></ColorCorrection>",
                                 "x.cc", "");
    EXPECT_EQ(file.cdl.slope[0], 1.5F);
}

TEST(CdlReader, TheFirstOfACollectionIsTakenAndTheOthersAreNamed)
{
    const CdlFile file = ReadCdl("<ColorCorrectionCollection>" + Correction("a") +
                                     Correction("b", "2 2 2") + "</ColorCorrectionCollection>",
                                 "x.ccc", "");
    EXPECT_EQ(file.id, "a");
    ASSERT_EQ(file.warnings.size(), 1U);
    EXPECT_EQ(file.warnings[0], "holds 2 corrections; the first was taken out of 'a', 'b'");
}

TEST(CdlReader, ACorrectionIsChosenById)
{
    const std::string text = "<ColorDecisionList><ColorDecision>" + Correction("a") +
                             "</ColorDecision><ColorDecision>" + Correction("b", "2 2 2") +
                             "</ColorDecision></ColorDecisionList>";
    const CdlFile file = ReadCdl(text, "x.cdl", "b");
    EXPECT_EQ(file.cdl.slope[0], 2.0F);
    EXPECT_TRUE(file.warnings.empty());
    const ImportError error = Failure(text, "c");
    EXPECT_EQ(error.code, RendererAPI::kImportNotFound);
    EXPECT_EQ(error.message, "test.cc: no correction has the id 'c'; choose one of 'a', 'b'");
}

TEST(CdlReader, NumbersThatNoCorrectionTakesNameTheCorrection)
{
    EXPECT_TRUE(Fails(Correction("shot 7", "1 -0.1 1"), "correction 'shot 7': Slope is negative"));
    EXPECT_TRUE(Fails(Correction("a", "1 1 1", "-1"), "correction 'a': Saturation is negative"));
    EXPECT_TRUE(Fails("<ColorCorrection><SOPNode><Power>1 0 1</Power></SOPNode></ColorCorrection>",
                      "the correction without id: Power is not above 0"));
}

TEST(CdlReader, NumbersMustBeThreeAndReadable)
{
    EXPECT_TRUE(Fails(Correction("a", "1 1"), "Slope needs 3 numbers; add the missing ones"));
    EXPECT_TRUE(Fails(Correction("a", "1 1 1 1"), "Slope has more than 3 numbers"));
    EXPECT_TRUE(Fails(Correction("a", "1 one 1"), "but 'one' is none"));
    EXPECT_TRUE(Fails(Correction("a", "1 nan 1"), "but 'nan' is none"));
}

TEST(CdlReader, BrokenXmlNamesTheLine)
{
    EXPECT_TRUE(
        Fails("<ColorCorrection>\n<SOPNode>\n</ColorCorrection>", "line 3: no well-formed XML"));
    EXPECT_TRUE(Fails("<ColorCorrection", "no well-formed XML"));
}

TEST(CdlReader, OtherXmlIsNotTakenForACorrection)
{
    const ImportError error = Failure("<svg><ColorCorrection/></svg>");
    EXPECT_EQ(error.code, RendererAPI::kImportUnrecognised);
    EXPECT_EQ(Failure("<!-- nothing -->").code, RendererAPI::kImportUnrecognised);
    EXPECT_TRUE(Fails("<ColorCorrectionCollection/>", "holds no ColorCorrection"));
}

TEST(CdlReader, DocumentsThatCouldExhaustTheParserAreRefused)
{
    std::string deep;
    for (int i = 0; i < 200000; ++i)
    {
        deep += "<a>";
    }
    EXPECT_TRUE(Fails(deep, "nested too deeply"));
    EXPECT_TRUE(Fails("<!DOCTYPE a [<!ENTITY b \"c\">]><ColorCorrection/>", "document type"));
}

TEST(CdlReader, XmlIsRecognisedByItsFirstCharacter)
{
    EXPECT_TRUE(LooksLikeXml("\n  <ColorCorrection/>"));
    EXPECT_FALSE(LooksLikeXml("LUT_3D_SIZE 2 <"));
    EXPECT_FALSE(LooksLikeXml(""));
}

} // namespace ReferenceRenderer
