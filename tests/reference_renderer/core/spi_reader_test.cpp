#include "reference_renderer/core/spi_reader.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

namespace ReferenceRenderer
{

namespace
{

// Red is the slowest here; the order is free.
std::string Nodes()
{
    std::string text;
    for (int i = 0; i < 8; ++i)
    {
        const int red = i / 4;
        const int green = i / 2 % 2;
        const int blue = i % 2;
        text += std::to_string(red) + " " + std::to_string(green) + " " + std::to_string(blue) +
                " " + std::to_string(red * 0.5) + " " + std::to_string(green) + " " +
                std::to_string(1 - blue) + "\n";
    }
    return text;
}

const std::string kCubeHead = "SPILUT 1.0\n3 3\n2 2 2\n";
const std::string kCurveHead = "Version 1\nFrom -0.5 2\nLength 3\nComponents 1\n{\n";

} // namespace

TEST(SpiReader, OneCurveServesAllChannels)
{
    MemoryFiles files;
    files.files["a.spi1d"] = kCurveHead + " 0.0\n 0.25\n 1.0\n}\n";
    const ImportedLook imported = ImportLook("a.spi1d", 0, files);
    EXPECT_EQ(imported.kind, "1D LUT");
    EXPECT_EQ(imported.contents, "1D LUT: 3 entries, domain -0.5..2");
    PreparedLook look;
    ASSERT_EQ(look.Read(imported.record), RecordState::Usable);
    const Rgb graded = look.Grade({-0.5F, 0.75F, 2.0F});
    EXPECT_NEAR(graded.r, 0.0, 1e-5);
    EXPECT_NEAR(graded.g, 0.25, 1e-5);
    EXPECT_NEAR(graded.b, 1.0, 1e-5);
}

TEST(SpiReader, ThreeComponentsAreRedGreenAndBlue)
{
    std::vector<std::string> warnings;
    const Look look = ReadSpi1d("Version 1\nLength 2\nComponents 3\nNote x\n{\n0 1 2\n3 4 5\n}\n",
                                "a.spi1d", warnings);
    EXPECT_EQ(look.curves->values, (std::vector<float>{0, 3, 1, 4, 2, 5}));
    EXPECT_EQ(look.curves->domain[2], Interval{});
    EXPECT_EQ(warnings, std::vector<std::string>{"'Note' is not a known keyword and was ignored"});
}

TEST(SpiReader, NodesGoWhereTheirNumbersSay)
{
    MemoryFiles files;
    files.files["a.spi3d"] = kCubeHead + Nodes();
    const ImportedLook imported = ImportLook("a.spi3d", 0, files);
    EXPECT_EQ(imported.contents, "3D LUT: 2 nodes a side, domain 0..1");
    PreparedLook look;
    ASSERT_EQ(look.Read(imported.record), RecordState::Usable);
    EXPECT_LT(Distance(look.Grade({1.0F, 0.0F, 0.25F}), {0.5F, 0.0F, 0.75F}), 1e-5);
    EXPECT_LT(Distance(look.Grade({0.5F, 1.0F, 1.0F}), {0.25F, 1.0F, 0.0F}), 1e-5);
}

TEST(SpiReader, FaultyCurvesAreRefusedWithTheLine)
{
    const auto failure = [](const std::string& text) { return ImportMessage(text, "a.spi1d"); };
    EXPECT_EQ(failure(kCurveHead + "0\n1\n"),
              "a.spi1d: line 7: the file ends before the last entry; export the LUT again");
    EXPECT_EQ(failure(kCurveHead + "0\n1\n2\n3\n}\n"),
              "a.spi1d: line 9: there are more entries than Length says; correct it or export the "
              "LUT again");
    EXPECT_EQ(failure(kCurveHead + "0\nnan\n2\n}\n"),
              "a.spi1d: line 7: 'nan' is not a number that can be used; correct it");
    EXPECT_EQ(failure(kCurveHead + "0 1\n1\n2\n}\n"),
              "a.spi1d: line 6: '1' is more than belongs here; remove it");
    EXPECT_NE(failure("Version 1\nLength 2\nComponents 2\n{\n0 1\n0 1\n}\n").find("Components"),
              std::string::npos);
    EXPECT_NE(failure("Version 1\nFrom 1 0\n{\n}\n").find("From does not rise"), std::string::npos);
    EXPECT_NE(failure("Version 2\n{\n}\n").find("'2' is not a whole number from 1 to 1"),
              std::string::npos);
}

TEST(SpiReader, FaultyCubesAreRefusedWithTheLine)
{
    const auto failure = [](const std::string& text) { return ImportMessage(text, "a.spi3d"); };
    EXPECT_EQ(failure("SPILUT 1.0\n3 3\n2 2 2\n" + Nodes().substr(0, 120)).find("a.spi3d: line "),
              0U);
    EXPECT_EQ(failure(kCubeHead + Nodes() + "0 0 0 1 1 1\n"),
              "a.spi3d: line 12: there are more nodes than the size asks for; correct it or export "
              "the LUT again");
    std::string twice = Nodes();
    twice.replace(0, 5, "1 1 1");
    EXPECT_EQ(failure(kCubeHead + twice),
              "a.spi3d: line 11: the node was given before; export the LUT again");
    EXPECT_NE(failure("SPILUT 1.0\n3 3\n2 3 2\n").find("'3' is not a whole number from 2 to 2"),
              std::string::npos);
    EXPECT_NE(failure("SPILUT 1.0\n3 3\n256 256 256\n0 0 0 1 1 1\n").find("16777216 nodes"),
              std::string::npos);
    EXPECT_NE(failure("SPILUT 2.0\n3 3\n2 2 2\n").find("only version 1.0"), std::string::npos);
}

} // namespace ReferenceRenderer
