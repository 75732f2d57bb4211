#include "reference_renderer/core/clf_node_kinds.h"

#include "reference_renderer/core/cdl_reader.h"
#include "reference_renderer/core/cube_reader.h"
#include "reference_renderer/core/text_scanning.h"
#include "reference_renderer/core/transfer_functions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

constexpr std::string_view kPassThru = "basicPassThruFwd";
constexpr std::string_view kPassThruReverse = "basicPassThruRev";
constexpr double kSame = 1e-6; // what decimals in a text leave open

ChainStep ReadMatrix(const ClfNode& node)
{
    // A third size says how many channels there are.
    std::vector<std::uint32_t> sizes = node.ArraySizes();
    if (sizes.size() == 3 && sizes[2] == 3)
    {
        sizes.pop_back();
    }
    if (sizes.size() != 2 || sizes[0] != 3 || (sizes[1] != 3 && sizes[1] != 4))
    {
        node.RefuseSizes();
    }
    const std::vector<float> numbers = node.ArrayNumbers(std::size_t{3} * sizes[1]);
    AffineStep matrix;
    for (std::size_t row = 0; row < 3; ++row)
    {
        for (std::size_t column = 0; column < 3; ++column)
        {
            matrix.rows[row][column] =
                numbers[row * sizes[1] + column] * (node.InTop() / node.OutTop());
        }
        matrix.offset[row] = sizes[1] == 4 ? numbers[row * 4 + 3] / node.OutTop() : 0.0;
    }
    return matrix;
}

ChainStep ReadLut1d(const ClfNode& node)
{
    for (const char* const switched : {"halfDomain", "rawHalfs"})
    {
        if (node.Attribute(switched) == "true")
        {
            node.Fail(std::string(switched) +
                      " is not read; export the LUT over a range of values, as 0 to 1");
        }
    }
    const std::string interpolation = node.Attribute("interpolation");
    if (!interpolation.empty() && interpolation != "linear")
    {
        node.Fail("the interpolation " + Quoted(interpolation) +
                  " is not done along curves; export the LUT for linear");
    }
    const std::vector<std::uint32_t> sizes = node.ArraySizes();
    if (sizes.size() != 2 || sizes[0] < 2 || sizes[0] > kLargestCurve ||
        (sizes[1] != 1 && sizes[1] != 3))
    {
        node.RefuseSizes();
    }
    const std::size_t components = sizes[1];
    const std::vector<float> numbers = node.ArrayNumbers(sizes[0] * components);
    CurveStep curves;
    for (std::size_t i = 0; i < sizes[0]; ++i)
    {
        for (std::size_t channel = 0; channel < 3; ++channel)
        {
            curves.channels[channel].push_back(
                {static_cast<double>(i) / (sizes[0] - 1),
                 numbers[i * components + channel % components] / node.OutTop()});
        }
    }
    return curves;
}

ChainStep ReadLut3d(const ClfNode& node)
{
    const std::string interpolation = node.Attribute("interpolation");
    if (!interpolation.empty() && interpolation != "trilinear" && interpolation != "tetrahedral")
    {
        node.Fail("the interpolation " + Quoted(interpolation) +
                  " is not done in a cube; export the LUT for tetrahedral");
    }
    const std::vector<std::uint32_t> sizes = node.ArraySizes();
    if (sizes.size() != 4 || sizes[0] < 2 || sizes[0] > kLargestCube || sizes[1] != sizes[0] ||
        sizes[2] != sizes[0] || sizes[3] != 3)
    {
        node.RefuseSizes();
    }
    const std::size_t size = sizes[0];
    const std::vector<float> numbers = node.ArrayNumbers(3 * NodeCount(sizes[0]));
    Cube cube{sizes[0], {}, std::vector<float>(numbers.size() + kNodePadding)};
    for (std::size_t i = 0; i < numbers.size(); ++i)
    {
        // Blue is the fastest here, red in a look.
        const std::size_t from = i / 3;
        const std::size_t to =
            (from % size * size + from / size % size) * size + from / size / size;
        cube.nodes[3 * to + i % 3] = static_cast<float>(numbers[i] / node.OutTop());
    }
    return CubeStep{std::move(cube), interpolation != "tetrahedral"};
}

ChainStep ReadRange(const ClfNode& node)
{
    const auto read = [&](const char* name, double top) {
        const XmlNode* const element = node.Child(name);
        return element == nullptr ? std::nullopt
                                  : std::optional(node.NumberOf(TextOf(*element), name) / top);
    };
    const std::optional<double> minIn = read("minInValue", node.InTop());
    const std::optional<double> maxIn = read("maxInValue", node.InTop());
    const std::optional<double> minOut = read("minOutValue", node.OutTop());
    const std::optional<double> maxOut = read("maxOutValue", node.OutTop());
    const std::string style = node.Attribute("style");
    const bool clamps = style.empty() || EqualIgnoringCase(style, "Clamp");
    if (!clamps && !EqualIgnoringCase(style, "noClamp"))
    {
        node.RefuseStyle(style);
    }
    if (minIn.has_value() != minOut.has_value() || maxIn.has_value() != maxOut.has_value() ||
        (!clamps && !(minIn && maxIn)))
    {
        node.Fail("an end has no value going in, or none coming out; add it");
    }
    // Where an end is open nothing is scaled.
    const bool isScaled = minIn && maxIn;
    for (const auto& [in, out] : {std::pair(minIn, minOut), std::pair(maxIn, maxOut)})
    {
        if (!isScaled && in && std::abs(*in - *out) > kSame)
        {
            node.Fail("moves one end and leaves the other open; add the other end");
        }
    }
    const CurvePoint low{minIn.value_or(-kLargestNumber), minOut.value_or(-kLargestNumber)};
    const CurvePoint high{maxIn.value_or(kLargestNumber), maxOut.value_or(kLargestNumber)};
    if (!(low.input < high.input && low.output <= high.output))
    {
        node.Fail("does not rise from its minimum to its maximum; correct its values");
    }
    if (clamps && (minIn || maxIn))
    {
        return CurveStep{{std::vector{low, high}, std::vector{low, high}, std::vector{low, high}}};
    }
    AffineStep scale;
    for (std::size_t i = 0; isScaled && i < 3; ++i)
    {
        scale.rows[i][i] = (high.output - low.output) / (high.input - low.input);
        scale.offset[i] = low.output - scale.rows[i][i] * low.input;
    }
    return scale;
}

ChainStep ReadAscCdl(const ClfNode& node)
{
    struct Style
    {
        std::string_view name;
        CdlMode mode;
        bool isReverse;
    };
    constexpr std::array kStyles{
        Style{"", CdlMode::Clamped, false},
        Style{"Fwd", CdlMode::Clamped, false},
        Style{"Rev", CdlMode::Clamped, true},
        Style{"FwdNoClamp", CdlMode::Unclamped, false},
        Style{"RevNoClamp", CdlMode::Unclamped, true},
    };
    const std::string style = node.Attribute("style");
    const auto* const known = std::find_if(kStyles.begin(), kStyles.end(),
                                           [&](const Style& s) { return s.name == style; });
    if (known == kStyles.end())
    {
        node.RefuseStyle(style);
    }
    const Cdl cdl = ReadCorrection(node.Element(), node.Name(), node.Path()).cdl;
    const bool isFlat = cdl.saturation == 0.0F ||
                        std::find(cdl.slope.begin(), cdl.slope.end(), 0.0F) != cdl.slope.end();
    if (known->isReverse && isFlat)
    {
        node.Fail("cannot be reversed with a slope or a saturation of 0; correct it");
    }
    return CdlStep{cdl, known->mode, known->isReverse};
}

// The functions of the channels, from the elements of parameters; `read` makes one of an element,
// or of null where there is none, and of the number of a channel.
template <typename Read>
FunctionStep FunctionsOf(const ClfNode& node, const char* element, Read&& read)
{
    constexpr std::array<std::string_view, 3> kChannels{"R", "G", "B"};
    FunctionStep step;
    std::size_t count = 0;
    for (const XmlNode* child : ElementsOf(node.Element()))
    {
        if (!Is(*child, element))
        {
            continue;
        }
        ++count;
        const std::string channel = AttributeOf(*child, "channel");
        for (std::size_t i = 0; i < 3; ++i)
        {
            if (!channel.empty() && channel != kChannels[i])
            {
                continue;
            }
            if (step.channels[i])
            {
                node.Fail("has parameters for one channel twice; remove the surplus");
            }
            step.channels[i] = read(child, i);
        }
        if (!channel.empty() &&
            std::find(kChannels.begin(), kChannels.end(), channel) == kChannels.end())
        {
            node.Fail("the channel " + Quoted(channel) + " is none of R, G and B; correct it");
        }
    }
    for (std::size_t i = 0; i < 3; ++i)
    {
        if (!step.channels[i])
        {
            step.channels[i] = count == 0 ? read(nullptr, i) : [](double value) { return value; };
        }
    }
    return step;
}

ChainStep ReadExponent(const ClfNode& node)
{
    const std::string style = node.Attribute("style");
    Cdl powers;
    FunctionStep step =
        FunctionsOf(node, "ExponentParams", [&](const XmlNode* element, std::size_t channel) {
            if (element == nullptr)
            {
                node.Fail("holds no ExponentParams; add them");
            }
            node.CheckParts(*element, "exponent offset channel", "");
            ExponentParameters parameters;
            parameters.exponent = node.NumberOf(AttributeOf(*element, "exponent"), "exponent");
            const std::string offset = AttributeOf(*element, "offset");
            parameters.offset = offset.empty() ? 0.0 : node.NumberOf(offset, "offset");
            TransferFunction function = ExponentFunction(style, parameters);
            if (!function)
            {
                node.RefuseStyle(style);
            }
            powers.power[channel] = static_cast<float>(
                style == kPassThruReverse ? 1.0 / parameters.exponent : parameters.exponent);
            return function;
        });
    if (style == kPassThru || style == kPassThruReverse)
    {
        return CdlStep{powers, CdlMode::Unclamped}; // the same, and a look has it
    }
    return step;
}

ChainStep ReadLog(const ClfNode& node)
{
    const std::string style = node.Attribute("style");
    return FunctionsOf(node, "LogParams", [&](const XmlNode* element, std::size_t) {
        LogParameters parameters;
        if (element != nullptr)
        {
            node.CheckParts(*element,
                            "base linSideSlope linSideOffset logSideSlope logSideOffset "
                            "linSideBreak linearSlope channel",
                            "");
            const auto read = [&](const char* name, auto& value) {
                const std::string text = AttributeOf(*element, name);
                if (!text.empty())
                {
                    value = node.NumberOf(text, name);
                }
            };
            read("base", parameters.base);
            read("linSideSlope", parameters.linSideSlope);
            read("linSideOffset", parameters.linSideOffset);
            read("logSideSlope", parameters.logSideSlope);
            read("logSideOffset", parameters.logSideOffset);
            read("linSideBreak", parameters.linSideBreak);
            read("linearSlope", parameters.linearSlope);
        }
        TransferFunction function = LogFunction(style, parameters);
        if (!function)
        {
            node.RefuseStyle(style);
        }
        return function;
    });
}

// clang-format off
constexpr std::array kNodeKinds{
    ClfNodeKind{"Matrix",   ReadMatrix,   "",                                  "Array"},
    ClfNodeKind{"LUT1D",    ReadLut1d,    "interpolation halfDomain rawHalfs", "Array"},
    ClfNodeKind{"LUT3D",    ReadLut3d,    "interpolation",                     "Array"},
    ClfNodeKind{"Range",    ReadRange,    "style", "minInValue maxInValue minOutValue maxOutValue"},
    ClfNodeKind{"ASC_CDL",  ReadAscCdl,   "style",                             "SOPNode SatNode"},
    ClfNodeKind{"Exponent", ReadExponent, "style",                             "ExponentParams"},
    ClfNodeKind{"Log",      ReadLog,      "style",                             "LogParams"},
};
// clang-format on

} // namespace

const ClfNodeKind* ClfNodeKindOf(const XmlNode& element) noexcept
{
    const auto* const kind =
        std::find_if(kNodeKinds.begin(), kNodeKinds.end(),
                     [&](const ClfNodeKind& known) { return Is(element, known.name); });
    return kind == kNodeKinds.end() ? nullptr : kind;
}

} // namespace ReferenceRenderer
