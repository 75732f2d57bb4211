#include "reference_renderer/core/csp_reader.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace ReferenceRenderer
{

namespace
{

const std::string kHead1d = "CSPLUTV100\n1D\n\n";
const std::string kHead3d =
    "CSPLUTV100\n3D\n\nBEGIN METADATA\n\"a title\"\n2 2 2\nEND METADATA\n\n";
const std::string kPlain = "2\n0.0 1.0\n0.0 1.0\n";
const std::string kPlainPoints = kPlain + kPlain + kPlain + "\n";
const std::string kEightNodes = "0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n";

std::string Number(double value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.9g ", value);
    return text.data();
}

struct Point
{
    double input;
    double output;
};

std::string PointsText(const std::vector<Point>& points)
{
    std::string text = std::to_string(points.size()) + "\n";
    for (const Point& point : points)
    {
        text += Number(point.input);
    }
    text += "\n";
    for (const Point& point : points)
    {
        text += Number(point.output);
    }
    return text + "\n";
}

double ValueOf(const std::vector<Point>& points, double x)
{
    if (x <= points.front().input)
    {
        return points.front().output;
    }
    for (std::size_t i = 1; i < points.size(); ++i)
    {
        const Point& a = points[i - 1];
        const Point& b = points[i];
        if (x <= b.input)
        {
            return a.output + (b.output - a.output) * (x - a.input) / (b.input - a.input);
        }
    }
    return points.back().output;
}

std::string CubePart(std::uint32_t size, const Grading& grading)
{
    std::string text;
    const std::string side = std::to_string(size) + " ";
    const Cube cube = CubeOf(size, grading);
    for (std::size_t i = 0; i + kNodePadding < cube.nodes.size(); ++i)
    {
        text += Number(cube.nodes[i]) + (i % 3 == 2 ? "\n" : "");
    }
    return side + side + side + "\n" + text;
}

// Straight, so exact between nodes; values beyond 0..1 reach it limited.
Rgb Crossed(const Rgb& v)
{
    const auto limited = [](float x) { return std::clamp(x, 0.0F, 1.0F); };
    const Rgb in{limited(v.r), limited(v.g), limited(v.b)};
    return {0.7F * in.r + 0.5F * in.b, 0.2F * in.r + 0.8F * in.g, 1.0F - 0.5F * in.g - in.b};
}

// The largest difference between the imported file and `grading` over low..high.
double LargestError(const std::string& text, const Grading& grading, float low, float high)
{
    const auto look = Prepared(ReadCsp(text, "test.csp").look);
    std::mt19937 random(9);
    std::uniform_real_distribution<float> value(low, high);
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
    return ImportMessage(text, "a.csp");
}

} // namespace

TEST(CspReader, RedIsTheFastestAxisOfACube)
{
    MemoryFiles files;
    files.files["a.csp"] = kHead3d + kPlainPoints + "2 2 2\n" + kEightNodes;
    const ImportedLook imported = ImportLook("a.csp", 0, files);
    EXPECT_EQ(imported.contents, "3D LUT: 2 nodes a side, domain 0..1");
    PreparedLook look;
    ASSERT_EQ(look.Read(imported.record), RecordState::Usable);
    EXPECT_LT(Distance(look.Grade({0.9F, 0.4F, 0.2F}), {0.9F, 0.4F, 0.2F}), 1e-5);
}

TEST(CspReader, ATableOfOneDimensionIsCurves)
{
    const ReadLook read = ReadCsp(kHead1d + kPlainPoints + "3\n0 1 2\n.5 .25 0\n1 0 -1\n", "a.csp");
    ASSERT_TRUE(read.look.curves && !read.look.cube);
    EXPECT_EQ(read.look.curves->values, (std::vector<float>{0, .5F, 1, 1, .25F, 0, 2, 0, -1}));
    EXPECT_EQ(read.look.curves->domain[1], Interval{});
}

TEST(CspReader, TwoPointsInFrontAreTheDomain)
{
    const std::string points = "2\n-1 3\n0 1\n";
    const ReadLook read =
        ReadCsp(kHead3d + points + "2\n0 2\n0 1\n" + kPlain + CubePart(5, Crossed), "a.csp");
    EXPECT_FALSE(read.look.curves);
    EXPECT_EQ(read.look.cube->domain[0], (Interval{-1, 3}));
    EXPECT_EQ(read.look.cube->domain[1], (Interval{0, 2}));
    EXPECT_EQ(read.look.cube->domain[2], (Interval{0, 1}));
}

TEST(CspReader, PointsInFrontOfACubeAreStraightBetweenAndConstantBeyond)
{
    // Each channel has its own: even steps, uneven ones, and some that leave the cube.
    const std::vector<Point> red{{0, 0}, {0.25, 0.5}, {0.5, 0.7}, {0.75, 0.9}, {1, 1}};
    const std::vector<Point> green{{-0.5, 0}, {0.1, 0.3}, {0.35, 0.6}, {2, 0.9}};
    const std::vector<Point> blue{{0, -0.25}, {0.5, 0.5}, {1.5, 1.25}};
    const std::string text =
        kHead3d + PointsText(red) + PointsText(green) + PointsText(blue) + CubePart(9, Crossed);
    const Grading grading = [&](const Rgb& v) {
        return Crossed({static_cast<float>(ValueOf(red, v.r)),
                        static_cast<float>(ValueOf(green, v.g)),
                        static_cast<float>(ValueOf(blue, v.b))});
    };
    EXPECT_LT(LargestError(text, grading, -1.0F, 2.5F), 5e-5);
    EXPECT_TRUE(ReadCsp(text, "a.csp").warnings.empty());
}

TEST(CspReader, ALogarithmInFrontOfACubeIsKeptWhereALookCan)
{
    std::vector<Point> points;
    for (int i = 0; i <= 64; ++i)
    {
        points.push_back({0.002 * std::exp2(i * 13.0 / 64.0), i / 64.0});
    }
    const std::string front = PointsText(points);
    const std::string text = kHead3d + front + front + front + CubePart(17, Crossed);
    const Grading grading = [&](const Rgb& v) {
        return Crossed({static_cast<float>(ValueOf(points, v.r)),
                        static_cast<float>(ValueOf(points, v.g)),
                        static_cast<float>(ValueOf(points, v.b))});
    };
    const ReadLook read = ReadCsp(text, "a.csp");
    const double error = LargestError(text, grading, 0.0F, 17.0F);
    EXPECT_LT(error, 1.0 / 255.0);
    EXPECT_LT(LargestError(text, grading, 0.0F, 0.01F), read.largestError * 1.2 + 3e-5)
        << "the steep end";
    ASSERT_EQ(read.warnings.size(), read.largestError > 1.0 / 255.0 ? 1U : 0U);
}

TEST(CspReader, PointsInFrontOfCurvesJoinThem)
{
    const std::vector<Point> points{{0, 0.1}, {0.3, 0.8}, {2, 0.9}};
    std::string text = kHead1d + PointsText(points) + PointsText(points) + PointsText(points);
    text += "257\n";
    for (int i = 0; i < 257; ++i)
    {
        const double x = i / 256.0;
        text += Number(x * x) + Number(1 - x) + Number(0.5 * x) + "\n";
    }
    const Grading grading = [&](const Rgb& v) {
        const auto square = [](double x) {
            const double cell = std::min(std::floor(x * 256.0), 255.0);
            const double low = cell / 256.0;
            const double high = (cell + 1) / 256.0;
            return low * low + (high * high - low * low) * (x * 256.0 - cell);
        };
        return Rgb{static_cast<float>(square(ValueOf(points, v.r))),
                   static_cast<float>(1 - ValueOf(points, v.g)),
                   static_cast<float>(0.5 * ValueOf(points, v.b))};
    };
    EXPECT_LT(LargestError(text, grading, -0.2F, 2.2F), 1e-4);
}

TEST(CspReader, FaultyFilesAreRefusedWithTheLine)
{
    EXPECT_EQ(Failure("CSPLUTV200\n3D\n"),
              "a.csp: line 1: the first line is not CSPLUTV100; export the LUT again");
    EXPECT_EQ(Failure("CSPLUTV100\n2D\n"),
              "a.csp: line 2: '2D' is not 1D or 3D; export the LUT as one of these");
    EXPECT_NE(Failure("CSPLUTV100\n3D\nBEGIN METADATA\nx\n").find("ends before END METADATA"),
              std::string::npos);
    const std::string front = "CSPLUTV100\n3D\n";
    EXPECT_NE(Failure(front + "1\n0\n0\n").find("line 3: '1' is not a whole number from 2"),
              std::string::npos);
    EXPECT_NE(Failure(front + "-2\n").find("line 3: '-2' is not"), std::string::npos);
    EXPECT_NE(Failure(front + "2\n0 0\n0 1\n").find("line 4: the inputs of the curve do not rise"),
              std::string::npos);
    EXPECT_NE(Failure(front + "2\n0 nan\n0 1\n").find("line 4: 'nan' is not a number"),
              std::string::npos);
    EXPECT_NE(Failure(front + "2\n0 inf\n0 1\n").find("line 4: 'inf' is not a number"),
              std::string::npos);
    EXPECT_NE(Failure(front + "2\n0\n0 1\n").find("line 4: a number is missing"),
              std::string::npos);
    EXPECT_NE(Failure(front + "2\n0 1 2\n0 1\n").find("line 4: '2' is more than belongs here"),
              std::string::npos);
    const std::string ready = front + kPlainPoints; // 12 lines
    EXPECT_NE(
        Failure(ready + "2 3 2\n" + kEightNodes).find("line 13: the sizes of the cube differ"),
        std::string::npos);
    EXPECT_NE(Failure(ready + "257 257 257\n").find("line 13: '257' is not"), std::string::npos);
    EXPECT_NE(Failure(ready + "200 200 200\n0 0 0\n").find("the last of 8000000 entries"),
              std::string::npos);
    EXPECT_NE(Failure(ready + "2 2 2\n" + kEightNodes.substr(6)).find("ends before the last entry"),
              std::string::npos);
    EXPECT_EQ(Failure(ready + "2 2 2\n" + kEightNodes + "1 1 1\n"),
              "a.csp: line 22: there are more entries than the size asks for; correct it or export "
              "the LUT again");
    EXPECT_NE(Failure(ready + "2 2 2\n0 0 0 0\n" + kEightNodes).find("line 14: '0' is more than"),
              std::string::npos);
}

} // namespace ReferenceRenderer
