#include "reference_renderer/editor/export_format.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

namespace ReferenceRenderer
{

namespace
{

TEST(ExportFormat, TheEndingOfANameSaysMoreThanTheChoice)
{
    EXPECT_EQ(ExportFormatOf("a.cube", 2).points, 65U);
    EXPECT_EQ(ExportFormatOf("a.CUBE", 3).points, 33U);
    EXPECT_STREQ(ExportFormatOf("a.cc", 0).ending, ".cc");
    EXPECT_STREQ(ExportFormatOf("a.look", 1).ending, ".look");
    EXPECT_EQ(ExportFormatOf("a.b", 1).points, 17U);
    EXPECT_EQ(ExportFormatOf(".cc", 0).points, 33U) << "a name, not an ending";
    EXPECT_STREQ(ExportFormatOf("a", 99).ending, ".look") << "no choice that there is";
}

TEST(ExportFormat, ANameGetsTheEndingOnce)
{
    EXPECT_EQ(WithEnding("warm", kExportFormats[0]), "warm.cube");
    EXPECT_EQ(WithEnding("warm.Cube", kExportFormats[0]), "warm.Cube");
    EXPECT_EQ(WithEnding("warm.v2", kExportFormats[3]), "warm.v2.cc");
}

TEST(ExportFormat, EachCubeHasItsPointsAndTheLook)
{
    const auto look = Prepared(CubeLook(CubeOf(2, Inverted)));
    for (const std::size_t i : {0U, 1U, 2U})
    {
        const WrittenLook file = Exported(kExportFormats[i], *look, {}, "Mine");
        EXPECT_NE(file.bytes.find("LUT_3D_SIZE " + std::to_string(*kExportFormats[i].points)),
                  std::string::npos);
        EXPECT_NE(file.bytes.find("\n1 1 1\n"), std::string::npos) << "of black";
        EXPECT_EQ(WhyNotExported(kExportFormats[i], look->Stored()), "");
    }
}

TEST(ExportFormat, ALookWithALutIsRefusedAsACorrectionAndGoesWholeAsALook)
{
    const auto record = RecordOf(CubeLook(CubeOf(2, Inverted)));
    PreparedLook look;
    ASSERT_EQ(look.Read(record), RecordState::Usable);
    EXPECT_EQ(WhyNotExported(kExportFormats[3], look.Stored()),
              "the look has a 3D LUT, and a .cc file holds nothing but a CDL; export a .cube file, "
              "or remove the LUT");
    EXPECT_EQ(WhyNotExported(kExportFormats[4], look.Stored()), "");
    const WrittenLook whole = Exported(kExportFormats[4], look, record, "");
    EXPECT_EQ(whole.bytes, std::string(record.begin(), record.end()));
}

TEST(ExportFormat, ACorrectionHasItsNumbers)
{
    Cdl cdl;
    cdl.slope[1] = 0.75F;
    const auto look = Prepared(CdlLook(cdl));
    const WrittenLook file = Exported(kExportFormats[3], *look, {}, "Mine");
    EXPECT_NE(file.bytes.find("<Slope>1 0.75 1</Slope>"), std::string::npos);
}

} // namespace

} // namespace ReferenceRenderer
