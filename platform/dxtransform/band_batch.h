// The bands of one execution: cut from its area, run in order or by a task manager. Private to
// CDXBaseNTo1. Tests: tests/platform/dxtransform/bands_test.cpp.
#pragma once

#include "platform/dxtransform/dxbasento1.h"

#include <windows.h>

#include <atomic>
#include <memory>
#include <vector>

// Lives until none of its bands runs any more: the functions below wait for that.
class CDXTBandBatch
{
public:
    // Equal heights, the remainder to the last. `bands` is at least 1 and at most the rows. Throws
    // std::bad_alloc.
    CDXTBandBatch(CDXBaseNTo1& transform, const CDXTWorkInfoNTo1& work, ULONG bands);
    CDXTBandBatch(const CDXTBandBatch&) = delete;
    CDXTBandBatch& operator=(const CDXTBandBatch&) = delete;

    // On this thread. Both give the first failing band's result, in the order of the bands.
    HRESULT RunInOrder() noexcept;
    // On the manager's threads; `requestId` (may be null) lets others cancel through the manager,
    // which makes the result E_ABORT. Throws std::bad_alloc before anything is scheduled.
    HRESULT RunByTaskManager(IDXTaskManager* taskManager, const GUID* requestId);

private:
    enum class State
    {
        Waiting,
        Running,
        Done // also when it was withdrawn
    };
    struct CloseEvent
    {
        void operator()(void* event) const noexcept { ::CloseHandle(event); }
    };
    using Event = std::unique_ptr<void, CloseEvent>;
    struct Band
    {
        CDXTBandBatch* batch = nullptr;
        CDXTWorkInfoNTo1 work; // its result belongs to whoever moved the state off Waiting
        std::atomic<State> state = State::Waiting;
        Event finished; // set by the task manager, which wants one for each task it waits for
        Event ended;    // set by the band as its last use of this memory
    };

    static void __stdcall RunTask(void* pTaskData, BOOL* pbContinueProcessing);
    HRESULT MakeEvents() noexcept;
    void WithdrawAndWait(HRESULT scheduled) noexcept;
    HRESULT FirstFailure() const noexcept;

    CDXBaseNTo1& m_transform;
    std::vector<Band> m_bands;
};
