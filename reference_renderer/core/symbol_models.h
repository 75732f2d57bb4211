// How often each symbol comes in each context, as the entropy coder of tables needs it: whole
// shares of 2048. Pure: no windows.h. Tests: tests/reference_renderer/core/table_coding_test.cpp.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ReferenceRenderer
{

inline constexpr std::uint32_t kSymbols = 43;
inline constexpr std::uint32_t kContexts = 12;
inline constexpr std::uint32_t kShareBits = 11;
inline constexpr std::uint32_t kAllShares = 1U << kShareBits;

using SymbolCounts = std::array<std::array<std::uint32_t, kSymbols>, kContexts>;

// The shares of one symbol: `size` of them from `first` on.
struct SymbolShares
{
    std::uint16_t first = 0;
    std::uint16_t size = 0;
};

class SymbolModels
{
public:
    // Every symbol that was counted gets a share.
    void Fit(const SymbolCounts& counts) noexcept;

    static constexpr std::size_t kMostBytes = std::size_t{kContexts} * (1 + 2 * kSymbols);
    // Answers the number of bytes written.
    std::size_t Write(std::span<std::uint8_t, kMostBytes> bytes) const noexcept;
    // Answers the number of bytes read, 0 when they are no models.
    std::size_t Read(std::span<const std::uint8_t> bytes) noexcept;

    const SymbolShares& Of(std::uint32_t context, std::uint32_t symbol) const noexcept
    {
        return m_shares[context][symbol];
    }

private:
    std::array<std::array<SymbolShares, kSymbols>, kContexts> m_shares{};
};

} // namespace ReferenceRenderer
