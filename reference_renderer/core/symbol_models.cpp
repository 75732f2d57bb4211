#include "reference_renderer/core/symbol_models.h"

#include <algorithm>
#include <numeric>

namespace ReferenceRenderer
{

namespace
{

using Sizes = std::array<std::uint32_t, kSymbols>;

// Sizes that add up to kAllShares, in proportion to the counts.
Sizes SizesOf(const std::array<std::uint32_t, kSymbols>& counts) noexcept
{
    const std::uint64_t total = std::accumulate(counts.begin(), counts.end(), std::uint64_t{0});
    Sizes sizes{};
    std::uint32_t given = 0;
    for (std::size_t symbol = 0; symbol < kSymbols; ++symbol)
    {
        if (counts[symbol] != 0)
        {
            const std::uint64_t part = std::uint64_t{counts[symbol]} * kAllShares / total;
            sizes[symbol] = std::max(static_cast<std::uint32_t>(part), 1U);
            given += sizes[symbol];
        }
    }
    // What rounding left over, or took too much, is least felt where there is most.
    *std::max_element(sizes.begin(), sizes.end()) += kAllShares - given;
    return sizes;
}

void Place(const Sizes& sizes, std::array<SymbolShares, kSymbols>& shares) noexcept
{
    std::uint32_t first = 0;
    for (std::size_t symbol = 0; symbol < kSymbols; ++symbol)
    {
        shares[symbol] = {static_cast<std::uint16_t>(first),
                          static_cast<std::uint16_t>(sizes[symbol])};
        first += sizes[symbol];
    }
}

} // namespace

void SymbolModels::Fit(const SymbolCounts& counts) noexcept
{
    for (std::size_t context = 0; context < kContexts; ++context)
    {
        Place(SizesOf(counts[context]), m_shares[context]);
    }
}

std::size_t SymbolModels::Write(std::span<std::uint8_t, kMostBytes> bytes) const noexcept
{
    std::size_t used = 0;
    for (const auto& shares : m_shares)
    {
        std::size_t symbols = kSymbols;
        while (symbols > 1 && shares[symbols - 1].size == 0)
        {
            --symbols;
        }
        bytes[used++] = static_cast<std::uint8_t>(symbols);
        for (std::size_t symbol = 0; symbol < symbols; ++symbol)
        {
            bytes[used++] = static_cast<std::uint8_t>(shares[symbol].size);
            bytes[used++] = static_cast<std::uint8_t>(shares[symbol].size >> 8);
        }
    }
    return used;
}

std::size_t SymbolModels::Read(std::span<const std::uint8_t> bytes) noexcept
{
    std::size_t used = 0;
    for (auto& shares : m_shares)
    {
        const std::size_t symbols = used < bytes.size() ? bytes[used++] : 0U;
        if (symbols == 0 || symbols > kSymbols || bytes.size() - used < 2 * symbols)
        {
            return 0;
        }
        Sizes sizes{};
        std::uint32_t total = 0;
        for (std::size_t symbol = 0; symbol < symbols; ++symbol)
        {
            sizes[symbol] = bytes[used] + 256U * bytes[used + 1];
            total += sizes[symbol];
            used += 2;
        }
        if (total != kAllShares)
        {
            return 0;
        }
        Place(sizes, shares);
    }
    return used;
}

} // namespace ReferenceRenderer
