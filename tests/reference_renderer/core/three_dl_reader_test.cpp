#include "reference_renderer/core/three_dl_reader.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace ReferenceRenderer
{

namespace
{

using Positions = std::vector<double>;

Positions Even(int size, double top)
{
    Positions positions;
    for (int i = 0; i < size; ++i)
    {
        positions.push_back(std::floor(i * (top + 1.0) / (size - 1)));
    }
    positions.back() = top;
    return positions;
}

// The text of the nodes of `grading` at the positions, of 1 at `inputTop`, in codes up to `top`.
std::string Nodes(const Positions& positions, double inputTop, double top, const Grading& grading)
{
    std::string text;
    for (const double r : positions)
    {
        for (const double g : positions)
        {
            for (const double b : positions)
            {
                const Rgb node =
                    grading({static_cast<float>(r / inputTop), static_cast<float>(g / inputTop),
                             static_cast<float>(b / inputTop)});
                for (const float value : {node.r, node.g, node.b})
                {
                    const double code = std::clamp(std::round(value * top), 0.0, top);
                    text += ' ' + std::to_string(static_cast<int>(code));
                }
                text += '\n';
            }
        }
    }
    return text;
}

std::string Line(const Positions& positions)
{
    std::string text;
    for (const double position : positions)
    {
        text += std::to_string(static_cast<int>(position)) + ' ';
    }
    return text + '\n';
}

std::string FileText(const Positions& positions, double inputTop, double top,
                     const Grading& grading)
{
    return Line(positions) + Nodes(positions, inputTop, top, grading);
}

// Keeps within 0..1 and mixes all channels along straight lines: exact between nodes.
Rgb Crossed(const Rgb& v)
{
    return {0.7F * v.r + 0.3F * v.b, 0.2F * v.r + 0.8F * v.g, 1.0F - 0.5F * v.g - 0.5F * v.b};
}

// The largest difference between `grading` and the imported file over 0..1.
double LargestError(const std::string& text, const Grading& grading)
{
    const auto look = Prepared(Read3dl(text, "test.3dl").look);
    std::mt19937 random(9);
    std::uniform_real_distribution<float> value(0.0F, 1.0F);
    double largest = 0.0;
    for (int i = 0; i < 20000; ++i)
    {
        const Rgb input{value(random), value(random), value(random)};
        largest = std::max(largest, Distance(look->Grade(input), grading(input)));
    }
    return largest;
}

std::string Failure(const std::string& text)
{
    return ImportMessage(text, "a.3dl");
}

const std::string kTwo = "0 1023\n";
const std::string kEightNodes = "0 0 0\n0 0 1023\n0 1023 0\n0 1023 1023\n1023 0 0\n1023 0 1023\n"
                                "1023 1023 0\n1023 1023 1023\n";

} // namespace

TEST(ThreeDlReader, BlueIsTheFastestAxis)
{
    MemoryFiles files;
    files.files["a.3dl"] = "# made by hand\n\n" + kTwo +
                           "0 0 0\n0 0 1023\n0 0 0\n0 0 1023\n"
                           "0 0 0\n0 0 1023\n0 0 0\n0 512 1023\n";
    const ImportedLook imported = ImportLook("a.3dl", 0, files);
    EXPECT_EQ(imported.contents, "3D LUT: 2 nodes a side, domain 0..1");
    PreparedLook look;
    ASSERT_EQ(look.Read(imported.record), RecordState::Usable);
    EXPECT_LT(Distance(look.Grade({0.0F, 0.0F, 0.5F}), {0.0F, 0.0F, 0.5F}), 1e-5);
    EXPECT_LT(Distance(look.Grade({1.0F, 1.0F, 1.0F}), {0.0F, 512.0F / 1023.0F, 1.0F}), 1e-5);
}

TEST(ThreeDlReader, EverySizeAndDepthGradesAsItsFormula)
{
    struct Case
    {
        int size;
        double inputTop;
        double top;
    };
    for (const Case& c : {Case{17, 1023, 4095}, Case{33, 1023, 65535}, Case{3, 4095, 1023},
                          Case{32, 65535, 65535}, Case{2, 255, 255}, Case{65, 1023, 4095}})
    {
        const double rounding = 0.5 / c.top + 1.0 / c.inputTop + 1e-5; // of nodes and of positions
        EXPECT_LT(
            LargestError(FileText(Even(c.size, c.inputTop), c.inputTop, c.top, Crossed), Crossed),
            rounding)
            << c.size << " nodes";
    }
}

TEST(ThreeDlReader, RoundedEvenPositionsNeedNoCurve)
{
    for (const int size : {17, 33, 65})
    {
        const ReadLook read = Read3dl(FileText(Even(size, 1023), 1023, 1023, Crossed), "a.3dl");
        EXPECT_FALSE(read.look.curves) << size;
        EXPECT_EQ(read.look.cube->domain[0], Interval{}) << size;
        EXPECT_TRUE(read.warnings.empty());
    }
    EXPECT_FALSE(
        Read3dl("0 512 1024\n" + Nodes({0, 512, 1024}, 1024, 1023, Crossed), "a.3dl").look.curves);
}

TEST(ThreeDlReader, UnevenPositionsBecomeACurveBeforeTheCube)
{
    const Positions positions{0, 10, 40, 160, 400, 1023};
    // Straight between the positions of each axis, mixed behind that.
    const auto spread = [&](float value) {
        std::size_t i = 0;
        while (i + 2 < positions.size() && value * 1023.0F > positions[i + 1])
        {
            ++i;
        }
        const double share = (value * 1023.0 - positions[i]) / (positions[i + 1] - positions[i]);
        return static_cast<float>((static_cast<double>(i) + share) / 5.0);
    };
    const Grading grading = [&](const Rgb& v) {
        return Crossed({spread(v.r), spread(v.g), spread(v.b)});
    };
    const std::string text = FileText(positions, 1023, 65535, grading);
    const ReadLook read = Read3dl(text, "a.3dl");
    ASSERT_TRUE(read.look.curves);
    EXPECT_EQ(read.look.curves->size, 1024U) << "an entry for each code";
    EXPECT_LT(LargestError(text, grading), 3e-5);
}

TEST(ThreeDlReader, PositionsMayCoverAPartOfTheRange)
{
    const Positions positions{64, 502, 940};
    const std::string text = FileText(positions, 1023, 65535, [](const Rgb& v) { return v; });
    const auto look = Prepared(Read3dl(text, "a.3dl").look);
    EXPECT_NEAR(look->Grade({0.0F, 0.5F, 1.0F}).r, 64.0 / 1023.0, 3e-5);
    EXPECT_NEAR(look->Grade({0.0F, 0.5F, 1.0F}).g, 0.5, 3e-5);
    EXPECT_NEAR(look->Grade({0.0F, 0.5F, 1.0F}).b, 940.0 / 1023.0, 3e-5);
}

TEST(ThreeDlReader, MeshStatesTheSizeAndTheDepth)
{
    const Positions positions = Even(5, 1023);
    const auto dark = [](const Rgb& v) { return Rgb{0.2F * v.r, 0.1F * v.g, 0.05F * v.b}; };
    const std::string text =
        "3DMESH\nMesh 2 12\n" + FileText(positions, 1023, 4095, dark) + "\nLUT8\ngamma 1.0\n";
    EXPECT_LT(LargestError(text, dark), 0.5 / 4095 + 2.0 / 1023);
    EXPECT_TRUE(Read3dl(text, "a.3dl").warnings.empty());
    EXPECT_EQ(Failure("Mesh 3 12\n" + Line(positions)),
              "a.3dl: line 2: there are 5 positions where Mesh asks for 9; export the LUT again");
    EXPECT_EQ(Failure("Mesh 1 8\n0 512 1023\n0 0 256\n"),
              "a.3dl: line 2: the file ends before the last of 27 nodes; export the LUT again");
    EXPECT_NE(Failure("Mesh 1 8\n0 512 1023\n0 0 256\n" + Nodes({0, 512, 1023}, 1023, 255, dark))
                  .find("line 3: '256' is not a whole number from 0 to 255"),
              std::string::npos);
}

TEST(ThreeDlReader, WithoutAStatedDepthTheLargestValueTellsIt)
{
    const auto warnings = [](double top, double scale) {
        return Read3dl(FileText({0, 1023}, 1023, top,
                                [&](const Rgb& v) {
                                    const auto s = static_cast<float>(scale);
                                    return Rgb{s * v.r, s * v.g, s * v.b};
                                }),
                       "a.3dl")
            .warnings;
    };
    for (const double top : {255.0, 1023.0, 4095.0, 65535.0})
    {
        EXPECT_TRUE(warnings(top, 0.9).empty());
    }
    ASSERT_EQ(warnings(4095, 0.5).size(), 1U);
    EXPECT_EQ(warnings(4095, 0.5)[0], "does not say for how many bits its values are; 4095 counts "
                                      "as white, as the largest is 2048");
}

TEST(ThreeDlReader, FaultyFilesAreRefusedWithTheLine)
{
    EXPECT_EQ(Failure("3DMESH\nMesh 4 12\n"),
              "a.3dl: line 2: the file ends before the positions of the nodes; export the LUT "
              "again");
    EXPECT_NE(
        Failure(kTwo + kEightNodes + "1 1 1\n").find("line 10: there is more than the 8 nodes"),
        std::string::npos);
    EXPECT_NE(Failure(kTwo + kEightNodes.substr(0, kEightNodes.size() - 15))
                  .find("the file ends before the last of 8 nodes"),
              std::string::npos);
    EXPECT_NE(Failure("3DMESH\n0 512 300\n").find("line 2: is not the list of the positions"),
              std::string::npos);
    EXPECT_NE(Failure("3DMESH\n0 0 0\n0 0 0\n").find("line 2: is not the list"), std::string::npos);
    EXPECT_NE(Failure("3DMESH\n0 0.5 1\n").find("line 2: is not the list"), std::string::npos);
    for (const char* node : {"0 -1 0", "0 nan 0", "0 1e9 0", "0 0.5 0", "0 70000 0", "0 0"})
    {
        const std::string message = Failure(kTwo + node + "\n" + kEightNodes);
        EXPECT_NE(message.find("line 2: "), std::string::npos) << node << ": " << message;
        EXPECT_NE(message.find("is not a whole number from 0 to 65535"), std::string::npos);
    }
    EXPECT_NE(Failure(kTwo + "0 0 0 0\n" + kEightNodes).find("line 2: '0' is more than belongs"),
              std::string::npos);
    EXPECT_NE(Failure(kTwo + kEightNodes + "gamma 2.2\n").find("line 10: a gamma other than 1"),
              std::string::npos);
    EXPECT_NE(Failure("Mesh 9 12\n").find("'9' is not a whole number from 1 to 7"),
              std::string::npos);
    EXPECT_NE(Failure("Mesh -1 12\n").find("'-1' is not"), std::string::npos);
}

TEST(ThreeDlReader, PositionsThatLeaveTheirDepthOpenAreRefused)
{
    EXPECT_EQ(Failure("0 250 500\n" + kEightNodes),
              "a.3dl: line 1: the positions of the nodes end at 500, which leaves open for how "
              "many bits they are; export the LUT with positions up to 255, 1023, 4095 or 65535");
    EXPECT_NE(Failure("0 1 70000\n").find("the nodes have 3 positions up to 70000"),
              std::string::npos);
    EXPECT_NE(Failure(Line(Even(257, 1023))).find("the nodes have 257 positions"),
              std::string::npos);
}

} // namespace ReferenceRenderer
