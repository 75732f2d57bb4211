#include "reference_renderer/core/chain_fitting.h"

#include "reference_renderer/core/chain_error.h"
#include "reference_renderer/core/chain_folding.h"
#include "reference_renderer/core/import_error.h"
#include "reference_renderer/core/look_record.h"
#include "reference_renderer/core/lut_fitting.h"
#include "reference_renderer/core/lut_sampling.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

// Finer is not worth more points: a 32nd of an 8-bit code.
constexpr double kFineEnough = 1.0 / 8192.0;
constexpr double kCode8 = 1.0 / 255.0;

// Ends of curves beyond this are none.
constexpr double kNoEnd = 0.99 * kLargestNumber;

using Steps = std::vector<ChainStep>;

struct Fitting
{
    Look look;
    ChainError error;
};

// A double that a look is to hold: beyond what it can, its end, which the measured error then
// tells.
float Held(double value) noexcept
{
    constexpr double kLargest = kLargestNumber;
    return value == value ? static_cast<float>(std::clamp(value, -kLargest, kLargest)) : 0.0F;
}

// The values over which the first step works; 0..1 where it has no ends.
struct WorkingRange
{
    Domain domain;
    bool isLimit = false; // the step itself would go on
};

WorkingRange RangeOf(const ChainStep& step)
{
    WorkingRange range;
    if (const auto* const cube = std::get_if<CubeStep>(&step))
    {
        range.domain = cube->cube.domain;
        return range;
    }
    const auto* const curves = std::get_if<CurveStep>(&step);
    range.isLimit = curves == nullptr;
    for (std::size_t i = 0; curves != nullptr && i < 3; ++i)
    {
        const double low = curves->channels[i].front().input;
        const double high = curves->channels[i].back().input;
        range.isLimit = range.isLimit || low < -kNoEnd || high > kNoEnd;
        const double first = low < -kNoEnd ? std::min(0.0, high - 1.0) : low;
        range.domain[i] = {Held(first), Held(high > kNoEnd ? std::max(1.0, first + 1.0) : high)};
    }
    return range;
}

// What a corrected picture fills: one of values 0..1, unless the correction clamps any other too.
Domain ResultsOf(const CdlStep& cdl)
{
    Domain results;
    if (cdl.mode == CdlMode::Clamped)
    {
        return results;
    }
    for (std::size_t corner = 0; corner < 8; ++corner)
    {
        const Triple result =
            Applied(cdl, {static_cast<double>(corner & 1U), static_cast<double>(corner >> 1U & 1U),
                          static_cast<double>(corner >> 2U)});
        for (std::size_t i = 0; i < 3; ++i)
        {
            const float value = Held(result[i]);
            results[i].low = std::min(corner == 0 ? value : results[i].low, value);
            results[i].high = std::max(corner == 0 ? value : results[i].high, value);
        }
    }
    return results;
}

// A domain must have a width, whatever is constant over it.
Domain Widened(Domain domain) noexcept
{
    for (Interval& interval : domain)
    {
        if (!(interval.low < interval.high))
        {
            interval.high = interval.low + std::max(1.0F, std::abs(interval.low));
        }
    }
    return domain;
}

// The entries of the smallest table of even steps that has an entry at each of the points.
std::uint32_t EvenSize(const CurveStep& step, std::uint32_t largest)
{
    constexpr double kNear = 1e-6; // of the whole: what decimals in a text leave open
    for (std::uint32_t last = 1; last < largest; ++last)
    {
        const bool fits =
            std::all_of(step.channels.begin(), step.channels.end(), [&](const auto& points) {
                const double low = points.front().input;
                const double scale = last / (points.back().input - low);
                return std::all_of(points.begin(), points.end(), [&](const CurvePoint& point) {
                    const double entry = (point.input - low) * scale;
                    return std::abs(entry - std::round(entry)) <= kNear * last;
                });
            });
        if (fits)
        {
            return last + 1;
        }
    }
    return 0;
}

Domain WithMargin(Domain domain) noexcept
{
    for (Interval& interval : domain)
    {
        const float margin = (interval.high - interval.low) / 16.0F;
        interval = {interval.low - margin, interval.high + margin};
    }
    return domain;
}

class ChainFitter
{
public:
    explicit ChainFitter(ColourChain chain) : m_chain(Folded(std::move(chain)))
    {
        TakeCorrection();
        m_rest.insert(m_rest.end(), m_chain.begin() + (HasCorrection() ? 1 : 0), m_chain.end());
        if (m_rest.empty())
        {
            return;
        }
        WorkingRange range = RangeOf(m_rest.front());
        const bool clamped = m_correction.cdlMode == CdlMode::Clamped;
        m_isLimit = range.isLimit && !clamped;
        if (range.isLimit && HasCorrection())
        {
            range.domain = ResultsOf(std::get<CdlStep>(m_chain.front()));
        }
        m_domain = Widened(range.domain);
        m_separable = static_cast<std::size_t>(
            std::find_if_not(m_rest.begin(), m_rest.end(), IsSeparable) - m_rest.begin());
    }

    Fitting Fit()
    {
        if (m_rest.empty())
        {
            Consider(m_correction);
            return m_best;
        }
        const Steps mixing(m_rest.begin() + static_cast<std::ptrdiff_t>(m_separable), m_rest.end());
        const CubeStep* const cube =
            mixing.empty() ? nullptr : std::get_if<CubeStep>(&mixing.front());
        const std::optional<Curves> curves = LeadingCurves(cube);
        if (mixing.empty())
        {
            Look look = m_correction;
            look.curves = curves;
            Consider(std::move(look));
            return m_best;
        }
        Bake(curves, mixing, curves ? RangesOf(*curves) : m_domain);
        const bool isCubeAlone = cube != nullptr && mixing.size() == 1;
        if (curves && !isCubeAlone)
        {
            Bake({}, m_rest, m_domain);
        }
        return m_best;
    }

    bool IsLimit() const noexcept { return m_isLimit; }

private:
    bool HasCorrection() const noexcept { return m_correction.cdlMode != CdlMode::None; }

    // A correction that leads the chain stands in the look as it is.
    void TakeCorrection()
    {
        if (m_chain.empty())
        {
            return;
        }
        if (const auto* const cdl = std::get_if<CdlStep>(&m_chain.front()))
        {
            if (!cdl->reverse)
            {
                m_correction.cdl = cdl->cdl;
                m_correction.cdlMode = cdl->mode;
            }
        }
        const auto* const affine = std::get_if<AffineStep>(&m_chain.front());
        if (affine == nullptr || m_chain.size() != 1 || !IsSeparable(m_chain.front()))
        {
            return;
        }
        Cdl scaled;
        for (std::size_t i = 0; i < 3; ++i)
        {
            if (affine->rows[i][i] < 0.0)
            {
                return;
            }
            scaled.slope[i] = Held(affine->rows[i][i]);
            scaled.offset[i] = Held(affine->offset[i]);
        }
        m_correction.cdl = scaled;
        m_correction.cdlMode = CdlMode::Unclamped;
    }

    // The separable steps in front; `next` is the cube behind them, or null.
    std::optional<Curves> LeadingCurves(const CubeStep* next) const
    {
        if (m_separable == 0)
        {
            return {};
        }
        const Steps steps(m_rest.begin(),
                          m_rest.begin() + static_cast<std::ptrdiff_t>(m_separable));
        const auto* const first = std::get_if<CurveStep>(&steps.front());
        std::uint32_t size = first != nullptr ? EvenSize(*first, kStoredCurveSize) : 0;
        const bool isExact = size != 0 && steps.size() == 1;
        if (size == 0)
        {
            size = kStoredCurveSize;
        }
        else if (steps.size() > 1)
        {
            size = (kStoredCurveSize - 1) / (size - 1) * (size - 1) + 1;
        }
        Curves curves{size, m_domain, {}};
        curves.values.resize(std::size_t{3} * size);
        for (std::uint32_t i = 0; i < size; ++i)
        {
            const Triple result =
                Applied(steps, {EntryValue(m_domain[0], i, size), EntryValue(m_domain[1], i, size),
                                EntryValue(m_domain[2], i, size)});
            for (std::size_t channel = 0; channel < 3; ++channel)
            {
                float value = Held(result[channel]);
                if (!isExact && next != nullptr)
                {
                    // Far outside of the cube nothing is to be told apart, as at the logarithm of
                    // 0, and a smaller range has finer steps in a record.
                    const Interval& inside = next->cube.domain[channel];
                    const float width = inside.high - inside.low;
                    value = std::clamp(value, inside.low - width, inside.high + width);
                }
                curves.values[channel * size + i] = value;
            }
        }
        return curves;
    }

    static Domain RangesOf(const Curves& curves)
    {
        Domain ranges;
        for (std::size_t i = 0; i < 3; ++i)
        {
            const auto first = curves.values.begin() + static_cast<std::ptrdiff_t>(i * curves.size);
            const auto [low, high] = std::minmax_element(first, first + curves.size);
            ranges[i] = {*low, *high};
        }
        return Widened(ranges);
    }

    // Looks with a cube of the mixing steps, from few points to many until it is fine enough.
    void Bake(const std::optional<Curves>& curves, const Steps& mixing, Domain domain)
    {
        std::vector<std::uint32_t> sizes{2, 17, 33, kStoredCubeSize};
        const auto* const cube = std::get_if<CubeStep>(&mixing.front());
        if (cube != nullptr)
        {
            const std::uint32_t cells = cube->cube.size - 1;
            domain = cube->cube.domain;
            sizes = {std::max(1U, (kStoredCubeSize - 1) / cells) * cells + 1};
            if (mixing.size() == 1)
            {
                Look look = m_correction;
                look.curves = curves;
                look.cube = cube->cube;
                Consider(std::move(look));
            }
        }
        for (const std::uint32_t size : sizes)
        {
            // A cube that is taken as it is gains by more points only where they round its cells.
            const bool isTaken = cube != nullptr && mixing.size() == 1 &&
                                 (!cube->trilinear || size == cube->cube.size);
            if (isTaken || (m_isKnown && m_best.error.size <= kFineEnough))
            {
                return;
            }
            Look look = m_correction;
            look.curves = curves;
            look.cube = Baked(mixing, domain, size);
            Consider(std::move(look));
        }
    }

    static Cube Baked(const Steps& steps, const Domain& domain, std::uint32_t size)
    {
        Cube cube{size, domain, {}};
        cube.nodes.reserve(3 * NodeCount(size) + kNodePadding);
        for (std::size_t i = 0; i < NodeCount(size); ++i)
        {
            const auto along = [&](std::size_t axis, std::size_t entry) {
                return EntryValue(domain[axis], static_cast<std::uint32_t>(entry % size), size);
            };
            const Triple node =
                Applied(steps, {along(0, i), along(1, i / size), along(2, i / size / size)});
            for (const double value : node)
            {
                cube.nodes.push_back(Held(value));
            }
        }
        cube.nodes.resize(cube.nodes.size() + kNodePadding);
        return cube;
    }

    // Keeps the look when it is the nearest so far.
    void Consider(Look look)
    {
        Fitting fitting = Measured(std::move(look));
        if (!m_isKnown || fitting.error.size < m_best.error.size)
        {
            m_best = std::move(fitting);
        }
        m_isKnown = true;
    }

    Fitting Measured(Look look) const
    {
        // Somewhat beyond the ends too, unless values are limited there.
        const Domain whole = HasCorrection() ? Domain{} : m_domain;
        const bool mixes = m_separable < m_rest.size() || HasCorrection();
        const ChainError error =
            LargestChainError(m_chain, look, m_isLimit ? whole : WithMargin(whole), mixes);
        return {std::move(look), error};
    }

    ColourChain m_chain;
    Look m_correction;           // what leads, without tables
    Steps m_rest;                // behind that
    Domain m_domain;             // of the rest
    bool m_isLimit = false;      // which would go on beyond
    std::size_t m_separable = 0; // steps of the rest before the first that mixes channels
    Fitting m_best;
    bool m_isKnown = false;
};

} // namespace

ReadLook LookOfChain(ColourChain chain, std::string_view path)
{
    ChainFitter fitter(std::move(chain));
    Fitting fitting = fitter.Fit();
    if (!(fitting.error.size <= kLargestNumber))
    {
        throw Malformed(path, 0,
                        "its steps give numbers that no look holds; export them for a smaller "
                        "range of values");
    }
    ReadLook read{std::move(fitting.look), {}, fitting.error.size};
    if (fitter.IsLimit())
    {
        read.warnings.emplace_back("values beyond 0 to 1 are limited to these: the first step of "
                                   "the file has no end, and a look holds it as a table");
    }
    if (fitting.error.size > kCode8)
    {
        read.warnings.push_back("the steps of the file cannot be kept exactly: " +
                                LargestErrorText(fitting.error.size, fitting.error.input));
    }
    return read;
}

} // namespace ReferenceRenderer
