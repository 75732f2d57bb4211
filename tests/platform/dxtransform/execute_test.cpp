// One execution: what must hold before it, when the transform gets ready again, which area it
// makes.
#include "tests/platform/dxtransform/open_transform.h"

#include "tests/doubles/allocation_count.h"

#include <limits>
#include <optional>

namespace
{

class ExecuteTest : public TransformTest
{
protected:
    // Executes and gives the record that WorkProc saw, if it was called.
    std::optional<CDXTWorkInfoNTo1> Work(const DXBNDS* clip, const DXVEC* placement)
    {
        std::optional<CDXTWorkInfoNTo1> seen;
        m_transform->workProc = [&](const CDXTWorkInfoNTo1& work, BOOL*) {
            seen = work;
            return S_OK;
        };
        EXPECT_EQ(m_transform->Execute(nullptr, clip, placement), S_OK);
        return seen;
    }
};

CDXDBnds Rectangle(LONG left, LONG top, LONG right, LONG bottom)
{
    return CDXDBnds(RECT{left, top, right, bottom});
}

TEST_F(ExecuteTest, NeedsSetupFirst)
{
    EXPECT_EQ(Execute(), DXTERR_UNINITIALIZED);
    EXPECT_TRUE(m_hooks.Calls().empty());
}

TEST_F(ExecuteTest, RefusesAClipOrAPlacementThatIsNotSupported)
{
    SetupQuietly();
    const CDXDBnds clip(1, 1);
    const CDXDVec placement;
    m_transform->m_dwMiscFlags = DXTMF_PLACEMENT_SUPPORTED;
    EXPECT_EQ(m_transform->Execute(nullptr, &clip, nullptr), E_INVALIDARG);
    EXPECT_EQ(m_transform->Execute(nullptr, nullptr, &placement), S_OK);
    m_transform->m_dwMiscFlags = DXTMF_BOUNDS_SUPPORTED;
    EXPECT_EQ(m_transform->Execute(nullptr, nullptr, &placement), E_INVALIDARG);
    EXPECT_EQ(m_transform->Execute(nullptr, &clip, nullptr), S_OK);
}

TEST_F(ExecuteTest, CallsWorkProcOnce)
{
    SetupQuietly();
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(m_hooks.Calls(), Calls{"WorkProc"});
}

TEST_F(ExecuteTest, WorksOnTheCallingThreadWithAFlagThatSaysGoOn)
{
    SetupQuietly();
    DWORD thread = 0;
    m_transform->workProc = [&](const CDXTWorkInfoNTo1&, BOOL* continueProcessing) {
        thread = ::GetCurrentThreadId();
        EXPECT_EQ(*continueProcessing, TRUE);
        return S_OK;
    };
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(thread, ::GetCurrentThreadId());
}

TEST_F(ExecuteTest, TheBaseWorkProcIsNotImplemented)
{
    SetupQuietly();
    m_transform->useBaseWorkProc = true;
    EXPECT_EQ(Execute(), E_NOTIMPL);
}

TEST_F(ExecuteTest, WorkThatStopsAbortsIt)
{
    SetupQuietly();
    m_transform->workProc = [](const CDXTWorkInfoNTo1&, BOOL* continueProcessing) {
        *continueProcessing = FALSE;
        return S_OK;
    };
    EXPECT_EQ(Execute(), E_ABORT);
}

TEST_F(ExecuteTest, AnExceptionOfTheWorkBecomesAResult)
{
    SetupQuietly();
    m_transform->workProc = [](const CDXTWorkInfoNTo1&, BOOL*) -> HRESULT { throw 1; };
    EXPECT_EQ(Execute(), E_UNEXPECTED);
}

TEST_F(ExecuteTest, GetsReadyAgainWhenTheTransformOrASurfaceChanged)
{
    SetupQuietly();
    m_transform->SetDirty();
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(m_hooks.Calls().front(), "OnSetup");
    m_hooks.Clear();
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(m_hooks.Calls().front(), "WorkProc");
    m_input->Touch();
    m_hooks.Clear();
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(m_hooks.Calls().front(), "OnSetup");
    EXPECT_FALSE(m_transform->IsTransformDirty());
}

TEST_F(ExecuteTest, StaysDirtyWhenItCannotGetReady)
{
    SetupQuietly();
    m_transform->SetDirty();
    m_transform->onSetup = [](DWORD) { return E_ACCESSDENIED; };
    EXPECT_EQ(Execute(), E_ACCESSDENIED);
    EXPECT_TRUE(m_transform->IsTransformDirty());
    EXPECT_EQ(m_hooks.Calls(), Calls{"OnSetup"});
    m_transform->onSetup = nullptr;
    EXPECT_EQ(Execute(), S_OK);
}

TEST_F(ExecuteTest, ItsOwnWritingIsNoChange)
{
    SetupQuietly();
    m_transform->workProc = [&](const CDXTWorkInfoNTo1&, BOOL*) {
        m_output->Touch();
        return S_OK;
    };
    EXPECT_EQ(Execute(), S_OK);
    ULONG before = 0;
    ULONG after = 0;
    m_transform->GetGenerationId(&before);
    EXPECT_EQ(Execute(), S_OK);
    m_transform->GetGenerationId(&after);
    EXPECT_EQ(before, after);
    EXPECT_FALSE(m_transform->IsTransformDirty());
}

TEST_F(ExecuteTest, MakesTheWholeOutputByDefault)
{
    SetupQuietly();
    const auto work = Work(nullptr, nullptr);
    ASSERT_TRUE(work);
    EXPECT_TRUE(work->DoBnds == CDXDBnds(4, 3));
    EXPECT_TRUE(work->OutputBnds == CDXDBnds(4, 3));
}

TEST_F(ExecuteTest, AClipLimitsWhatIsMade)
{
    SetupQuietly();
    const CDXDBnds clip = Rectangle(1, 1, 9, 2);
    const auto work = Work(&clip, nullptr);
    ASSERT_TRUE(work);
    EXPECT_TRUE(work->DoBnds == Rectangle(1, 1, 4, 2));
    EXPECT_TRUE(work->OutputBnds == Rectangle(1, 1, 4, 2));
}

TEST_F(ExecuteTest, APlacementMovesTheResultAndTheSurfaceCutsIt)
{
    SetupQuietly();
    const CDXDVec placement(-1, 2);
    const auto work = Work(nullptr, &placement);
    ASSERT_TRUE(work);
    EXPECT_TRUE(work->OutputBnds == Rectangle(0, 2, 3, 3));
    EXPECT_TRUE(work->DoBnds == Rectangle(1, 0, 4, 1));
}

TEST_F(ExecuteTest, ClipAndPlacementAddUp)
{
    SetupQuietly();
    const CDXDBnds clip = Rectangle(2, 1, 4, 3);
    const CDXDVec placement(-2, -1);
    const auto work = Work(&clip, &placement);
    ASSERT_TRUE(work);
    EXPECT_TRUE(work->DoBnds == Rectangle(2, 1, 4, 3));
    EXPECT_TRUE(work->OutputBnds == Rectangle(0, 0, 2, 2));
}

TEST_F(ExecuteTest, ASmallerOutputSurfaceCutsTheResult)
{
    const auto small = FakeSurface::Make({.width = 2, .height = 2});
    ASSERT_EQ(SetupWith({m_input}, small), S_OK);
    const auto work = Work(nullptr, nullptr);
    ASSERT_TRUE(work);
    EXPECT_TRUE(work->DoBnds == CDXDBnds(2, 2));
    EXPECT_TRUE(work->OutputBnds == CDXDBnds(2, 2));
}

TEST_F(ExecuteTest, WhatAClipSaysOfLayersAndTimeIsNotLookedAt)
{
    SetupQuietly();
    CDXDBnds clip(2, 2);
    clip[DXB_Z] = {0, 0};
    clip[DXB_T] = {5, 5};
    const CDXDVec placement(0, 0, 7, 7);
    const auto work = Work(&clip, &placement);
    ASSERT_TRUE(work);
    EXPECT_TRUE(work->DoBnds == CDXDBnds(2, 2));
}

TEST_F(ExecuteTest, TakesClipsAndPlacementsOfEveryKind)
{
    SetupQuietly();
    const DXBNDS clip{DXBT_CONTINUOUS64, {.LC = {{0.0, 2.0}, {0.0, 2.0}, {}, {}}}};
    const DXVEC placement{DXBT_CONTINUOUS, {.C = {1.0F, 1.0F, 0.0F, 0.0F}}};
    const auto work = Work(&clip, &placement);
    ASSERT_TRUE(work);
    EXPECT_TRUE(work->OutputBnds == Rectangle(1, 1, 3, 3));
}

TEST_F(ExecuteTest, ExtremeValuesLeaveNothingInsteadOfOverflowing)
{
    SetupQuietly();
    constexpr LONG kMax = std::numeric_limits<LONG>::max();
    constexpr LONG kMin = std::numeric_limits<LONG>::min();
    for (const CDXDVec& placement : {CDXDVec(kMax, kMax), CDXDVec(kMin, kMin)})
    {
        EXPECT_FALSE(Work(nullptr, &placement));
    }
    const CDXDBnds all = Rectangle(kMin, kMin, kMax, kMax);
    const auto work = Work(&all, nullptr);
    ASSERT_TRUE(work);
    EXPECT_TRUE(work->DoBnds == CDXDBnds(4, 3));
}

TEST_F(ExecuteTest, NothingLeftIsASuccessWithoutAnyWork)
{
    SetupQuietly();
    const CDXDBnds outside = Rectangle(10, 10, 20, 20);
    EXPECT_EQ(m_transform->Execute(nullptr, &outside, nullptr), S_OK);
    const CDXDBnds empty;
    EXPECT_EQ(m_transform->Execute(nullptr, &empty, nullptr), S_OK);
    const CDXDVec away(4, 0);
    EXPECT_EQ(m_transform->Execute(nullptr, nullptr, &away), S_OK);
    EXPECT_TRUE(m_hooks.Calls().empty());
}

TEST_F(ExecuteTest, ASurfaceThatDoesNotTellItsBoundsFailsTheExecution)
{
    SetupQuietly();
    m_input->FailCall("GetBounds", E_ACCESSDENIED);
    EXPECT_EQ(Execute(), E_ACCESSDENIED);
    m_output->FailCall("GetBounds", E_OUTOFMEMORY);
    EXPECT_EQ(Execute(), E_OUTOFMEMORY);
    EXPECT_TRUE(m_hooks.Calls().empty());
}

TEST_F(ExecuteTest, SteadyFramesAllocateNothing)
{
    m_transform->log = nullptr;
    ASSERT_EQ(SetupBoth(), S_OK);
    ASSERT_EQ(Execute(), S_OK);
    IUnknown* const input = UnknownOf(m_input);
    IUnknown* const output = UnknownOf(m_output);
    const long before = AllocationCount();
    for (int frame = 0; frame < 100; ++frame)
    {
        m_input->Touch();
        EXPECT_EQ(m_transform->Setup(&input, 1, &output, 1, 0), S_OK);
        EXPECT_EQ(Execute(), S_OK);
    }
    EXPECT_EQ(AllocationCount(), before);
}

} // namespace
