#include "reference_renderer/core/look_record.h"

#include "tests/doubles/under_sanitizers.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <random>

namespace ReferenceRenderer
{

namespace
{

// Where the numbers of a record lie, counted by hand from the published layout.
constexpr std::size_t kVersionOffset = 4;
constexpr std::size_t kOptionOffset = 16;
constexpr std::size_t kModeOffset = 28;
constexpr std::size_t kSlopeOffset = 32;
constexpr std::size_t kPowerOffset = 56;
constexpr std::size_t kSaturationOffset = 68;
constexpr std::size_t kStrengthOffset = 80;
constexpr std::size_t kCurveSizeOffset = 84;
constexpr std::size_t kCubeSizeOffset = 88;
constexpr std::size_t kCubeDomainOffset = 140;
constexpr std::size_t kCubeRangeOffset = 164;

using Bytes = std::vector<std::uint8_t>;

template <typename Value>
Bytes With(Bytes record, std::size_t offset, Value value)
{
    std::memcpy(record.data() + offset, &value, sizeof value);
    return record;
}

// With a sum that fits.
template <typename Value>
Bytes SealedWith(const Bytes& record, std::size_t offset, Value value)
{
    Bytes changed = With(record, offset, value);
    SealRecord(RecordBytes(changed.data(), kRecordSize));
    return changed;
}

RecordState StateOf(const Bytes& record)
{
    StoredLook look;
    const RecordState state = ReadRecord(record, look);
    EXPECT_EQ(CheckRecord(record), state);
    return state;
}

Look FullLook()
{
    Look look = CubeLook(CubeOf(33, Swirled, {Interval{-1.0F, 2.0F}}));
    look.cdlMode = CdlMode::Unclamped;
    look.cdl = {{1.1F, 0.9F, 1.0F}, {0.1F, -0.1F, 0.0F}, {1.2F, 0.8F, 1.0F}, 0.7F};
    look.curves = CurvesOf(2048, [](double x) { return x * x - 0.25; });
    look.strength = 0.75F;
    look.title = "All of it";
    return look;
}

} // namespace

TEST(LookRecord, EveryLookMakesARecordOfTheSameSize)
{
    EXPECT_EQ(RecordOf({}).size(), kRecordSize);
    EXPECT_EQ(RecordOf(FullLook()).size(), 130654U);
}

TEST(LookRecord, TheOptionChunkStandsWhereHostsReadIt)
{
    const Bytes record = RecordOf(FullLook());
    EXPECT_EQ(std::memcmp(record.data() + 8, "flag\0\0\0\4\1\0\0\0", 12), 0);
}

TEST(LookRecord, ALookComesBackAsItWasStored)
{
    const Look look = FullLook();
    StoredLook stored;
    ASSERT_EQ(ReadRecord(RecordOf(look), stored), RecordState::Usable);
    EXPECT_EQ(stored.cdlMode, look.cdlMode);
    EXPECT_EQ(stored.cdl.slope, look.cdl.slope);
    EXPECT_EQ(stored.cdl.offset, look.cdl.offset);
    EXPECT_EQ(stored.cdl.power, look.cdl.power);
    EXPECT_EQ(stored.cdl.saturation, look.cdl.saturation);
    EXPECT_EQ(stored.strength, look.strength);
    EXPECT_STREQ(stored.title.data(), "All of it");
    EXPECT_EQ(stored.curveSize, 2048U);
    EXPECT_EQ(stored.cubeSize, 33U);
    EXPECT_EQ(stored.cubeDomain[0], (Interval{-1.0F, 2.0F}));
    for (std::size_t i = 0; i < 3 * NodeCount(33); ++i)
    {
        const Interval& range = stored.cubeRange[i % 3];
        ASSERT_NEAR(stored.cubeNodes[i], look.cube->nodes[i], (range.high - range.low) / 123000.0);
    }
    for (std::size_t i = 0; i < std::size_t{3} * 2048; ++i)
    {
        ASSERT_NEAR(stored.curveValues[i], look.curves->values[i], 1.0 / 123000.0);
    }
}

TEST(LookRecord, TheEndsOfARangeComeBackExactly)
{
    StoredLook stored;
    ReadRecord(RecordOf(CubeLook(CubeOf(17, Same))), stored);
    EXPECT_EQ(stored.cubeNodes[0], 0.0F);
    EXPECT_EQ(stored.cubeNodes[3 * NodeCount(17) - 1], 1.0F);
}

TEST(LookRecord, ATableOfOneValueIsStored)
{
    StoredLook stored;
    const Look look = CubeLook(CubeOf(2, [](const Rgb&) { return Rgb{0.3F, -2.0F, 7.0F}; }));
    ASSERT_EQ(ReadRecord(RecordOf(look), stored), RecordState::Usable);
    EXPECT_EQ(stored.cubeNodes[3], 0.3F);
    EXPECT_EQ(stored.cubeNodes[4], -2.0F);
    EXPECT_EQ(stored.cubeNodes[5], 7.0F);
}

TEST(LookRecord, WritingWhatWasReadGivesTheSameBytes)
{
    const Bytes record = RecordOf(FullLook());
    StoredLook stored;
    ReadRecord(record, stored);
    Bytes again(kRecordSize, 0xEE);
    WriteRecord(stored, RecordBytes(again.data(), kRecordSize));
    EXPECT_TRUE(again == record);
}

TEST(LookRecord, AnyOptionWordIsAccepted)
{
    const Bytes record = RecordOf({});
    EXPECT_EQ(StateOf(With(record, kOptionOffset, std::uint32_t{0})), RecordState::Usable);
    EXPECT_EQ(StateOf(With(record, kOptionOffset, 0xFFFFFFFFU)), RecordState::Usable);
}

TEST(LookRecord, NoBytesAreAnEmptyRecord)
{
    EXPECT_EQ(StateOf({}), RecordState::Empty);
}

TEST(LookRecord, OtherBytesAndNewerVersionsAreForeign)
{
    EXPECT_EQ(StateOf(Bytes(kRecordSize, 0)), RecordState::Foreign);
    EXPECT_EQ(StateOf(Bytes(5, 'G')), RecordState::Foreign);
    EXPECT_EQ(StateOf(With(RecordOf({}), kVersionOffset, std::uint32_t{3})), RecordState::Foreign);
    EXPECT_EQ(StateOf(With(RecordOf({}), 0, 'X')), RecordState::Foreign);
}

TEST(LookRecord, EveryTruncationIsDamageAndReadsNothingBeyondTheEnd)
{
    const Bytes record = RecordOf(FullLook());
    for (std::size_t size = 1; size < 300; ++size)
    {
        const Bytes cut(record.begin(), record.begin() + static_cast<std::ptrdiff_t>(size));
        ASSERT_NE(StateOf(cut), RecordState::Usable) << size;
    }
    EXPECT_EQ(StateOf(Bytes(record.begin(), record.end() - 1)), RecordState::Damaged);
    Bytes longer = record;
    longer.push_back(0);
    EXPECT_EQ(StateOf(longer), RecordState::Damaged);
}

TEST(LookRecord, EveryOtherChunkHeadIsDamage)
{
    const Bytes record = RecordOf(FullLook());
    for (const std::size_t offset : {8U, 15U, 20U, 27U, 72U, 79U, 188U, 195U, 260U, 267U})
    {
        EXPECT_EQ(StateOf(With(record, offset, std::uint8_t{0x55})), RecordState::Damaged)
            << offset;
    }
}

TEST(LookRecord, NumbersThatNoLookHasAreDamage)
{
    const Bytes record = RecordOf(FullLook());
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(StateOf(SealedWith(record, kModeOffset, 3U)), RecordState::Damaged);
    EXPECT_EQ(StateOf(SealedWith(record, kSlopeOffset, -1.0F)), RecordState::Damaged);
    EXPECT_EQ(StateOf(SealedWith(record, kSlopeOffset, nan)), RecordState::Damaged);
    EXPECT_EQ(StateOf(SealedWith(record, kPowerOffset, 0.0F)), RecordState::Damaged);
    EXPECT_EQ(StateOf(SealedWith(record, kSaturationOffset, infinity)), RecordState::Damaged);
    EXPECT_EQ(StateOf(SealedWith(record, kStrengthOffset, 1.5F)), RecordState::Damaged);
    EXPECT_EQ(StateOf(SealedWith(record, kStrengthOffset, nan)), RecordState::Damaged);
    EXPECT_EQ(StateOf(SealedWith(record, kCubeDomainOffset, 2.0F)), RecordState::Damaged)
        << "no width";
    EXPECT_EQ(StateOf(SealedWith(record, kCubeDomainOffset, nan)), RecordState::Damaged);
    EXPECT_EQ(StateOf(SealedWith(record, kCubeRangeOffset, 1e9F)), RecordState::Damaged)
        << "falling";
    EXPECT_EQ(StateOf(SealedWith(record, kCubeRangeOffset, -infinity)), RecordState::Damaged);
}

TEST(LookRecord, SizesThatDoNotFitAreDamage)
{
    const Bytes record = RecordOf(FullLook());
    for (const std::uint32_t size : {1U, 66U, 65536U, 0xFFFFFFFFU})
    {
        EXPECT_EQ(StateOf(SealedWith(record, kCubeSizeOffset, size)), RecordState::Damaged) << size;
    }
    for (const std::uint32_t size : {1U, 65537U, 0xFFFFFFFFU})
    {
        EXPECT_EQ(StateOf(SealedWith(record, kCurveSizeOffset, size)), RecordState::Damaged)
            << size;
    }
}

TEST(LookRecord, RandomDamageNeverMakesARecordThatCannotBeRead)
{
    const Bytes record = RecordOf(FullLook());
    std::mt19937 random(3);
    StoredLook look;
    for (int i = 0; i < UnderSanitizers(400, 3000); ++i)
    {
        Bytes damaged = record;
        for (int flips = 0; flips < 3; ++flips)
        {
            damaged[random() % 300] = static_cast<std::uint8_t>(random());
        }
        SealRecord(RecordBytes(damaged.data(), kRecordSize));
        const RecordState state = ReadRecord(damaged, look);
        ASSERT_TRUE(state == RecordState::Usable || !look.HasTables());
    }
}

TEST(LookRecord, DamageAnywhereBehindTheOptionIsSeen)
{
    const Bytes record = RecordOf(FullLook());
    const std::size_t step = UnderSanitizers(997, 97);
    for (std::size_t offset = kOptionChunkEnd; offset < kRecordSize; offset += step)
    {
        ASSERT_EQ(StateOf(With(record, offset, static_cast<std::uint8_t>(record[offset] ^ 0x10))),
                  RecordState::Damaged)
            << offset;
    }
    EXPECT_EQ(StateOf(With(record, kRecordSize - 1, std::uint8_t{1})), RecordState::Damaged);
}

TEST(LookRecord, TablesThatDoNotGoWithTheSizesAreDamage)
{
    EXPECT_EQ(StateOf(SealedWith(RecordOf({}), kCubeSizeOffset, 2U)), RecordState::Damaged);
    EXPECT_EQ(StateOf(SealedWith(RecordOf(FullLook()), kCubeSizeOffset, 0U)), RecordState::Damaged);
    EXPECT_EQ(StateOf(SealedWith(RecordOf(FullLook()), kCurveSizeOffset, 0U)),
              RecordState::Damaged);
}

TEST(LookRecord, TheSameLookAlwaysMakesTheSameBytes)
{
    EXPECT_TRUE(RecordOf(FullLook()) == RecordOf(FullLook()));
}

TEST(LookRecord, OldRecordsOfPlainStepsAreReadAndWrittenAsTheyWere)
{
    Bytes old = With(RecordOf(CubeLook(CubeOf(2, Swirled))), kVersionOffset, std::uint32_t{1});
    old = With(old, kCurveSizeOffset, 3U);
    std::fill(old.begin() + kRecordTableOffset, old.end(), std::uint8_t{0});
    // Red of the curves, then of the first two nodes of the cube.
    const std::array<std::uint16_t, 3> curve{0, 16384, 65535};
    std::memcpy(old.data() + kRecordTableOffset, curve.data(), sizeof curve);
    constexpr std::size_t kNodes = kRecordTableOffset + 9 * sizeof(std::uint16_t);
    old = With(With(old, kNodes, std::uint16_t{65535}), kNodes + 6, std::uint16_t{32768});

    StoredLook stored;
    ASSERT_EQ(ReadRecord(old, stored), RecordState::Usable);
    EXPECT_EQ(stored.curveValues[0], 0.0F);
    EXPECT_NEAR(stored.curveValues[1], 16384.0 / 65535.0, 1e-7);
    EXPECT_EQ(stored.curveValues[2], 1.0F);
    EXPECT_EQ(stored.cubeNodes[0], stored.cubeRange[0].high);
    const double low = stored.cubeRange[0].low;
    const double high = stored.cubeRange[0].high;
    EXPECT_NEAR(stored.cubeNodes[3], low + (high - low) * 32768.0 / 65535.0, 1e-7);
    Bytes again(kRecordSize);
    WriteRecord(stored, RecordBytes(again.data(), kRecordSize));
    EXPECT_TRUE(again == old);

    EXPECT_EQ(StateOf(With(old, kCubeSizeOffset, 28U)), RecordState::Damaged);
    EXPECT_EQ(StateOf(With(old, kCurveSizeOffset, 21732U)), RecordState::Damaged);
}

TEST(LookRecord, ReadingAnotherCorrectionOfTheSameTablesKeepsThem)
{
    const Bytes record = RecordOf(FullLook());
    StoredLook stored;
    ASSERT_EQ(ReadRecord(record, stored), RecordState::Usable);
    const float node = stored.cubeNodes[0];
    stored.cubeNodes[0] = 7.0F; // shows whether they were decoded again
    ASSERT_EQ(ReadRecord(SealedWith(record, kSlopeOffset, 1.5F), stored), RecordState::Usable);
    EXPECT_EQ(stored.cdl.slope[0], 1.5F);
    EXPECT_EQ(stored.cubeNodes[0], 7.0F);
    ASSERT_EQ(ReadRecord(SealedWith(record, kCubeRangeOffset, -9.0F), stored), RecordState::Usable);
    EXPECT_NE(stored.cubeNodes[0], 7.0F) << "another range, other values";
    ASSERT_EQ(ReadRecord(record, stored), RecordState::Usable);
    EXPECT_EQ(stored.cubeNodes[0], node);
}

} // namespace ReferenceRenderer
