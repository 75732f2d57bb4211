// What a frame traces: hosts' supporters look for these texts, odd ones included.
#include "tests/doubles/allocation_count.h"
#include "tests/doubles/trace_notes.h"
#include "tests/effect/frame_fixture.h"

#include <algorithm>

namespace
{

using Notes = std::vector<TraceNote>;

class FrameTrace : public FrameTest
{
protected:
    // Surfaces whose pixels take more memory than anything else here.
    void SetUpLarge(DXSAMPLEFORMATENUM inputFormat, DXSAMPLEFORMATENUM outputFormat)
    {
        FakeSurfaceSettings source = Surface("input", inputFormat);
        FakeSurfaceSettings target = Surface("output", outputFormat);
        source.width = target.width = 64;
        source.height = target.height = 32;
        SetUp(source, target);
    }
    static constexpr std::size_t kLargeBytes = 64 * 32 * 4;

    // Frees the output buffer, which all effects of the process share.
    void DropOutputBuffer()
    {
        SetUp(DXPF_NONSTANDARD, DXPF_NONSTANDARD);
        ASSERT_EQ(Work(), S_OK);
    }

    // The last text that the work on a frame traces, expecting it to end with `result`.
    std::string LastTextOf(HRESULT result, const RECT& bounds = {0, 0, 8, 4})
    {
        TraceNotes trace;
        EXPECT_EQ(Work(bounds), result);
        const std::vector<std::string> texts = trace.TakeTexts();
        return texts.empty() ? std::string() : texts.back();
    }

    TraceNote InputBufferNote() const
    {
        const FrameBufferDesc& frame = *effect->GetPreviewFrame();
        return Traced("f=%d ptr=%x w=%d h=%d rp=%d sc=%f sw=%d as=%f tx=%d\n", frame.format,
                      frame.pixels, frame.width, frame.height, frame.rowPitch, 1.0, 0,
                      static_cast<double>(frame.aspect), 0);
    }
};

} // namespace

TEST_F(FrameTrace, AFalseContinueFlagIsTraced)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    BOOL goOn = FALSE;
    TraceNotes trace;
    ASSERT_EQ(effect->WorkProc({}, &goOn), S_OK);
    EXPECT_EQ(trace.Take(), Notes{Traced("WorkProc pbContinue was FALSE\n")});
}

TEST_F(FrameTrace, ABufferedFrameTracesItsRecordItsBuffersAndItsInput)
{
    DropOutputBuffer();
    FakeSurfaceSettings wide = Surface("input", DXPF_ARGB32);
    wide.frame = FrameInformation{1.5, 25.0, 0};
    SetUp(wide, Surface("output", DXPF_ARGB32));
    TraceNotes trace;
    ASSERT_EQ(Work(), S_OK);
    EXPECT_EQ(
        trace.Take(),
        (Notes{Traced("CopyProps  size = %d \n", 64), Traced("deleting temp frame buffer... \n"),
               Traced("allocating temp frame buffer  w=%d h=%d f=%d\n", 8, 4, 3),
               Traced("WorkProc w=%d h=%d as=%f\n", 8, 4, 1.5), InputBufferNote(),
               Traced("allocating temp frame buffer  w=%d h=%d f=%d\n", 8, 4, 3)}));
}

TEST_F(FrameTrace, TheNextFrameOfTheSameSizeTracesNoAllocation)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    ASSERT_EQ(Work(), S_OK);
    TraceNotes trace;
    ASSERT_EQ(Work(), S_OK);
    EXPECT_EQ(trace.Take(),
              (Notes{Traced("CopyProps  size = %d \n", 64),
                     Traced("WorkProc w=%d h=%d as=%f\n", 8, 4, 1.0), InputBufferNote()}));
}

TEST_F(FrameTrace, ADirectFrameTracesTheReleaseOfTheSharedBufferAfterItsInput)
{
    SetUp(DXPF_NONSTANDARD, DXPF_ARGB32);
    recording.rendersPixels = false; // the formats differ
    ASSERT_EQ(Work(), S_OK);
    SetUp(DXPF_NONSTANDARD, DXPF_NONSTANDARD);
    TraceNotes trace;
    output->FailCall("LockSurface", E_ACCESSDENIED);
    ASSERT_EQ(Work(), E_ACCESSDENIED);
    const Notes notes = trace.Take();
    ASSERT_EQ(notes.size(), 5U);
    EXPECT_EQ(notes[1], Traced("WorkProc w=%d h=%d as=%f\n", 8, 4, 1.0));
    EXPECT_EQ(notes[2], InputBufferNote());
    EXPECT_EQ(notes[3], Traced("deleting temp frame buffer... \n")) << "before the output's lock";
    EXPECT_EQ(notes[4].text, "WorkProc output LockSurface failed!\n");
}

TEST_F(FrameTrace, AnInputBufferThatIsFreedWithItsEffectIsTraced)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    ASSERT_EQ(Work(), S_OK);
    TraceNotes trace;
    effect.Release();
    EXPECT_EQ(trace.Take(), Notes{Traced("deleting temp frame buffer... \n")});
}

TEST_F(FrameTrace, APartOfTheOutputIsTracedWithItsPlaceAndSize)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    ASSERT_EQ(Work(), S_OK);
    TraceNotes trace;
    ASSERT_EQ(Work({1, 2, 7, 4}), S_OK);
    const Notes notes = trace.Take();
    // The second directive is misspelt, so that what follows it is one argument late.
    EXPECT_EQ(std::ranges::count(
                  notes, Traced("outLeft=%d outTop=&d outWidth=%d outHeight=%d\n", 1, 2, 6, 2)),
              1);
}

TEST_F(FrameTrace, MissingSurfacesAreTraced)
{
    EXPECT_EQ(LastTextOf(E_OUTOFMEMORY), "WorkProc null output surface!\n");
    effect->m_ulNumInRequired = 0;
    output = FakeSurface::Make(Surface("output", DXPF_ARGB32));
    IUnknown* const outputs[] = {static_cast<IDXSurface*>(output.p)};
    ASSERT_EQ(effect->Setup(nullptr, 0, outputs, 1, 0), S_OK);
    EXPECT_EQ(LastTextOf(E_OUTOFMEMORY), "WorkProc null input surface!\n");
}

TEST_F(FrameTrace, FailedLocksAndBoundsOfABufferedFrameAreTraced)
{
    for (const DXSAMPLEFORMATENUM format : {DXPF_ARGB32, DXPF_NONSTANDARD})
    {
        SetUp(format, DXPF_ARGB32);
        recording.rendersPixels = false; // the formats may differ
        input->FailCall("LockSurface", E_ABORT);
        EXPECT_EQ(LastTextOf(E_ABORT), "WorkProc input LockSurface failed!\n");
        input->FailCall("GetBounds", DXTERR_UNINITIALIZED);
        EXPECT_EQ(LastTextOf(DXTERR_UNINITIALIZED), "WorkProc inputSurfaceBounds failed!\n");
        output->FailCall("LockSurface", E_ACCESSDENIED);
        EXPECT_EQ(LastTextOf(E_ACCESSDENIED), "WorkProc output LockSurface failed!\n");
    }
}

TEST_F(FrameTrace, FailedLocksOfADirectFrameAreTraced)
{
    SetUp(DXPF_NONSTANDARD, DXPF_NONSTANDARD);
    output->FailCall("LockSurface", E_ACCESSDENIED);
    EXPECT_EQ(LastTextOf(E_ACCESSDENIED), "WorkProc output LockSurface failed!\n");
    input->FailCall("LockSurface", E_ABORT, 2); // the first is for the preview
    EXPECT_EQ(LastTextOf(E_ABORT), "WorkProc input LockSurface failed!\n");
}

TEST_F(FrameTrace, BuffersWithoutMemoryAreTraced)
{
    SetUpLarge(DXPF_ARGB32, DXPF_ARGB32);
    {
        const ShortMemory shortage(kLargeBytes);
        EXPECT_EQ(LastTextOf(E_OUTOFMEMORY), "WorkProc can't allocate input buffer!\n");
    }
    SetUpLarge(DXPF_NONSTANDARD, DXPF_NONSTANDARD);
    {
        const ShortMemory shortage(kLargeBytes);
        EXPECT_EQ(LastTextOf(E_OUTOFMEMORY), "WorkProc can't allocate input buffer!\n");
    }
    ASSERT_EQ(Work(), S_OK) << "from here on the input has its buffer";
    SetUpLarge(DXPF_NONSTANDARD, DXPF_ARGB32);
    const ShortMemory shortage(kLargeBytes);
    EXPECT_EQ(LastTextOf(E_OUTOFMEMORY), "WorkProc can't allocate output buffer!\n");
}

TEST_F(FrameTrace, ASkippedRenderIsTraced)
{
    FakeSurfaceSettings hidden = Surface("output", DXPF_NONSTANDARD);
    hidden.hasMemory = false;
    SetUp(Surface("input", DXPF_NONSTANDARD), hidden);
    EXPECT_EQ(LastTextOf(S_OK), "WorkProc invalid buffer desc\n");

    FakeSurfaceSettings empty = Surface("input", DXPF_ARGB32);
    empty.width = 0;
    SetUp(empty, Surface("output", DXPF_ARGB32));
    EXPECT_EQ(LastTextOf(S_OK), "WorkProc invalid buffer desc\n");
    EXPECT_EQ(Renders(), 0U);
}

TEST_F(FrameTrace, EveryTraceOfAFrameIsOfLevelZero)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    TraceNotes trace;
    ASSERT_EQ(Work(), S_OK);
    output->FailCall("LockSurface", E_ACCESSDENIED);
    ASSERT_EQ(Work(), E_ACCESSDENIED);
    const Notes notes = trace.Take();
    EXPECT_FALSE(notes.empty());
    EXPECT_TRUE(std::ranges::all_of(notes, [](const TraceNote& note) { return note.level == 0; }));
}
