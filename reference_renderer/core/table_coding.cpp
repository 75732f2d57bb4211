#include "reference_renderer/core/table_coding.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace ReferenceRenderer
{

namespace
{

using namespace LatticeWalk;

// In front of a coded table; then the models, the plain bits and the coded symbols.
struct TableHead
{
    std::uint32_t step;
    std::uint32_t modelBytes;
    std::uint32_t plainBytes;
};

// Reading plain bits takes four bytes at a time.
constexpr std::size_t kPlainPadding = 4;
constexpr std::size_t kStates = 3; // of the entropy coder, one a channel
constexpr std::uint32_t kLowestState = 1U << 16;
constexpr std::uint32_t kSharesMask = kAllShares - 1;

float CodesPerStep(std::uint32_t step) noexcept
{
    return static_cast<float>(1U << step);
}

// What a node is expected to be, as a code, and the contexts of its three symbols: the number of
// bits of the roughness in quarters of a step.
struct Start
{
    FourFloats code;
    FourInts contexts;

    Start(const Expectation& expected, float perStep) noexcept
        : code(LanesOf<FourFloats>::FromInts(
              LanesOf<FourFloats>::Truncated(Limited(expected.code) + 0.5F))),
          contexts()
    {
        constexpr float kMost = static_cast<float>(1U << (kContexts - 1));
        constexpr std::int32_t kExponentOfOne = 127;
        const FourFloats quarters =
            Smaller(expected.roughness * (4.0F / perStep) + 1.0F, All(kMost));
        contexts = (std::bit_cast<FourInts>(quarters) >> 23) - kExponentOfOne;
    }
};

// A difference of n bits has symbol 2n, or 2n - 1 when it is negative, and n - 1 plain bits: the
// highest is known.
std::uint32_t BitsOf(std::uint32_t symbol) noexcept
{
    return (symbol + 1) / 2;
}

// Writes bits from the lowest bit of each byte up.
class BitWriter
{
public:
    explicit BitWriter(std::span<std::uint8_t> bytes) noexcept : m_bytes(bytes) {}

    void Put(std::uint32_t value, std::uint32_t count) noexcept
    {
        m_bits |= std::uint64_t{value} << m_count;
        m_count += count;
        if (m_count >= 32)
        {
            Flush(4);
            m_bits >>= 32;
            m_count -= 32;
        }
    }

    // The number of bytes with padding; more than there is room for when the bits did not fit.
    std::size_t Finish() noexcept
    {
        Flush(4);
        return m_used + kPlainPadding;
    }

private:
    void Flush(std::size_t count) noexcept
    {
        if (m_used + count <= m_bytes.size())
        {
            std::memcpy(m_bytes.data() + m_used, &m_bits, count);
        }
        m_used += count;
    }

    std::span<std::uint8_t> m_bytes;
    std::uint64_t m_bits = 0;
    std::uint32_t m_count = 0;
    std::size_t m_used = 0;
};

// Reads what BitWriter wrote; beyond the end, bits of any value.
class BitReader
{
public:
    // `bytes` are at least kPlainPadding.
    explicit BitReader(std::span<const std::uint8_t> bytes) noexcept
        : m_bytes(bytes.data()), m_last(bytes.size() - kPlainPadding)
    {
    }

    std::uint32_t Take(std::uint32_t count) noexcept
    {
        std::uint32_t four;
        std::memcpy(&four, m_bytes + std::min(m_place / 8, m_last), sizeof four);
        const std::uint32_t bits = four >> (m_place % 8);
        m_place += count;
        return bits & ((1U << count) - 1);
    }

private:
    const std::uint8_t* m_bytes;
    std::size_t m_last;
    std::size_t m_place = 0; // in bits
};

// Turns the codes of a table into symbols and plain bits.
class SymbolMaker
{
public:
    SymbolMaker(std::uint32_t step, std::uint8_t* symbols, std::uint8_t* contexts,
                BitWriter& plain) noexcept
        : m_step(step), m_perStep(CodesPerStep(step)), m_symbols(symbols), m_contexts(contexts),
          m_plain(plain), m_half(1 << step >> 1), m_toEnd(step < 20 ? (1 << step) - 1 : m_half)
    {
    }

    void operator()(float* node, const Expectation& expected) noexcept
    {
        const FourFloats code = LoadThree(node);
        const Start start(expected, m_perStep);
        const FourFloats difference = code - start.code;
        // Rounded to nearest; up where the result must be an end of the range, which limits it.
        const FourInts isEnd = (code == All(0.0F)) | (code == All(kTopCode));
        const FourInts rounding = isEnd ? m_toEnd : m_half;
        const FourInts steps =
            (LanesOf<FourFloats>::Truncated(Magnitude(difference)) + rounding) >> m_step;
        for (std::size_t channel = 0; channel < kStates; ++channel)
        {
            m_contexts[channel] = static_cast<std::uint8_t>(start.contexts[channel]);
        }
        constexpr int kColours = 7;
        if ((_mm_movemask_ps(LanesOf<FourFloats>::FromInts(steps) > 0.0F) & kColours) == 0)
        {
            std::fill_n(m_symbols, kStates, std::uint8_t{0});
            StoreThree(node, start.code);
        }
        else
        {
            const FourInts negative = difference < All(0.0F);
            PutSteps(steps, negative);
            const FourFloats moved = LanesOf<FourFloats>::FromInts(steps) * m_perStep;
            StoreThree(node, Limited(start.code + Chosen(negative, -moved, moved)));
        }
        m_symbols += kStates;
        m_contexts += kStates;
    }

private:
    void PutSteps(FourInts steps, FourInts negative) noexcept
    {
        for (std::size_t channel = 0; channel < kStates; ++channel)
        {
            const auto magnitude = static_cast<std::uint32_t>(steps[channel]);
            const auto bits = static_cast<std::uint32_t>(std::bit_width(magnitude));
            m_symbols[channel] = static_cast<std::uint8_t>(
                magnitude == 0 ? 0 : 2 * bits - (negative[channel] != 0 ? 1 : 0));
            if (magnitude > 1)
            {
                m_plain.Put(magnitude - (1U << (bits - 1)), bits - 1);
            }
        }
    }

    std::uint32_t m_step;
    float m_perStep;
    std::uint8_t* m_symbols;
    std::uint8_t* m_contexts;
    BitWriter& m_plain;
    std::int32_t m_half;
    std::int32_t m_toEnd;
};

SymbolCounts CountsOf(std::span<const std::uint8_t> symbols,
                      std::span<const std::uint8_t> contexts) noexcept
{
    // Apart for each channel: a count that is added to twice running waits for itself.
    std::array<SymbolCounts, kStates> counts{};
    for (std::size_t i = 0; i < symbols.size(); i += kStates)
    {
        ++counts[0][contexts[i]][symbols[i]];
        ++counts[1][contexts[i + 1]][symbols[i + 1]];
        ++counts[2][contexts[i + 2]][symbols[i + 2]];
    }
    for (std::size_t context = 0; context < kContexts; ++context)
    {
        for (std::size_t symbol = 0; symbol < kSymbols; ++symbol)
        {
            counts[0][context][symbol] += counts[1][context][symbol] + counts[2][context][symbol];
        }
    }
    return counts[0];
}

// Codes symbols from the last to the first, so that they are read from the first to the last.
// Writes 16-bit words from the end of `bytes` down.
class SymbolWriter
{
public:
    SymbolWriter(const SymbolModels& models, std::span<std::uint8_t> bytes) noexcept
        : m_models(models), m_begin(bytes.data()), m_next(bytes.data() + bytes.size())
    {
        m_states.fill(kLowestState);
    }

    bool Put(std::size_t channel, std::uint32_t context, std::uint32_t symbol) noexcept
    {
        const SymbolShares shares = m_models.Of(context, symbol);
        std::uint32_t state = m_states[channel];
        constexpr std::uint32_t kRoom = 32 - kShareBits;
        if (state >> kRoom >= shares.size)
        {
            if (!PutWord(state))
            {
                return false;
            }
            state >>= 16;
        }
        m_states[channel] =
            (state / shares.size << kShareBits) + state % shares.size + shares.first;
        return true;
    }

    // Where the coded symbols begin, null when there is no room.
    std::uint8_t* Finish() noexcept
    {
        for (std::size_t channel = kStates; channel-- > 0;)
        {
            if (!PutWord(m_states[channel] >> 16) || !PutWord(m_states[channel]))
            {
                return nullptr;
            }
        }
        return m_next;
    }

private:
    bool PutWord(std::uint32_t value) noexcept
    {
        const auto word = static_cast<std::uint16_t>(value);
        if (m_next - m_begin < static_cast<std::ptrdiff_t>(sizeof word))
        {
            return false;
        }
        m_next -= sizeof word;
        std::memcpy(m_next, &word, sizeof word);
        return true;
    }

    const SymbolModels& m_models;
    std::uint8_t* m_begin;
    std::uint8_t* m_next;
    std::array<std::uint32_t, kStates> m_states{};
};

// Reads what SymbolWriter wrote; beyond the end there are words of 0.
class SymbolReader
{
public:
    // `bytes` are at least the states.
    SymbolReader(const SymbolModels& models, std::span<const std::uint8_t> bytes) noexcept
        : m_models(models), m_next(bytes.data()), m_end(bytes.data() + bytes.size() / 2 * 2)
    {
        for (std::uint32_t context = 0; context < kContexts; ++context)
        {
            for (std::uint32_t symbol = 0; symbol < kSymbols; ++symbol)
            {
                const SymbolShares& shares = models.Of(context, symbol);
                std::memset(m_symbols[context].data() + shares.first, static_cast<int>(symbol),
                            shares.size);
            }
        }
        for (std::uint32_t& state : m_states)
        {
            state = TakeWord();
            state |= TakeWord() << 16;
        }
    }

    std::uint32_t Take(std::size_t channel, std::int32_t context) noexcept
    {
        const std::uint32_t state = m_states[channel];
        const std::uint32_t share = state & kSharesMask;
        const auto row = static_cast<std::uint32_t>(context);
        // Guessed, because it is mostly so: the next symbol need not wait for a table then.
        const std::uint32_t zeros = m_models.Of(row, 0).size;
        if (share < zeros)
        {
            m_states[channel] = Refilled(zeros * (state >> kShareBits) + share);
            return 0;
        }
        const std::uint32_t symbol = m_symbols[row][share];
        const SymbolShares shares = m_models.Of(row, symbol);
        m_states[channel] = Refilled(shares.size * (state >> kShareBits) + share - shares.first);
        return symbol;
    }

private:
    std::uint32_t Refilled(std::uint32_t state) noexcept
    {
        return state < kLowestState ? state << 16 | TakeWord() : state;
    }

    std::uint32_t TakeWord() noexcept
    {
        std::uint16_t word = 0;
        if (m_next != m_end)
        {
            std::memcpy(&word, m_next, sizeof word);
            m_next += sizeof word;
        }
        return word;
    }

    const SymbolModels& m_models;
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
    std::array<std::uint32_t, kStates> m_states{};
    std::array<std::array<std::uint8_t, kAllShares>, kContexts> m_symbols;
};

// Turns symbols and plain bits back into codes.
class CodeMaker
{
public:
    CodeMaker(std::uint32_t step, SymbolReader& symbols, BitReader plain) noexcept
        : m_perStep(CodesPerStep(step)), m_symbols(symbols), m_plain(plain)
    {
    }

    void operator()(float* node, const Expectation& expected) noexcept
    {
        const Start start(expected, m_perStep);
        const std::array<std::uint32_t, kStates> symbols{m_symbols.Take(0, start.contexts[0]),
                                                         m_symbols.Take(1, start.contexts[1]),
                                                         m_symbols.Take(2, start.contexts[2])};
        if ((symbols[0] | symbols[1] | symbols[2]) == 0)
        {
            StoreThree(node, start.code);
            return;
        }
        const FourInts steps{StepsOf(symbols[0]), StepsOf(symbols[1]), StepsOf(symbols[2]), 0};
        StoreThree(node, Limited(start.code + LanesOf<FourFloats>::FromInts(steps) * m_perStep));
    }

private:
    std::int32_t StepsOf(std::uint32_t symbol) noexcept
    {
        const std::uint32_t bits = BitsOf(symbol);
        if (bits == 0)
        {
            return 0;
        }
        const std::uint32_t highest = 1U << (bits - 1);
        const auto magnitude = static_cast<std::int32_t>(highest | m_plain.Take(bits - 1));
        return symbol % 2 != 0 ? -magnitude : magnitude;
    }

    float m_perStep;
    SymbolReader& m_symbols;
    BitReader m_plain;
};

// The parts of a coded table.
struct TableParts
{
    TableHead head{};
    SymbolModels models;
    std::span<const std::uint8_t> plain;
    std::span<const std::uint8_t> symbols;

    // False when `bytes` are no table.
    bool Find(std::span<const std::uint8_t> bytes) noexcept
    {
        if (bytes.size() < sizeof head)
        {
            return false;
        }
        std::memcpy(&head, bytes.data(), sizeof head);
        const std::span<const std::uint8_t> rest = bytes.subspan(sizeof head);
        if (head.step > kCoarsestStep || head.modelBytes > rest.size() ||
            head.plainBytes < kPlainPadding || head.plainBytes > rest.size() - head.modelBytes ||
            models.Read(rest.first(head.modelBytes)) != head.modelBytes)
        {
            return false;
        }
        plain = rest.subspan(head.modelBytes, head.plainBytes);
        symbols = rest.subspan(head.modelBytes + head.plainBytes);
        return symbols.size() >= kStates * sizeof(std::uint32_t);
    }
};

} // namespace

TableEncoder::TableEncoder(std::size_t mostNodes)
    : m_codes(3 * mostNodes), m_symbols(3 * mostNodes), m_contexts(3 * mostNodes)
{
}

std::size_t TableEncoder::Encode(const TableShape& shape, std::uint32_t step,
                                 std::span<std::uint8_t> bytes) noexcept
{
    // The plain bits go where they stay once the size of the models is known, which is small.
    constexpr std::size_t kPlainOffset = sizeof(TableHead) + SymbolModels::kMostBytes;
    if (bytes.size() < kPlainOffset)
    {
        return 0;
    }
    BitWriter plain(bytes.subspan(kPlainOffset));
    SymbolMaker maker(step, m_symbols.data(), m_contexts.data(), plain);
    WalkLattice(m_codes.data(), shape, CodesPerStep(step), maker);
    const std::size_t plainBytes = plain.Finish();
    if (plainBytes > bytes.size() - kPlainOffset)
    {
        return 0;
    }

    SymbolModels models;
    const std::size_t values = kStates * shape.Nodes();
    models.Fit(CountsOf(std::span(m_symbols).first(values), std::span(m_contexts).first(values)));
    std::uint8_t* const afterHead = bytes.data() + sizeof(TableHead);
    const std::size_t modelBytes = models.Write(
        std::span<std::uint8_t, SymbolModels::kMostBytes>(afterHead, SymbolModels::kMostBytes));
    std::uint8_t* const plainBegin = afterHead + modelBytes;
    std::memmove(plainBegin, bytes.data() + kPlainOffset, plainBytes);
    const TableHead head{step, static_cast<std::uint32_t>(modelBytes),
                         static_cast<std::uint32_t>(plainBytes)};
    std::memcpy(bytes.data(), &head, sizeof head);

    std::uint8_t* const symbolsBegin = plainBegin + plainBytes;
    SymbolWriter writer(models,
                        bytes.subspan(static_cast<std::size_t>(symbolsBegin - bytes.data())));
    for (std::size_t i = values; i > 0; i -= kStates)
    {
        if (!writer.Put(2, m_contexts[i - 1], m_symbols[i - 1]) ||
            !writer.Put(1, m_contexts[i - 2], m_symbols[i - 2]) ||
            !writer.Put(0, m_contexts[i - 3], m_symbols[i - 3]))
        {
            return 0;
        }
    }
    std::uint8_t* const written = writer.Finish();
    if (written == nullptr)
    {
        return 0;
    }
    const auto symbolBytes = static_cast<std::size_t>(bytes.data() + bytes.size() - written);
    std::memmove(symbolsBegin, written, symbolBytes);
    return static_cast<std::size_t>(symbolsBegin - bytes.data()) + symbolBytes;
}

bool IsTable(std::span<const std::uint8_t> bytes) noexcept
{
    TableParts parts;
    return parts.Find(bytes);
}

std::uint32_t StepOf(std::span<const std::uint8_t> bytes) noexcept
{
    TableHead head{};
    std::memcpy(&head, bytes.data(), std::min(bytes.size(), sizeof head));
    return head.step;
}

void DecodeTable(std::span<const std::uint8_t> bytes, const TableShape& shape,
                 float* codes) noexcept
{
    TableParts parts;
    if (parts.Find(bytes))
    {
        SymbolReader symbols(parts.models, parts.symbols);
        CodeMaker maker(parts.head.step, symbols, BitReader(parts.plain));
        WalkLattice(codes, shape, CodesPerStep(parts.head.step), maker);
    }
}

} // namespace ReferenceRenderer
