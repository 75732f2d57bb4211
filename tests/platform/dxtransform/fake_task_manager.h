// A task manager that runs its tasks on threads of its own, or cuts them short as a test wants.
#pragma once

#include "platform/dxtransform/dxtrans.h"
#include "tests/doubles/test_thread.h"

#include <windows.h>

#include <functional>
#include <memory>
#include <vector>

// Counts references, but lives longer than whoever holds it.
class FakeTaskManager : public IDXTaskManager
{
public:
    explicit FakeTaskManager(ULONG processors) : m_processors(processors) {}

    // clang-format off
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** ppv) override { *ppv = nullptr; return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE SetThreadPoolSize(ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetThreadPoolSize(ULONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetConcurrencyLimit(ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetConcurrencyLimit(ULONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE TerminateTasks(DWORD[], ULONG, ULONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE TerminateRequest(REFIID, ULONG) override { return E_NOTIMPL; }
    // clang-format on

    HRESULT STDMETHODCALLTYPE QueryNumProcessors(ULONG* count) override
    {
        *count = m_processors;
        if (onCall)
        {
            onCall();
        }
        return queryResult;
    }

    HRESULT STDMETHODCALLTYPE ScheduleTasks(DXTMTASKINFO tasks[], HANDLE events[], DWORD ids[],
                                            ULONG count, ULONG waitMs) override
    {
        ++calls;
        if (onCall)
        {
            onCall();
        }
        infos.assign(tasks, tasks + count);
        for (ULONG i = 0; i < count; ++i)
        {
            ids[i] = i;
            eventsAreValid = eventsAreValid && ::ResetEvent(events[i]) != FALSE;
        }
        waitsForAll = waitMs == INFINITE;
        const ULONG run = count < tasksToRun ? count : tasksToRun;
        for (ULONG i = 0; i < run; ++i)
        {
            m_threads.push_back(std::make_unique<TestThread>([this, task = infos[i]] {
                task.pfnTaskProc(task.pTaskData, &continueProcessing);
            }));
        }
        if (returnEarly == nullptr)
        {
            m_threads.clear(); // waits
        }
        else
        {
            ::WaitForSingleObject(returnEarly, 10000);
        }
        return result;
    }

    // Ends what returnEarly left running.
    void Join() { m_threads.clear(); }

    HRESULT queryResult = S_OK;
    HRESULT result = S_OK;
    ULONG tasksToRun = 0xFFFFFFFFU;
    BOOL continueProcessing = TRUE;
    HANDLE returnEarly = nullptr; // when this is set, ScheduleTasks returns though tasks still run

    std::function<void()> onCall;
    ULONG references = 0;

    int calls = 0;
    std::vector<DXTMTASKINFO> infos;
    bool eventsAreValid = true;
    bool waitsForAll = false;

private:
    ULONG m_processors;
    std::vector<std::unique_ptr<TestThread>> m_threads;
};
