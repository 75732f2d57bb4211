// An execution in several bands, in order or on a task manager's threads.
#include "tests/platform/dxtransform/fake_task_manager.h"
#include "tests/platform/dxtransform/open_transform.h"

#include "platform/atl/atlcore.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <set>

namespace
{

constexpr GUID kRequest{0x1234, 0, 0, {}};

class BandsTest : public TransformTest
{
protected:
    BandsTest()
    {
        m_input = FakeSurface::Make({.width = 4, .height = 10});
        m_output = FakeSurface::Make({.width = 4, .height = 10});
        m_transform->m_ulMaxImageBands = 64;
        m_transform->workProc = [this](const CDXTWorkInfoNTo1& work, BOOL*) {
            const std::lock_guard guard(m_lock);
            m_threads.insert(::GetCurrentThreadId());
            m_works.push_back(work);
            return work.DoBnds.Top() == m_failingTop ? E_ACCESSDENIED : S_OK;
        };
    }
    ~BandsTest() override { m_transform->m_cpTaskMgr.Release(); }
    BandsTest(const BandsTest&) = delete;
    BandsTest& operator=(const BandsTest&) = delete;

    FakeTaskManager& UseTaskManager(ULONG processors)
    {
        m_manager = std::make_unique<FakeTaskManager>(processors);
        m_transform->m_cpTaskMgr = m_manager.get();
        return *m_manager;
    }
    void Ask(ULONG bands)
    {
        m_transform->onInitInstData = [=](CDXTWorkInfoNTo1&, ULONG& count) {
            count = bands;
            return S_OK;
        };
    }
    // The rows of each band, from the top down: "0-3 3-6 6-10".
    std::string Rows() const
    {
        std::vector<std::pair<LONG, LONG>> rows;
        for (const CDXTWorkInfoNTo1& work : m_works)
        {
            rows.emplace_back(work.DoBnds.Top(), work.DoBnds.Bottom());
        }
        std::sort(rows.begin(), rows.end());
        std::string text;
        for (const auto& [top, bottom] : rows)
        {
            text += std::to_string(top) + "-" + std::to_string(bottom) + " ";
        }
        return text;
    }

    std::unique_ptr<FakeTaskManager> m_manager;
    CComAutoCriticalSection m_lock;
    std::vector<CDXTWorkInfoNTo1> m_works;
    std::set<DWORD> m_threads;
    LONG m_failingTop = -1;
};

TEST_F(BandsTest, AreEqualWithTheRemainderInTheLast)
{
    SetupQuietly();
    Ask(3);
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(Rows(), "0-3 3-6 6-10 ");
    EXPECT_EQ(m_threads, std::set<DWORD>{::GetCurrentThreadId()});
}

TEST_F(BandsTest, CutTheOutputLikeTheAreaToMake)
{
    SetupQuietly();
    Ask(2);
    const CDXDBnds clip(RECT{0, 4, 4, 10});
    const CDXDVec placement(1, -3);
    EXPECT_EQ(m_transform->Execute(nullptr, &clip, &placement), S_OK);
    EXPECT_EQ(Rows(), "4-7 7-10 ");
    for (const CDXTWorkInfoNTo1& work : m_works)
    {
        EXPECT_EQ(work.OutputBnds.Top(), work.DoBnds.Top() - 3);
        EXPECT_EQ(work.OutputBnds.Bottom(), work.DoBnds.Bottom() - 3);
        EXPECT_EQ(work.OutputBnds.Left(), work.DoBnds.Left() + 1);
        EXPECT_EQ(work.pvThis, m_transform.p);
    }
}

TEST_F(BandsTest, AreLimitedByTheRowsAndTheTransformAndAreAtLeastOne)
{
    SetupQuietly();
    Ask(1000);
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(m_works.size(), 10U);
    m_works.clear();
    m_transform->m_ulMaxImageBands = 4;
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(m_works.size(), 4U);
    m_works.clear();
    Ask(0);
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(m_works.size(), 1U);
}

TEST_F(BandsTest, StartFromTheNumberOfProcessors)
{
    SetupQuietly();
    FakeTaskManager& manager = UseTaskManager(5);
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(m_works.size(), 5U);
    m_works.clear();
    manager.queryResult = E_FAIL; // then the system is asked
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_GE(m_works.size(), 1U);
}

TEST_F(BandsTest, ATaskManagerThatIsLetGoWhileItWorksLivesUntilItReturns)
{
    SetupQuietly();
    for (const ULONG bands : {0U, 5U}) // it is asked for processors first, and for tasks
    {
        FakeTaskManager& manager = UseTaskManager(5);
        Ask(bands);
        ULONG least = 100;
        manager.onCall = [&] {
            m_transform->m_cpTaskMgr.Release(); // as another site does
            least = std::min(least, manager.references);
        };
        EXPECT_EQ(Execute(), S_OK);
        EXPECT_EQ(least, 1U);
        EXPECT_EQ(manager.references, 0U);
    }
}

TEST_F(BandsTest, AllRunAndTheFirstFailureInTheirOrderIsTheResult)
{
    SetupQuietly();
    Ask(5);
    m_failingTop = 2;
    EXPECT_EQ(Execute(), E_ACCESSDENIED);
    EXPECT_EQ(m_works.size(), 5U);
    EXPECT_EQ(m_hooks.Calls().back(), "OnFreeInstData");
}

TEST_F(BandsTest, OneBandStaysOnTheCallingThreadEvenWithATaskManager)
{
    SetupQuietly();
    FakeTaskManager& manager = UseTaskManager(5);
    m_transform->m_ulMaxImageBands = 1;
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(manager.calls, 0);
    EXPECT_EQ(m_threads, std::set<DWORD>{::GetCurrentThreadId()});
}

TEST_F(BandsTest, ATaskManagerGetsTheRequestAnEventForEachAndWaits)
{
    SetupQuietly();
    FakeTaskManager& manager = UseTaskManager(3);
    EXPECT_EQ(m_transform->Execute(&kRequest, nullptr, nullptr), S_OK);
    EXPECT_EQ(Rows(), "0-3 3-6 6-10 ");
    EXPECT_EQ(m_threads.count(::GetCurrentThreadId()), 0U);
    EXPECT_TRUE(manager.eventsAreValid);
    EXPECT_TRUE(manager.waitsForAll);
    ASSERT_EQ(manager.infos.size(), 3U);
    for (const DXTMTASKINFO& info : manager.infos)
    {
        EXPECT_EQ(info.pRequestID, &kRequest);
        EXPECT_EQ(info.pfnCompletionAPC, nullptr);
    }
}

TEST_F(BandsTest, AFailureOnAnotherThreadIsTheResult)
{
    SetupQuietly();
    UseTaskManager(3);
    m_failingTop = 6;
    EXPECT_EQ(Execute(), E_ACCESSDENIED);
}

TEST_F(BandsTest, AnExceptionOnAnotherThreadIsTheResult)
{
    SetupQuietly();
    UseTaskManager(2);
    m_transform->workProc = [](const CDXTWorkInfoNTo1&, BOOL*) -> HRESULT { throw 1; };
    EXPECT_EQ(Execute(), E_UNEXPECTED);
}

TEST_F(BandsTest, CancelledTasksAbortTheExecution)
{
    SetupQuietly();
    FakeTaskManager& manager = UseTaskManager(3);
    manager.continueProcessing = FALSE;
    EXPECT_EQ(Execute(), E_ABORT);
    EXPECT_TRUE(m_works.empty());
    EXPECT_EQ(m_hooks.Calls(), (Calls{"OnInitInstData", "OnFreeInstData"}));
}

TEST_F(BandsTest, WorkThatIsToldToStopAbortsTheExecution)
{
    SetupQuietly();
    UseTaskManager(2);
    m_transform->workProc = [](const CDXTWorkInfoNTo1&, BOOL* continueProcessing) {
        *continueProcessing = FALSE;
        return S_OK;
    };
    EXPECT_EQ(Execute(), E_ABORT);
}

TEST_F(BandsTest, TasksThatNeverBeganAbortTheExecution)
{
    SetupQuietly();
    FakeTaskManager& manager = UseTaskManager(3);
    manager.tasksToRun = 1;
    EXPECT_EQ(Execute(), E_ABORT);
    EXPECT_EQ(m_works.size(), 1U);
}

TEST_F(BandsTest, ARefusalOfTheTaskManagerIsTheResult)
{
    SetupQuietly();
    FakeTaskManager& manager = UseTaskManager(3);
    manager.tasksToRun = 0;
    manager.result = E_OUTOFMEMORY;
    EXPECT_EQ(Execute(), E_OUTOFMEMORY);
    EXPECT_EQ(m_hooks.Calls().back(), "OnFreeInstData");
}

TEST_F(BandsTest, ATaskThatStillRunsIsWaitedForBeforeAnythingIsFreed)
{
    SetupQuietly();
    FakeTaskManager& manager = UseTaskManager(2);
    const HANDLE begun = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE freed = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    manager.returnEarly = begun;
    manager.tasksToRun = 1;
    manager.result = E_ABORT;
    std::atomic<bool> done = false;
    m_transform->workProc = [&](const CDXTWorkInfoNTo1&, BOOL*) {
        ::SetEvent(begun);
        // Gives whoever does not wait the time to show it.
        EXPECT_EQ(::WaitForSingleObject(freed, 100), DWORD{WAIT_TIMEOUT});
        done = true;
        return S_OK;
    };
    m_transform->onFreeInstData = [&](CDXTWorkInfoNTo1&) {
        EXPECT_TRUE(done);
        ::SetEvent(freed);
        return S_OK;
    };
    EXPECT_EQ(Execute(), E_ABORT);
    manager.Join();
    ::CloseHandle(begun);
    ::CloseHandle(freed);
}

TEST_F(BandsTest, WorkOnOtherThreadsMayAskWhereItsInputLies)
{
    SetupQuietly();
    UseTaskManager(2);
    m_transform->workProc = [&](const CDXTWorkInfoNTo1& work, BOOL*) {
        DXBNDS input{};
        return m_transform->MapBoundsOut2In(0, &work.DoBnds, 0, &input);
    };
    EXPECT_EQ(Execute(), S_OK);
}

TEST_F(BandsTest, OneBandForATransformOfOneRow)
{
    const auto flat = FakeSurface::Make({.width = 4, .height = 1});
    ASSERT_EQ(SetupWith({flat}, flat), S_OK);
    Ask(8);
    EXPECT_EQ(Execute(), S_OK);
    EXPECT_EQ(Rows(), "0-1 ");
}

} // namespace
