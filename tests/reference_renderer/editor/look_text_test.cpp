#include "reference_renderer/editor/look_text.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

namespace ReferenceRenderer
{

namespace
{

Look GradedLook()
{
    Cdl cdl;
    cdl.slope = {1.5F, 0.5F, 7.0F};
    return CdlLook(cdl);
}

TEST(LookText, ComesBackAsTheSameRecordWithALutAndWithout)
{
    const Look full = CubeLook(CubeOf(9, Swirled));
    const std::vector<std::uint8_t> records[] = {RecordOf(full), PlainRecordOf(full),
                                                 RecordOf(GradedLook()), RecordOf(Look())};
    for (const auto& record : records)
    {
        EXPECT_EQ(RecordOfText(LookText(record)), record);
    }
}

TEST(LookText, IsShortWithoutALut)
{
    EXPECT_LT(LookText(RecordOf(GradedLook())).size(), 500U);
}

TEST(LookText, MayBeBrokenIntoLinesAndIndented)
{
    const auto record = RecordOf(GradedLook());
    std::string text = "\r\n  " + LookText(record) + "\r\n";
    text.insert(60, "\r\n\t");
    EXPECT_EQ(RecordOfText(text), record);
}

TEST(LookText, WhatHoldsNoUsableLookGivesNone)
{
    const std::string good = LookText(RecordOf(GradedLook()));
    std::string changed = good;
    changed[30] = changed[30] == 'A' ? 'B' : 'A';
    const std::vector<std::uint8_t> tooLong(kRecordSize + 1, 1);
    for (const std::string& text :
         {std::string(), std::string("1.5"), good.substr(1), good.substr(0, good.size() / 2),
          good + "!", changed, std::string("glazel-look:"), LookText(tooLong)})
    {
        EXPECT_FALSE(RecordOfText(text)) << text.substr(0, 80);
    }
}

} // namespace

} // namespace ReferenceRenderer
