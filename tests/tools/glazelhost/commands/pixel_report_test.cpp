#include "tools/glazelhost/commands/pixel_report.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstring>

namespace GlazelHost
{

using namespace ReferenceRenderer;

namespace
{

// A correction, curves and a weaker cube.
std::unique_ptr<PreparedLook> EveryStep()
{
    Look look = CdlLook(Cdl{{0.5F, 1.0F, 1.0F}, {}, {1.0F, 2.0F, 1.0F}, 1.0F});
    look.curves = CurvesOf(3, [](double x) { return x; });
    look.cube = CubeOf(3, Inverted);
    look.strength = 0.5F;
    return Prepared(look);
}

PixelReport ReportOf(const PreparedLook& look, SampleType depth, const Rgb& input)
{
    PixelReport report;
    report.depth = depth;
    report.manner = "float, not as linear light (because)";
    report.look = "a.cube";
    report.renderer = "R.dll";
    report.input.colour = input;
    report.stored = &look.Stored();
    report.steps =
        Explain(look, depth == SampleType::Byte ? PixelKind::Codes : PixelKind::Floats, input);
    report.rendered.colour = report.steps->result;
    return report;
}

} // namespace

TEST(PixelReport, PixelsAreTakenFromTheirPlace)
{
    Image image;
    image.width = 2;
    image.height = 2;
    image.pixels = PixelBuffer(16, std::byte{0});
    image.pixels[8 + 4 + 2] = std::byte{51};
    EXPECT_EQ(PixelAt(image, 1, 1).colour.r, 0.2F);
    EXPECT_EQ(PixelAt(image, 0, 1).colour.r, 0.0F);
    image.type = SampleType::Float;
    const std::array<float, 16> floats{0, 0, 0, 0, 3, 2, 1, 0.5F};
    image.pixels.resize(sizeof floats);
    std::memcpy(image.pixels.data(), floats.data(), sizeof floats);
    const Pixel pixel = PixelAt(image, 1, 0);
    EXPECT_EQ(Distance(pixel.colour, {1, 2, 3}), 0.0);
    EXPECT_EQ(pixel.alpha, 0.5F);
}

TEST(PixelReport, TheJsonHasEveryStepInOrder)
{
    const auto look = EveryStep();
    const auto json =
        nlohmann::json::parse(PixelJson(ReportOf(*look, SampleType::Float, {1.0F, 0.5F, 0.0F})));
    EXPECT_EQ(json["version"], 1);
    std::vector<std::string> names;
    for (const auto& step : json["steps"])
    {
        names.push_back(step["step"]);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"slope", "offset", "clamp", "power", "saturation",
                                               "clamp", "curves", "cube", "strength"}));
    EXPECT_EQ(json["steps"][0]["by"], (std::vector<double>{0.5, 1, 1}));
    EXPECT_EQ(json["steps"][0]["result"][0], 0.5);
    EXPECT_EQ(json["steps"][2]["on"], true);
    EXPECT_EQ(json["steps"][6]["channels"][0]["entry"], 1);
    const auto& cube = json["steps"][7];
    EXPECT_EQ(cube["points"], 3);
    EXPECT_EQ(cube["corners"].size(), 4U);
    EXPECT_EQ(cube["domain"][2], (std::vector<double>{0, 1}));
    EXPECT_EQ(json["agrees"], true);
    EXPECT_EQ(json["difference"], 0);
    EXPECT_TRUE(json["place"].is_null());
}

TEST(PixelReport, TheTetrahedronIsNamedByTheOrderOfItsAxes)
{
    const auto look = Prepared(CubeLook(CubeOf(2, Same)));
    const auto order = [&](const Rgb& input) {
        const auto json =
            nlohmann::json::parse(PixelJson(ReportOf(*look, SampleType::Float, input)));
        return json["steps"][0]["tetrahedron"].get<std::vector<std::string>>();
    };
    EXPECT_EQ(order({0.9F, 0.5F, 0.1F}), (std::vector<std::string>{"red", "green", "blue"}));
    EXPECT_EQ(order({0.1F, 0.5F, 0.9F}), (std::vector<std::string>{"blue", "green", "red"}));
    EXPECT_EQ(order({0.5F, 0.9F, 0.1F}), (std::vector<std::string>{"green", "red", "blue"}));
}

TEST(PixelReport, TheTextSaysItToo)
{
    const auto look = EveryStep();
    PixelReport report = ReportOf(*look, SampleType::Float, {1.0F, 0.5F, 0.0F});
    report.place = {"p.png", 3, 5, 6};
    const std::string text = PixelText(report);
    for (const char* part :
         {"p.png, frame 3, pixel 5,6", "float, not as linear light (because)", "times 0.5 1 1",
          "to the power 1 2 1", "1D LUT of 3 entries", "3D LUT of 3 points a side", "weight ",
          "tetrahedron along ", "0.5 of the LUTs", "1 0.5 0 (255 128 0 of 255)", ", as told\n"})
    {
        EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
    }
}

TEST(PixelReport, RoundingToCodesIsNoDifferenceAndOneCodeIs)
{
    const auto look = Prepared(CdlLook(Cdl{{0.5F, 1.0F, 1.0F}, {}, {1.0F, 1.0F, 1.0F}, 1.0F}));
    PixelReport report = ReportOf(*look, SampleType::Byte, {51 / 255.0F, 1.0F, 0.0F});
    report.rendered.colour = {26 / 255.0F, 1.0F, 0.0F}; // 25.5 is told
    EXPECT_TRUE(Agrees(report));
    report.rendered.colour.r = 25 / 255.0F;
    EXPECT_TRUE(Agrees(report)) << "either neighbour is right in the middle between two";
    report.rendered.colour.r = 27 / 255.0F;
    EXPECT_FALSE(Agrees(report));
    EXPECT_NEAR(DifferenceOf(report), 1.5 / 255, 1e-6);
    EXPECT_NE(PixelText(report).find("more than rounding explains"), std::string::npos);
}

TEST(PixelReport, FloatsMayDifferInTheirLastPlacesOnly)
{
    const auto look = Prepared(CdlLook({}, CdlMode::Unclamped));
    PixelReport report = ReportOf(*look, SampleType::Float, {8.0F, 0.0F, 0.0F});
    report.rendered.colour.r = 8.000005F;
    EXPECT_TRUE(Agrees(report));
    EXPECT_NE(PixelText(report).find(" of rounding"), std::string::npos);
    report.rendered.colour.r = 8.0001F;
    EXPECT_FALSE(Agrees(report));
    report.rendered.colour.r = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(Agrees(report));
}

TEST(PixelReport, OfALookThatNobodyCanReadOnlyTheEndsAreTold)
{
    PixelReport report;
    report.look = "a.look";
    report.renderer = "R.dll";
    report.rendered.colour = {1.0F, 0.0F, 0.0F};
    const std::string text = PixelText(report);
    EXPECT_NE(text.find("only R.dll can read this look's record"), std::string::npos);
    EXPECT_NE(text.find("1 0 0 (255 0 0 of 255)\n"), std::string::npos);
    const auto json = nlohmann::json::parse(PixelJson(report));
    EXPECT_EQ(json["readable"], false);
    EXPECT_TRUE(json["steps"].empty() && json["result"].is_null() && json["agrees"].is_null());
    EXPECT_EQ(json["rendered"]["codes"][0], 255);
    EXPECT_TRUE(Agrees(report));
}

} // namespace GlazelHost
