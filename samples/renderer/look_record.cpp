#include "samples/renderer/look_record.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace
{

static_assert(std::endian::native == std::endian::little, "records are little-endian");

constexpr std::uint32_t kVersion = 1;
constexpr std::array<char, 4> kMagic{'G', 'L', 'Z', 'K'};
constexpr std::uint32_t kNewOption = 1; // "Assume Linear Gamma" is on in every new record

struct ChunkHead
{
    std::array<char, 4> tag;
    std::array<std::uint8_t, 4> length; // big-endian, bytes behind this head

    friend bool operator==(const ChunkHead&, const ChunkHead&) = default;
};

constexpr ChunkHead HeadOf(const char (&tag)[5], std::size_t length) noexcept
{
    const auto byte = [&](unsigned shift) { return static_cast<std::uint8_t>(length >> shift); };
    return {{tag[0], tag[1], tag[2], tag[3]}, {byte(24), byte(16), byte(8), byte(0)}};
}

using StoredDomain = std::array<float, 6>; // low and high of red, of green, of blue

struct CdlChunk
{
    CdlMode mode;
    std::array<float, 3> slope;
    std::array<float, 3> offset;
    std::array<float, 3> power;
    float saturation;
};

struct LutChunk
{
    float strength;
    std::uint32_t curveSize;
    std::uint32_t cubeSize;
    StoredDomain curveDomain;
    StoredDomain curveRange;
    StoredDomain cubeDomain;
    StoredDomain cubeRange;
};

// Everything in front of the tables, as it lies in a record.
struct RecordFront
{
    std::array<char, 4> magic;
    std::uint32_t version;
    ChunkHead optionHead;
    std::uint32_t option;
    ChunkHead cdlHead;
    CdlChunk cdl;
    ChunkHead lutHead;
    LutChunk lut;
    ChunkHead titleHead;
    std::array<char, kRecordTitleSize> title;
    ChunkHead tableHead;
};

constexpr ChunkHead kOptionHead = HeadOf("flag", sizeof(std::uint32_t));
constexpr ChunkHead kCdlHead = HeadOf("cdl ", sizeof(CdlChunk));
constexpr ChunkHead kLutHead = HeadOf("lut ", sizeof(LutChunk));
constexpr ChunkHead kTitleHead = HeadOf("titl", kRecordTitleSize);
constexpr ChunkHead kTableHead = HeadOf("tabl", kRecordSize - kRecordTableOffset);

static_assert(sizeof(RecordFront) == kRecordTableOffset, "no padding anywhere");
static_assert(offsetof(RecordFront, optionHead) == 8);
static_assert(offsetof(RecordFront, cdlHead) == kRecordOptionEnd);

StoredDomain Flat(const Domain& domain) noexcept
{
    return {domain[0].low,  domain[0].high, domain[1].low,
            domain[1].high, domain[2].low,  domain[2].high};
}

Domain Unflat(const StoredDomain& stored) noexcept
{
    return {Interval{stored[0], stored[1]}, Interval{stored[2], stored[3]},
            Interval{stored[4], stored[5]}};
}

bool IsNumber(float value) noexcept
{
    return std::abs(value) <= kLargestNumber; // false for NaN
}

bool IsRange(const Interval& interval) noexcept
{
    return IsNumber(interval.low) && IsNumber(interval.high) && interval.low <= interval.high;
}

bool AreRanges(const Domain& ranges) noexcept
{
    return std::all_of(ranges.begin(), ranges.end(), IsRange);
}

bool IsDomain(const Domain& domain) noexcept
{
    return std::all_of(domain.begin(), domain.end(), [](const Interval& interval) {
        // The scale from values to entries must be finite too.
        return IsRange(interval) && std::isfinite(65536.0F / (interval.high - interval.low));
    });
}

bool IsUsable(const CdlChunk& cdl) noexcept
{
    const auto from0 = [](float value) { return value >= 0.0F && IsNumber(value); };
    const auto above0 = [](float value) { return value > 0.0F && IsNumber(value); };
    return cdl.mode <= CdlMode::Unclamped && std::ranges::all_of(cdl.slope, from0) &&
           std::ranges::all_of(cdl.offset, IsNumber) && std::ranges::all_of(cdl.power, above0) &&
           from0(cdl.saturation);
}

bool IsUsable(const LutChunk& lut) noexcept
{
    const bool sizes = lut.curveSize != 1 && lut.cubeSize != 1 && lut.cubeSize <= kStoredCubeSize &&
                       lut.curveSize <= CurveCapacity(lut.cubeSize);
    return sizes && lut.strength >= 0.0F && lut.strength <= 1.0F &&
           IsDomain(Unflat(lut.curveDomain)) && IsDomain(Unflat(lut.cubeDomain)) &&
           AreRanges(Unflat(lut.curveRange)) && AreRanges(Unflat(lut.cubeRange));
}

// 16-bit steps over a range; in double, so that both of its ends come back exactly.
class Quantiser
{
public:
    explicit Quantiser(const Interval& range) noexcept
        : m_low(range.low), m_step((double{range.high} - double{range.low}) / 65535.0),
          m_inverse(m_step > 0.0 ? 1.0 / m_step : 0.0)
    {
    }

    std::uint16_t Encode(float value) const noexcept
    {
        const double steps = (double{value} - m_low) * m_inverse + 0.5;
        return static_cast<std::uint16_t>(std::clamp(steps, 0.0, 65535.0));
    }

    float Decode(std::uint16_t code) const noexcept
    {
        return static_cast<float>(m_low + m_step * code);
    }

private:
    double m_low;
    double m_step;
    double m_inverse;
};

// Element i of a table, counted without regard to how channels are arranged in it.
std::uint16_t CodeAt(const std::uint8_t* table, std::size_t i) noexcept
{
    std::uint16_t code;
    std::memcpy(&code, table + i * sizeof code, sizeof code);
    return code;
}

void PutCode(std::uint8_t* table, std::size_t i, std::uint16_t code) noexcept
{
    std::memcpy(table + i * sizeof code, &code, sizeof code);
}

// Curves are stored channel by channel, nodes channel next to channel: `Visit` is called with
// (element, channel) for each.
template <typename Visit>
void ForEachCurveValue(std::uint32_t size, Visit&& visit)
{
    for (std::size_t channel = 0; channel < 3; ++channel)
    {
        for (std::size_t i = channel * size; i < (channel + 1) * size; ++i)
        {
            visit(i, channel);
        }
    }
}

template <typename Visit>
void ForEachNodeValue(std::uint32_t size, Visit&& visit)
{
    const std::size_t end = 3 * NodeCount(size);
    for (std::size_t i = 0; i < end; i += 3)
    {
        visit(i, std::size_t{0});
        visit(i + 1, std::size_t{1});
        visit(i + 2, std::size_t{2});
    }
}

std::array<Quantiser, 3> QuantisersOf(const Domain& ranges) noexcept
{
    return {Quantiser(ranges[0]), Quantiser(ranges[1]), Quantiser(ranges[2])};
}

void Enclose(Interval& range, float value) noexcept
{
    range.low = std::min(range.low, value);
    range.high = std::max(range.high, value);
}

void DecodeTables(const std::uint8_t* tables, StoredLook& look) noexcept
{
    const auto curveSteps = QuantisersOf(look.curveRange);
    ForEachCurveValue(look.curveSize, [&](std::size_t i, std::size_t channel) {
        look.curveValues[i] = curveSteps[channel].Decode(CodeAt(tables, i));
    });
    const std::uint8_t* const nodes = tables + std::size_t{look.curveSize} * 3 * 2;
    const auto nodeSteps = QuantisersOf(look.cubeRange);
    ForEachNodeValue(look.cubeSize, [&](std::size_t i, std::size_t channel) {
        look.cubeNodes[i] = nodeSteps[channel].Decode(CodeAt(nodes, i));
    });
}

RecordState StateOf(std::span<const std::uint8_t> bytes, RecordFront& front) noexcept
{
    constexpr std::size_t kHeaderSize = offsetof(RecordFront, optionHead);
    if (bytes.empty())
    {
        return RecordState::Empty;
    }
    std::memcpy(&front, bytes.data(), std::min(bytes.size(), sizeof front));
    if (bytes.size() < kHeaderSize || front.magic != kMagic || front.version != kVersion)
    {
        return RecordState::Foreign;
    }
    const bool whole = bytes.size() == kRecordSize && front.optionHead == kOptionHead &&
                       front.cdlHead == kCdlHead && front.lutHead == kLutHead &&
                       front.titleHead == kTitleHead && front.tableHead == kTableHead;
    return whole && IsUsable(front.cdl) && IsUsable(front.lut) ? RecordState::Usable
                                                               : RecordState::Damaged;
}

} // namespace

StoredLook::StoredLook()
    : curveValues(std::size_t{3} * CurveCapacity(0)),
      cubeNodes(3 * NodeCount(kStoredCubeSize) + kNodePadding)
{
}

void StoredLook::Clear() noexcept
{
    cdlMode = CdlMode::None;
    cdl = {};
    strength = 1.0F;
    title = {};
    curveSize = 0;
    cubeSize = 0;
    curveDomain = curveRange = cubeDomain = cubeRange = Domain{};
}

RecordState CheckRecord(std::span<const std::uint8_t> bytes) noexcept
{
    RecordFront front{};
    return StateOf(bytes, front);
}

RecordState ReadRecord(std::span<const std::uint8_t> bytes, StoredLook& look) noexcept
{
    RecordFront front{};
    const RecordState state = StateOf(bytes, front);
    look.Clear();
    if (state != RecordState::Usable)
    {
        return state;
    }
    look.cdlMode = front.cdl.mode;
    look.cdl = {front.cdl.slope, front.cdl.offset, front.cdl.power, front.cdl.saturation};
    look.strength = front.lut.strength;
    look.title = front.title;
    look.curveSize = front.lut.curveSize;
    look.curveDomain = Unflat(front.lut.curveDomain);
    look.curveRange = Unflat(front.lut.curveRange);
    look.cubeSize = front.lut.cubeSize;
    look.cubeDomain = Unflat(front.lut.cubeDomain);
    look.cubeRange = Unflat(front.lut.cubeRange);
    DecodeTables(bytes.data() + kRecordTableOffset, look);
    return state;
}

void StoreLook(const Look& look, StoredLook& stored) noexcept
{
    stored.Clear();
    stored.cdlMode = look.cdlMode;
    stored.cdl = look.cdl;
    stored.strength = look.strength;
    // The last byte stays 0; a cut character is finished off by whoever shows the title.
    look.title.copy(stored.title.data(), stored.title.size() - 1);
    if (look.curves)
    {
        const std::vector<float>& values = look.curves->values;
        stored.curveSize = look.curves->size;
        stored.curveDomain = look.curves->domain;
        for (std::size_t channel = 0; channel < 3; ++channel)
        {
            const float first = values[channel * stored.curveSize];
            stored.curveRange[channel] = {first, first};
        }
        ForEachCurveValue(stored.curveSize, [&](std::size_t i, std::size_t channel) {
            stored.curveValues[i] = values[i];
            Enclose(stored.curveRange[channel], values[i]);
        });
    }
    if (look.cube)
    {
        const std::vector<float>& nodes = look.cube->nodes;
        stored.cubeSize = look.cube->size;
        stored.cubeDomain = look.cube->domain;
        for (std::size_t channel = 0; channel < 3; ++channel)
        {
            stored.cubeRange[channel] = {nodes[channel], nodes[channel]};
        }
        ForEachNodeValue(stored.cubeSize, [&](std::size_t i, std::size_t channel) {
            stored.cubeNodes[i] = nodes[i];
            Enclose(stored.cubeRange[channel], nodes[i]);
        });
    }
}

void WriteRecord(const StoredLook& look, RecordBytes record) noexcept
{
    const RecordFront front{
        kMagic,
        kVersion,
        kOptionHead,
        kNewOption,
        kCdlHead,
        {look.cdlMode, look.cdl.slope, look.cdl.offset, look.cdl.power, look.cdl.saturation},
        kLutHead,
        {look.strength, look.curveSize, look.cubeSize, Flat(look.curveDomain),
         Flat(look.curveRange), Flat(look.cubeDomain), Flat(look.cubeRange)},
        kTitleHead,
        look.title,
        kTableHead,
    };
    std::memcpy(record.data(), &front, sizeof front);

    std::uint8_t* const tables = record.data() + kRecordTableOffset;
    const auto curveSteps = QuantisersOf(look.curveRange);
    ForEachCurveValue(look.curveSize, [&](std::size_t i, std::size_t channel) {
        PutCode(tables, i, curveSteps[channel].Encode(look.curveValues[i]));
    });
    std::uint8_t* const nodes = tables + std::size_t{look.curveSize} * 3 * 2;
    const auto nodeSteps = QuantisersOf(look.cubeRange);
    ForEachNodeValue(look.cubeSize, [&](std::size_t i, std::size_t channel) {
        PutCode(nodes, i, nodeSteps[channel].Encode(look.cubeNodes[i]));
    });
    const std::size_t used = (std::size_t{look.curveSize} + NodeCount(look.cubeSize)) * 3 * 2;
    std::fill(tables + used, record.data() + kRecordSize, std::uint8_t{0});
}
