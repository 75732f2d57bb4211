#include "binding/session_data.h"

#include "tests/doubles/failing_allocation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace
{

// A block of `size` bytes whose first twenty hold a header, the option chunk and `value`.
std::vector<std::uint8_t> BlockWithFlag(std::uint8_t value, std::size_t size = 20)
{
    std::vector<std::uint8_t> block{'h', 'e', 'a', 'd', 'e', 'r', '0',   '1', 'f', 'l',
                                    'a', 'g', 0,   0,   0,   4,   value, 0,   0,   0};
    block.resize(size);
    return block;
}

void Fill(SessionData& record, const std::vector<std::uint8_t>& bytes)
{
    std::uint8_t* const block = record.AllocateData(static_cast<std::uint32_t>(bytes.size()));
    ASSERT_NE(block, nullptr);
    std::ranges::copy(bytes, block);
}

std::vector<std::uint8_t> BytesOf(const SessionData& record)
{
    return {record.data, record.data + record.size};
}

} // namespace

TEST(SessionData, ANewRecordIsEmptyAndReportsFlagOne)
{
    SessionData record;
    EXPECT_EQ(record.data, nullptr);
    EXPECT_EQ(record.size, 0U);
    EXPECT_EQ(record.GetFlag(), 1U);
}

TEST(SessionData, TakesOverAnInitialBlock)
{
    SessionData record(static_cast<std::uint8_t*>(::operator new(3)), 3);
    EXPECT_EQ(record.size, 3U);
}

TEST(SessionData, AllocateDataWithTheCurrentSizeKeepsTheBlockAndItsBytes)
{
    SessionData record;
    Fill(record, {1, 2, 3, 4});
    std::uint8_t* const before = record.data;
    EXPECT_EQ(record.AllocateData(4), before);
    EXPECT_EQ(BytesOf(record), (std::vector<std::uint8_t>{1, 2, 3, 4}));
}

TEST(SessionData, AllocateDataWithAnotherSizeGivesABlockOfExactlyThatSize)
{
    SessionData record;
    Fill(record, {1, 2, 3, 4});
    std::uint8_t* const block = record.AllocateData(6);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(record.data, block);
    EXPECT_EQ(record.size, 6U);
    std::memset(block, 9, 6); // all of it is the record's: a sanitizer sees one that is short
}

TEST(SessionData, AllocateClearedDataGivesANewBlockInZerosAndKeepsOneOfThatSize)
{
    SessionData record;
    Fill(record, {1, 2, 3, 4});
    ASSERT_NE(record.AllocateClearedData(4), nullptr);
    EXPECT_EQ(BytesOf(record), (std::vector<std::uint8_t>{1, 2, 3, 4}));
    ASSERT_NE(record.AllocateClearedData(600), nullptr);
    EXPECT_EQ(BytesOf(record), std::vector<std::uint8_t>(600, 0));
    EXPECT_EQ(record.AllocateClearedData(0), nullptr);
    EXPECT_EQ(record.data, nullptr);
}

TEST(SessionData, SwappingTheBlocksLeavesTheOptionWords)
{
    SessionData first;
    SessionData second;
    Fill(first, {1, 2});
    Fill(second, {3, 4, 5});
    second.flag = 0;
    first.SwapData(second);
    EXPECT_EQ(BytesOf(first), (std::vector<std::uint8_t>{3, 4, 5}));
    EXPECT_EQ(BytesOf(second), (std::vector<std::uint8_t>{1, 2}));
    EXPECT_EQ(first.flag, 1U);
    EXPECT_EQ(second.flag, 0U);
}

TEST(SessionData, WithoutMemoryForABlockTheRecordIsEmpty)
{
    SessionData record;
    Fill(record, {1, 2, 3, 4});
    const NoMemory scope;
    EXPECT_EQ(record.AllocateData(5), nullptr);
    EXPECT_EQ(record.data, nullptr);
    EXPECT_EQ(record.size, 0U);
    EXPECT_EQ(record.AllocateClearedData(6), nullptr);
    EXPECT_EQ(record.size, 0U);
}

TEST(SessionData, AllocateDataOfZeroFreesTheBlockAndReturnsNull)
{
    SessionData record;
    Fill(record, {1, 2, 3, 4});
    EXPECT_EQ(record.AllocateData(0), nullptr);
    EXPECT_EQ(record.data, nullptr);
    EXPECT_EQ(record.size, 0U);
}

TEST(SessionData, FreeDataEmptiesTheRecordAndKeepsTheFlag)
{
    SessionData record;
    Fill(record, {1, 2, 3, 4});
    record.SetFlag(7);
    record.FreeData();
    EXPECT_EQ(record.data, nullptr);
    EXPECT_EQ(record.size, 0U);
    EXPECT_EQ(record.GetFlag(), 7U);
}

TEST(SessionData, GetFlagReadsTheChunkInLittleEndianOrder)
{
    SessionData record;
    std::vector<std::uint8_t> block = BlockWithFlag(0x78);
    block[17] = 0x56;
    block[18] = 0x34;
    block[19] = 0x12;
    Fill(record, block);
    EXPECT_EQ(record.flag, 1U) << "filling the block alone changes nothing";
    EXPECT_EQ(record.GetFlag(), 0x12345678U);
    EXPECT_EQ(record.flag, 0x12345678U);
}

TEST(SessionData, SetFlagWritesTheChunkAndNothingElse)
{
    SessionData record;
    Fill(record, BlockWithFlag(1, 24));
    record.SetFlag(0);
    EXPECT_EQ(BytesOf(record), BlockWithFlag(0, 24));
    EXPECT_EQ(record.GetFlag(), 0U);
}

TEST(SessionData, ABlockOfNineteenBytesNeverHasItsChunkReadOrWritten)
{
    SessionData record;
    const std::vector<std::uint8_t> block = BlockWithFlag(0, 19);
    Fill(record, block);
    EXPECT_EQ(record.GetFlag(), 1U);
    record.SetFlag(0xFFFFFFFFU);
    EXPECT_EQ(BytesOf(record), block);
}

class SessionDataWithForeignChunk : public testing::TestWithParam<std::size_t>
{
};

TEST_P(SessionDataWithForeignChunk, IsNeitherReadNorWrittenWhenTagOrLengthDiffer)
{
    std::vector<std::uint8_t> block = BlockWithFlag(0, 32);
    block[GetParam()] = static_cast<std::uint8_t>(block[GetParam()] + 1U);
    SessionData record;
    Fill(record, block);
    EXPECT_EQ(record.GetFlag(), 1U);
    record.SetFlag(9);
    EXPECT_EQ(record.flag, 9U);
    EXPECT_EQ(BytesOf(record), block);
}

INSTANTIATE_TEST_SUITE_P(EachByteOfTagAndLength, SessionDataWithForeignChunk,
                         testing::Range(std::size_t{8}, std::size_t{16}));
