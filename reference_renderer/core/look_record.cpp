#include "reference_renderer/core/look_record.h"

#include "reference_renderer/core/record_tables.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace ReferenceRenderer
{

namespace
{

static_assert(std::endian::native == std::endian::little, "records are little-endian");

constexpr std::array<char, 4> kMagic{'G', 'L', 'Z', 'K'};

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

constexpr auto kOptionHead = std::bit_cast<ChunkHead>(kOptionChunkHead);
constexpr ChunkHead kCdlHead = HeadOf("cdl ", sizeof(CdlChunk));
constexpr ChunkHead kLutHead = HeadOf("lut ", sizeof(LutChunk));
constexpr ChunkHead kTitleHead = HeadOf("titl", kRecordTitleSize);
constexpr ChunkHead kTableHead = HeadOf("tabl", kRecordTableSize);

static_assert(sizeof(RecordFront) == kRecordTableOffset, "no padding anywhere");
static_assert(offsetof(RecordFront, optionHead) == kOptionChunk);
static_assert(offsetof(RecordFront, option) == kOptionWord);
static_assert(offsetof(RecordFront, cdlHead) == kOptionChunkEnd);

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
    return lut.strength >= 0.0F && lut.strength <= 1.0F && IsDomain(Unflat(lut.curveDomain)) &&
           IsDomain(Unflat(lut.cubeDomain)) && AreRanges(Unflat(lut.curveRange)) &&
           AreRanges(Unflat(lut.cubeRange));
}

// Over the words of a record but the option chunk, which hosts change, and the sum itself: the
// FNV-1a hash, taken word by word. Any damage within one word shows.
std::uint32_t SumOf(std::span<const std::uint8_t> record) noexcept
{
    constexpr std::uint32_t kBasis = 2166136261U;
    constexpr std::uint32_t kPrime = 16777619U;
    std::uint32_t sum = kBasis;
    const auto add = [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; i += sizeof(std::uint32_t))
        {
            std::uint32_t word = 0;
            std::memcpy(&word, record.data() + i, std::min(end - i, sizeof word));
            sum = (sum ^ word) * kPrime;
        }
    };
    add(kOptionChunkEnd, kRecordTableOffset);
    add(kRecordTableOffset + sizeof sum, record.size());
    return sum;
}

// The sum of a record is none of the tables' own bytes.
void RemoveSum(StoredLook& look) noexcept
{
    if (look.codedVersion == kCodedVersion)
    {
        std::fill_n(look.coded.begin(), sizeof(std::uint32_t), std::uint8_t{0});
    }
}

bool IsSealed(std::span<const std::uint8_t> record) noexcept
{
    std::uint32_t sum;
    std::memcpy(&sum, record.data() + kRecordTableOffset, sizeof sum);
    return sum == SumOf(record);
}

RecordState StateOf(std::span<const std::uint8_t> bytes, RecordFront& front) noexcept
{
    constexpr std::size_t kHeaderSize = offsetof(RecordFront, optionHead);
    if (bytes.empty())
    {
        return RecordState::Empty;
    }
    std::memcpy(&front, bytes.data(), std::min(bytes.size(), sizeof front));
    const bool known = front.version == kPlainVersion || front.version == kCodedVersion;
    if (bytes.size() < kHeaderSize || front.magic != kMagic || !known)
    {
        return RecordState::Foreign;
    }
    const bool whole = bytes.size() == kRecordSize && front.optionHead == kOptionHead &&
                       front.cdlHead == kCdlHead && front.lutHead == kLutHead &&
                       front.titleHead == kTitleHead && front.tableHead == kTableHead;
    const bool usable = whole && (front.version == kPlainVersion || IsSealed(bytes)) &&
                        IsUsable(front.cdl) && IsUsable(front.lut) &&
                        AreTables(bytes.subspan(kRecordTableOffset), front.version,
                                  front.lut.curveSize, front.lut.cubeSize);
    return usable ? RecordState::Usable : RecordState::Damaged;
}

// Whether the tables of a record are those that `look` holds.
bool HasTablesOf(const StoredLook& look, const RecordFront& front,
                 std::span<const std::uint8_t> tables) noexcept
{
    const std::ptrdiff_t sumSize = front.version == kCodedVersion ? sizeof(std::uint32_t) : 0;
    return look.codedVersion == front.version && look.curveSize == front.lut.curveSize &&
           look.cubeSize == front.lut.cubeSize && look.HasTables() &&
           look.curveRange == Unflat(front.lut.curveRange) &&
           look.cubeRange == Unflat(front.lut.cubeRange) &&
           std::equal(tables.begin() + sumSize, tables.end(), look.coded.begin() + sumSize);
}

} // namespace

StoredLook::StoredLook()
    : curveValues(std::size_t{3} * kStoredCurveSize),
      cubeNodes(3 * NodeCount(kStoredCubeSize) + kNodePadding), coded(kRecordTableSize)
{
}

void StoredLook::CopyTables(const StoredLook& source) noexcept
{
    curveSize = source.curveSize;
    curveDomain = source.curveDomain;
    curveRange = source.curveRange;
    std::copy_n(source.curveValues.begin(), std::size_t{3} * curveSize, curveValues.begin());
    cubeSize = source.cubeSize;
    cubeDomain = source.cubeDomain;
    cubeRange = source.cubeRange;
    std::copy_n(source.cubeNodes.begin(), 3 * NodeCount(cubeSize), cubeNodes.begin());
    codedVersion = source.codedVersion;
    std::copy(source.coded.begin(), source.coded.end(), coded.begin());
}

void StoredLook::RemoveTables() noexcept
{
    curveSize = 0;
    cubeSize = 0;
    curveDomain = curveRange = cubeDomain = cubeRange = Domain{};
    codedVersion = kCodedVersion;
    std::fill(coded.begin(), coded.end(), std::uint8_t{0});
}

void StoredLook::Clear() noexcept
{
    cdlMode = CdlMode::None;
    cdl = {};
    strength = 1.0F;
    title = {};
    RemoveTables();
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
    if (state != RecordState::Usable)
    {
        look.Clear();
        return state;
    }
    const std::span<const std::uint8_t> tables = bytes.subspan(kRecordTableOffset);
    const bool decoded = HasTablesOf(look, front, tables);
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
    if (!decoded)
    {
        look.codedVersion = front.version;
        std::copy(tables.begin(), tables.end(), look.coded.begin());
        RemoveSum(look);
        DecodeTables(look);
    }
    return state;
}

void StoreLook(const Look& look, StoredLook& stored)
{
    stored.Clear();
    stored.cdlMode = look.cdlMode;
    stored.cdl = look.cdl;
    stored.strength = look.strength;
    // The last byte stays 0; a cut character is finished off by whoever shows the title.
    look.title.copy(stored.title.data(), stored.title.size() - 1);
    if (look.curves)
    {
        stored.curveSize = look.curves->size;
        stored.curveDomain = look.curves->domain;
        std::copy_n(look.curves->values.begin(), std::size_t{3} * stored.curveSize,
                    stored.curveValues.begin());
    }
    if (look.cube)
    {
        stored.cubeSize = look.cube->size;
        stored.cubeDomain = look.cube->domain;
        std::copy_n(look.cube->nodes.begin(), 3 * NodeCount(stored.cubeSize),
                    stored.cubeNodes.begin());
    }
    if (stored.HasTables())
    {
        TableEncoder encoder(LargestTableOf(stored));
        FindRanges(stored);
        CodeTables(stored, kFinestStep, encoder);
    }
}

void WriteRecord(const StoredLook& look, RecordBytes record) noexcept
{
    const RecordFront front{
        kMagic,
        look.codedVersion,
        kOptionHead,
        kAssumeLinearGamma,
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
    std::copy(look.coded.begin(), look.coded.end(), record.begin() + kRecordTableOffset);
    if (look.codedVersion == kCodedVersion)
    {
        SealRecord(record);
    }
}

void SealRecord(RecordBytes record) noexcept
{
    const std::uint32_t sum = SumOf(record);
    std::memcpy(record.data() + kRecordTableOffset, &sum, sizeof sum);
}

} // namespace ReferenceRenderer
