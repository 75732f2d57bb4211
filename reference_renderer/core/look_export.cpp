#include "reference_renderer/core/look_export.h"

#include "reference_renderer/core/cube_writer.h"
#include "reference_renderer/core/lut_fitting.h"
#include "reference_renderer/core/lut_sampling.h"
#include "reference_renderer/core/number_words.h"
#include "reference_renderer/core/prepared_look.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

constexpr double kUnseen = 1.0 / 4096.0; // errors up to this are not told

// Sizes to try, beside that of the look's own cube: what most programs take.
constexpr std::array<std::uint32_t, 2> kUsualSizes{33, kMostPoints};

// Entries of curves and points of the cube behind them, to try in this order.
constexpr std::array<std::pair<std::uint32_t, std::uint32_t>, 3> kShapedSizes{
    {{4096, 33}, {kStoredCurveSize, 33}, {kStoredCurveSize, kMostPoints}}};

// Where curves may begin and end: beyond 0..1 too, as long as their entries stay dense.
constexpr std::array kShapedRanges{Interval{-1.0F, 2.0F}, Interval{0.0F, 1.0F}};

// Samples a side of the check, of which no size of a cube has nodes at the same places; and of
// greys.
constexpr std::uint32_t kCheckSide = 98;
constexpr std::uint32_t kCheckGreys = 4 * kStoredCurveSize - 3; // several between two entries
constexpr std::uint32_t kParts = 14; // a side, the worst of which are searched more closely

bool ShowsTables(const StoredLook& look) noexcept
{
    return look.HasTables() && look.strength > 0.0F;
}

bool IsSame(const Domain& domain) noexcept
{
    return domain[0] == domain[1] && domain[1] == domain[2];
}

// The tables alone, wherever they show.
bool IsTables(const StoredLook& look) noexcept
{
    return look.cdlMode == CdlMode::None && look.HasTables() && look.strength == 1.0F;
}

Look TablesOf(const StoredLook& stored)
{
    Look look;
    if (stored.curveSize != 0)
    {
        const auto first = stored.curveValues.begin();
        look.curves = Curves{stored.curveSize,
                             stored.curveDomain,
                             {first, first + std::ptrdiff_t{3} * stored.curveSize}};
    }
    if (stored.cubeSize != 0)
    {
        const auto first = stored.cubeNodes.begin();
        const auto floats = static_cast<std::ptrdiff_t>(3 * NodeCount(stored.cubeSize));
        look.cube = Cube{stored.cubeSize, stored.cubeDomain, {first, first + floats}};
        look.cube->nodes.resize(look.cube->nodes.size() + kNodePadding);
    }
    return look;
}

// Where a look differs from what it does at the ends: a correction takes every value, and pictures
// hold 0..1; tables are constant beyond their domain.
Domain DomainOf(const StoredLook* look) noexcept
{
    if (look == nullptr || look->cdlMode != CdlMode::None || !ShowsTables(*look))
    {
        return {};
    }
    return look->curveSize != 0 ? look->curveDomain : look->cubeDomain;
}

// Views of tables that somebody else owns.
struct TableViews
{
    explicit TableViews(const Look& tables)
        : curves(tables.curves ? ViewOf(*tables.curves) : CurveView{}),
          cube(tables.cube ? ViewOf(*tables.cube) : CubeView{})
    {
    }

    Rgb Sample(const Rgb& value) const noexcept
    {
        const Rgb curved = curves.size != 0 ? curves.Sample(value) : value;
        return cube.size != 0 ? cube.Sample(curved) : curved;
    }

    CurveView curves;
    CubeView cube;
};

// The values within `range` between which a correction with clamps does not give the same; 0..1
// where that does not help.
Interval ReachOf(const StoredLook& look, const Interval& range) noexcept
{
    if (look.cdlMode != CdlMode::Clamped)
    {
        return {};
    }
    Interval reach{range.high, range.low};
    for (std::size_t channel = 0; channel < 3; ++channel)
    {
        const float slope = look.cdl.slope[channel];
        const float offset = look.cdl.offset[channel];
        if (slope > 0.0F)
        {
            reach.low = std::min(reach.low, std::max(-offset / slope, range.low));
            reach.high = std::max(reach.high, std::min((1.0F - offset) / slope, range.high));
        }
    }
    constexpr float kNarrowest = 1.0F / 1024.0F;
    return reach.high - reach.low < kNarrowest ? Interval{} : reach;
}

float Limited(float value, const Interval& interval) noexcept
{
    return std::clamp(value, interval.low, interval.high);
}

// The look at places where its tables are checked, graded once for all sizes that are tried.
class Check
{
public:
    // `grade` lives as long.
    Check(const Domain& domain, const GradeColours& grade) : m_domain(domain), m_grade(grade)
    {
        m_inputs.reserve(NodeCount(kCheckSide) + kCheckGreys);
        ForEachNode(domain, kCheckSide, [this](const Rgb& input) { m_inputs.push_back(input); });
        for (std::uint32_t i = 0; i < kCheckGreys; ++i)
        {
            m_inputs.push_back({EntryValue(domain[0], i, kCheckGreys),
                                EntryValue(domain[1], i, kCheckGreys),
                                EntryValue(domain[2], i, kCheckGreys)});
        }
        m_graded = m_inputs;
        grade(m_graded);
    }

    StoringError ErrorOf(const Look& tables) const
    {
        const TableViews views(tables);
        // Of each part of the domain, and of the greys: errors come in ridges of many peaks, and
        // the highest sample need not be on the highest peak.
        std::vector<StoringError> parts(NodeCount(kParts) + 1);
        for (std::size_t i = 0; i < m_inputs.size(); ++i)
        {
            const double size = Difference(views.Sample(m_inputs[i]), m_graded[i]);
            StoringError& part = parts[PartOf(i)];
            if (size > part.size)
            {
                part = {size, m_inputs[i], false};
            }
        }
        const auto larger = [](const StoringError& a, const StoringError& b) {
            return a.size > b.size;
        };
        constexpr std::ptrdiff_t kRefined = 24;
        std::partial_sort(parts.begin(), parts.begin() + kRefined, parts.end(), larger);
        StoringError largest;
        for (const StoringError& part : std::span(parts).first(kRefined))
        {
            const StoringError refined = Refined(views, part);
            if (larger(refined, largest))
            {
                largest = refined;
            }
        }
        return largest;
    }

private:
    static std::size_t PartOf(std::size_t sample) noexcept
    {
        constexpr std::size_t kSide = kCheckSide;
        if (sample >= NodeCount(kCheckSide))
        {
            return NodeCount(kParts);
        }
        const auto part = [](std::size_t index) { return index % kSide * kParts / kSide; };
        return part(sample) +
               kParts * (part(sample / kSide) + kParts * part(sample / kSide / kSide));
    }

    // The samples miss the very place of an error: seeks it around what they found, from as far as
    // their distance, ever more closely.
    StoringError Refined(const TableViews& views, StoringError largest) const
    {
        constexpr int kSteps = 4; // to each side
        constexpr int kRounds = 6;
        float share = 1.0F / static_cast<float>((kCheckSide - 1) * kSteps);
        for (int round = 0; round < kRounds; ++round, share /= 2.0F)
        {
            std::vector<Rgb> inputs;
            const auto moved = [&](float value, int steps, const Interval& interval) {
                const float step = share * (interval.high - interval.low);
                return Limited(value + static_cast<float>(steps) * step, interval);
            };
            for (int r = -kSteps; r <= kSteps; ++r)
            {
                for (int g = -kSteps; g <= kSteps; ++g)
                {
                    for (int b = -kSteps; b <= kSteps; ++b)
                    {
                        inputs.push_back({moved(largest.input.r, r, m_domain[0]),
                                          moved(largest.input.g, g, m_domain[1]),
                                          moved(largest.input.b, b, m_domain[2])});
                    }
                }
            }
            std::vector<Rgb> graded = inputs;
            m_grade(graded);
            for (std::size_t i = 0; i < inputs.size(); ++i)
            {
                const double size = Difference(views.Sample(inputs[i]), graded[i]);
                if (size > largest.size)
                {
                    largest = {size, inputs[i], false};
                }
            }
        }
        return largest;
    }

    Domain m_domain;
    const GradeColours& m_grade;
    std::vector<Rgb> m_inputs;
    std::vector<Rgb> m_graded;
};

Cube Sampled(const Domain& domain, std::uint32_t size, const GradeColours& grade)
{
    std::vector<Rgb> colours;
    colours.reserve(NodeCount(size));
    ForEachNode(domain, size, [&](const Rgb& input) { colours.push_back(input); });
    grade(colours);
    Cube cube{size, domain, {}};
    cube.nodes.reserve(3 * colours.size() + kNodePadding);
    for (const Rgb& node : colours)
    {
        for (const float value : {node.r, node.g, node.b})
        {
            cube.nodes.push_back(std::clamp(value, -kLargestNumber, kLargestNumber));
        }
    }
    cube.nodes.resize(cube.nodes.size() + kNodePadding);
    return cube;
}

// Whether the look goes on where the tables, which end with their domain, do not.
bool GoesOnBeyond(const Domain& domain, const GradeColours& grade)
{
    std::vector<Rgb> inputs;
    const auto places = [](const Interval& interval) {
        const float width = interval.high - interval.low;
        return std::array{interval.low - width, interval.low - width / 16.0F,
                          interval.low,         interval.low + width / 2.0F,
                          interval.high,        interval.high + width / 16.0F,
                          interval.high + width};
    };
    for (const float r : places(domain[0]))
    {
        for (const float g : places(domain[1]))
        {
            for (const float b : places(domain[2]))
            {
                inputs.push_back({r, g, b});
            }
        }
    }
    std::vector<Rgb> beyond = inputs;
    std::vector<Rgb> limited = inputs;
    for (Rgb& value : limited)
    {
        value = {Limited(value.r, domain[0]), Limited(value.g, domain[1]),
                 Limited(value.b, domain[2])};
    }
    grade(beyond);
    grade(limited);
    for (std::size_t i = 0; i < inputs.size(); ++i)
    {
        if (Difference(beyond[i], limited[i]) > kUnseen)
        {
            return true;
        }
    }
    return false;
}

std::string RangeText(const Interval& range)
{
    return NumberText(range.low, 3) + " to " + NumberText(range.high, 3);
}

std::string RangeText(const Domain& domain)
{
    if (IsSame(domain))
    {
        return RangeText(domain[0]);
    }
    return RangeText(domain[0]) + " in red, " + RangeText(domain[1]) + " in green, " +
           RangeText(domain[2]) + " in blue";
}

Interval ValuesOf(const Look& tables) noexcept
{
    const float* const values =
        tables.cube ? tables.cube->nodes.data() : tables.curves->values.data();
    const std::size_t count =
        tables.cube ? tables.cube->nodes.size() - kNodePadding : tables.curves->values.size();
    const auto [low, high] = std::minmax_element(values, values + count);
    return {*low, *high};
}

const Domain& InputDomainOf(const Look& tables) noexcept
{
    return tables.curves ? tables.curves->domain : tables.cube->domain;
}

void TellLosses(CubeExport& exported, const StoringError& error, const GradeColours& grade)
{
    exported.largestError = error.size;
    if (error.size > kUnseen)
    {
        exported.losses.push_back("the cube cannot follow the look exactly: " +
                                  LargestErrorText(error.size, error.input));
    }
    const Domain& domain = InputDomainOf(exported.tables);
    if (GoesOnBeyond(domain, grade))
    {
        exported.losses.push_back("outside " + RangeText(domain) +
                                  " the cube clips, where the look goes on");
    }
    const Interval values = ValuesOf(exported.tables);
    if (values.low < -kUnseen || values.high > 1.0 + kUnseen)
    {
        exported.losses.push_back("it holds values from " + RangeText(values) +
                                  ", which some programs limit to 0 to 1");
    }
    if (exported.tables.curves && exported.tables.cube)
    {
        exported.losses.push_back("it holds a 1D LUT before a 3D LUT, which some programs cannot "
                                  "read; give --points for a 3D LUT alone");
    }
}

std::unique_ptr<PreparedLook> Prepared(const Look& look)
{
    StoredLook stored;
    StoreLook(look, stored);
    std::vector<std::uint8_t> record(kRecordSize);
    WriteRecord(stored, RecordBytes(record.data(), kRecordSize));
    auto prepared = std::make_unique<PreparedLook>();
    prepared->Read(record);
    return prepared;
}

// A look in two parts: what it does to each channel alone, which curves follow far more closely
// than a cube, and what it does to that.
class Shaped
{
public:
    explicit Shaped(const StoredLook& stored)
    {
        Look first;
        first.cdlMode = stored.cdlMode;
        first.cdl = stored.cdl;
        first.cdl.saturation = 1.0F;
        Look rest = TablesOf(stored);
        rest.strength = stored.strength;
        if (stored.cdl.saturation != 1.0F)
        {
            rest.cdlMode = stored.cdlMode;
            rest.cdl.saturation = stored.cdl.saturation;
        }
        else if (!rest.cube)
        {
            first.curves = std::exchange(rest.curves, {});
            first.strength = stored.strength;
        }
        else if (rest.strength == 1.0F)
        {
            first.curves = std::exchange(rest.curves, {});
            if (IsSame(rest.cube->domain))
            {
                m_ownCube = rest.cube;
            }
        }
        m_first = Prepared(first);
        if (rest.cdlMode != CdlMode::None || rest.curves || rest.cube)
        {
            m_rest = Prepared(rest);
        }
    }

    // Curves of `entries` over `range`: alone where nothing follows, else before a cube of
    // `points`, or before the look's own.
    Look Sampled(const Interval& range, std::uint32_t entries, std::uint32_t points) const
    {
        Look tables;
        tables.curves = CurvesOf(range, entries);
        if (m_ownCube)
        {
            tables.cube = m_ownCube;
        }
        else if (m_rest)
        {
            const Interval units = ToUnits(tables.curves->values);
            tables.cube = ReferenceRenderer::Sampled({units, units, units}, points,
                                                     [this](std::span<Rgb> colours) {
                                                         for (Rgb& colour : colours)
                                                         {
                                                             colour = m_rest->Grade(colour);
                                                         }
                                                     });
            tables.cube->domain = {};
        }
        return tables;
    }

private:
    Curves CurvesOf(const Interval& range, std::uint32_t entries) const
    {
        Curves curves{entries, {range, range, range}, std::vector<float>(std::size_t{3} * entries)};
        for (std::uint32_t i = 0; i < entries; ++i)
        {
            const float value = EntryValue(range, i, entries);
            const Rgb shaped = m_first->Grade({value, value, value});
            curves.values[i] = shaped.r;
            curves.values[entries + i] = shaped.g;
            curves.values[2 * entries + i] = shaped.b;
        }
        return curves;
    }

    // Some programs limit what lies between the tables to 0..1: brings values beyond into it, and
    // answers what 0 and 1 stand for now.
    static Interval ToUnits(std::vector<float>& values) noexcept
    {
        const auto [least, most] = std::ranges::minmax(values);
        const Interval range{std::min(least, 0.0F), std::max(most, 1.0F)};
        for (float& value : values)
        {
            value = (value - range.low) / (range.high - range.low);
        }
        return range;
    }

    std::unique_ptr<PreparedLook> m_first;
    std::unique_ptr<PreparedLook> m_rest; // null when nothing follows
    std::optional<Cube> m_ownCube;        // when nothing but that follows
};

// Makes the tables of one way to keep a look.
struct Way
{
    std::function<Look()> tables;
    // Curves in front are not read everywhere: another way makes place for them only if they bring
    // the error below this share of it.
    double worthwhile = 1.0;
};

// Until one is good enough. `own` has tables when the look is nothing else.
std::vector<Way> WaysToTry(const StoredLook* look, const Look& own,
                           std::optional<std::uint32_t> points, const GradeColours& grade)
{
    const Domain domain = DomainOf(look);
    const auto cubeOf = [domain, &grade](std::uint32_t size) {
        return Way{[domain, &grade, size] {
            Look tables;
            tables.cube = Sampled(domain, size, grade);
            return tables;
        }};
    };
    const Way asTheyAre{[&own] { return own; }};
    if (points)
    {
        const bool isOwn = own.cube && !own.curves && own.cube->size == *points;
        return {isOwn ? asTheyAre : cubeOf(*points)};
    }
    if ((own.curves || own.cube) && FitsCubeFile(own))
    {
        return {asTheyAre};
    }
    std::vector<Way> ways;
    if (look != nullptr && look->cubeSize != 0)
    {
        ways.push_back(cubeOf(look->cubeSize));
    }
    for (const std::uint32_t size : kUsualSizes)
    {
        ways.push_back(cubeOf(size));
    }
    if (look != nullptr && look->cdlMode != CdlMode::None)
    {
        const auto shaped = std::make_shared<const Shaped>(*look);
        for (const Interval& widest : kShapedRanges)
        {
            const Interval range = ReachOf(*look, widest);
            for (const auto& sizes : kShapedSizes)
            {
                ways.push_back(
                    {[=] { return shaped->Sampled(range, sizes.first, sizes.second); }, 0.5});
            }
        }
    }
    return ways;
}

} // namespace

CubeExport ExportTables(const StoredLook* look, std::optional<std::uint32_t> points,
                        const GradeColours& grade)
{
    const Look own = look != nullptr && IsTables(*look) ? TablesOf(*look) : Look{};
    const Check check(DomainOf(look), grade);
    CubeExport exported;
    std::optional<StoringError> error;
    for (const Way& way : WaysToTry(look, own, points, grade))
    {
        Look tables = way.tables();
        const StoringError found = check.ErrorOf(tables);
        if (!error || found.size < error->size * way.worthwhile)
        {
            exported.tables = std::move(tables);
            error = found;
        }
        if (error->size <= kUnseen)
        {
            break;
        }
    }
    TellLosses(exported, *error, grade);
    return exported;
}

bool IsCorrection(const StoredLook& look) noexcept
{
    return !ShowsTables(look);
}

} // namespace ReferenceRenderer
