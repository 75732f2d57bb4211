// What the record operations trace.
#include "tests/doubles/allocation_count.h"
#include "tests/doubles/trace_notes.h"
#include "tests/effect/effect_fixture.h"

namespace
{

using Notes = std::vector<TraceNote>;

class RecordTrace : public EffectTest
{
};

} // namespace

TEST_F(RecordTrace, ReadingTracesTheBytesThatWereRead)
{
    FakeStream stream(RecordBytes(7));
    stream.mostBytesRead = 30;
    SessionData record;
    TraceNotes trace;
    ASSERT_EQ(effect->ReadProps(&stream, &record), S_OK);
    EXPECT_EQ(trace.Take(), (Notes{Traced("SessionData::AllocateData  size = %d \n", 64),
                                   Traced("ReadProps  size = %d \n", 30)}));
}

TEST_F(RecordTrace, AFailedReadIsTracedLikeAnyOther)
{
    FakeStream stream(RecordBytes(7));
    stream.readResult = STG_E_READFAULT;
    SessionData record;
    Fill(record, RecordBytes(1));
    TraceNotes trace;
    ASSERT_EQ(effect->ReadProps(&stream, &record), STG_E_READFAULT);
    EXPECT_EQ(trace.Take(), Notes{Traced("ReadProps  size = %d \n", 64)});
}

TEST_F(RecordTrace, WritingTracesTheBytesThatWereWritten)
{
    SessionData record;
    Fill(record, RecordBytes(7));
    FakeStream stream;
    TraceNotes trace;
    ASSERT_EQ(effect->WriteProps(&stream, &record), S_OK);
    EXPECT_EQ(trace.Take(), Notes{Traced("WriteProps  size = %d \n", 64)});
    stream.writeResult = STG_E_MEDIUMFULL;
    ASSERT_EQ(effect->WriteProps(&stream, &record), STG_E_MEDIUMFULL);
    EXPECT_EQ(trace.Take(), Notes{Traced("WriteProps  size = %d \n", 0)});
}

TEST_F(RecordTrace, ARecordAboveTheLimitIsTracedAndNothingElse)
{
    SessionData record;
    Fill(record, RecordBytes(7, 1, 131073));
    FakeStream stream;
    TraceNotes trace;
    ASSERT_EQ(effect->WriteProps(&stream, &record), S_OK);
    EXPECT_EQ(trace.Take(), Notes{Traced("WriteProps max size exceeded: %d \n", 131073)});
}

TEST_F(RecordTrace, WritingAnEmptyRecordTracesNothing)
{
    SessionData record;
    FakeStream stream;
    TraceNotes trace;
    ASSERT_EQ(effect->WriteProps(&stream, &record), S_OK);
    EXPECT_EQ(trace.Take(), Notes{});
}

TEST_F(RecordTrace, CopyingTracesTheSizeOfTheBlockThatWasCopied)
{
    SessionData source;
    SessionData target;
    SessionData empty;
    Fill(source, RecordBytes(7, 1, 0x10000));
    Fill(target, RecordBytes(8, 1, 0x10000));
    TraceNotes trace;
    ASSERT_EQ(effect->CopyProps(&target, &source), S_OK);
    EXPECT_EQ(trace.Take(), Notes{Traced("CopyProps  size = %d \n", 0x10000)});
    ASSERT_EQ(effect->CopyProps(&target, &empty), S_OK);
    EXPECT_EQ(trace.Take(), Notes{}) << "nothing was copied";
    target.FreeData();
    const ShortMemory shortage(0x10000);
    ASSERT_EQ(effect->CopyProps(&target, &source), S_OK);
    EXPECT_EQ(trace.Take(), Notes{Traced("SessionData::AllocateData  size = %d \n", 0x10000)})
        << "asked for, but not obtained";
}

TEST_F(RecordTrace, ABlendTracesItsSizeAndFraction)
{
    SessionData from;
    SessionData to;
    SessionData target;
    Fill(from, RecordBytes(7, 1, 0x10000));
    Fill(to, RecordBytes(9, 1, 0x10000));
    Fill(target, RecordBytes(1, 1, 0x10000));
    TraceNotes trace;
    ASSERT_EQ(effect->InterpolateProps(&target, &from, &to, 0.25), S_OK);
    EXPECT_EQ(trace.Take(), Notes{Traced("InterpolateSessionData  size=%d n=%f\n", 0x10000, 0.25)});
    ASSERT_EQ(effect->InterpolateProps(&target, &from, &to, 1.0), S_OK);
    EXPECT_EQ(trace.Take(), Notes{Traced("CopyProps  size = %d \n", 0x10000)}) << "at an end";
    target.FreeData();
    const ShortMemory shortage(0x10000);
    ASSERT_EQ(effect->InterpolateProps(&target, &from, &to, 0.25), S_OK);
    EXPECT_EQ(trace.Take(), Notes{Traced("SessionData::AllocateData  size = %d \n", 0x10000)});
}
