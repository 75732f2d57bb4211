#include "tools/glazelhost/media/blue_noise.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>

namespace GlazelHost
{

namespace
{

constexpr std::size_t kPlaces = kBlueNoiseSide * kBlueNoiseSide;

// The places of the tile, lit or not, and how crowded each is: the sum of a bell around every lit
// place, over the tile's edges. In whole numbers, so that every machine finds the same order.
class Pattern
{
public:
    Pattern() : m_isLit(kPlaces), m_crowd(kPlaces), m_bell(kPlaces)
    {
        constexpr double kSigma = 1.5; // pixels, as the method's author recommends
        constexpr double kScale = 1U << 30U;
        for (std::size_t place = 0; place < kPlaces; ++place)
        {
            const auto x = static_cast<double>(
                std::min(place % kBlueNoiseSide, kBlueNoiseSide - place % kBlueNoiseSide));
            const auto y = static_cast<double>(
                std::min(place / kBlueNoiseSide, kBlueNoiseSide - place / kBlueNoiseSide));
            m_bell[place] =
                std::llround(kScale * std::exp(-(x * x + y * y) / (2 * kSigma * kSigma)));
        }
    }

    bool IsLit(std::size_t place) const { return m_isLit[place]; }

    void Turn(std::size_t place, bool lit)
    {
        m_isLit[place] = lit;
        const std::size_t left = place % kBlueNoiseSide;
        const std::size_t top = place / kBlueNoiseSide;
        std::int64_t* crowd = m_crowd.data();
        for (std::size_t y = 0; y < kBlueNoiseSide; ++y)
        {
            const std::int64_t* const bell =
                m_bell.data() + (y + kBlueNoiseSide - top) % kBlueNoiseSide * kBlueNoiseSide;
            for (std::size_t x = 0; x < kBlueNoiseSide; ++x, ++crowd)
            {
                const std::int64_t share = bell[(x + kBlueNoiseSide - left) % kBlueNoiseSide];
                *crowd += lit ? share : -share;
            }
        }
    }

    std::size_t TightestCluster() const { return Extreme(true); }
    std::size_t LargestVoid() const { return Extreme(false); }

private:
    // The most crowded lit place, or the least crowded one that is not.
    std::size_t Extreme(bool lit) const
    {
        std::size_t found = kPlaces;
        for (std::size_t place = 0; place < kPlaces; ++place)
        {
            if (m_isLit[place] == lit &&
                (found == kPlaces ||
                 (lit ? m_crowd[place] > m_crowd[found] : m_crowd[place] < m_crowd[found])))
            {
                found = place;
            }
        }
        return found;
    }

    std::vector<bool> m_isLit;
    std::vector<std::int64_t> m_crowd;
    std::vector<std::int64_t> m_bell; // around the place 0
};

// A tenth of the places, moved from clusters into voids until they lie evenly.
Pattern EvenStart(std::uint32_t seed)
{
    constexpr std::size_t kStart = kPlaces / 10;
    std::mt19937 random(seed);
    Pattern pattern;
    for (std::size_t lit = 0; lit < kStart;)
    {
        const std::size_t place = random() % kPlaces;
        if (!pattern.IsLit(place))
        {
            pattern.Turn(place, true);
            ++lit;
        }
    }
    for (;;)
    {
        const std::size_t cluster = pattern.TightestCluster();
        pattern.Turn(cluster, false);
        const std::size_t gap = pattern.LargestVoid();
        pattern.Turn(gap, true);
        if (gap == cluster)
        {
            return pattern;
        }
    }
}

} // namespace

std::vector<std::uint16_t> BlueNoiseRanks(std::uint32_t seed)
{
    const Pattern start = EvenStart(seed);
    std::vector<std::uint16_t> ranks(kPlaces);
    std::size_t lit = 0;
    for (std::size_t place = 0; place < kPlaces; ++place)
    {
        lit += start.IsLit(place) ? 1U : 0U;
    }
    Pattern thinner = start;
    for (std::size_t rank = lit; rank > 0; --rank)
    {
        const std::size_t place = thinner.TightestCluster();
        thinner.Turn(place, false);
        ranks[place] = static_cast<std::uint16_t>(rank - 1);
    }
    // Also when most are lit: the bells around all places have one sum everywhere, so that the
    // largest void of the lit is the tightest cluster of the others.
    Pattern denser = start;
    for (std::size_t rank = lit; rank < kPlaces; ++rank)
    {
        const std::size_t place = denser.LargestVoid();
        denser.Turn(place, true);
        ranks[place] = static_cast<std::uint16_t>(rank);
    }
    return ranks;
}

} // namespace GlazelHost
