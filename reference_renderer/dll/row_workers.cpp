#include "reference_renderer/dll/row_workers.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <shared_mutex>

namespace ReferenceRenderer
{

namespace
{

// Below this, waking other threads costs more than they save.
constexpr std::size_t kSmallestShare = 16384; // pixels
// Pieces per thread: threads that are held up leave the rest of their share to the others.
constexpr std::size_t kPiecesPerThread = 4;
constexpr unsigned kMostHelpers = 63;

} // namespace

bool RowWorkers::Start() noexcept
{
    const std::lock_guard guard(m_lock);
    if (m_pool != nullptr)
    {
        return true;
    }
    const DWORD cores = ::GetActiveProcessorCount(ALL_PROCESSOR_GROUPS);
    const unsigned helpers = std::clamp<unsigned>(cores, 1, kMostHelpers + 1) - 1;
    if (helpers == 0)
    {
        return true;
    }
    PTP_POOL const pool = ::CreateThreadpool(nullptr);
    if (pool == nullptr)
    {
        return false;
    }
    // As many as there are stay: a frame must not wait for a thread to be made.
    ::SetThreadpoolThreadMaximum(pool, helpers);
    if (!::SetThreadpoolThreadMinimum(pool, helpers))
    {
        ::CloseThreadpool(pool);
        return false;
    }
    ::InitializeThreadpoolEnvironment(&m_environment);
    ::SetThreadpoolCallbackPool(&m_environment, pool);
    m_pool = pool;
    m_helpers = helpers;
    return true;
}

void RowWorkers::Stop() noexcept
{
    const std::lock_guard guard(m_lock);
    while (m_idle != nullptr)
    {
        Crew* const crew = m_idle;
        m_idle = crew->nextIdle;
        ::CloseThreadpoolWork(crew->work);
        delete crew;
    }
    if (m_pool != nullptr)
    {
        ::DestroyThreadpoolEnvironment(&m_environment);
        ::CloseThreadpool(m_pool);
        m_pool = nullptr;
        m_helpers = 0;
    }
}

void RowWorkers::Run(const FrameJob& job) noexcept
{
    const std::shared_lock guard(m_lock);
    const std::size_t shares = job.width * job.height / kSmallestShare;
    const std::size_t helpers = std::min<std::size_t>({m_helpers, shares, job.height - 1});
    Crew* const crew = helpers > 0 ? TakeCrew() : nullptr;
    if (crew == nullptr)
    {
        job.RenderRows(0, job.height);
        return;
    }
    crew->job = job;
    crew->rowsAtOnce = std::max<std::size_t>(job.height / ((helpers + 1) * kPiecesPerThread), 1);
    crew->nextRow = 0;
    for (std::size_t i = 0; i < helpers; ++i)
    {
        ::SubmitThreadpoolWork(crew->work);
    }
    RenderRows(*crew);
    // No piece is left: helpers that did not start need not, those that did finish theirs.
    ::WaitForThreadpoolWorkCallbacks(crew->work, TRUE);
    GiveBack(crew);
}

void CALLBACK RowWorkers::OnWork(PTP_CALLBACK_INSTANCE, void* context, PTP_WORK) noexcept
{
    RenderRows(*static_cast<Crew*>(context));
}

void RowWorkers::RenderRows(Crew& crew) noexcept
{
    while (true)
    {
        const std::size_t first = crew.nextRow.fetch_add(crew.rowsAtOnce);
        if (first >= crew.job.height)
        {
            return;
        }
        crew.job.RenderRows(first, std::min(first + crew.rowsAtOnce, crew.job.height));
    }
}

RowWorkers::Crew* RowWorkers::TakeCrew() noexcept
{
    {
        const std::lock_guard guard(m_idleLock);
        if (m_idle != nullptr)
        {
            Crew* const crew = m_idle;
            m_idle = crew->nextIdle;
            return crew;
        }
    }
    auto* const crew = new (std::nothrow) Crew;
    if (crew != nullptr)
    {
        crew->work = ::CreateThreadpoolWork(&RowWorkers::OnWork, crew, &m_environment);
    }
    if (crew != nullptr && crew->work == nullptr)
    {
        delete crew;
        return nullptr;
    }
    return crew;
}

void RowWorkers::GiveBack(Crew* crew) noexcept
{
    const std::lock_guard guard(m_idleLock);
    crew->nextIdle = m_idle;
    m_idle = crew;
}

} // namespace ReferenceRenderer
