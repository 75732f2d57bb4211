// Renders the rows of a frame on all cores, on threads of a pool of its own.
#pragma once

#include "reference_renderer/core/row_runner.h"
#include "support/win32/slim_lock.h"

#include <atomic>

#include <windows.h>

namespace ReferenceRenderer
{

// All operations: any thread. Needs no destructor; Stop gives everything back.
class RowWorkers final : public RowRunner
{
public:
    constexpr RowWorkers() noexcept = default;
    RowWorkers(const RowWorkers&) = delete;
    RowWorkers& operator=(const RowWorkers&) = delete;

    // Makes the pool unless it is there. False when the system refuses; frames are then rendered on
    // the calling thread alone.
    bool Start() noexcept;
    // Waits for frames under way, then releases the pool.
    void Stop() noexcept;
    // Returns when every row is rendered; the calling thread works too. Allocates only when more
    // frames are under way at once than ever before.
    void Run(const FrameJob& job) noexcept override;

private:
    // What the threads that work on one frame share.
    struct Crew
    {
        FrameJob job;
        std::size_t rowsAtOnce = 1;
        std::atomic<std::size_t> nextRow{0};
        PTP_WORK work = nullptr;
        Crew* nextIdle = nullptr;
    };

    static void CALLBACK OnWork(PTP_CALLBACK_INSTANCE instance, void* context,
                                PTP_WORK work) noexcept;
    static void RenderRows(Crew& crew) noexcept;
    Crew* TakeCrew() noexcept;
    void GiveBack(Crew* crew) noexcept;

    SlimLock m_lock; // shared: the pool is in use; exclusive: it comes or goes
    PTP_POOL m_pool = nullptr;
    TP_CALLBACK_ENVIRON m_environment{};
    unsigned m_helpers = 0; // threads that help the calling one
    SlimLock m_idleLock;
    Crew* m_idle = nullptr;
};

} // namespace ReferenceRenderer
