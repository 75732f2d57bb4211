#include "tools/glazelhost/plugin/look.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>

namespace GlazelHost
{

namespace
{

// Eight bytes of header, then the option chunk.
std::vector<std::byte> RecordWith(std::initializer_list<int> value)
{
    std::vector<std::byte> record;
    for (const int byte : {1, 2, 3, 4, 5, 6, 7, 8, 'f' + 0, 'l' + 0, 'a' + 0, 'g' + 0, 0, 0, 0, 4})
    {
        record.push_back(static_cast<std::byte>(byte));
    }
    for (const int byte : value)
    {
        record.push_back(static_cast<std::byte>(byte));
    }
    return record;
}

} // namespace

TEST(Look, TheLinearOptionIsALittleEndianWordBehindItsTag)
{
    EXPECT_EQ(LinearOption(RecordWith({1, 0, 0, 0})), true);
    EXPECT_EQ(LinearOption(RecordWith({0, 0, 0, 0})), false);
    EXPECT_EQ(LinearOption(RecordWith({0, 0, 0, 1})), false);
}

TEST(Look, SettingTheLinearOptionChangesNothingElse)
{
    std::vector<std::byte> record = RecordWith({1, 2, 3, 4, 99});
    const std::vector<std::byte> before = record;
    ASSERT_TRUE(SetLinearOption(record, false));
    EXPECT_EQ(record, RecordWith({0, 0, 0, 0, 99}));
    ASSERT_TRUE(SetLinearOption(record, true));
    EXPECT_EQ(record, RecordWith({1, 0, 0, 0, 99}));
    EXPECT_TRUE(std::equal(record.begin(), record.begin() + 16, before.begin()));
}

TEST(Look, ARecordThatIsTooShortOrOtherwiseTaggedHasNoOption)
{
    std::vector<std::byte> shortRecord = RecordWith({1, 0, 0});
    EXPECT_EQ(LinearOption(shortRecord), std::nullopt);
    EXPECT_FALSE(SetLinearOption(shortRecord, false));
    EXPECT_EQ(shortRecord, RecordWith({1, 0, 0}));

    for (const std::size_t offset : {8U, 11U, 15U})
    {
        std::vector<std::byte> other = RecordWith({1, 0, 0, 0});
        other[offset] = std::byte{'x'};
        EXPECT_EQ(LinearOption(other), std::nullopt) << offset;
        EXPECT_FALSE(SetLinearOption(other, false)) << offset;
    }
    EXPECT_EQ(LinearOption({}), std::nullopt);
}

TEST(Look, ADescriptionGivesItsTextsWarningsAndError)
{
    const auto text = ParseDescription(
        R"({"kind":"cube","title":"Warm","contents":"3D, 27","warnings":["a","b"],"largestError":0.5})");
    ASSERT_TRUE(text);
    EXPECT_EQ(text->description.kind, "cube");
    EXPECT_EQ(text->description.title, "Warm");
    EXPECT_EQ(text->description.contents, "3D, 27");
    EXPECT_EQ(text->description.warnings, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(text->description.largestError, 0.5);
    EXPECT_EQ(text->error, "");
}

TEST(Look, ADescriptionOfAFailureGivesItsLine)
{
    const auto text = ParseDescription(R"({"error":"x.cube: line 4"})");
    ASSERT_TRUE(text);
    EXPECT_EQ(text->error, "x.cube: line 4");
}

TEST(Look, PartsOfADescriptionWithAWrongTypeAreLeftOut)
{
    const auto text = ParseDescription(
        R"({"kind":1,"title":null,"warnings":["a",2],"largestError":"big","error":[]})");
    ASSERT_TRUE(text);
    EXPECT_EQ(text->description.kind, "");
    EXPECT_EQ(text->description.warnings, (std::vector<std::string>{"a"}));
    EXPECT_EQ(text->description.largestError, std::nullopt);
    EXPECT_EQ(text->error, "");
}

TEST(Look, WhatIsNotAJsonObjectIsNoDescription)
{
    for (const char* text : {"", "{", "[1]", "7", "\xFF\xFE", "{\"error\":\"\xFF\"}"})
    {
        EXPECT_FALSE(ParseDescription(text)) << text;
    }
}

} // namespace GlazelHost
