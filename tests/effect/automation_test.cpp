#include "tests/doubles/allocation_count.h"
#include "tests/effect/effect_fixture.h"

#include <windows.h>

#include <cmath>

#include <psapi.h>

namespace
{

class Automation : public EffectTest
{
protected:
    // Gives the effect two keyframes through its own interface.
    void SetKeys(const Bytes& from, const Bytes& to)
    {
        FakeStream earlier(from);
        FakeStream later(to);
        ASSERT_EQ(effect->SetKeyframeProps(&earlier, &later), S_OK);
        ASSERT_EQ(effect->SetAutomationActive(1), S_OK);
    }

    // The record that the next frame is rendered with, when it lies at `fraction`.
    Bytes FrameAt(double fraction)
    {
        EXPECT_EQ(effect->SetKeyframeFraction(fraction), S_OK);
        effect->RefreshFrameProps();
        return BytesOf(effect->m_frame);
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
};

} // namespace

TEST_F(Automation, WithoutItEveryFrameGetsACopyOfTheCurrentRecord)
{
    Fill(effect->m_current, RecordBytes(7, 0));
    effect->m_current.GetFlag();
    effect->RefreshFrameProps();
    EXPECT_EQ(BytesOf(effect->m_frame), RecordBytes(7, 0));
    EXPECT_EQ(effect->m_frame.flag, 0U);
    EXPECT_NE(effect->m_frame.data, effect->m_current.data);
}

TEST_F(Automation, TheFrameRecordKeepsItsBlockWhileTheSizeStays)
{
    Fill(effect->m_current, RecordBytes(7));
    effect->RefreshFrameProps();
    const void* const block = effect->m_frame.data;
    Fill(effect->m_current, RecordBytes(8));
    effect->RefreshFrameProps();
    EXPECT_EQ(effect->m_frame.data, block);
    EXPECT_EQ(BytesOf(effect->m_frame), RecordBytes(8));
}

TEST_F(Automation, OnWithNoKeyframePairYetLeavesTheFrameRecordAsItWas)
{
    effect->SetAutomationActive(1);
    effect->RefreshFrameProps();
    EXPECT_EQ(effect->m_frame.data, nullptr);

    effect->SetAutomationActive(0);
    Fill(effect->m_current, RecordBytes(7));
    effect->RefreshFrameProps();
    effect->SetAutomationActive(1);
    effect->RefreshFrameProps();
    EXPECT_EQ(BytesOf(effect->m_frame), RecordBytes(7));
    EXPECT_EQ(Blends(), 0U);
}

TEST_F(Automation, FractionsAtOrOutsideTheEndsGiveExactlyThatKeyframe)
{
    SetKeys(RecordBytes(10), RecordBytes(20));
    EXPECT_EQ(FrameAt(0.0), RecordBytes(10));
    EXPECT_EQ(FrameAt(1.0), RecordBytes(20));
    EXPECT_EQ(FrameAt(-0.5), RecordBytes(10));
    EXPECT_EQ(FrameAt(2.0), RecordBytes(20));
    EXPECT_EQ(Blends(), 0U);
}

TEST_F(Automation, BetweenKeyframesOfOneSizeTheRendererBlends)
{
    SetKeys(RecordBytes(10, 0), RecordBytes(20, 1));
    EXPECT_EQ(effect->m_frame.flag, 1U);
    EXPECT_EQ(FrameAt(0.5), RecordBytes(15, 0)) << "the chunk in the block is the earlier one's";
    ASSERT_EQ(Blends(), 1U);
    const RecordedCall& blend = recording.calls[recording.count - 1];
    EXPECT_EQ(blend.recordA, effect->m_keyFrom.data);
    EXPECT_EQ(blend.recordB, effect->m_keyTo.data);
    EXPECT_EQ(blend.sizeA, 64U);
    EXPECT_EQ(blend.sizeB, 64U);
    EXPECT_EQ(blend.number, 0.5);
    EXPECT_EQ(effect->m_frame.flag, 1U) << "the frame's option word stays as it was";
    EXPECT_EQ(effect->m_keyTo.flag, 0U) << "the later keyframe takes the earlier one's";
    EXPECT_EQ(BytesOf(effect->m_keyTo), RecordBytes(20, 0));
}

TEST_F(Automation, BlendsAnewForEveryFrame)
{
    SetKeys(RecordBytes(10), RecordBytes(20));
    FrameAt(0.5);
    FrameAt(0.5);
    EXPECT_EQ(Blends(), 2U);
}

TEST_F(Automation, AtTheEndsTheLaterKeyframeStillTakesTheEarlierOnesOption)
{
    SetKeys(RecordBytes(10, 0), RecordBytes(20, 1));
    EXPECT_EQ(FrameAt(1.0), RecordBytes(20, 1)) << "copied before";
    EXPECT_EQ(effect->m_frame.flag, 1U);
    EXPECT_EQ(FrameAt(1.0), RecordBytes(20, 0)) << "and from the next frame on";
    EXPECT_EQ(effect->m_frame.flag, 0U);
}

TEST_F(Automation, KeyframesOfTwoSizesSwitchAtTheLaterOne)
{
    SetKeys(RecordBytes(10), RecordBytes(20, 1, 80));
    EXPECT_EQ(FrameAt(0.001), RecordBytes(10));
    EXPECT_EQ(FrameAt(0.999), RecordBytes(10));
    EXPECT_EQ(FrameAt(1.0), RecordBytes(20, 1, 80));
    EXPECT_EQ(Blends(), 0U);
}

TEST_F(Automation, AFractionThatIsNotANumberGoesToTheRenderer)
{
    SetKeys(RecordBytes(10), RecordBytes(20));
    FrameAt(std::nan(""));
    ASSERT_EQ(Blends(), 1U);
    EXPECT_TRUE(std::isnan(recording.calls[recording.count - 1].number));
}

TEST_F(Automation, KeyframesAndFractionSurviveSwitchingOffAndOn)
{
    SetKeys(RecordBytes(10), RecordBytes(20));
    FrameAt(0.5);
    Fill(effect->m_current, RecordBytes(99));
    effect->SetAutomationActive(0);
    effect->RefreshFrameProps();
    EXPECT_EQ(BytesOf(effect->m_frame), RecordBytes(99));
    effect->SetAutomationActive(5);
    effect->RefreshFrameProps();
    EXPECT_EQ(BytesOf(effect->m_frame), RecordBytes(15));
}

TEST_F(Automation, InterpolatePropsWithANullOrEmptyRecordChangesNothing)
{
    SessionData output;
    SessionData full;
    SessionData empty;
    Fill(full, RecordBytes(1, 0));
    empty.flag = 5;
    EXPECT_EQ(effect->InterpolateProps(&output, &full, &empty, 0.5), S_OK);
    EXPECT_EQ(effect->InterpolateProps(&output, &empty, &full, 0.0), S_OK);
    EXPECT_EQ(effect->InterpolateProps(nullptr, &full, &full, 0.0), S_OK);
    EXPECT_EQ(effect->InterpolateProps(&output, nullptr, &full, 0.0), S_OK);
    EXPECT_EQ(effect->InterpolateProps(&output, &full, nullptr, 0.0), S_OK);
    EXPECT_EQ(output.data, nullptr);
    EXPECT_EQ(empty.flag, 5U) << "not even the option word";
    EXPECT_EQ(full.flag, 1U);
}

TEST_F(Automation, CopyingAnEmptyRecordOverAFullOneChangesOnlyTheOptionWord)
{
    SessionData full;
    SessionData empty;
    Fill(full, RecordBytes(1, 0));
    empty.flag = 5;
    const void* const block = full.data;
    EXPECT_EQ(effect->CopyProps(&full, &empty), S_OK);
    EXPECT_EQ(full.data, block);
    EXPECT_EQ(BytesOf(full), RecordBytes(1, 0));
    EXPECT_EQ(full.flag, 5U);
}

TEST_F(Automation, CopiesAreDeepAndARecordMayBeCopiedToItself)
{
    SessionData source;
    SessionData target;
    Fill(source, RecordBytes(1, 0));
    source.flag = 3;
    EXPECT_EQ(effect->CopyProps(&target, &source), S_OK);
    EXPECT_NE(target.data, source.data);
    EXPECT_EQ(BytesOf(target), RecordBytes(1, 0));
    EXPECT_EQ(target.flag, 3U);
    EXPECT_EQ(effect->CopyProps(&source, &source), S_OK);
    EXPECT_EQ(BytesOf(source), RecordBytes(1, 0));
    EXPECT_EQ(effect->CopyProps(nullptr, &source), S_OK);
    EXPECT_EQ(effect->CopyProps(&target, nullptr), S_OK);
}

TEST_F(Automation, SavePropsWritesTheRecordAndRefreshesItsChunkFirst)
{
    Fill(effect->m_current, RecordBytes(7, 0));
    effect->m_current.flag = 1;
    FakeStream stream;
    EXPECT_EQ(effect->SaveProps(&stream), S_OK);
    EXPECT_EQ(stream.bytes, RecordBytes(7, 1));
    EXPECT_EQ(stream.writes, 1);
}

TEST_F(Automation, SavingAnEmptyRecordWritesNothing)
{
    FakeStream stream;
    EXPECT_EQ(effect->SaveProps(&stream), S_OK);
    EXPECT_EQ(stream.writes, 0);
}

TEST_F(Automation, ARecordOfTheLimitIsSavedAndOneByteMoreSavesNothingAndSucceeds)
{
    Fill(effect->m_current, RecordBytes(7, 1, 131072));
    FakeStream full;
    EXPECT_EQ(effect->SaveProps(&full), S_OK);
    EXPECT_EQ(full.bytes.size(), 131072U);
    Fill(effect->m_current, RecordBytes(7, 1, 131073));
    FakeStream none;
    EXPECT_EQ(effect->SaveProps(&none), S_OK);
    EXPECT_EQ(none.writes, 0);
}

TEST_F(Automation, AFailedWriteIsReported)
{
    Fill(effect->m_current, RecordBytes(7));
    FakeStream stream;
    stream.writeResult = STG_E_MEDIUMFULL;
    EXPECT_EQ(effect->SaveProps(&stream), STG_E_MEDIUMFULL);
}

TEST_F(Automation, LoadPropsTakesTheRecordPostsAndDoesNotCallTheSink)
{
    Listen();
    FakeStream stream(RecordBytes(7, 0));
    EXPECT_EQ(effect->LoadProps(&stream), S_OK);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7, 0));
    EXPECT_EQ(effect->m_current.flag, 0U);
    EXPECT_EQ(effect->IsDirty(), S_OK);
    EXPECT_EQ(stream.statFlags, static_cast<DWORD>(STATFLAG_NONAME));
    const std::vector<MSG> posts = postBox.Take();
    ASSERT_EQ(posts.size(), 1U);
    EXPECT_EQ(posts[0].wParam, kCommand);
    EXPECT_EQ(posts[0].lParam, 0);
    EXPECT_EQ(sink.calls, 0);
}

TEST_F(Automation, LoadPropsFromAnEmptyStreamKeepsTheBlockAndStillNotifies)
{
    Fill(effect->m_current, RecordBytes(7));
    const void* const block = effect->m_current.data;
    Listen();
    FakeStream empty;
    EXPECT_EQ(effect->IsDirty(), S_FALSE);
    EXPECT_EQ(effect->LoadProps(&empty), S_OK);
    EXPECT_EQ(effect->m_current.data, block);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7));
    EXPECT_EQ(effect->IsDirty(), S_OK);
    EXPECT_EQ(postBox.Take().size(), 1U);
    EXPECT_EQ(empty.reads, 0);
}

TEST_F(Automation, LoadPropsWithAFailingStatAppliesPresetZeroAndReportsIt)
{
    Fill(effect->m_current, RecordBytes(7, 0));
    effect->m_current.GetFlag();
    Listen();
    FakeStream broken(RecordBytes(9));
    broken.statResult = STG_E_ACCESSDENIED;
    EXPECT_EQ(effect->LoadProps(&broken), STG_E_ACCESSDENIED);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7, 0)) << "the preset has no look of its own";
    EXPECT_EQ(effect->m_current.flag, 1U) << "but sets the option word";
    EXPECT_EQ(effect->IsDirty(), S_OK);
    EXPECT_EQ(postBox.Take().size(), 1U);
}

TEST_F(Automation, AReadErrorIsReportedAndTheNewBlockKept)
{
    FakeStream broken(RecordBytes(9));
    broken.readResult = STG_E_READFAULT;
    EXPECT_EQ(effect->LoadProps(&broken), STG_E_READFAULT);
    EXPECT_EQ(effect->m_current.size, 64U);
}

TEST_F(Automation, AShortReadIsNotDetectedAndLeavesNoForeignBytes)
{
    FakeStream stream(RecordBytes(9));
    stream.mostBytesRead = 30;
    EXPECT_EQ(effect->LoadProps(&stream), S_OK);
    Bytes expected = RecordBytes(9);
    std::fill(expected.begin() + 30, expected.end(), std::uint8_t{0});
    EXPECT_EQ(BytesOf(effect->m_current), expected);

    // A block of the same size is kept, with the bytes of the record before.
    FakeStream second(RecordBytes(5));
    second.mostBytesRead = 25;
    EXPECT_EQ(effect->LoadProps(&second), S_OK);
    std::fill(expected.begin() + 20, expected.begin() + 25, std::uint8_t{5});
    EXPECT_EQ(BytesOf(effect->m_current), expected);
}

TEST_F(Automation, AStreamThatPromisesGigabytesDoesNotMakeTheEffectWriteThem)
{
    const Bytes content = RecordBytes(9);
    FakeStream stream(content);
    stream.extraSize = 0xFFFFFFFFU - content.size();
    PROCESS_MEMORY_COUNTERS before{};
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &before, sizeof before);
    EXPECT_EQ(effect->LoadProps(&stream), S_OK);
    PROCESS_MEMORY_COUNTERS after{};
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &after, sizeof after);
    if (effect->m_current.data == nullptr)
    {
        GTEST_SKIP() << "this machine has no 4 GiB to promise";
    }
    EXPECT_LT(after.WorkingSetSize, before.WorkingSetSize + 0x10000000U);
    EXPECT_EQ(effect->m_current.size, 0xFFFFFFFFU);
    EXPECT_EQ(Bytes(effect->m_current.data, effect->m_current.data + content.size()), content);
}

TEST_F(Automation, ItsOperationsStandInTheirSlots)
{
    IDXTSfAutomation* const automation = effect;
    EXPECT_EQ((CallSlot<3>(automation, ULONG{1})), S_OK);
    EXPECT_EQ(effect->m_automated, 1U);
    Fill(effect->m_current, RecordBytes(7));
    FakeStream saved;
    EXPECT_EQ((CallSlot<4>(automation, static_cast<IStream*>(&saved))), S_OK);
    EXPECT_EQ(saved.bytes, RecordBytes(7));
    FakeStream loaded(RecordBytes(9));
    EXPECT_EQ((CallSlot<5>(automation, static_cast<IStream*>(&loaded))), S_OK);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(9));
    FakeStream earlier(RecordBytes(10));
    FakeStream later(RecordBytes(20));
    FakeStream between;
    EXPECT_EQ((CallSlot<6>(automation, static_cast<IStream*>(&between),
                           static_cast<IStream*>(&earlier), static_cast<IStream*>(&later), 0.0)),
              S_OK);
    EXPECT_EQ(between.bytes, RecordBytes(10));
    FakeStream from(RecordBytes(11));
    FakeStream to(RecordBytes(21));
    EXPECT_EQ((CallSlot<7>(automation, static_cast<IStream*>(&from), static_cast<IStream*>(&to))),
              S_OK);
    EXPECT_EQ(BytesOf(effect->m_keyTo), RecordBytes(21));
    EXPECT_EQ((CallSlot<8>(automation, 0.75)), S_OK);
    EXPECT_EQ(effect->m_fraction, 0.75);
    EXPECT_EQ((CallSlot<9>(automation, static_cast<ISfChangeSink*>(&sink))), S_OK);
    EXPECT_EQ(sink.references, 1U);
    EXPECT_EQ((CallSlot<9>(automation, static_cast<ISfChangeSink*>(nullptr))), S_OK);

    ISfExchangeProps<SessionData>* const exchange = effect;
    SessionData page;
    EXPECT_EQ((CallSlot<3>(exchange, &page)), S_OK);
    EXPECT_EQ(BytesOf(page), RecordBytes(9));
    Fill(page, RecordBytes(12));
    EXPECT_EQ((CallSlot<4>(exchange, &page)), S_OK);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(12));
    EXPECT_EQ((CallSlot<5>(exchange, postBox.Window(), UINT{kCommand})), S_OK);
    EXPECT_EQ(effect->ApplyPreset(0), S_OK);
    EXPECT_EQ(postBox.Take().size(), 1U);
}

TEST_F(Automation, ASizeLargerThanTheDataIsTakenAtItsWord)
{
    FakeStream stream(RecordBytes(9));
    stream.extraSize = 100;
    EXPECT_EQ(effect->LoadProps(&stream), S_OK);
    EXPECT_EQ(effect->m_current.size, 164U);
    EXPECT_EQ(effect->m_current.data[163], 0);
}

TEST_F(Automation, ASizeBeyondMemorySucceedsWithAnEmptyRecord)
{
    Fill(effect->m_current, RecordBytes(7));
    FakeStream stream(RecordBytes(9));
    stream.extraSize = 0x10000;
    const ShortMemory shortage(0x10000);
    EXPECT_EQ(effect->LoadProps(&stream), S_OK);
    EXPECT_EQ(effect->m_current.data, nullptr);
    EXPECT_EQ(effect->m_current.size, 0U);
    EXPECT_EQ(stream.reads, 0);
}

TEST_F(Automation, ACopyAndABlendWithoutMemorySucceedWithAnEmptyRecord)
{
    SessionData from;
    SessionData to;
    SessionData target;
    Fill(from, RecordBytes(7, 1, 0x10000));
    Fill(to, RecordBytes(9, 1, 0x10000));
    const ShortMemory shortage(0x10000);
    EXPECT_EQ(effect->CopyProps(&target, &from), S_OK);
    EXPECT_EQ(target.data, nullptr);
    EXPECT_EQ(target.size, 0U);
    EXPECT_EQ(effect->InterpolateProps(&target, &from, &to, 0.5), S_OK);
    EXPECT_EQ(target.data, nullptr);
    EXPECT_EQ(target.size, 0U);
}

TEST_F(Automation, OnlyTheLowHalfOfTheStreamsSizeCounts)
{
    FakeStream stream(RecordBytes(9));
    stream.extraSize = 1ULL << 32;
    EXPECT_EQ(effect->LoadProps(&stream), S_OK);
    EXPECT_EQ(effect->m_current.size, 64U);
}

TEST_F(Automation, AStreamIsNotRewoundAndItsWholeSizeIsUsed)
{
    FakeStream stream(RecordBytes(9));
    stream.position = 44;
    EXPECT_EQ(effect->LoadProps(&stream), S_OK);
    EXPECT_EQ(stream.seeks, 0);
    Bytes expected(64, 0);
    std::fill_n(expected.begin(), 20, std::uint8_t{9});
    EXPECT_EQ(BytesOf(effect->m_current), expected);
}

TEST_F(Automation, ANullStreamIsAnErrorThatLeavesTheLookAlone)
{
    Fill(effect->m_current, RecordBytes(7, 0));
    effect->m_current.GetFlag();
    EXPECT_EQ(effect->SaveProps(nullptr), E_POINTER);
    EXPECT_EQ(effect->LoadProps(nullptr), E_POINTER);
    EXPECT_EQ(effect->InterpolateStreams(nullptr, nullptr, nullptr, 0.5), E_POINTER);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7, 0));
    EXPECT_EQ(effect->m_current.flag, 1U) << "a failed load applies the preset, which has no look";
}

TEST_F(Automation, SetKeyframePropsWithAnUnreadableStreamFallsBackToTheCurrentLook)
{
    Fill(effect->m_current, RecordBytes(7, 0));
    effect->m_current.GetFlag();
    FakeStream good(RecordBytes(9));
    FakeStream broken(RecordBytes(9));
    broken.statResult = E_ACCESSDENIED;
    EXPECT_EQ(effect->SetKeyframeProps(&good, &broken), E_ACCESSDENIED);
    EXPECT_EQ(BytesOf(effect->m_keyFrom), RecordBytes(7, 0));
    EXPECT_EQ(BytesOf(effect->m_keyTo), RecordBytes(7, 0));
    EXPECT_EQ(effect->m_keyFrom.flag, 1U);

    FakeStream later(RecordBytes(9));
    EXPECT_EQ(effect->SetKeyframeProps(&broken, &later), E_ACCESSDENIED);
    EXPECT_EQ(later.reads, 0) << "not looked at after the first failure";
}

TEST_F(Automation, InterpolateStreamsBlendsIntoTheOutputWithTheOptionOn)
{
    FakeStream earlier(RecordBytes(10, 0));
    FakeStream later(RecordBytes(20, 0));
    FakeStream output;
    EXPECT_EQ(effect->InterpolateStreams(&output, &earlier, &later, 0.5), S_OK);
    EXPECT_EQ(output.bytes, RecordBytes(15, 1));
    EXPECT_EQ(effect->m_keyFrom.data, nullptr) << "the effect's own records are not touched";
    EXPECT_EQ(effect->IsDirty(), S_FALSE);
}

TEST_F(Automation, InterpolateStreamsAtAnEndKeepsThatRecordsOption)
{
    FakeStream earlier(RecordBytes(10, 0));
    FakeStream later(RecordBytes(20, 1));
    FakeStream output;
    EXPECT_EQ(effect->InterpolateStreams(&output, &earlier, &later, 0.0), S_OK);
    EXPECT_EQ(output.bytes, RecordBytes(10, 0));
}

TEST_F(Automation, InterpolateStreamsReportsTheUnreadableStreamAndWritesNothing)
{
    FakeStream good(RecordBytes(10));
    FakeStream broken(RecordBytes(20));
    broken.statResult = STG_E_READFAULT;
    FakeStream output;
    EXPECT_EQ(effect->InterpolateStreams(&output, &good, &broken, 0.5), STG_E_READFAULT);
    EXPECT_EQ(effect->InterpolateStreams(&output, &broken, &good, 0.5), STG_E_READFAULT);
    EXPECT_EQ(output.writes, 0);
}

TEST_F(Automation, InterpolateStreamsReportsAFailedWrite)
{
    FakeStream earlier(RecordBytes(10));
    FakeStream later(RecordBytes(20));
    FakeStream output;
    output.writeResult = STG_E_MEDIUMFULL;
    EXPECT_EQ(effect->InterpolateStreams(&output, &earlier, &later, 0.5), STG_E_MEDIUMFULL);
}

TEST_F(Automation, TheChangeSinkIsHeldUntilItIsReplaced)
{
    CountingSink second;
    EXPECT_EQ(effect->SetChangeSink(&sink), S_OK);
    EXPECT_EQ(sink.references, 1U);
    EXPECT_EQ(effect->SetChangeSink(&sink), S_OK);
    EXPECT_EQ(sink.references, 1U) << "the same sink again";
    EXPECT_EQ(effect->SetChangeSink(&second), S_OK);
    EXPECT_EQ(sink.references, 0U);
    EXPECT_EQ(second.references, 1U);
    EXPECT_EQ(effect->SetChangeSink(nullptr), S_OK);
    EXPECT_EQ(second.references, 0U);
}

TEST_F(Automation, TheChangeSinkIsReleasedWithTheEffect)
{
    effect->SetChangeSink(&sink);
    effect.Release();
    EXPECT_EQ(sink.references, 0U);
}

TEST_F(Automation, NoOperationOfItCallsTheSink)
{
    Listen();
    FakeStream record(RecordBytes(1));
    FakeStream other(RecordBytes(2));
    FakeStream output;
    effect->SetAutomationActive(1);
    effect->SetKeyframeFraction(0.5);
    effect->LoadProps(&record);
    effect->SaveProps(&output);
    effect->SetKeyframeProps(&record, &other);
    effect->InterpolateStreams(&output, &record, &other, 0.5);
    effect->RefreshFrameProps();
    EXPECT_EQ(sink.calls, 0);
}
