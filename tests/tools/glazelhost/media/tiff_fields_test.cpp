#include "tools/glazelhost/media/tiff_fields.h"

#include "tools/glazelhost/media/tiff_directory.h"

#include <gtest/gtest.h>

#include <array>

namespace GlazelHost
{

namespace
{

std::vector<std::byte> FileOf(const TiffFields& fields)
{
    LittleEndianBlock block;
    AddTiffHeader(block, kTiffHeaderBytes);
    fields.AddTo(block, kTiffHeaderBytes);
    EXPECT_EQ(block.Size(), kTiffHeaderBytes + fields.Size());
    return block.Bytes();
}

} // namespace

TEST(TiffFieldsOfAFile, AreReadAsTheyWereSet)
{
    constexpr std::array<std::uint32_t, 3> kShorts{1, 65535, 3};
    constexpr std::array kFractions{300.0, 72.5, 0.3127, 99999.25};
    TiffFields fields;
    fields.SetLong(700, 70000);
    fields.SetShorts(258, kShorts);
    fields.SetFractions(282, kFractions);
    fields.SetBytes(270, TiffFields::kText, std::as_bytes(std::span("odd")).first(3));
    const auto file = FileOf(fields);
    const auto directory = TiffDirectory::Read(file);
    ASSERT_TRUE(directory);
    EXPECT_EQ(directory->Number(700), 70000U);
    for (std::size_t i = 0; i < kShorts.size(); ++i)
    {
        EXPECT_EQ(directory->Number(258, i), kShorts[i]);
    }
    for (std::size_t i = 0; i < kFractions.size(); ++i)
    {
        EXPECT_NEAR(directory->Fraction(282, i).value_or(0.0), kFractions[i], 1e-9);
    }
    EXPECT_EQ(directory->Bytes(270).size(), 3U);
}

TEST(TiffFieldsOfAFile, StandInTheOrderOfTheirTagsEachOnce)
{
    TiffFields fields;
    constexpr std::uint16_t kTags[] = {300, 100, 200, 100};
    for (const std::uint16_t tag : kTags)
    {
        fields.SetShort(tag, tag);
    }
    const auto file = FileOf(fields);
    const auto directory = TiffDirectory::Read(file);
    ASSERT_TRUE(directory);
    ASSERT_EQ(directory->Count(), 3U);
    for (std::size_t index = 0; index < 3; ++index)
    {
        EXPECT_EQ(directory->At(index).tag, 100 * (index + 1));
    }
}

TEST(TiffFieldsOfAFile, PointToADirectoryBelow)
{
    constexpr std::array kFractions{2.2};
    TiffFields below;
    below.SetFractions(42240, kFractions);
    TiffFields fields;
    fields.SetBelow(34665, below);
    fields.SetShort(40000, 5);
    const auto file = FileOf(fields);
    const auto directory = TiffDirectory::Read(file);
    ASSERT_TRUE(directory);
    EXPECT_EQ(directory->Number(40000), 5U);
    const auto found = directory->Below(34665);
    ASSERT_TRUE(found);
    EXPECT_NEAR(found->Fraction(42240).value_or(0.0), 2.2, 1e-8);
    EXPECT_FALSE(directory->Below(40001));
}

} // namespace GlazelHost
