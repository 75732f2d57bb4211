#include "reference_renderer/core/look_cache.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

namespace ReferenceRenderer
{

namespace
{

std::vector<std::uint8_t> RecordNumber(int number)
{
    Cdl cdl;
    cdl.offset[0] = static_cast<float>(number);
    return RecordOf(CdlLook(cdl));
}

} // namespace

TEST(LookCache, TheSameRecordIsDecodedOnce)
{
    LookCache cache;
    const auto first = cache.Find(RecordNumber(1));
    const auto other = cache.Find(RecordNumber(2));
    const auto again = cache.Find(RecordNumber(1));
    EXPECT_EQ(first.look, again.look);
    EXPECT_NE(first.look, other.look);
}

TEST(LookCache, AChangedByteIsAnotherRecord)
{
    LookCache cache;
    std::vector<std::uint8_t> record = RecordNumber(1);
    const auto first = cache.Find(record);
    record.back() ^= 1;
    EXPECT_NE(cache.Find(record).look, first.look);
}

TEST(LookCache, ALookInUseOutlivesItsPlace)
{
    LookCache cache;
    const auto held = cache.Find(RecordNumber(0));
    for (int i = 1; i < 20; ++i)
    {
        cache.Find(RecordNumber(i));
    }
    EXPECT_EQ(held.look->Stored().cdl.offset[0], 0.0F);
}

TEST(LookCache, AnimationReusesThePlacesThatAreLeastInUse)
{
    LookCache cache;
    const PreparedLook* const key = cache.Find(RecordNumber(-1)).look.get();
    for (int i = 0; i < 40; ++i)
    {
        EXPECT_EQ(cache.Find(RecordNumber(-1)).look.get(), key);
        EXPECT_EQ(cache.Find(RecordNumber(i)).look->Stored().cdl.offset[0], static_cast<float>(i));
    }
}

TEST(LookCache, RecordsThatCannotBeUsedGiveNoLook)
{
    LookCache cache;
    EXPECT_EQ(cache.Find({}).look, nullptr);
    EXPECT_EQ(cache.Find({}).state, RecordState::Empty);
    std::vector<std::uint8_t> record = RecordNumber(1);
    record.pop_back();
    EXPECT_EQ(cache.Find(record).state, RecordState::Damaged);
}

TEST(LookCache, ALookThatIsReadyAlreadyIsNotReadAgain)
{
    LookCache cache;
    auto look = std::make_shared<PreparedLook>();
    PreparedLook* const ready = look.get();
    cache.Keep(RecordNumber(1), std::move(look));
    EXPECT_EQ(cache.Find(RecordNumber(1)).look.get(), ready);
}

TEST(LookCache, KeepingALookHandsBackTheOneThatHadToGoUnlessItIsInUse)
{
    LookCache cache;
    std::vector<std::shared_ptr<const PreparedLook>> inUse;
    for (int i = 0; i < 6; ++i)
    {
        inUse.push_back(cache.Find(RecordNumber(i)).look);
    }
    const PreparedLook* const second = inUse[1].get();
    EXPECT_EQ(cache.Keep(RecordNumber(10), std::make_shared<PreparedLook>()), nullptr);
    inUse.clear();
    EXPECT_EQ(cache.Keep(RecordNumber(11), std::make_shared<PreparedLook>()).get(), second);
}

} // namespace ReferenceRenderer
