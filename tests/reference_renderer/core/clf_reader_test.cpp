#include "reference_renderer/core/clf_reader.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace ReferenceRenderer
{

namespace
{

std::string List(const std::string& nodes, const std::string& attributes = "")
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- made by hand -->\n"
           "<ProcessList id=\"x\" compCLFversion=\"3.0\" xmlns=\"urn:AMPAS:CLF:v3.0\" " +
           attributes + ">\n<Info><Release>1</Release></Info>\n" + nodes + "</ProcessList>\n";
}

std::string Node(const std::string& kind, const std::string& contents,
                 const std::string& attributes = "", const std::string& in = "32f",
                 const std::string& out = "32f")
{
    return "<" + kind + " inBitDepth=\"" + in + "\" outBitDepth=\"" + out + "\" " + attributes +
           ">" + contents + "</" + kind + ">\n";
}

std::string Array(const std::string& dim, const std::string& numbers)
{
    return "<Array dim=\"" + dim + "\">\n" + numbers + "\n</Array>";
}

std::string Number(double value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.9g ", value);
    return text.data();
}

std::string RangeParts(double minIn, double maxIn, double minOut, double maxOut)
{
    return "<minInValue>" + Number(minIn) + "</minInValue><maxInValue>" + Number(maxIn) +
           "</maxInValue><minOutValue>" + Number(minOut) + "</minOutValue><maxOutValue>" +
           Number(maxOut) + "</maxOutValue>";
}

// Nodes of `grading`, blue fastest, of 1 at `top`.
std::string CubeArray(int size, double top, const Grading& grading)
{
    std::string numbers;
    const auto at = [size](int i) { return static_cast<float>(i) / static_cast<float>(size - 1); };
    for (int r = 0; r < size; ++r)
    {
        for (int g = 0; g < size; ++g)
        {
            for (int b = 0; b < size; ++b)
            {
                const Rgb node = grading({at(r), at(g), at(b)});
                numbers += Number(node.r * top) + Number(node.g * top) + Number(node.b * top);
                numbers += '\n';
            }
        }
    }
    const std::string side = std::to_string(size) + " ";
    return Array(side + side + side + "3", numbers);
}

std::string CurveArray(int size, double top, double (*function)(double))
{
    std::string numbers;
    for (int i = 0; i < size; ++i)
    {
        numbers += Number(top * function(static_cast<double>(i) / (size - 1)));
    }
    return Array(std::to_string(size) + " 1", numbers);
}

const std::string kCorrection =
    "<SOPNode><Slope>1.2 0.9 1.1</Slope><Offset>-0.05 0.02 0.01</Offset><Power>1.1 0.8 1.3</Power>"
    "</SOPNode><SatNode><Saturation>0.7</Saturation></SatNode>";

using Triple = std::array<double, 3>;
using Formula = std::function<Triple(const Triple&)>;

Triple Each(const Triple& value, const std::function<double(double)>& function)
{
    return {function(value[0]), function(value[1]), function(value[2])};
}

double Limited(double value)
{
    return std::clamp(value, 0.0, 1.0);
}

// The largest difference between what the renderer makes of the file and the formula.
double LargestError(const std::string& text, const Formula& formula, double low = 0.0,
                    double high = 1.0)
{
    MemoryFiles files;
    files.files["a.clf"] = text;
    PreparedLook look;
    EXPECT_EQ(look.Read(ImportLook("a.clf", 0, files).record), RecordState::Usable);
    std::mt19937 random(9);
    std::uniform_real_distribution<float> value(static_cast<float>(low), static_cast<float>(high));
    double largest = 0.0;
    for (int i = 0; i < 20000; ++i)
    {
        const Rgb input{value(random), value(random), value(random)};
        const Triple exact = formula({input.r, input.g, input.b});
        const Rgb kept = look.Grade(input);
        largest = std::max({largest, std::abs(exact[0] - kept.r), std::abs(exact[1] - kept.g),
                            std::abs(exact[2] - kept.b)});
    }
    return largest;
}

// As LargestError for one function of every channel.
double LargestError(const std::string& text, const std::function<double(double)>& function,
                    double low = 0.0, double high = 1.0)
{
    return LargestError(
        text, [&](const Triple& v) { return Each(v, function); }, low, high);
}

std::string Exponent(const std::string& style, const std::string& parameters)
{
    return List(
        Node("Exponent", "<ExponentParams " + parameters + "/>", "style=\"" + style + "\""));
}

std::string Log(const std::string& style, const std::string& parameters = "")
{
    return List(Node("Log", parameters.empty() ? "" : "<LogParams " + parameters + "/>",
                     "style=\"" + style + "\""));
}

std::string Failure(const std::string& nodes)
{
    return ImportMessage(List(nodes), "a.clf");
}

void ExpectFailure(const std::string& nodes, const std::string& words)
{
    const std::string message = Failure(nodes);
    EXPECT_EQ(message.find("a.clf: "), 0U) << message;
    EXPECT_NE(message.find(words), std::string::npos) << message;
}

constexpr double kExact = 3e-5; // the steps of a record
constexpr double kCode8 = 1.0 / 255.0;

Rgb Crossed(const Rgb& v)
{
    return {0.7F * v.r + 0.3F * v.b, 0.2F * v.r + 0.8F * v.g, 1.0F - 0.5F * v.g - 0.5F * v.b};
}

Triple CrossedLimited(const Triple& v)
{
    const Rgb r = Crossed({static_cast<float>(Limited(v[0])), static_cast<float>(Limited(v[1])),
                           static_cast<float>(Limited(v[2]))});
    return {r.r, r.g, r.b};
}

} // namespace

TEST(ClfReader, ACubeHasBlueFastestAndItsDepthsScaleIt)
{
    for (const auto& [depth, top] :
         {std::pair("32f", 1.0), std::pair("16f", 1.0), std::pair("8i", 255.0),
          std::pair("10i", 1023.0), std::pair("12i", 4095.0), std::pair("16i", 65535.0)})
    {
        const std::string text = List(Node("LUT3D", CubeArray(5, top, Crossed),
                                           "interpolation=\"tetrahedral\"", "10i", depth));
        EXPECT_LT(LargestError(text, CrossedLimited, -0.5, 1.5), kExact) << depth;
        EXPECT_EQ(ReadClf(text, "a.clf").look.cube->size, 5U);
    }
}

TEST(ClfReader, ATrilinearCubeIsFollowedOrItsErrorIsTold)
{
    const auto product = [](const Rgb& v) { return Rgb{v.r * v.g * v.b, v.r * v.g, v.b}; };
    const Formula formula = [](const Triple& v) {
        return Triple{v[0] * v[1] * v[2], v[0] * v[1], v[2]};
    };
    const std::string text = List(Node("LUT3D", CubeArray(2, 1.0, product)));
    EXPECT_LT(LargestError(text, formula), 1.0 / 4096.0);
    EXPECT_TRUE(ReadClf(text, "a.clf").warnings.empty());
    const std::string tetrahedral =
        List(Node("LUT3D", CubeArray(2, 1.0, product), "interpolation=\"tetrahedral\""));
    EXPECT_GT(LargestError(tetrahedral, formula), 0.2) << "the two differ";
}

TEST(ClfReader, ACurveOfOneOrThreeComponentsIsHeldEntryByEntry)
{
    const std::string one =
        List(Node("LUT1D", CurveArray(4, 1023.0, [](double x) { return x * x; }), "", "8i", "10i"));
    EXPECT_EQ(ReadClf(one, "a").look.curves->size, 4U);
    const auto square = [](double x) {
        const double cell = std::min(std::floor(Limited(x) * 3.0), 2.0);
        const double low = cell / 3.0;
        const double high = (cell + 1.0) / 3.0;
        return low * low + (high * high - low * low) * (Limited(x) * 3.0 - cell);
    };
    EXPECT_LT(LargestError(one, square, -0.5, 1.5), kExact);

    const ReadLook three =
        ReadClf(List(Node("LUT1D", Array("2 3", "0 1 2\n3 4 5"), "interpolation=\"linear\"")), "a");
    EXPECT_EQ(three.look.curves->values, (std::vector<float>{0, 3, 1, 4, 2, 5}));
}

TEST(ClfReader, CurvesBeforeACubeStayTwoTables)
{
    const std::string text =
        List(Node("LUT1D", CurveArray(65, 1.0, [](double x) { return std::sqrt(x); })) +
             Node("LUT3D", CubeArray(9, 1.0, Crossed), "interpolation=\"tetrahedral\""));
    const ReadLook read = ReadClf(text, "a");
    EXPECT_EQ(read.look.curves->size, 65U);
    EXPECT_EQ(read.look.cube->size, 9U);
    EXPECT_TRUE(read.warnings.empty());
    EXPECT_LT(read.largestError, 1e-6);
}

TEST(ClfReader, AMatrixScalesWithItsDepthsAndHasItsOffsetsLast)
{
    // Codes of 10 bits to codes of 12: 4 times and a little.
    const std::string scale = "4.00293255 0 0 0.5\n0 4.00293255 0 0\n0 0 4.00293255 -409.5\n";
    const std::string text = List(Node("Matrix", Array("3 4", scale), "", "10i", "12i"));
    const ReadLook read = ReadClf(text, "a");
    EXPECT_EQ(read.look.cdlMode, CdlMode::Unclamped) << "no table is needed";
    EXPECT_FALSE(read.look.cube || read.look.curves);
    const Formula formula = [](const Triple& v) {
        return Triple{v[0] + 0.5 / 4095.0, v[1], v[2] - 0.1};
    };
    EXPECT_LT(LargestError(text, formula, -2.0, 3.0), 1e-6);
}

TEST(ClfReader, AMixingMatrixBecomesACube)
{
    const Formula formula = [](const Triple& v) {
        return Triple{0.9 * v[0] + 0.1 * v[1], 0.2 * v[0] + 0.7 * v[1] + 0.1 * v[2],
                      -0.2 * v[1] + 1.2 * v[2]};
    };
    for (const char* dim : {"3 3", "3 3 3"})
    {
        const std::string text =
            List(Node("Matrix", Array(dim, "0.9 0.1 0\n0.2 0.7 0.1\n0 -0.2 1.2")));
        EXPECT_LT(LargestError(text, formula), kExact) << dim;
        EXPECT_EQ(ReadClf(text, "a").warnings.size(), 1U) << "beyond 0..1 it is limited";
    }
}

TEST(ClfReader, ARangeClampsUnlessItSaysOtherwise)
{
    const std::string codes = RangeParts(64, 940, 0, 1023);
    const auto widened = [](double x) { return (x * 1023.0 - 64.0) / 876.0; };
    const std::string clamped = List(Node("Range", codes, "", "10i", "10i"));
    EXPECT_LT(LargestError(
                  clamped, [&](double x) { return Limited(widened(x)); }, -1.0, 2.0),
              kExact);
    EXPECT_TRUE(ReadClf(clamped, "a").warnings.empty());
    const std::string open = List(Node("Range", codes, "style=\"noClamp\"", "10i", "10i"));
    EXPECT_LT(LargestError(open, widened, -1.0, 2.0), 1e-5);
    EXPECT_EQ(ReadClf(open, "a").look.cdlMode, CdlMode::Unclamped);
}

TEST(ClfReader, ARangeOfOneEndLimitsThatOne)
{
    const std::string below =
        Node("Range", "<minInValue>0</minInValue><minOutValue>0</minOutValue>");
    const std::string cube =
        Node("LUT3D", CubeArray(3, 1.0, Crossed), "interpolation=\"tetrahedral\"");
    const ReadLook read = ReadClf(List(below + cube), "a");
    EXPECT_FALSE(read.look.curves) << "the cube limits more";
    EXPECT_TRUE(read.warnings.empty());
    const auto limited = [](double x) { return std::max(x, 0.25); };
    EXPECT_LT(LargestError(List(Node("Range", "<minInValue>0.25</minInValue><minOutValue>0.25"
                                              "</minOutValue>")),
                           limited),
              kExact);
    EXPECT_EQ(
        ReadClf(List(Node("Range", "", "", "8i", "16f") + Node("Range", "", "", "16f", "8i")), "a")
            .look.cdlMode,
        CdlMode::None)
        << "depths alone change nothing";
}

TEST(ClfReader, EveryStyleOfACorrectionFollowsItsFormula)
{
    const Triple slope{1.2, 0.9, 1.1};
    const Triple offset{-0.05, 0.02, 0.01};
    const Triple power{1.1, 0.8, 1.3};
    const auto saturated = [](const Triple& v, double saturation) {
        const double luma = 0.2126 * v[0] + 0.7152 * v[1] + 0.0722 * v[2];
        return Each(v, [&](double x) { return luma + saturation * (x - luma); });
    };
    const auto forward = [&](const Triple& v, bool clamps) {
        const auto clamp = [&](double x) { return clamps ? Limited(x) : x; };
        Triple result{};
        for (std::size_t i = 0; i < 3; ++i)
        {
            const double moved = clamp(v[i] * slope[i] + offset[i]);
            result[i] = moved > 0.0 ? std::pow(moved, power[i]) : moved;
        }
        return Each(saturated(result, 0.7), clamp);
    };
    const auto reverse = [&](const Triple& v, bool clamps) {
        const auto clamp = [&](double x) { return clamps ? Limited(x) : x; };
        Triple result = Each(saturated(Each(v, clamp), 1.0 / 0.7), clamp);
        for (std::size_t i = 0; i < 3; ++i)
        {
            const double root = result[i] > 0.0 ? std::pow(result[i], 1.0 / power[i]) : result[i];
            result[i] = clamp((root - offset[i]) / slope[i]);
        }
        return result;
    };
    const auto text = [](const std::string& style) {
        return List(Node("ASC_CDL", kCorrection, style));
    };
    const auto clamped = [&](const Triple& v) { return forward(v, true); };
    EXPECT_LT(LargestError(text(""), clamped, -0.5, 1.5), 1e-5);
    EXPECT_LT(LargestError(text("style=\"Fwd\""), clamped, -0.5, 1.5), 1e-5);
    EXPECT_LT(LargestError(
                  text("style=\"FwdNoClamp\""), [&](const Triple& v) { return forward(v, false); },
                  -0.5, 1.5),
              1e-5);
    for (const bool clamps : {true, false})
    {
        // Mixing comes first here: a cube holds it about as well as its measured error says.
        const std::string reversed = text(clamps ? "style=\"Rev\"" : "style=\"RevNoClamp\"");
        const double told = ReadClf(reversed, "a").largestError;
        EXPECT_LT(told, 4.0 * kCode8);
        EXPECT_LT(LargestError(reversed, [&](const Triple& v) { return reverse(v, clamps); }),
                  told * 1.1 + kExact);
    }
    const ReadLook read = ReadClf(text(""), "a");
    EXPECT_FALSE(read.look.cube || read.look.curves);
}

TEST(ClfReader, ExponentsFollowTheFormulasOfTheirStyles)
{
    const auto power = [](double x) { return std::pow(x, 2.2); };
    const auto root = [](double x) { return std::pow(x, 1.0 / 2.2); };
    const std::string gamma = "exponent=\"2.2\"";
    EXPECT_LT(LargestError(Exponent("basicFwd", gamma), power), kExact);
    EXPECT_LT(LargestError(Exponent("basicRev", gamma), root, 0.01), 1e-4);
    EXPECT_LT(LargestError(Exponent("basicMirrorFwd", gamma), power), kExact);
    EXPECT_LT(LargestError(Exponent("basicMirrorRev", gamma), root, 0.01), 1e-4);
    const auto passed = [&](double x) { return x > 0.0 ? power(x) : x; };
    EXPECT_LT(LargestError(Exponent("basicPassThruFwd", gamma), passed, -1.0, 2.0), 1e-5);
    const auto passedBack = [&](double x) { return x > 0.0 ? root(x) : x; };
    EXPECT_LT(LargestError(Exponent("basicPassThruRev", gamma), passedBack, -1.0, 2.0), 1e-5);

    const auto decoded = [](double x) {
        return x <= 0.0392857 ? x / 12.9232 : std::pow((x + 0.055) / 1.055, 2.4);
    };
    const auto encoded = [](double x) {
        return x <= 0.00303993 ? x * 12.9232 : 1.055 * std::pow(x, 1.0 / 2.4) - 0.055;
    };
    const std::string srgb = "exponent=\"2.4\" offset=\"0.055\"";
    EXPECT_LT(LargestError(Exponent("monCurveFwd", srgb), decoded), kExact);
    EXPECT_LT(LargestError(Exponent("monCurveRev", srgb), encoded), 1e-4);
    EXPECT_LT(LargestError(Exponent("monCurveMirrorFwd", srgb), decoded), kExact);
    EXPECT_LT(LargestError(Exponent("monCurveMirrorRev", srgb), encoded), 1e-4);
}

TEST(ClfReader, BelowZeroTheStylesOfAnExponentDiffer)
{
    // A scale puts -1..1 into the range of the look.
    const auto text = [](const std::string& style, const std::string& parameters) {
        return List(
            Node("Range", RangeParts(0, 1, -1, 1)) +
            Node("Exponent", "<ExponentParams " + parameters + "/>", "style=\"" + style + "\""));
    };
    const auto at = [](double x) { return 2.0 * x - 1.0; };
    const std::string two = "exponent=\"2\"";
    EXPECT_LT(LargestError(text("basicFwd", two),
                           [&](double x) { return std::pow(std::max(at(x), 0.0), 2.0); }),
              1e-4);
    EXPECT_LT(LargestError(text("basicMirrorFwd", two),
                           [&](double x) { return at(x) * std::abs(at(x)); }),
              1e-4);
    EXPECT_LT(LargestError(text("basicPassThruFwd", two),
                           [&](double x) { return at(x) < 0.0 ? at(x) : at(x) * at(x); }),
              1e-4);
    const std::string curve = "exponent=\"2\" offset=\"0.1\"";
    const auto line = [](double x) { // breaks at 0.1, where it is (2 / 11)^2
        return x >= 0.1 ? std::pow((x + 0.1) / 1.1, 2.0) : x * 40.0 / 121.0;
    };
    EXPECT_LT(LargestError(text("monCurveFwd", curve), [&](double x) { return line(at(x)); }),
              1e-4);
    EXPECT_LT(LargestError(text("monCurveMirrorFwd", curve),
                           [&](double x) { return at(x) < 0.0 ? -line(-at(x)) : line(at(x)); }),
              1e-4);
}

TEST(ClfReader, LogarithmsFollowTheFormulasOfTheirStyles)
{
    EXPECT_LT(LargestError(
                  Log("log10"), [](double x) { return std::log10(x); }, 0.1),
              4e-4)
        << "of a range of 38";
    EXPECT_LT(LargestError(
                  Log("log2"), [](double x) { return std::log2(x); }, 0.1),
              13e-4)
        << "of a range of 126";
    EXPECT_LT(LargestError(Log("antiLog10"), [](double x) { return std::pow(10.0, x); }), 3e-4);
    EXPECT_LT(LargestError(Log("antiLog2"), [](double x) { return std::exp2(x); }), kExact);
    const std::string part = "base=\"10\" logSideSlope=\"0.25\" logSideOffset=\"0.4\" "
                             "linSideSlope=\"5.5\" linSideOffset=\"0.05\" ";
    const auto encoded = [](double x) { return 0.25 * std::log10(5.5 * x + 0.05) + 0.4; };
    const auto decoded = [](double y) { return (std::pow(10.0, (y - 0.4) / 0.25) - 0.05) / 5.5; };
    EXPECT_LT(LargestError(Log("linToLog", part), encoded), kExact);
    EXPECT_LT(LargestError(Log("logToLin", part), decoded), 2e-3) << "it reaches 45";

    const double atBreak = encoded(0.01);
    const double slope = 0.25 * 5.5 / ((5.5 * 0.01 + 0.05) * std::log(10.0));
    const auto camera = [&](double x) {
        return x > 0.01 ? encoded(x) : atBreak + slope * (x - 0.01);
    };
    const auto cameraBack = [&](double y) {
        return y > atBreak ? decoded(y) : 0.01 + (y - atBreak) / slope;
    };
    const std::string cut = part + "linSideBreak=\"0.01\"";
    EXPECT_LT(LargestError(Log("cameraLinToLog", cut), camera), kExact);
    EXPECT_LT(LargestError(Log("cameraLogToLin", cut), cameraBack), 2e-3);
    const auto steeper = [&](double x) {
        return x > 0.01 ? encoded(x) : atBreak + 3.0 * (x - 0.01);
    };
    EXPECT_LT(LargestError(Log("cameraLinToLog", cut + " linearSlope=\"3\""), steeper), 1e-4);
}

TEST(ClfReader, ALogarithmBeforeACubeIsAsFineAsTheCubeNeeds)
{
    const std::string text =
        List(Node("Log",
                  "<LogParams linSideOffset=\"0.0\" logSideSlope=\"0.1\" "
                  "logSideOffset=\"1\"/>",
                  "style=\"linToLog\"") +
             Node("LUT3D", CubeArray(3, 1.0, Crossed), "interpolation=\"tetrahedral\""));
    const auto encoded = [](double x) { return 0.1 * std::log2(std::max(x, 1e-38)) + 1.0; };
    EXPECT_LT(LargestError(
                  text, [&](const Triple& v) { return CrossedLimited(Each(v, encoded)); }, 0.01),
              kExact);
}

TEST(ClfReader, ParametersMayBeOfOneChannel)
{
    const std::string text = List(Node("Exponent",
                                       "<ExponentParams exponent=\"2\" channel=\"R\"/>"
                                       "<ExponentParams exponent=\"3\" channel=\"B\"/>",
                                       "style=\"basicFwd\""));
    EXPECT_LT(LargestError(text,
                           [](const Triple& v) {
                               return Triple{v[0] * v[0], v[1], v[2] * v[2] * v[2]};
                           }),
              kExact);
}

TEST(ClfReader, AnExactChainBecomesCorrectionCurvesAndCube)
{
    const std::string text = List(
        Node("ASC_CDL", kCorrection, "style=\"FwdNoClamp\"", "10i", "10i") +
        Node("Range", RangeParts(0, 1023, 0, 1), "", "10i", "32f") +
        Node("LUT1D", CurveArray(17, 4095.0, [](double x) { return x * x; }), "", "32f", "12i") +
        Node("LUT3D", CubeArray(17, 1.0, Crossed), "interpolation=\"tetrahedral\"", "12i", "16f") +
        Node("Matrix", Array("3 3", "0.5 0.5 0 0 1 0 0 0 1"), "", "16f", "16f"));
    const ReadLook read = ReadClf(text, "a");
    EXPECT_EQ(read.look.cdlMode, CdlMode::Unclamped);
    EXPECT_EQ(read.look.curves->size, 17U);
    EXPECT_EQ(read.look.cube->size, 17U);
    EXPECT_TRUE(read.warnings.empty());
    EXPECT_LT(read.largestError, 2e-6);
}

TEST(ClfReader, AnotherChainIsSampledAndItsErrorMeasured)
{
    // Display values to light, a matrix there, and back.
    const std::string text =
        List(Node("Exponent", "<ExponentParams exponent=\"2.4\"/>", "style=\"basicFwd\"") +
             Node("Matrix", Array("3 3", "0.8 0.2 0 0.1 0.8 0.1 0 0.1 0.9")) +
             Node("Exponent", "<ExponentParams exponent=\"2.4\"/>", "style=\"basicRev\""));
    const Formula formula = [](const Triple& v) {
        const Triple light = Each(v, [](double x) { return std::pow(x, 2.4); });
        const Triple mixed{0.8 * light[0] + 0.2 * light[1],
                           0.1 * light[0] + 0.8 * light[1] + 0.1 * light[2],
                           0.1 * light[1] + 0.9 * light[2]};
        return Each(mixed, [](double x) { return std::pow(x, 1.0 / 2.4); });
    };
    MemoryFiles files;
    files.files["a"] = text;
    const ImportedLook imported = ImportLook("a", 0, files);
    const double error = LargestError(text, formula);
    EXPECT_LT(error, imported.largestError * 1.1 + 1e-5);
    EXPECT_LT(imported.largestError, 4.0 * kCode8);
    const bool isTold = std::any_of(
        imported.warnings.begin(), imported.warnings.end(), [](const std::string& warning) {
            return warning.find("cannot be kept exactly: largest error ") != std::string::npos;
        });
    EXPECT_EQ(isTold, imported.largestError > kCode8);
}

TEST(ClfReader, TheNameOfTheListIsTheTitle)
{
    const std::string nodes = "<Description>Warm</Description><Description>More</Description>" +
                              Node("LUT1D", Array("2 1", "0 1"));
    EXPECT_EQ(ReadClf(List(nodes, "name=\"Print\""), "a").look.title, "Print");
    EXPECT_EQ(ReadClf(List(nodes), "a").look.title, "Warm");
    EXPECT_EQ(ReadClf(List(Node("LUT1D", Array("2 1", "0 1"))), "a").look.title, "x");
}

TEST(ClfReader, PrefixesAndEarlierVersionsAreRead)
{
    const std::string text =
        "<clf:ProcessList xmlns:clf=\"urn:NATAS:ASC:LUT:v1.2\" id=\"a\" compCLFversion=\"1.2\">"
        "<clf:Matrix inBitDepth=\"10i\" outBitDepth=\"10i\"><clf:Array dim=\"3 3 3\">1 0 0 0 1 0 "
        "0 0 2</clf:Array></clf:Matrix></clf:ProcessList>";
    EXPECT_EQ(ReadClf(text, "a").look.cdl.slope[2], 2.0F);
    EXPECT_TRUE(LooksLikeClf(text));
    EXPECT_TRUE(LooksLikeClf("<?xml version=\"1.0\"?><!-- <a> --><ProcessList>"));
    EXPECT_FALSE(LooksLikeClf("<ColorCorrection/>"));
    EXPECT_FALSE(LooksLikeClf("<!-- ProcessList"));
    EXPECT_FALSE(LooksLikeClf("ProcessList"));
}

TEST(ClfReader, NodesThatAreNotReadAreNamed)
{
    ExpectFailure(Node("FixedFunction", ""), "the node 'FixedFunction' is not read; export the "
                                             "transform with LUTs in its place");
    ExpectFailure(Node("LUT1D", Array("65536 1", "0"), "halfDomain=\"true\""),
                  "LUT1D (node 1): halfDomain is not read");
    ExpectFailure(Node("LUT1D", Array("2 1", "0 1"), "rawHalfs=\"true\""), "rawHalfs is not read");
    ExpectFailure(Node("LUT1D", Array("2 1", "0 1") + "<IndexMap dim=\"2\">0@0 1@1</IndexMap>"),
                  "LUT1D (node 1): the element 'IndexMap' is not read");
    ExpectFailure(Node("LUT1D", Array("2 1", "0 1"), "hueAdjust=\"dw3\""),
                  "the attribute 'hueAdjust' is not read");
    ExpectFailure(Node("LUT1D", Array("2 1", "0 1"), "interpolation=\"cubic\""),
                  "the interpolation 'cubic' is not done along curves");
    ExpectFailure(Node("LUT3D", CubeArray(2, 1.0, Same), "interpolation=\"cubic\""),
                  "the interpolation 'cubic' is not done in a cube");
    ExpectFailure(Node("LUT1D", Array("2 1", "0 1"), "bypass=\"true\""), "is bypassed");
    ExpectFailure(Node("ASC_CDL", kCorrection, "style=\"Sideways\""),
                  "ASC_CDL (node 1): the style 'Sideways'");
    ExpectFailure(Node("Range", RangeParts(0, 1, 0, 1), "style=\"soft\""), "the style 'soft'");
    ExpectFailure(Node("Log", "<LogParams gamma=\"0.6\" refWhite=\"685\"/>", "style=\"linToLog\""),
                  "the attribute 'gamma' is not read");
    for (const auto& [style, parameters] :
         {std::pair("odd", "exponent=\"2\""), std::pair("basicFwd", "exponent=\"0\""),
          std::pair("basicFwd", "exponent=\"2\" offset=\"0.1\""),
          std::pair("monCurveFwd", "exponent=\"1\" offset=\"0.1\""),
          std::pair("monCurveRev", "exponent=\"2\"")})
    {
        EXPECT_NE(ImportMessage(Exponent(style, parameters), "a.clf")
                      .find("Exponent (node 1): the style '" + std::string(style) + "'"),
                  std::string::npos)
            << style << ' ' << parameters;
    }
    for (const auto& [style, parameters] :
         {std::pair("odd", ""), std::pair("linToLog", "base=\"1\""),
          std::pair("linToLog", "base=\"-2\""), std::pair("logToLin", "linSideSlope=\"0\""),
          std::pair("cameraLinToLog", "base=\"2\""),
          std::pair("cameraLinToLog", "linSideBreak=\"0\""),
          std::pair("cameraLogToLin", "linSideBreak=\"1\" linearSlope=\"0\"")})
    {
        EXPECT_NE(ImportMessage(Log(style, parameters), "a.clf").find("Log (node 1): the style"),
                  std::string::npos)
            << style << ' ' << parameters;
    }
}

TEST(ClfReader, MalformedNodesAreRefusedByName)
{
    ExpectFailure("", "holds no process node");
    ExpectFailure("<LUT1D outBitDepth=\"8i\"/>", "LUT1D (node 1): inBitDepth '' is none of 8i");
    ExpectFailure(Node("LUT1D", "", "", "9i"), "inBitDepth '9i' is none of");
    ExpectFailure(Node("LUT1D", ""), "LUT1D (node 1): holds no Array");
    ExpectFailure(Node("LUT1D", Array("2 1", "0 1") + Array("2 1", "0 1")), "more than one Array");
    for (const char* dim : {"1 1", "2 2", "65537 1", "-2 1", "2", "2 1 1", "", "x 1"})
    {
        ExpectFailure(Node("LUT1D", Array(dim, "0 1")), "the sizes '" + std::string(dim) + "'");
    }
    for (const char* dim : {"1 1 1 3", "257 257 257 3", "2 2 3 3", "2 2 2", "2 2 2 4", "2 2 2 1"})
    {
        ExpectFailure(Node("LUT3D", Array(dim, "0 1")), "the sizes '" + std::string(dim) + "'");
    }
    for (const char* dim : {"4 4", "3 5", "3 3 4", "3"})
    {
        ExpectFailure(Node("Matrix", Array(dim, "0 1")), "the sizes '" + std::string(dim) + "'");
    }
    ExpectFailure(Node("LUT1D", Array("3 1", "0 1")),
                  "LUT1D (node 1): its Array holds 2 of the 3 numbers that dim asks for");
    ExpectFailure(Node("LUT3D", Array("200 200 200 3", "0 1")), "holds 2 of the 24000000 numbers");
    ExpectFailure(Node("LUT1D", Array("2 1", "0 1 2")), "holds more than the 2 numbers");
    ExpectFailure(Node("LUT1D", Array("2 1", "0 nan")), "'nan' is not a number");
    ExpectFailure(Node("LUT1D", Array("2 1", "0 inf")), "'inf' is not a number");
    ExpectFailure(Node("Range", RangeParts(1, 0, 0, 1)), "Range (node 1): does not rise");
    ExpectFailure(Node("Range", RangeParts(0, 1, 1, 0)), "Range (node 1): does not rise");
    ExpectFailure(Node("Range", "<minInValue>0</minInValue>"), "an end has no value going in");
    ExpectFailure(Node("Range", "<minInValue>x</minInValue><minOutValue>0</minOutValue>"),
                  "minInValue needs one number, but is 'x'");
    ExpectFailure(Node("Range", "<minInValue>0</minInValue><minOutValue>0.5</minOutValue>"),
                  "moves one end and leaves the other open");
    ExpectFailure(Node("Range", "<minInValue>0</minInValue><minOutValue>0</minOutValue>",
                       "style=\"noClamp\""),
                  "an end has no value");
    ExpectFailure(Node("ASC_CDL", "<SOPNode><Slope>-1 1 1</Slope></SOPNode>"),
                  "ASC_CDL (node 1): Slope is negative");
    ExpectFailure(Node("ASC_CDL", "<SOPNode><Slope>0 1 1</Slope></SOPNode>", "style=\"Rev\""),
                  "ASC_CDL (node 1): cannot be reversed");
    ExpectFailure(Node("Exponent", "", "style=\"basicFwd\""), "holds no ExponentParams");
    ExpectFailure(Node("Exponent", "<ExponentParams/>", "style=\"basicFwd\""),
                  "exponent needs one number");
    ExpectFailure(
        Node("Exponent", "<ExponentParams exponent=\"2\" channel=\"X\"/>", "style=\"basicFwd\""),
        "the channel 'X' is none of R, G and B");
    ExpectFailure(Node("Exponent",
                       "<ExponentParams exponent=\"2\"/><ExponentParams exponent=\"2\"/>",
                       "style=\"basicFwd\""),
                  "parameters for one channel twice");
    ExpectFailure(Node("LUT1D", Array("2 1", "0 1")) +
                      Node("LUT1D", Array("2 1", "0 1"), "", "10i", "10i"),
                  "LUT1D (node 2): its inBitDepth is not the outBitDepth of the node before");
}

TEST(ClfReader, DocumentsThatCouldExhaustTheReaderAreRefused)
{
    std::string many;
    for (int i = 0; i < 65; ++i)
    {
        many += Node("LUT1D", Array("2 1", "0 1"));
    }
    ExpectFailure(many, "holds more than 64 process nodes");
    std::string parts;
    for (int i = 0; i < 20000; ++i)
    {
        parts += "<a/>";
    }
    ExpectFailure(parts, "of more than 16384 elements and attributes");
    std::string deep;
    for (int i = 0; i < 4000; ++i)
    {
        deep += "<a>";
    }
    ExpectFailure(deep, "nested too deeply");
    EXPECT_NE(ImportMessage("<!DOCTYPE ProcessList [<!ENTITY a \"b\">]><ProcessList>&a;"
                            "</ProcessList>",
                            "a.clf")
                  .find("a.clf: has a document type declaration"),
              std::string::npos);
    EXPECT_NE(ImportMessage("<ProcessList>\n<Matrix>\n</ProcessList>", "a.clf")
                  .find("line 3: no well-formed XML"),
              std::string::npos);
    EXPECT_NE(ImportMessage("<ProcessList compCLFversion=\"4\"/>", "a.clf")
                  .find("is of version '4', and versions up to 3 are known"),
              std::string::npos);
}

} // namespace ReferenceRenderer
