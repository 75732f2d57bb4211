#include "tests/doubles/allocation_count.h"
#include "tests/effect/frame_fixture.h"

#include <cstring>
#include <numeric>

namespace
{

// Says that it is a surface and hands none out: the one way to an output that is missing while the
// input is there.
class HollowSurface : public IUnknown
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
    {
        *object = nullptr;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
};

using Calls = std::vector<std::string>;

// Numbers all bytes or floats of a surface from its top left sample on.
void Number(FakeSurface& surface)
{
    const FakeSurfaceSettings& settings = surface.Settings();
    int next = 0;
    for (LONG y = 0; y < settings.height; ++y)
    {
        for (LONG channel = 0; channel < settings.width * 4; ++channel, ++next)
        {
            if (settings.format == DXPF_NONSTANDARD)
            {
                reinterpret_cast<float*>(surface.Row(y))[channel] = static_cast<float>(next);
            }
            else
            {
                surface.Row(y)[channel] =
                    channel % 4 == 3 ? std::uint8_t{255} : static_cast<std::uint8_t>(next);
            }
        }
    }
}

float FloatAt(FakeSurface& surface, LONG x, LONG y, LONG channel)
{
    return reinterpret_cast<float*>(surface.Row(y))[x * 4 + channel];
}

class FrameProcessing : public FrameTest
{
protected:
    void SetUp(FakeSurfaceSettings inputSettings, FakeSurfaceSettings outputSettings)
    {
        FrameTest::SetUp(std::move(inputSettings), std::move(outputSettings));
        Number(*input);
    }
    void SetUp(DXSAMPLEFORMATENUM inputFormat, DXSAMPLEFORMATENUM outputFormat)
    {
        SetUp(Surface("input", inputFormat), Surface("output", outputFormat));
    }
    HRESULT ExecuteClipped(LONG left, LONG top, LONG width, LONG height)
    {
        const CDXDBnds clip(RECT{left, top, left + width, top + height});
        return effect->Execute(nullptr, &clip, nullptr);
    }
    void ExpectNoOpenLocks()
    {
        EXPECT_EQ(input->openReadLocks + input->openWriteLocks, 0);
        EXPECT_EQ(output->openReadLocks + output->openWriteLocks, 0);
    }
};

} // namespace

// The buffered path

TEST_F(FrameProcessing, EightBitFramesGoThroughTheRendererIntoTheOutput)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    ASSERT_EQ(Execute(), S_OK);
    for (LONG y = 0; y < 4; ++y)
    {
        for (LONG x = 0; x < 8; ++x)
        {
            const DXSAMPLE before = input->Sample(x, y);
            const DXSAMPLE after = output->Sample(x, y);
            ASSERT_EQ(after.Red, 255 - before.Red) << x << ',' << y;
            ASSERT_EQ(after.Alpha, before.Alpha);
        }
    }
    const FrameBufferDesc source = DescFrom(LastRender().source);
    const FrameBufferDesc destination = DescFrom(LastRender().destination);
    for (const FrameBufferDesc* desc : {&source, &destination})
    {
        EXPECT_EQ(desc->format, 3U);
        EXPECT_EQ(desc->width, 8U);
        EXPECT_EQ(desc->height, 4U);
        EXPECT_EQ(desc->rowPitch, 8U);
        EXPECT_EQ(desc->scale, 1.0F);
        EXPECT_EQ(desc->sw, 0U);
        EXPECT_EQ(desc->texture, 0U);
        EXPECT_EQ(desc->minValue, -1000.0F);
        EXPECT_EQ(desc->maxValue, 1000.0F);
    }
    EXPECT_NE(source.pixels, destination.pixels);
    EXPECT_EQ(source.pixels, effect->GetPreviewFrame()->pixels);
}

TEST_F(FrameProcessing, TheRecordOfTheFrameGoesToTheRenderer)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(LastRender().sizeA, 64U);
    EXPECT_EQ(LastRender().recordA, effect->m_frame.data);
    EXPECT_EQ(LastRender().bytesA[31], 7);
}

TEST_F(FrameProcessing, AnEffectWithoutALookRendersWithAnEmptyRecord)
{
    effect->m_current.FreeData();
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(LastRender().recordA, nullptr);
    EXPECT_EQ(LastRender().sizeA, 0U);
}

TEST_F(FrameProcessing, TheBufferedPathLocksInputThenOutputEachOnce)
{
    SetUp(DXPF_ARGB32, DXPF_PMARGB32);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(log.LockCalls(), (Calls{"input.LockSurface", "input.UnpackRect", "input.Unlock",
                                      "output.LockSurface", "output.PackRect", "output.Unlock"}));
    ASSERT_EQ(input->lockNotes.size(), 1U);
    EXPECT_FALSE(input->lockNotes[0].bounds.has_value());
    EXPECT_EQ(input->lockNotes[0].timeOutMs, 10000U);
    EXPECT_EQ(input->lockNotes[0].flags, static_cast<DWORD>(DXLOCKF_READ));
    EXPECT_EQ(input->lockNotes[0].iid, IID_IDXARGBReadPtr);
    ASSERT_EQ(output->lockNotes.size(), 1U);
    EXPECT_EQ(output->lockNotes[0].timeOutMs, 10000U);
    EXPECT_EQ(output->lockNotes[0].flags, static_cast<DWORD>(DXLOCKF_READWRITE));
    EXPECT_EQ(output->lockNotes[0].iid, IID_IDXARGBReadWritePtr);
    ASSERT_TRUE(output->lockNotes[0].bounds.has_value());
    EXPECT_EQ(output->lockNotes[0].bounds->u.D[DXB_X].Max, 8);
    ExpectNoOpenLocks();
}

TEST_F(FrameProcessing, AWholeFrameIsUnpackedAndPackedWithoutPadding)
{
    SetUp(DXPF_PMARGB32, DXPF_ARGB32);
    ASSERT_EQ(Execute(), S_OK);
    ASSERT_EQ(input->unpacked.size(), 1U);
    ASSERT_EQ(output->packed.size(), 1U);
    for (const DXPACKEDRECTDESC* desc : {&input->unpacked[0], &output->packed[0]})
    {
        EXPECT_EQ(desc->bPremult, FALSE);
        EXPECT_EQ(desc->rect.left, 0);
        EXPECT_EQ(desc->rect.top, 0);
        EXPECT_EQ(desc->rect.right, 8);
        EXPECT_EQ(desc->rect.bottom, 4);
        EXPECT_EQ(desc->lRowPadding, 0);
    }
    EXPECT_EQ(output->packed[0].pSamples, DescFrom(LastRender().destination).pixels);
}

TEST_F(FrameProcessing, APartOfTheOutputIsPackedFromItsOffsetWithTheStatedPadding)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    ASSERT_EQ(ExecuteClipped(1, 1, 6, 2), S_OK);
    ASSERT_EQ(output->packed.size(), 1U);
    const DXPACKEDRECTDESC& desc = output->packed[0];
    const FrameBufferDesc rendered = DescFrom(LastRender().destination);
    EXPECT_EQ(rendered.width, 8U) << "the whole frame is rendered";
    EXPECT_EQ(reinterpret_cast<std::byte*>(desc.pSamples) -
                  static_cast<std::byte*>(rendered.pixels),
              (1 * 8 + 1) * 4);
    EXPECT_EQ(desc.rect.right, 6);
    EXPECT_EQ(desc.rect.bottom, 2);
    EXPECT_EQ(desc.lRowPadding, (8 - 6) * 4);
    ASSERT_TRUE(output->lockNotes[0].bounds.has_value());
    EXPECT_EQ(output->lockNotes[0].bounds->u.D[DXB_X].Min, 1);
    EXPECT_EQ(output->lockNotes[0].bounds->u.D[DXB_X].Max, 7);
    EXPECT_EQ(output->lockNotes[0].bounds->u.D[DXB_Y].Min, 1);
    EXPECT_EQ(output->lockNotes[0].bounds->u.D[DXB_Y].Max, 3);
    EXPECT_EQ(output->Sample(1, 1).Red, 255 - input->Sample(1, 1).Red);
    EXPECT_EQ(output->Sample(0, 0).Red, 0) << "outside the part";
}

TEST_F(FrameProcessing, APartThatStartsAtTheTopLeftCountsAsAPartToo)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    ASSERT_EQ(ExecuteClipped(0, 0, 8, 2), S_OK);
    ASSERT_EQ(output->packed.size(), 1U);
    EXPECT_EQ(output->packed[0].rect.bottom, 2);
    EXPECT_EQ(output->packed[0].lRowPadding, 0) << "the widths are equal";
}

TEST_F(FrameProcessing, InTheBufferedPathTheFlagsIgnoreTheOption)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(effect->m_frame.flag, 1U);
    EXPECT_EQ(LastRender().word1, 0x31U);
}

// The direct path

TEST_F(FrameProcessing, FloatFramesAreRenderedFromSurfaceToSurface)
{
    SetUp(DXPF_NONSTANDARD, DXPF_NONSTANDARD);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(DescFrom(LastRender().source).pixels, input->Row(0));
    EXPECT_EQ(DescFrom(LastRender().destination).pixels, output->Row(0));
    EXPECT_EQ(DescFrom(LastRender().source).format, 17U);
    EXPECT_EQ(FloatAt(*output, 7, 3, 0), 1.0F - FloatAt(*input, 7, 3, 0));
    EXPECT_EQ(FloatAt(*output, 7, 3, 3), FloatAt(*input, 7, 3, 3));
}

TEST_F(FrameProcessing, TheDirectPathFetchesThePreviewFirstThenLocksOutputAndInput)
{
    SetUp(DXPF_NONSTANDARD, DXPF_NONSTANDARD);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(log.LockCalls(), (Calls{"input.LockSurface", "input.Unlock", "output.LockSurface",
                                      "input.LockSurface", "input.Unlock", "output.Unlock"}));
    ASSERT_EQ(input->lockNotes.size(), 2U);
    ASSERT_EQ(output->lockNotes.size(), 1U);
    for (const FakeSurface::LockNote& note : input->lockNotes)
    {
        EXPECT_FALSE(note.bounds.has_value()) << "the whole surface";
        EXPECT_EQ(note.timeOutMs, 10000U);
        EXPECT_EQ(note.flags, DWORD{DXLOCKF_READ});
        EXPECT_EQ(note.iid, IID_IDXARGBReadPtr);
    }
    const FakeSurface::LockNote& outputNote = output->lockNotes[0];
    EXPECT_FALSE(outputNote.bounds.has_value()) << "the whole surface";
    EXPECT_EQ(outputNote.timeOutMs, 10000U);
    EXPECT_EQ(outputNote.flags, DWORD{DXLOCKF_READWRITE});
    EXPECT_EQ(outputNote.iid, IID_IDXARGBReadWritePtr);
    const FrameBufferDesc& preview = *effect->GetPreviewFrame();
    EXPECT_EQ(preview.format, 17U);
    EXPECT_TRUE(preview.IsValid());
    EXPECT_EQ(static_cast<float*>(preview.pixels)[8 * 4 + 1], FloatAt(*input, 0, 1, 1));
    ExpectNoOpenLocks();
}

TEST_F(FrameProcessing, ABottomUpFloatInputIsCopiedTopRowFirst)
{
    FakeSurfaceSettings bottomUp = Surface("input", DXPF_NONSTANDARD);
    bottomUp.bottomUp = true;
    SetUp(bottomUp, Surface("output", DXPF_NONSTANDARD));
    ASSERT_EQ(Execute(), S_OK);
    const auto* const preview = static_cast<const float*>(effect->GetPreviewFrame()->pixels);
    for (LONG y = 0; y < 4; ++y)
    {
        EXPECT_EQ(preview[y * 8 * 4], FloatAt(*input, 0, y, 0)) << "row " << y;
    }
}

TEST_F(FrameProcessing, TheDirectFlagsTellOfTheOptionAndOfAFlippedInput)
{
    SetUp(DXPF_NONSTANDARD, DXPF_NONSTANDARD);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(LastRender().word1, 0x231U);

    FakeSurfaceSettings bottomUp = Surface("input", DXPF_NONSTANDARD);
    bottomUp.bottomUp = true;
    SetUp(bottomUp, Surface("output", DXPF_NONSTANDARD));
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(LastRender().word1, 0x239U);
    EXPECT_EQ(DescFrom(LastRender().source).pixels, input->Row(3)) << "the lowest-addressed row";

    effect->m_current.SetFlag(0);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(LastRender().word1, 0x39U);
    effect->m_current.SetFlag(2);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(LastRender().word1, 0x39U) << "only 1 means on";
}

TEST_F(FrameProcessing, AFlippedOutputAloneSetsNoFlag)
{
    FakeSurfaceSettings bottomUp = Surface("output", DXPF_NONSTANDARD);
    bottomUp.bottomUp = true;
    SetUp(Surface("input", DXPF_NONSTANDARD), bottomUp);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(LastRender().word1, 0x231U);
    EXPECT_EQ(DescFrom(LastRender().destination).pixels, output->Row(3));
}

TEST_F(FrameProcessing, AnEightBitInputWithAFloatOutputIsDescribedInItsOwnFormat)
{
    FakeSurfaceSettings padded = Surface("input", DXPF_ARGB32);
    padded.rowPadding = 8;
    SetUp(padded, Surface("output", DXPF_NONSTANDARD));
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(DescFrom(LastRender().source).format, 3U);
    EXPECT_EQ(DescFrom(LastRender().source).rowPitch, 10U);
    EXPECT_EQ(DescFrom(LastRender().destination).format, 17U);
    EXPECT_EQ(effect->GetPreviewFrame()->format, 3U);
}

TEST_F(FrameProcessing, AFloatInputWithAnEightBitOutputIsRenderedFromItsCopy)
{
    SetUp(DXPF_NONSTANDARD, DXPF_ARGB32);
    recording.rendersPixels = false; // formats differ, which this renderer does not convert
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(DescFrom(LastRender().source).format, 17U);
    EXPECT_EQ(DescFrom(LastRender().source).pixels, effect->GetPreviewFrame()->pixels);
    EXPECT_EQ(DescFrom(LastRender().destination).format, 3U);
    EXPECT_EQ(LastRender().word1, 0x31U);
    EXPECT_EQ(output->packed.size(), 1U);
}

TEST_F(FrameProcessing, AnOtherFormatIsTakenForFloat)
{
    SetUp(DXPF_NONSTANDARD, DXPF_RGB32);
    recording.rendersPixels = false; // the surface has not the memory that it is taken for
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(DescFrom(LastRender().destination).format, 17U);
    EXPECT_EQ(DescFrom(LastRender().destination).rowPitch, 2U) << "8 pixels of 4 bytes are 2 of 16";
}

TEST_F(FrameProcessing, WithoutMemoryNothingIsRenderedAndTheOutputStaysAsItWas)
{
    FakeSurfaceSettings hidden = Surface("output", DXPF_NONSTANDARD);
    hidden.hasMemory = false;
    SetUp(Surface("input", DXPF_NONSTANDARD), hidden);
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(Renders(), 0U);
    ExpectNoOpenLocks();
}

// Buffers

TEST_F(FrameProcessing, TheSameSizeTwiceKeepsBothBuffers)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    ASSERT_EQ(Execute(), S_OK);
    const RecordedCall first = LastRender();
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(DescFrom(first.source).pixels, DescFrom(LastRender().source).pixels);
    EXPECT_EQ(DescFrom(first.destination).pixels, DescFrom(LastRender().destination).pixels);
}

TEST_F(FrameProcessing, TheDirectPathGivesTheSharedOutputBufferBack)
{
    // Without a log, frames allocate what the surfaces' lock objects need, always as much.
    const auto allocationsOf = [this](DXSAMPLEFORMATENUM format, int frames) {
        FakeSurfaceSettings source = Surface("input", format);
        FakeSurfaceSettings target = Surface("output", format);
        source.log = target.log = nullptr;
        SetUp(source, target);
        const long before = AllocationCount();
        for (int frame = 0; frame < frames; ++frame)
        {
            EXPECT_EQ(Execute(), S_OK);
        }
        return AllocationCount() - before;
    };
    allocationsOf(DXPF_ARGB32, 1);
    const long steady = allocationsOf(DXPF_ARGB32, 1);
    EXPECT_EQ(allocationsOf(DXPF_ARGB32, 2), 2 * steady) << "the same size keeps both buffers";
    allocationsOf(DXPF_NONSTANDARD, 1);
    EXPECT_EQ(allocationsOf(DXPF_ARGB32, 1), steady + 2) << "the input's buffer and the output's";
}

TEST_F(FrameProcessing, AChangeOfSizeIsFollowed)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    ASSERT_EQ(Execute(), S_OK);
    FakeSurfaceSettings largerInput = Surface("input", DXPF_ARGB32);
    FakeSurfaceSettings largerOutput = Surface("output", DXPF_ARGB32);
    largerInput.width = largerOutput.width = 20;
    SetUp(largerInput, largerOutput);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(DescFrom(LastRender().source).width, 20U);
    EXPECT_EQ(DescFrom(LastRender().destination).width, 20U);
    EXPECT_EQ(output->Sample(19, 3).Blue, 255 - input->Sample(19, 3).Blue);
}

TEST_F(FrameProcessing, TheOutputBufferIsSharedByAllEffects)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    ASSERT_EQ(Execute(), S_OK);
    const RecordedCall first = LastRender();
    CComPtr<IDXTransform> second;
    ASSERT_EQ(CPlugin::_CreatorClass::CreateInstance(nullptr, IID_IDXTransform,
                                                     reinterpret_cast<void**>(&second)),
              S_OK);
    IUnknown* const inputs[] = {static_cast<IDXSurface*>(input.p)};
    IUnknown* const outputs[] = {static_cast<IDXSurface*>(output.p)};
    ASSERT_EQ(second->Setup(inputs, 1, outputs, 1, 0), S_OK);
    ASSERT_EQ(second->Execute(nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(DescFrom(first.destination).pixels, DescFrom(LastRender().destination).pixels);
    EXPECT_NE(DescFrom(first.source).pixels, DescFrom(LastRender().source).pixels);
}

// Frame information

TEST_F(FrameProcessing, WithoutFrameInformationTheFrameIsZeroAndPixelsAreSquare)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(LastRender().frameNumber, 0);
    EXPECT_EQ(DescFrom(LastRender().source).aspect, 1.0F);
    EXPECT_EQ(DescFrom(LastRender().destination).aspect, 1.0F);
}

TEST_F(FrameProcessing, FrameNumberAndAspectComeFromTheInput)
{
    FakeSurfaceSettings known = Surface("input", DXPF_ARGB32);
    known.frame = FrameInformation{1.4222, 25.0, 20'000'000};
    SetUp(known, Surface("output", DXPF_ARGB32));
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(LastRender().frameNumber, 50);
    EXPECT_EQ(DescFrom(LastRender().source).aspect, 1.4222F);
    EXPECT_EQ(DescFrom(LastRender().destination).aspect, 1.4222F);
}

TEST_F(FrameProcessing, InTheDirectPathEachImageHasItsOwnSurfacesAspect)
{
    FakeSurfaceSettings known = Surface("input", DXPF_NONSTANDARD);
    known.frame = FrameInformation{2.0, 25.0, 400'000};
    SetUp(known, Surface("output", DXPF_NONSTANDARD));
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(LastRender().frameNumber, 1);
    EXPECT_EQ(DescFrom(LastRender().source).aspect, 2.0F);
    EXPECT_EQ(DescFrom(LastRender().destination).aspect, 1.0F);
}

TEST_F(FrameProcessing, FrameInformationThatFailsCountsAsNone)
{
    FakeSurfaceSettings known = Surface("input", DXPF_ARGB32);
    known.frame = FrameInformation{2.0, 25.0, 20'000'000};
    SetUp(known, Surface("output", DXPF_ARGB32));
    input->FailCall("GetFrameInformation", E_FAIL);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(LastRender().frameNumber, 0);
    EXPECT_EQ(DescFrom(LastRender().source).aspect, 1.0F);
}

// Failures

TEST_F(FrameProcessing, AFalseContinueFlagSucceedsAndTouchesNeitherSurface)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    BOOL goOn = FALSE;
    EXPECT_EQ(effect->WorkProc({}, &goOn), S_OK);
    EXPECT_TRUE(log.Calls().empty());
    EXPECT_EQ(Renders(), 0U);
}

TEST_F(FrameProcessing, AMissingOutputIsReportedBeforeTheInputIsLookedAt)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    IUnknown* const inputs[] = {static_cast<IDXSurface*>(input.p)};
    HollowSurface hollow;
    IUnknown* const outputs[] = {&hollow};
    ASSERT_EQ(effect->Setup(inputs, 1, outputs, 1, 0), S_OK);
    log.Clear();
    BOOL goOn = TRUE;
    EXPECT_EQ(effect->WorkProc({}, &goOn), E_OUTOFMEMORY);
    EXPECT_EQ(log.Calls(), Calls{}) << "the input is not touched";
    EXPECT_EQ(Renders(), 0U);
}

TEST_F(FrameProcessing, AMissingInputIsReportedBeforeTheOutputIsLookedAt)
{
    effect->m_ulNumInRequired = 0;
    output = FakeSurface::Make(Surface("output", DXPF_ARGB32));
    IUnknown* const outputs[] = {static_cast<IDXSurface*>(output.p)};
    ASSERT_EQ(effect->Setup(nullptr, 0, outputs, 1, 0), S_OK);
    log.Clear();
    BOOL goOn = TRUE;
    EXPECT_EQ(effect->WorkProc({}, &goOn), E_OUTOFMEMORY);
    EXPECT_EQ(log.Calls(), Calls{}) << "the output is not touched";
    EXPECT_EQ(Renders(), 0U);
}

TEST_F(FrameProcessing, AnInputWithoutPixelsSucceedsWithoutARender)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    FakeSurfaceSettings empty = Surface("input", DXPF_ARGB32);
    empty.width = 0;
    SetUp(empty, Surface("output", DXPF_ARGB32));
    BOOL goOn = TRUE;
    EXPECT_EQ(effect->WorkProc({}, &goOn), S_OK);
    EXPECT_EQ(Renders(), 0U);
    EXPECT_TRUE(output->packed.empty());
    ExpectNoOpenLocks();
}

TEST_F(FrameProcessing, TheResultIsThatOfTheLastLock)
{
    BOOL goOn = TRUE;
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    CDXTWorkInfoNTo1 whole;
    whole.OutputBnds = CDXDBnds(RECT{0, 0, 8, 4});
    output->FailCall("LockSurface", S_FALSE);
    EXPECT_EQ(effect->WorkProc(whole, &goOn), S_FALSE);
    input->FailCall("LockSurface", S_FALSE);
    EXPECT_EQ(effect->WorkProc(whole, &goOn), S_OK) << "the output is locked after the input";

    SetUp(DXPF_NONSTANDARD, DXPF_NONSTANDARD);
    input->FailCall("LockSurface", S_FALSE, 2); // the first is for the preview
    EXPECT_EQ(effect->WorkProc({}, &goOn), S_FALSE);
    output->FailCall("LockSurface", S_FALSE);
    EXPECT_EQ(effect->WorkProc({}, &goOn), S_OK) << "the input is locked after the output";
}

TEST_F(FrameProcessing, ASkippedRenderReturnsTheResultOfTheLastLock)
{
    FakeSurfaceSettings hidden = Surface("output", DXPF_NONSTANDARD);
    hidden.hasMemory = false;
    SetUp(Surface("input", DXPF_NONSTANDARD), hidden);
    BOOL goOn = TRUE;
    input->FailCall("LockSurface", S_FALSE, 2);
    EXPECT_EQ(effect->WorkProc({}, &goOn), S_FALSE);
    EXPECT_EQ(Renders(), 0U);
}

TEST_F(FrameProcessing, ABufferWithoutMemoryIsReportedAndNothingIsRendered)
{
    constexpr std::size_t kFrameBytes = 64 * 32 * 4; // nothing else here takes as much
    const auto setUp = [this](DXSAMPLEFORMATENUM inputFormat, DXSAMPLEFORMATENUM outputFormat) {
        FakeSurfaceSettings source = Surface("input", inputFormat);
        FakeSurfaceSettings target = Surface("output", outputFormat);
        source.width = target.width = 64;
        source.height = target.height = 32;
        SetUp(source, target);
    };
    const Calls inputAlone{"input.LockSurface", "input.Unlock"};
    setUp(DXPF_ARGB32, DXPF_ARGB32);
    {
        const ShortMemory shortage(kFrameBytes);
        EXPECT_EQ(Execute(), E_OUTOFMEMORY) << "for the input";
    }
    EXPECT_EQ(log.LockCalls(), inputAlone);

    setUp(DXPF_NONSTANDARD, DXPF_NONSTANDARD);
    ASSERT_EQ(Execute(), S_OK) << "the input's buffer is there, the output's is not";
    setUp(DXPF_NONSTANDARD, DXPF_ARGB32);
    {
        const ShortMemory shortage(kFrameBytes);
        EXPECT_EQ(Execute(), E_OUTOFMEMORY) << "for the output";
    }
    EXPECT_EQ(log.LockCalls(), inputAlone);
    EXPECT_EQ(Renders(), 1U);
    EXPECT_EQ(Execute(), S_OK) << "and the next frame is whole again";
    ExpectNoOpenLocks();
}

TEST_F(FrameProcessing, FailedLocksAreReportedWithTheirOwnResult)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    input->FailCall("LockSurface", E_ABORT);
    EXPECT_EQ(Execute(), E_ABORT);
    EXPECT_EQ(Renders(), 0U);
    output->FailCall("LockSurface", E_ACCESSDENIED);
    EXPECT_EQ(Execute(), E_ACCESSDENIED);
    EXPECT_EQ(Renders(), 1U) << "the output is locked after rendering";
    EXPECT_EQ(Execute(), S_OK) << "and the next frame is whole again";
    ExpectNoOpenLocks();
}

TEST_F(FrameProcessing, FailedLocksOfTheDirectPathReleaseWhatWasTaken)
{
    SetUp(DXPF_NONSTANDARD, DXPF_NONSTANDARD);
    output->FailCall("LockSurface", E_ACCESSDENIED);
    EXPECT_EQ(Execute(), E_ACCESSDENIED);
    input->FailCall("LockSurface", E_ABORT, 2);
    EXPECT_EQ(Execute(), E_ABORT);
    EXPECT_EQ(Renders(), 0U);
    ExpectNoOpenLocks();
}

TEST_F(FrameProcessing, FailedBoundsAreReportedAndTheLockReleased)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    BOOL goOn = TRUE;
    input->FailCall("GetBounds", DXTERR_UNINITIALIZED);
    EXPECT_EQ(effect->WorkProc({}, &goOn), DXTERR_UNINITIALIZED);
    EXPECT_EQ(Renders(), 0U);
    ExpectNoOpenLocks();
}

TEST_F(FrameProcessing, FailedBoundsOfTheDirectPathReleaseWhatWasTaken)
{
    SetUp(DXPF_NONSTANDARD, DXPF_NONSTANDARD);
    BOOL goOn = TRUE;
    output->FailCall("GetBounds", DXTERR_UNINITIALIZED);
    EXPECT_EQ(effect->WorkProc({}, &goOn), DXTERR_UNINITIALIZED);
    input->FailCall("GetBounds", E_ABORT, 2); // the first is for the preview
    EXPECT_EQ(effect->WorkProc({}, &goOn), E_ABORT);
    EXPECT_EQ(Renders(), 0U);
    ExpectNoOpenLocks();
}

TEST_F(FrameProcessing, AnUnknownPixelFormatCountsAsArgb32)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    input->FailCall("GetPixelFormat", E_FAIL);
    output->FailCall("GetPixelFormat", E_FAIL);
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(DescFrom(LastRender().source).format, 3U);
}

TEST_F(FrameProcessing, ARenderThatFailsGoesUnnoticed)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    recording.renderResult = -5;
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(output->packed.size(), 1U);
}

TEST_F(FrameProcessing, AutomationDecidesTheRecordOfAFrame)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    FakeStream earlier(RecordBytes(10, 1));
    FakeStream later(RecordBytes(20, 1));
    ASSERT_EQ(effect->SetKeyframeProps(&earlier, &later), S_OK);
    effect->SetAutomationActive(1);
    effect->SetKeyframeFraction(0.5);
    effect->put_Progress(0.9F);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(LastRender().bytesA[31], 15) << "by the fraction, not by the progress";
}

TEST_F(FrameProcessing, AutomationWithoutKeyframesRendersWithTheEmptyRecord)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    effect->SetAutomationActive(1);
    ASSERT_EQ(Execute(), S_OK);
    EXPECT_EQ(LastRender().sizeA, 0U);
}
