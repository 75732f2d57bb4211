// Saving where there is nothing to write: an empty record, or one above the limit. The stream is
// not looked at then, not even whether there is one.
#include "tests/effect/effect_fixture.h"

namespace
{

class UnwrittenRecord : public EffectTest
{
protected:
    // Makes the current record one above the limit, whose option word says 5 and its chunk 1.
    void HoldTooMuch()
    {
        Fill(effect->m_current, RecordBytes(7, 1, 131073));
        effect->m_current.flag = 5;
    }
};

} // namespace

TEST_F(UnwrittenRecord, NeedsNoStream)
{
    SessionData empty;
    EXPECT_EQ(effect->WriteProps(nullptr, &empty), S_OK);
    EXPECT_EQ(effect->SaveProps(nullptr), S_OK);
    HoldTooMuch();
    EXPECT_EQ(effect->SaveProps(nullptr), S_OK) << "above the limit";
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7, 5, 131073)) << "the option is written";
}

TEST_F(UnwrittenRecord, SavedWithoutAStreamClearsTheDirtyMarkAndPosts)
{
    Listen();
    HoldTooMuch();
    effect->m_dirty = 1;
    EXPECT_EQ(static_cast<IPersistStreamInit*>(effect.p)->Save(nullptr, TRUE), S_OK);
    EXPECT_EQ(effect->m_dirty, 0U);
    EXPECT_EQ(postBox.Take().size(), 1U);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7, 5, 131073));
    effect->SetChangeSink(nullptr);
}
