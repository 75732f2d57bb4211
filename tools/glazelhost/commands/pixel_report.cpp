#include "tools/glazelhost/commands/pixel_report.h"

#include "reference_renderer/core/colour_math.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <span>
#include <vector>

namespace GlazelHost
{

namespace
{

using namespace ReferenceRenderer;

using Json = nlohmann::ordered_json;

constexpr int kJsonVersion = 1;
constexpr std::array kChannelNames{"red", "green", "blue"};

// Floats of one formula that two compilations evaluate: some units in the last place.
constexpr double kFloatRounding = 1e-6;
// A value that lies between two codes, give or take such an error.
constexpr double kCodeRounding = 0.5 + 1e-3;

std::array<float, 3> ChannelsOf(const Rgb& colour) noexcept
{
    return {colour.r, colour.g, colour.b};
}

std::string Number(float value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.7g", double{value});
    return text.data();
}

std::string Numbers(std::span<const float> values)
{
    std::string text;
    for (const float value : values)
    {
        text += (text.empty() ? "" : " ") + Number(value);
    }
    return text;
}

std::string Numbers(const Rgb& colour)
{
    return Numbers(ChannelsOf(colour));
}

std::array<std::uint32_t, 3> CodesOf(const Rgb& colour) noexcept
{
    return {Code8(colour.r), Code8(colour.g), Code8(colour.b)};
}

std::string WithCodes(const Rgb& colour)
{
    const auto [red, green, blue] = CodesOf(colour);
    return Numbers(colour) + " (" + std::to_string(red) + " " + std::to_string(green) + " " +
           std::to_string(blue) + " of 255)";
}

std::string Counts(std::span<const std::uint32_t> numbers)
{
    std::string text;
    for (const std::uint32_t number : numbers)
    {
        text += (text.empty() ? "" : " ") + std::to_string(number);
    }
    return text;
}

// One step of a look: a line for people, with more below it, and the same for programs.
struct Step
{
    std::string name;
    std::string how;
    Rgb result;
    Json facts = Json::object(); // beside its name and result
    std::vector<std::string> details{};
};

Json DomainJson(const Domain& domain)
{
    Json json = Json::array();
    for (const Interval& interval : domain)
    {
        json.push_back({interval.low, interval.high});
    }
    return json;
}

void AddCorrection(std::vector<Step>& list, const StoredLook& look, const CdlSteps& steps)
{
    const Cdl& cdl = look.cdl;
    const bool clamps = look.cdlMode == CdlMode::Clamped;
    const auto clamp = [&](const Rgb& result) {
        list.push_back({"clamp", clamps ? "to 0..1" : "none", result, {{"on", clamps}}});
    };
    list.push_back({"slope", "times " + Numbers(cdl.slope), steps.slope, {{"by", cdl.slope}}});
    list.push_back({"offset", "plus " + Numbers(cdl.offset), steps.offset, {{"by", cdl.offset}}});
    clamp(steps.limited);
    list.push_back(
        {"power", "to the power " + Numbers(cdl.power), steps.power, {{"by", cdl.power}}});
    list.push_back({"saturation",
                    "times " + Number(cdl.saturation) + " around luma " + Number(steps.luma),
                    steps.saturation,
                    {{"by", cdl.saturation}, {"luma", steps.luma}}});
    clamp(steps.result);
}

void AddCurves(std::vector<Step>& list, const StoredLook& look, const CurveSteps& steps)
{
    Step step{"curves", "1D LUT of " + std::to_string(look.curveSize) + " entries", steps.result};
    step.facts = {{"entries", look.curveSize}, {"domain", DomainJson(look.curveDomain)}};
    step.facts["channels"] = Json::array();
    for (std::size_t i = 0; i < steps.places.size(); ++i)
    {
        const CurvePlace& place = steps.places[i];
        step.details.push_back(std::string(kChannelNames[i]) + ": entry " +
                               std::to_string(place.entry) + " + " + Number(place.fraction) +
                               ", between " + Number(place.low) + " and " + Number(place.high));
        step.facts["channels"].push_back({{"entry", place.entry},
                                          {"fraction", place.fraction},
                                          {"low", place.low},
                                          {"high", place.high}});
    }
    list.push_back(std::move(step));
}

// The axes in the order in which the corners of a tetrahedron go along them.
std::array<const char*, 3> OrderOf(const CubeSteps& steps)
{
    std::array<const char*, 3> order{};
    for (std::size_t i = 0; i < order.size(); ++i)
    {
        for (std::size_t axis = 0; axis < kChannelNames.size(); ++axis)
        {
            if (steps.corners[i + 1].node[axis] != steps.corners[i].node[axis])
            {
                order[i] = kChannelNames[axis];
            }
        }
    }
    return order;
}

void AddCube(std::vector<Step>& list, const StoredLook& look, const CubeSteps& steps)
{
    const auto [first, second, third] = OrderOf(steps);
    Step step{"cube", "3D LUT of " + std::to_string(look.cubeSize) + " points a side",
              steps.result};
    step.details = {"cell " + Counts(steps.place.cell) + ", at " + Numbers(steps.place.fractions) +
                        " of it",
                    std::string("tetrahedron along ") + first + ", " + second + ", " + third};
    step.facts = {{"points", look.cubeSize},
                  {"domain", DomainJson(look.cubeDomain)},
                  {"cell", steps.place.cell},
                  {"fractions", steps.place.fractions},
                  {"tetrahedron", {first, second, third}},
                  {"corners", Json::array()}};
    for (const CubeCorner& corner : steps.corners)
    {
        step.details.push_back("node " + Counts(corner.node) + ", weight " + Number(corner.weight) +
                               ": " + Numbers(corner.value));
        step.facts["corners"].push_back({{"node", corner.node},
                                         {"weight", corner.weight},
                                         {"value", ChannelsOf(corner.value)}});
    }
    list.push_back(std::move(step));
}

std::vector<Step> StepsOf(const PixelReport& report)
{
    std::vector<Step> list;
    if (!report.steps)
    {
        return list;
    }
    const StoredLook& look = *report.stored;
    const LookExplanation& steps = *report.steps;
    if (steps.encoded)
    {
        list.push_back({"encode", "linear light by the sRGB curve", *steps.encoded});
    }
    if (steps.cdl)
    {
        AddCorrection(list, look, *steps.cdl);
    }
    if (steps.curves)
    {
        AddCurves(list, look, *steps.curves);
    }
    if (steps.cube)
    {
        AddCube(list, look, *steps.cube);
    }
    if (steps.mixed)
    {
        list.push_back({"strength",
                        Number(look.strength) + " of the LUTs, the rest of what reached them",
                        *steps.mixed,
                        {{"by", look.strength}}});
    }
    if (steps.decoded)
    {
        list.push_back({"decode", "back to linear light", *steps.decoded});
    }
    return list;
}

void AddLine(std::string& text, const std::string& name, const std::string& value)
{
    constexpr std::size_t kNameWidth = 15;
    text += name + std::string(kNameWidth - name.size(), ' ') + value + "\n";
}

std::string PlaceText(const PixelReport& report)
{
    if (!report.place)
    {
        return "a colour that was given";
    }
    const PixelReport::Place& place = *report.place;
    return place.path + ", frame " + std::to_string(place.frame) + ", pixel " +
           std::to_string(place.x) + "," + std::to_string(place.y);
}

std::string CheckText(const PixelReport& report)
{
    if (!report.steps)
    {
        return "";
    }
    if (!Agrees(report))
    {
        return ", which differs by " + Number(static_cast<float>(DifferenceOf(report))) +
               ", more than rounding explains";
    }
    const double difference = DifferenceOf(report);
    return difference == 0.0
               ? ", as told"
               : ", as told but for " + Number(static_cast<float>(difference)) + " of rounding";
}

Json ColourJson(const Rgb& colour)
{
    return {{"values", ChannelsOf(colour)}, {"codes", CodesOf(colour)}};
}

} // namespace

Pixel PixelAt(const Image& image, int x, int y) noexcept
{
    const std::byte* const bytes = image.pixels.data() +
                                   image.RowBytes() * static_cast<std::size_t>(y) +
                                   image.PixelBytes() * static_cast<std::size_t>(x);
    std::array<float, 4> channels{}; // blue, green, red, alpha
    if (image.type == SampleType::Float)
    {
        std::memcpy(channels.data(), bytes, sizeof channels);
    }
    else
    {
        std::transform(bytes, bytes + channels.size(), channels.begin(), [](std::byte code) {
            return static_cast<float>(std::to_integer<int>(code)) / 255.0F;
        });
    }
    return {{channels[2], channels[1], channels[0]}, channels[3]};
}

double DifferenceOf(const PixelReport& report) noexcept
{
    if (!report.steps)
    {
        return 0.0;
    }
    const std::array<float, 3> told = ChannelsOf(report.steps->result);
    const std::array<float, 3> rendered = ChannelsOf(report.rendered.colour);
    double largest = 0.0;
    for (std::size_t i = 0; i < told.size(); ++i)
    {
        const double exact = report.depth == SampleType::Byte ? Clamp01(told[i]) : told[i];
        double difference = std::abs(exact - rendered[i]);
        if (std::isnan(difference))
        {
            return std::numeric_limits<double>::infinity();
        }
        if (report.depth == SampleType::Byte && difference * 255.0 <= kCodeRounding)
        {
            difference = 0.0;
        }
        largest = std::max(largest, difference);
    }
    return largest;
}

bool Agrees(const PixelReport& report) noexcept
{
    if (!report.steps)
    {
        return true;
    }
    const auto [red, green, blue] = ChannelsOf(report.steps->result);
    const double size =
        std::max({1.0, std::abs(double{red}), std::abs(double{green}), std::abs(double{blue})});
    return DifferenceOf(report) <= kFloatRounding * size;
}

std::string PixelText(const PixelReport& report)
{
    std::string text;
    AddLine(text, "pixel", PlaceText(report));
    AddLine(text, "look", report.look);
    AddLine(text, "rendered in", report.manner);
    AddLine(text, "input",
            WithCodes(report.input.colour) + ", alpha " + Number(report.input.alpha));
    for (const Step& step : StepsOf(report))
    {
        AddLine(text, step.name, Numbers(step.result) + "  <- " + step.how);
        for (const std::string& detail : step.details)
        {
            AddLine(text, "", detail);
        }
    }
    if (report.steps)
    {
        AddLine(text, "result", WithCodes(report.steps->result));
    }
    else
    {
        AddLine(text, "steps",
                "not known: only " + report.renderer + " can read this look's record");
    }
    AddLine(text, "plug-in gives", WithCodes(report.rendered.colour) + CheckText(report));
    return text;
}

std::string PixelJson(const PixelReport& report)
{
    Json json{{"version", kJsonVersion}, {"place", nullptr}};
    if (report.place)
    {
        json["place"] = {{"path", report.place->path},
                         {"frame", report.place->frame},
                         {"x", report.place->x},
                         {"y", report.place->y}};
    }
    json["look"] = report.look;
    json["readable"] = report.steps.has_value();
    json["depth"] = report.depth == SampleType::Byte ? "8" : "float";
    json["linear"] = report.isLinear;
    json["manner"] = report.manner;
    json["input"] = ColourJson(report.input.colour);
    json["input"]["alpha"] = report.input.alpha;
    json["steps"] = Json::array();
    for (const Step& step : StepsOf(report))
    {
        Json row{{"step", step.name}};
        row.update(step.facts);
        row["result"] = ChannelsOf(step.result);
        json["steps"].push_back(std::move(row));
    }
    json["result"] = report.steps ? ColourJson(report.steps->result) : Json();
    json["rendered"] = ColourJson(report.rendered.colour);
    json["difference"] = report.steps ? Json(DifferenceOf(report)) : Json();
    json["agrees"] = report.steps ? Json(Agrees(report)) : Json();
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace GlazelHost
