#include "reference_renderer/core/table_coding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace ReferenceRenderer
{

namespace
{

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kRoom = 400000;

// The bytes of a table, empty when they take more than `room`. Leaves in `codes` what reading gives
// by the encoder's own account.
Bytes Encoded(const TableShape& shape, std::uint32_t step, std::vector<float>& codes,
              std::size_t room = kRoom)
{
    TableEncoder encoder(shape.Nodes());
    std::copy(codes.begin(), codes.end(), encoder.Codes().begin());
    Bytes bytes(room);
    bytes.resize(encoder.Encode(shape, step, bytes));
    codes.assign(encoder.Codes().begin(), encoder.Codes().end());
    return bytes;
}

std::vector<float> Decoded(const TableShape& shape, const Bytes& bytes)
{
    std::vector<float> codes(3 * shape.Nodes(), -1.0F);
    DecodeTable(bytes, shape, codes.data());
    return codes;
}

std::vector<float> Noise(const TableShape& shape)
{
    std::mt19937 random(11);
    std::vector<float> codes(3 * shape.Nodes());
    for (float& code : codes)
    {
        code = static_cast<float>(random() % (static_cast<unsigned>(kTopCode) + 1));
    }
    return codes;
}

// Smooth, and cut off at both ends.
std::vector<float> Waves(const TableShape& shape)
{
    std::vector<float> codes(3 * shape.Nodes());
    for (std::size_t i = 0; i < codes.size(); ++i)
    {
        const auto node = static_cast<double>(i / 3);
        const double wave = 0.5 + 0.7 * std::sin(node * 0.05 + static_cast<double>(i % 3));
        codes[i] = static_cast<float>(std::floor(std::clamp(wave, 0.0, 1.0) * kTopCode));
    }
    return codes;
}

float LargestDifference(const std::vector<float>& left, const std::vector<float>& right)
{
    float largest = 0.0F;
    for (std::size_t i = 0; i < left.size(); ++i)
    {
        largest = std::max(largest, std::abs(left[i] - right[i]));
    }
    return largest;
}

const std::vector<TableShape> kShapes{{2, 1, 1},    {3, 1, 1},    {4, 1, 1},    {100, 1, 1},
                                      {4097, 1, 1}, {2, 2, 2},    {3, 3, 3},    {4, 4, 4},
                                      {5, 5, 5},    {17, 17, 17}, {20, 20, 20}, {33, 33, 33}};

} // namespace

TEST(TableCoding, EveryShapeComesBackWithinHalfAStep)
{
    for (const TableShape& shape : kShapes)
    {
        for (const std::uint32_t step : {0U, 4U, 9U, 15U})
        {
            for (const std::vector<float>& codes : {Noise(shape), Waves(shape)})
            {
                std::vector<float> kept = codes;
                const Bytes bytes = Encoded(shape, step, kept);
                ASSERT_TRUE(IsTable(bytes));
                ASSERT_EQ(StepOf(bytes), step);
                ASSERT_LE(LargestDifference(codes, kept), std::ldexp(0.5F, static_cast<int>(step)));
                ASSERT_EQ(Decoded(shape, bytes), kept) << shape.red << ' ' << step;
            }
        }
    }
}

TEST(TableCoding, TheEndsOfTheRangeComeBackExactly)
{
    const TableShape shape{17, 17, 17};
    const std::vector<float> codes = Waves(shape);
    std::vector<float> kept = codes;
    Encoded(shape, 12, kept);
    std::size_t ends = 0;
    for (std::size_t i = 0; i < codes.size(); ++i)
    {
        if (codes[i] == 0.0F || codes[i] == kTopCode)
        {
            ++ends;
            ASSERT_EQ(kept[i], codes[i]);
        }
    }
    EXPECT_GT(ends, 1000U);
}

TEST(TableCoding, WhatWasCodedOnceIsCodedTheSameAgain)
{
    const TableShape shape{33, 33, 33};
    std::vector<float> codes = Waves(shape);
    const Bytes bytes = Encoded(shape, 6, codes);
    std::vector<float> again = codes;
    EXPECT_EQ(Encoded(shape, 6, again), bytes);
    EXPECT_EQ(again, codes);
}

TEST(TableCoding, AStraightTableTakesNextToNothing)
{
    const TableShape shape{33, 33, 33};
    std::vector<float> codes(3 * shape.Nodes());
    for (std::size_t i = 0; i < codes.size(); ++i)
    {
        codes[i] = static_cast<float>(i / 3 % 33 * 32000);
    }
    EXPECT_LT(Encoded(shape, 4, codes).size(), 300U);
}

TEST(TableCoding, TooLittleRoomIsToldAndNothingIsWrittenBeyondIt)
{
    const TableShape shape{9, 9, 9};
    const std::vector<float> codes = Noise(shape);
    std::vector<float> kept = codes;
    const std::size_t size = Encoded(shape, 4, kept).size();
    std::size_t fitting = 0;
    for (std::size_t room = 0; room < size + 600; room += 7)
    {
        TableEncoder encoder(shape.Nodes());
        std::copy(codes.begin(), codes.end(), encoder.Codes().begin());
        Bytes bytes(room + 16, 0xEE);
        const std::size_t used = encoder.Encode(shape, 4, std::span(bytes).first(room));
        ASSERT_TRUE(used == 0 || used == size);
        ASSERT_LE(used, room);
        ASSERT_TRUE(std::all_of(bytes.end() - 16, bytes.end(), [](auto b) { return b == 0xEE; }));
        fitting += used != 0 ? 1 : 0;
    }
    EXPECT_GT(fitting, 0U);
}

TEST(TableCoding, TheCoarsestStepsAlwaysFit)
{
    const TableShape shape{65, 65, 65};
    std::vector<float> codes = Noise(shape);
    EXPECT_LT(Encoded(shape, kCoarsestStep, codes).size(), 300U);
}

TEST(TableCoding, DamagedTablesAreRefusedOrGiveCodes)
{
    const TableShape shape{9, 9, 9};
    std::vector<float> codes = Waves(shape);
    const Bytes bytes = Encoded(shape, 4, codes);
    std::mt19937 random(3);
    int refused = 0;
    for (int i = 0; i < 3000; ++i)
    {
        Bytes damaged = bytes;
        damaged[random() % (i % 2 == 0 ? 64 : damaged.size())] =
            static_cast<std::uint8_t>(random());
        damaged.resize(i % 5 == 0 ? random() % damaged.size() : damaged.size());
        if (!IsTable(damaged))
        {
            ++refused;
            continue;
        }
        for (const float code : Decoded(shape, damaged))
        {
            ASSERT_TRUE(code >= 0.0F && code <= kTopCode && code == std::floor(code));
        }
    }
    EXPECT_GT(refused, 500);
    EXPECT_LT(refused, 2900);
}

} // namespace ReferenceRenderer
