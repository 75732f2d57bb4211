// The odd ends of the record operations: the option word where nothing else happens, empty records,
// records without memory and records above the limit.
#include "tests/doubles/allocation_count.h"
#include "tests/effect/effect_fixture.h"

#include <cmath>

namespace
{

constexpr std::size_t kAboveTheLimit = 131073;

class RecordOperations : public EffectTest
{
protected:
    // Reads into a record whose chunk says 0 and whose option word says 1; gives the latter.
    std::uint32_t FlagAfterReading(FakeStream& stream, HRESULT expected)
    {
        SessionData record;
        Fill(record, RecordBytes(7, 0));
        EXPECT_EQ(effect->ReadProps(&stream, &record), expected);
        EXPECT_EQ(BytesOf(record), RecordBytes(7, 0));
        return record.flag;
    }

    // Writes a record whose option word says 5 and whose chunk says 1; gives its bytes afterwards.
    Bytes BytesAfterWriting(FakeStream& stream, std::size_t size, HRESULT expected)
    {
        SessionData record;
        Fill(record, RecordBytes(7, 1, size));
        record.flag = 5;
        EXPECT_EQ(effect->WriteProps(&stream, &record), expected);
        EXPECT_EQ(record.flag, 5U);
        return BytesOf(record);
    }

    std::size_t Blends() const
    {
        std::size_t count = 0;
        for (std::size_t i = 0; i < recording.count; ++i)
        {
            count += recording.calls.at(i).call == Call::InterpolateSessionData ? 1U : 0U;
        }
        return count;
    }

    // The effect's current record, whose option is off.
    void HoldALook()
    {
        Fill(effect->m_current, RecordBytes(7, 0));
        effect->m_current.GetFlag();
    }
};

} // namespace

// The option word

TEST_F(RecordOperations, AFailedStatStillReadsTheOptionFromTheBlock)
{
    FakeStream broken(RecordBytes(9));
    broken.statResult = STG_E_ACCESSDENIED;
    EXPECT_EQ(FlagAfterReading(broken, STG_E_ACCESSDENIED), 0U);
}

TEST_F(RecordOperations, AnEmptyStreamStillReadsTheOptionFromTheBlock)
{
    FakeStream empty;
    EXPECT_EQ(FlagAfterReading(empty, S_OK), 0U);
}

TEST_F(RecordOperations, AFailedReadReadsTheOptionFromWhatArrived)
{
    FakeStream broken(RecordBytes(7, 0));
    broken.readResult = STG_E_READFAULT;
    EXPECT_EQ(FlagAfterReading(broken, STG_E_READFAULT), 0U);
}

TEST_F(RecordOperations, ARecordThatFindsNoMemoryKeepsItsOption)
{
    FakeStream large(RecordBytes(9, 0, 0x10000));
    SessionData record;
    record.flag = 5;
    const ShortMemory shortage(0x10000);
    EXPECT_EQ(effect->ReadProps(&large, &record), S_OK);
    EXPECT_EQ(record.data, nullptr);
    EXPECT_EQ(record.flag, 5U);
}

TEST_F(RecordOperations, TheSmallestBlockIsWrittenAndOneOfNoBytesIsNot)
{
    SessionData record;
    *record.AllocateData(1) = 77;
    FakeStream stream;
    EXPECT_EQ(effect->WriteProps(&stream, &record), S_OK);
    EXPECT_EQ(stream.writes, 1);
    EXPECT_EQ(stream.bytes, Bytes{77});
    record.size = 0;
    EXPECT_EQ(effect->WriteProps(&stream, &record), S_OK);
    EXPECT_EQ(stream.writes, 1);
}

TEST_F(RecordOperations, TheOptionIsWrittenIntoABlockAboveTheLimitToo)
{
    FakeStream stream;
    EXPECT_EQ(BytesAfterWriting(stream, kAboveTheLimit, S_OK), RecordBytes(7, 5, kAboveTheLimit));
    EXPECT_EQ(stream.writes, 0);
}

TEST_F(RecordOperations, TheOptionIsWrittenIntoABlockThatTheStreamRefuses)
{
    FakeStream full;
    full.writeResult = STG_E_MEDIUMFULL;
    EXPECT_EQ(BytesAfterWriting(full, 64, STG_E_MEDIUMFULL), RecordBytes(7, 5));
}

TEST_F(RecordOperations, ABlockIsWrittenInOneGoAfterItsOption)
{
    FakeStream stream;
    EXPECT_EQ(BytesAfterWriting(stream, 131072, S_OK), RecordBytes(7, 5, 131072));
    EXPECT_EQ(stream.bytes, RecordBytes(7, 5, 131072));
    EXPECT_EQ(stream.writes, 1);
}

TEST_F(RecordOperations, ASourceOfNoBytesGivesItsOptionAlone)
{
    SessionData source;
    SessionData target;
    Fill(source, RecordBytes(7, 1));
    Fill(target, RecordBytes(9, 0));
    const std::uint32_t size = std::exchange(source.size, 0);
    source.flag = 5;
    EXPECT_EQ(effect->CopyProps(&target, &source), S_OK);
    EXPECT_EQ(BytesOf(target), RecordBytes(9, 0));
    EXPECT_EQ(target.flag, 5U);
    source.size = size;
}

TEST_F(RecordOperations, ACopyTakesTheOptionEvenWithoutMemoryForTheBlock)
{
    SessionData source;
    SessionData target;
    Fill(source, RecordBytes(7, 1, 0x10000));
    source.flag = 5;
    const ShortMemory shortage(0x10000);
    EXPECT_EQ(effect->CopyProps(&target, &source), S_OK);
    EXPECT_EQ(target.data, nullptr);
    EXPECT_EQ(target.flag, 5U);
}

TEST_F(RecordOperations, ABlendMovesTheOptionEvenWithoutMemoryForTheBlock)
{
    SessionData from;
    SessionData to;
    SessionData target;
    Fill(from, RecordBytes(7, 0, 0x10000));
    Fill(to, RecordBytes(9, 1, 0x10000));
    target.flag = 5;
    {
        const ShortMemory shortage(0x10000);
        EXPECT_EQ(effect->InterpolateProps(&target, &from, &to, 0.5), S_OK);
    }
    EXPECT_EQ(target.data, nullptr);
    EXPECT_EQ(Blends(), 0U);
    EXPECT_EQ(target.flag, 5U);
    EXPECT_EQ(from.flag, 0U) << "read from its block";
    EXPECT_EQ(to.flag, 0U);
    EXPECT_EQ(BytesOf(to), RecordBytes(9, 0, 0x10000));
}

TEST_F(RecordOperations, AtEveryFractionTheLaterRecordTakesTheEarlierOnesOption)
{
    for (const double fraction : {-1.0, 0.0, 0.5, 1.0, 2.0, std::nan("")})
    {
        for (const std::size_t laterSize : {std::size_t{64}, std::size_t{80}})
        {
            SessionData from;
            SessionData to;
            SessionData target;
            Fill(from, RecordBytes(10, 0));
            Fill(to, RecordBytes(20, 1, laterSize));
            EXPECT_EQ(effect->InterpolateProps(&target, &from, &to, fraction), S_OK);
            EXPECT_EQ(from.flag, 0U) << fraction << ", " << laterSize;
            EXPECT_EQ(to.flag, 0U) << fraction << ", " << laterSize;
            EXPECT_EQ(BytesOf(to), RecordBytes(20, 0, laterSize)) << fraction;
        }
    }
}

TEST_F(RecordOperations, BetweenTwoSizesWhatIsNotANumberGivesTheEarlierRecord)
{
    SessionData from;
    SessionData to;
    SessionData target;
    Fill(from, RecordBytes(10));
    Fill(to, RecordBytes(20, 1, 80));
    EXPECT_EQ(effect->InterpolateProps(&target, &from, &to, std::nan("")), S_OK);
    EXPECT_EQ(BytesOf(target), RecordBytes(10));
    EXPECT_EQ(Blends(), 0U);
}

TEST_F(RecordOperations, NullRecordsSucceedWithoutTouchingTheStream)
{
    FakeStream stream(RecordBytes(9));
    EXPECT_EQ(effect->ReadProps(&stream, nullptr), S_OK);
    EXPECT_EQ(effect->WriteProps(&stream, nullptr), S_OK);
    EXPECT_EQ(stream.reads + stream.writes, 0);
    EXPECT_EQ(stream.bytes, RecordBytes(9));
}

// Blends of streams

TEST_F(RecordOperations, ABlendWithAnEmptyStreamSucceedsAndWritesNothing)
{
    for (const double fraction : {0.0, 0.5, 1.0})
    {
        FakeStream empty;
        FakeStream full(RecordBytes(9));
        FakeStream output;
        EXPECT_EQ(effect->InterpolateStreams(&output, &empty, &full, fraction), S_OK);
        EXPECT_EQ(full.reads, 1) << "an empty stream is no failure";
        FakeStream fullAgain(RecordBytes(9));
        EXPECT_EQ(effect->InterpolateStreams(&output, &fullAgain, &empty, fraction), S_OK);
        EXPECT_EQ(effect->InterpolateStreams(&output, &empty, &empty, fraction), S_OK);
        EXPECT_EQ(output.writes, 0) << fraction;
    }
    EXPECT_EQ(Blends(), 0U);
}

TEST_F(RecordOperations, ABlendAboveTheLimitSucceedsAndWritesNothing)
{
    FakeStream earlier(RecordBytes(10, 1, kAboveTheLimit));
    FakeStream later(RecordBytes(20, 1, kAboveTheLimit));
    FakeStream output;
    EXPECT_EQ(effect->InterpolateStreams(&output, &earlier, &later, 0.5), S_OK);
    EXPECT_EQ(Blends(), 1U);
    EXPECT_EQ(output.writes, 0);
}

TEST_F(RecordOperations, ABlendOfStreamsTouchesNoRecordOfTheEffect)
{
    HoldALook();
    Fill(effect->m_keyFrom, RecordBytes(1));
    Fill(effect->m_keyTo, RecordBytes(2));
    Fill(effect->m_frame, RecordBytes(3));
    FakeStream earlier(RecordBytes(10));
    FakeStream later(RecordBytes(20));
    FakeStream output;
    EXPECT_EQ(effect->InterpolateStreams(&output, &earlier, &later, 0.5), S_OK);
    earlier.readResult = STG_E_READFAULT;
    EXPECT_EQ(effect->InterpolateStreams(&output, &earlier, &later, 0.5), STG_E_READFAULT);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7, 0));
    EXPECT_EQ(effect->m_current.flag, 0U);
    EXPECT_EQ(BytesOf(effect->m_keyFrom), RecordBytes(1));
    EXPECT_EQ(BytesOf(effect->m_keyTo), RecordBytes(2));
    EXPECT_EQ(BytesOf(effect->m_frame), RecordBytes(3));
}

// Keyframes

TEST_F(RecordOperations, WhenTheSecondKeyframeCannotBeReadBothBecomeTheCurrentLook)
{
    HoldALook();
    FakeStream earlier(RecordBytes(9, 1, 80));
    FakeStream later(RecordBytes(8));
    later.readResult = STG_E_READFAULT; // when its block has arrived
    EXPECT_EQ(effect->SetKeyframeProps(&earlier, &later), STG_E_READFAULT);
    for (const SessionData* key : {&effect->m_keyFrom, &effect->m_keyTo})
    {
        EXPECT_EQ(BytesOf(*key), RecordBytes(7, 0));
        EXPECT_EQ(key->flag, 1U) << "the preset was applied before";
        EXPECT_NE(key->data, effect->m_current.data);
    }
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7, 0));
    EXPECT_EQ(effect->m_current.flag, 1U);
}

TEST_F(RecordOperations, AnEmptyKeyframeStreamKeepsTheKeyframe)
{
    Fill(effect->m_keyTo, RecordBytes(2));
    FakeStream earlier(RecordBytes(9));
    FakeStream empty;
    EXPECT_EQ(effect->SetKeyframeProps(&earlier, &empty), S_OK);
    EXPECT_EQ(BytesOf(effect->m_keyFrom), RecordBytes(9));
    EXPECT_EQ(BytesOf(effect->m_keyTo), RecordBytes(2));
}

TEST_F(RecordOperations, AFractionIsStoredAsItIs)
{
    for (const double fraction : {-7.5, 0.0, 0.3, 12.0})
    {
        EXPECT_EQ(effect->SetKeyframeFraction(fraction), S_OK);
        EXPECT_EQ(effect->m_fraction, fraction);
    }
    EXPECT_EQ(effect->SetKeyframeFraction(std::nan("")), S_OK);
    EXPECT_TRUE(std::isnan(effect->m_fraction));
}

// Exchange

TEST_F(RecordOperations, SettingAnEmptyRecordKeepsTheLookAndTakesTheOption)
{
    Fill(effect->m_current, RecordBytes(7));
    Listen();
    SessionData empty;
    empty.flag = 0;
    EXPECT_EQ(effect->SetProps(&empty), S_OK);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7));
    EXPECT_EQ(effect->m_current.flag, 0U);
    EXPECT_EQ(effect->IsDirty(), S_OK);
    EXPECT_EQ(sink.calls, 1);
    EXPECT_TRUE(postBox.Take().empty());
}

TEST_F(RecordOperations, GettingFromAnEffectWithoutALookKeepsTheCallersBlock)
{
    effect->m_current.flag = 5;
    SessionData page;
    Fill(page, RecordBytes(9));
    EXPECT_EQ(effect->GetProps(&page), S_OK);
    EXPECT_EQ(BytesOf(page), RecordBytes(9));
    EXPECT_EQ(page.flag, 5U);
}

// A fresh effect

TEST_F(RecordOperations, AFreshEffectHasFourEmptyRecordsAndNoAutomation)
{
    for (const SessionData* record :
         {&effect->m_current, &effect->m_keyFrom, &effect->m_keyTo, &effect->m_frame})
    {
        EXPECT_EQ(record->data, nullptr);
        EXPECT_EQ(record->size, 0U);
        EXPECT_EQ(record->flag, 1U);
    }
    EXPECT_EQ(effect->m_automated, 0U);
    EXPECT_EQ(effect->m_fraction, 0.0);
    EXPECT_EQ(effect->m_dirty, 0U);
}
