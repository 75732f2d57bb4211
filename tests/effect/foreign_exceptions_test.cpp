// What the renderer, surfaces, streams and the sink throw ends where the operation ends: with the
// result that it had until then, no lock left, and the next call as good as ever.
#include "tests/doubles/deadline.h"
#include "tests/doubles/foreign_exception.h"
#include "tests/doubles/test_thread.h"
#include "tests/effect/frame_fixture.h"

#include <span>
#include <string>

namespace
{

class ForeignExceptions : public FrameTest
{
protected:
    void RendererThrows(Call from, Throws what)
    {
        recording.throwsFrom = from;
        recording.throws = what;
    }
    void RendererIsFine() { recording.throws = Throws::Nothing; }

    // No lock of the surfaces, of the records or of the object is held, and a frame comes out.
    void ExpectTheNextFrameIsGood()
    {
        EXPECT_EQ(input->openReadLocks + input->openWriteLocks, 0);
        EXPECT_EQ(output->openReadLocks + output->openWriteLocks, 0);
        ExpectLocksAreFree();
        input->Fill(DXSAMPLE(0xFF102030));
        output->Fill(DXSAMPLE(0));
        EXPECT_EQ(Execute(), S_OK);
        EXPECT_EQ(DWORD{output->Sample(7, 3)}, 0xFFEFDFCFU);
    }
    void ExpectLocksAreFree()
    {
        TestThread other([this] {
            SessionData record;
            EXPECT_EQ(effect->GetProps(&record), S_OK);
            EXPECT_EQ(effect->put_Progress(0.5F), S_OK);
            EXPECT_EQ(effect->SetChangeSink(nullptr), S_OK);
        });
        if (!other.Join(kDeadlineMs))
        {
            ADD_FAILURE() << "a lock is still held";
            ::ExitProcess(1); // the thread waits for ever
        }
    }
};

} // namespace

TEST_F(ForeignExceptions, OfARenderEndTheFrameWithTheResultOfTheLastLock)
{
    for (const DXSAMPLEFORMATENUM format : {DXPF_ARGB32, DXPF_NONSTANDARD})
    {
        SetUp(format, format);
        for (const Throws what : kAllThrows)
        {
            SCOPED_TRACE(NameOf(what));
            output->Fill(DXSAMPLE(0));
            RendererThrows(Call::RenderFrame, what);
            EXPECT_EQ(Execute(), S_OK);
            EXPECT_TRUE(output->packed.empty());
            EXPECT_EQ(output->Sample(7, 3).Alpha, 0) << "nothing was written";
            RendererIsFine();
            ExpectTheNextFrameIsGood();
            output->packed.clear();
        }
    }
}

TEST_F(ForeignExceptions, OfABlendLeaveTheFrameAWholeRecordAndTheLockFree)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    FakeStream earlier(RecordBytes(10, 0, 96));
    FakeStream later(RecordBytes(20, 1, 96));
    ASSERT_EQ(effect->SetKeyframeProps(&earlier, &later), S_OK);
    effect->SetAutomationActive(1);
    effect->SetKeyframeFraction(0.5);
    for (const Throws what : kAllThrows)
    {
        SCOPED_TRACE(NameOf(what));
        RendererThrows(Call::InterpolateSessionData, what);
        effect->m_frame.FreeData();
        EXPECT_EQ(Execute(), S_OK);
        EXPECT_EQ(BytesOf(effect->m_frame), Bytes(96)) << "not what the heap held";
        EXPECT_EQ(effect->m_keyTo.flag, 1U) << "the option is moved after a blend only";
        ExpectLocksAreFree();
    }
    RendererIsFine();
    ExpectTheNextFrameIsGood();
    EXPECT_EQ(effect->m_frame.data[40], 15);
}

TEST_F(ForeignExceptions, OfSurfacesAndLocksLeaveNoLockAndTheNextFrameGood)
{
    struct Row
    {
        const char* method;
        bool fromOutput;
        int nth;
        HRESULT result; // of Execute: what the base asks for itself is its E_UNEXPECTED
    };
    const Row buffered[]{
        {"GetGenerationId", false, 1, S_OK},
        {"GetGenerationId", true, 2, S_OK},
        {"GetBounds", false, 1, E_UNEXPECTED},
        {"GetBounds", true, 1, E_UNEXPECTED},
        {"GetBounds", false, 2, S_OK},
        {"GetPixelFormat", false, 1, S_OK},
        {"GetPixelFormat", true, 1, S_OK},
        {"LockSurface", false, 1, S_OK},
        {"LockSurface", true, 1, S_OK},
        {"UnpackRect", false, 1, S_OK},
        {"PackRect", true, 1, S_OK},
        {"ReleaseLock", false, 1, S_OK},
        {"ReleaseLock", true, 1, S_OK},
        {"QueryInterface", false, 1, S_OK},
        {"GetFrameInformation", false, 1, S_OK},
        {"Release", false, 1, S_OK},
        {"Release", true, 1, S_OK},
    };
    const Row direct[]{
        {"GetNativeType", false, 1, S_OK}, {"GetNativeType", false, 2, S_OK},
        {"GetNativeType", true, 1, S_OK},  {"LockSurface", false, 2, S_OK},
        {"LockSurface", true, 1, S_OK},    {"GetBounds", false, 3, S_OK},
        {"GetBounds", true, 2, S_OK},      {"GetPixelFormat", false, 2, S_OK},
        {"GetPixelFormat", true, 2, S_OK}, {"ReleaseLock", false, 2, S_OK},
        {"ReleaseLock", true, 1, S_OK},    {"GetFrameInformation", false, 2, S_OK},
    };
    const auto tryAll = [this](DXSAMPLEFORMATENUM format, std::span<const Row> rows) {
        FakeSurfaceSettings known = Surface("input", format);
        known.frame = FrameInformation{};
        SetUp(known, Surface("output", format));
        for (const Throws what : kAllThrows)
        {
            for (const Row& row : rows)
            {
                SCOPED_TRACE(std::string(NameOf(what)) + " from " + row.method +
                             (row.fromOutput ? " of the output " : " of the input ") +
                             std::to_string(row.nth));
                (row.fromOutput ? output : input)->ThrowFrom(row.method, what, row.nth);
                EXPECT_EQ(Execute(), row.result);
                EXPECT_EQ((row.fromOutput ? output : input)->FailuresLeft(), 0U)
                    << "the call did not take place";
                ExpectTheNextFrameIsGood();
            }
        }
    };
    tryAll(DXPF_ARGB32, buffered);
    tryAll(DXPF_NONSTANDARD, direct);
}

TEST_F(ForeignExceptions, OfASurfaceThatIsSetUpKeepThePreviousOnes)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    for (const Throws what : kAllThrows)
    {
        SCOPED_TRACE(NameOf(what));
        const auto fresh = FakeSurface::Make(Surface("fresh", DXPF_ARGB32));
        IUnknown* const inputs[] = {static_cast<IDXSurface*>(fresh.p)};
        IUnknown* const outputs[] = {static_cast<IDXSurface*>(output.p)};
        fresh->ThrowFrom("QueryInterface", what);
        EXPECT_EQ(effect->Setup(inputs, 1, outputs, 1, 0), E_INVALIDARG);
        fresh->ThrowFrom("GetGenerationId", what);
        EXPECT_EQ(effect->Setup(inputs, 1, outputs, 1, 0), S_OK);
        fresh->ThrowFrom("Release", what);
        EXPECT_EQ(effect->Setup(nullptr, 0, nullptr, 0, 0), S_OK);
        EXPECT_EQ(fresh->References(), 1);
        IUnknown* const before[] = {static_cast<IDXSurface*>(input.p)};
        ASSERT_EQ(effect->Setup(before, 1, outputs, 1, 0), S_OK);
        ExpectTheNextFrameIsGood();
    }
}

TEST_F(ForeignExceptions, OfStreamsGiveTheResultUntilThenAndFreeTheLock)
{
    const Bytes held = RecordBytes(7, 1);
    for (const Throws what : kAllThrows)
    {
        SCOPED_TRACE(NameOf(what));
        FakeStream good(RecordBytes(3, 0, 80));
        FakeStream stat(RecordBytes(3, 0, 80));
        stat.onStat = [what] { Throw(what); };
        FakeStream read(RecordBytes(3, 0, 80));
        read.onRead = [what] { Throw(what); };
        FakeStream write;
        write.onWrite = [what] { Throw(what); };

        Fill(effect->m_current, held);
        EXPECT_EQ(effect->Persistence().Load(&stat), S_OK);
        EXPECT_EQ(BytesOf(effect->m_current), held) << "nothing was read";
        EXPECT_EQ(effect->LoadProps(&stat), S_OK);
        EXPECT_EQ(effect->SetKeyframeProps(&stat, &stat), S_OK);
        EXPECT_EQ(effect->InterpolateStreams(&write, &good, &stat, 0.5), S_OK);
        EXPECT_EQ(write.writes, 0) << "there is no later record to write a blend with";
        ExpectLocksAreFree();

        EXPECT_EQ(effect->Persistence().Load(&read), S_OK);
        EXPECT_EQ(BytesOf(effect->m_current), Bytes(80))
            << "the new block, without the heap's bytes";
        EXPECT_EQ(effect->LoadProps(&read), S_OK);
        EXPECT_EQ(effect->SetKeyframeProps(&good, &read), S_OK);
        ExpectLocksAreFree();

        EXPECT_EQ(effect->Persistence().Save(&write, TRUE), S_OK);
        EXPECT_EQ(effect->SaveProps(&write), S_OK);
        good.position = 0;
        FakeStream second(RecordBytes(9, 0, 80));
        EXPECT_EQ(effect->InterpolateStreams(&write, &good, &second, 0.5), S_OK);
        EXPECT_EQ(write.writes, 3);
        ExpectLocksAreFree();
        FakeStream saved;
        EXPECT_EQ(effect->Persistence().Save(&saved, TRUE), S_OK);
        EXPECT_EQ(saved.bytes.size(), 80U);
    }
}

TEST_F(ForeignExceptions, OfTheSinkAreNobodysBusiness)
{
    for (const Throws what : kAllThrows)
    {
        SCOPED_TRACE(NameOf(what));
        Listen();
        sink.onCall = [what] { Throw(what); };
        const int before = sink.calls;
        SessionData record;
        FakeStream stream(RecordBytes(3));
        EXPECT_EQ(effect->ApplyPreset(0), S_OK);
        EXPECT_EQ(effect->SetProps(&record), S_OK);
        EXPECT_EQ(effect->Persistence().Load(&stream), S_OK);
        EXPECT_EQ(effect->Persistence().InitNew(), S_OK);
        EXPECT_EQ(sink.calls - before, 4);
        ExpectLocksAreFree();
        EXPECT_EQ(sink.references, 0U) << "its references are balanced";
    }
}

TEST_F(ForeignExceptions, OfASinksReferenceCountMeanThatItIsNotHeld)
{
    for (const Throws what : kAllThrows)
    {
        SCOPED_TRACE(NameOf(what));
        sink.onAddRef = [what] { Throw(what); };
        EXPECT_EQ(effect->SetChangeSink(&sink), S_OK);
        sink.onAddRef = nullptr;
        EXPECT_EQ(effect->ApplyPreset(0), S_OK);
        EXPECT_EQ(sink.calls, 0);
        EXPECT_EQ(effect->SetChangeSink(&sink), S_OK);
        sink.onRelease = [what] { Throw(what); };
        EXPECT_EQ(effect->SetChangeSink(nullptr), S_OK);
        sink.onRelease = nullptr;
        ExpectLocksAreFree();
    }
}
