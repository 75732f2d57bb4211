// The order of the steps of a frame, and what each step asks of the surfaces.
#include "tests/doubles/held_lock.h"
#include "tests/effect/frame_fixture.h"

#include <algorithm>

namespace
{

using Calls = std::vector<std::string>;

class FrameSteps : public FrameTest
{
protected:
    // What was asked before the call named `last`, in alphabetical order.
    Calls CallsBefore(const std::string& last) const
    {
        Calls calls = log.Calls();
        calls.erase(std::ranges::find(calls, last), calls.end());
        std::ranges::sort(calls);
        return calls;
    }
};

// A source of 25 frames a second, at its 50th.
FakeSurfaceSettings Known(FakeSurfaceSettings settings)
{
    settings.frame = FrameInformation{1.5, 25.0, 20'000'000};
    return settings;
}

} // namespace

TEST_F(FrameSteps, TheRecordIsTakenBeforeTheSurfacesAreLookedFor)
{
    EXPECT_EQ(Work(), E_OUTOFMEMORY) << "there is no surface at all";
    EXPECT_EQ(BytesOf(effect->m_frame), RecordBytes(7));

    Fill(effect->m_keyFrom, RecordBytes(10));
    Fill(effect->m_keyTo, RecordBytes(20));
    effect->SetAutomationActive(1);
    effect->SetKeyframeFraction(0.5);
    EXPECT_EQ(Work(), E_OUTOFMEMORY);
    EXPECT_EQ(BytesOf(effect->m_frame), RecordBytes(15)) << "the blend too";
}

TEST_F(FrameSteps, WithAFalseContinueFlagTheRecordIsNotTaken)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    BOOL goOn = FALSE;
    EXPECT_EQ(effect->WorkProc({}, &goOn), S_OK);
    EXPECT_EQ(effect->m_frame.data, nullptr);
}

TEST_F(FrameSteps, TheRecordLockIsGivenBackBeforeASurfaceIsTouched)
{
    for (const DXSAMPLEFORMATENUM format : {DXPF_ARGB32, DXPF_NONSTANDARD})
    {
        SetUp(format, format);
        int calls = 0;
        int underTheLock = 0;
        for (FakeSurface* surface : {input.p, output.p})
        {
            surface->onCall = [&](const std::string&) {
                ++calls;
                underTheLock += IsHeld(effect->m_lock) ? 1 : 0;
            };
        }
        EXPECT_EQ(Work(), S_OK);
        input->onCall = output->onCall = nullptr;
        EXPECT_GT(calls, 0);
        EXPECT_EQ(underTheLock, 0);
    }
}

TEST_F(FrameSteps, BothFormatsAreReadBeforeTheInputIsLocked)
{
    const Calls formats{"input.GetPixelFormat", "output.GetPixelFormat"};
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    ASSERT_EQ(Work(), S_OK);
    EXPECT_EQ(CallsBefore("input.LockSurface"), formats);

    SetUp(DXPF_NONSTANDARD, DXPF_NONSTANDARD);
    ASSERT_EQ(Work(), S_OK);
    EXPECT_EQ(CallsBefore("input.LockSurface"), formats);
}

TEST_F(FrameSteps, TheFrameInformationIsAskedForWithItsLengthOnceTheInputIsUnlocked)
{
    SetUp(Known(Surface("input", DXPF_ARGB32)), Surface("output", DXPF_ARGB32));
    ASSERT_EQ(Work(), S_OK);
    EXPECT_EQ(input->informationSizes, std::vector<ULONG>{24});
    const Calls calls = log.Calls();
    EXPECT_LT(std::ranges::find(calls, "input.Unlock"),
              std::ranges::find(calls, "input.GetFrameInformation"));
}

TEST_F(FrameSteps, TheFrameInformationIsReleasedBeforeAnythingElseIsDone)
{
    for (const DXSAMPLEFORMATENUM format : {DXPF_ARGB32, DXPF_NONSTANDARD})
    {
        SetUp(Known(Surface("input", format)), Surface("output", format));
        const std::size_t rendersBefore = Renders();
        std::size_t rendersAtRelease = 0;
        input->onCall = [&](const std::string& method) {
            if (method == "GetFrameInformation.Release")
            {
                rendersAtRelease = Renders();
            }
        };
        ASSERT_EQ(Work(), S_OK);
        EXPECT_EQ(rendersAtRelease, rendersBefore);
        const Calls calls = log.Calls();
        auto asked = std::ranges::find(calls, "input.GetFrameInformation");
        ASSERT_NE(asked, calls.end());
        ASSERT_NE(asked + 1, calls.end());
        EXPECT_EQ(asked[1], "input.GetFrameInformation.Release");
        input->onCall = nullptr;
    }
}

TEST_F(FrameSteps, AnySuccessOfTheFrameInformationCounts)
{
    SetUp(Known(Surface("input", DXPF_ARGB32)), Surface("output", DXPF_ARGB32));
    input->FailCall("GetFrameInformation", S_FALSE);
    ASSERT_EQ(Work(), S_OK);
    EXPECT_EQ(LastFrameNumber(), 50);
    EXPECT_EQ(LastSource().aspect, 1.5F);

    SetUp(Known(Surface("input", DXPF_ARGB32)), Surface("output", DXPF_ARGB32));
    input->informationQueryResult = S_FALSE;
    ASSERT_EQ(Work(), S_OK);
    EXPECT_EQ(LastFrameNumber(), 50);
    EXPECT_EQ(LastSource().aspect, 1.5F);
}

TEST_F(FrameSteps, APartOfTheOutputIsPackedStraightAndFromARectangleOfItsOwnSize)
{
    SetUp(DXPF_ARGB32, DXPF_PMARGB32);
    ASSERT_EQ(Work({1, 2, 7, 4}), S_OK);
    ASSERT_EQ(output->packed.size(), 1U);
    const DXPACKEDRECTDESC& packed = output->packed[0];
    EXPECT_EQ(packed.bPremult, FALSE);
    EXPECT_EQ(packed.rect.left, 0);
    EXPECT_EQ(packed.rect.top, 0);
    EXPECT_EQ(packed.rect.right, 6);
    EXPECT_EQ(packed.rect.bottom, 2);
    EXPECT_EQ(packed.lRowPadding, (8 - 6) * 4);
}

TEST_F(FrameSteps, ASuccessCodeOfTheBoundsIsNotTheResultOfADirectFrame)
{
    SetUp(DXPF_NONSTANDARD, DXPF_NONSTANDARD);
    input->FailCall("GetBounds", S_FALSE, 2); // the first is for the preview
    EXPECT_EQ(Work(), S_OK) << "the result of the last lock";
    output->FailCall("GetBounds", S_FALSE);
    EXPECT_EQ(Work(), S_OK);
    input->FailCall("LockSurface", S_FALSE, 2);
    EXPECT_EQ(Work(), S_FALSE) << "although the bounds that follow say S_OK";
}

TEST_F(FrameSteps, ASuccessCodeOfTheBoundsIsNotTheResultOfABufferedFrame)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    input->FailCall("GetBounds", S_FALSE);
    EXPECT_EQ(Work(), S_OK);
}

TEST_F(FrameSteps, ADirectlyRenderedSurfaceThatDoesNotTellItsFormatCountsAsArgb32)
{
    SetUp(DXPF_ARGB32, DXPF_NONSTANDARD);
    recording.rendersPixels = false;              // the formats differ
    input->FailCall("GetPixelFormat", E_FAIL, 2); // the first decides how the preview is taken
    ASSERT_EQ(Work(), S_OK);
    EXPECT_EQ(LastSource().format, 3U);
    EXPECT_EQ(LastDestination().format, 17U);
}

TEST_F(FrameSteps, ADirectlyRenderedPremultipliedInputKeepsItsEightBits)
{
    SetUp(DXPF_PMARGB32, DXPF_NONSTANDARD);
    recording.rendersPixels = false; // the formats differ
    ASSERT_EQ(Work(), S_OK);
    EXPECT_EQ(LastSource().format, 3U);
    EXPECT_EQ(LastSource().rowPitch, 8U) << "four bytes a sample";
}

TEST_F(FrameSteps, AFailedFrameKeepsTheInputBufferForTheNext)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    output->FailCall("LockSurface", E_ACCESSDENIED);
    EXPECT_EQ(Work(), E_ACCESSDENIED);
    const void* const pixels = effect->GetPreviewFrame()->pixels;
    ASSERT_NE(pixels, nullptr);
    EXPECT_EQ(Work(), S_OK);
    EXPECT_EQ(effect->GetPreviewFrame()->pixels, pixels);
}

TEST_F(FrameSteps, SurfacesLiveUntilTheFrameEndsThoughOneOfThemClearsTheTransform)
{
    const LONG liveBefore = FakeSurface::LiveSurfaces();
    for (const DXSAMPLEFORMATENUM format : {DXPF_ARGB32, DXPF_NONSTANDARD})
    {
        for (const char* call : {"GetPixelFormat", "LockSurface", "GetBounds", "Unlock"})
        {
            SetUp(format, format);
            LONG liveAfterwards = 0;
            FakeSurface& first = *input;
            first.onCall = [&, call](const std::string& method) {
                if (method == call && liveAfterwards == 0)
                {
                    EXPECT_EQ(effect->Setup(nullptr, 0, nullptr, 0, 0), S_OK);
                    liveAfterwards = FakeSurface::LiveSurfaces();
                }
            };
            input.Release();
            output.Release();
            Work();
            EXPECT_EQ(liveAfterwards, liveBefore + 2) << call;
            EXPECT_EQ(FakeSurface::LiveSurfaces(), liveBefore) << call;
        }
    }
}
