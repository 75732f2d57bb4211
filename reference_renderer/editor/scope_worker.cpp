#include "reference_renderer/editor/scope_worker.h"

#include <exception>
#include <mutex>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

constexpr DWORD kScopeStillMs = 150; // the look stands still: time for every pixel

} // namespace

bool ScopeWorker::Ask(ScopeRequest&& request, HWND told, UINT message)
{
    {
        const std::lock_guard guard(m_lock);
        m_next = std::move(request);
        m_isStale = true;
    }
    if (m_thread != nullptr)
    {
        ::WakeConditionVariable(&m_asked);
        return true;
    }
    m_told = told;
    m_message = message;
    m_thread = ::CreateThread(nullptr, 0, Run, this, 0, nullptr);
    if (m_thread != nullptr)
    {
        // Behind the picture, which the eye waits for.
        ::SetThreadPriority(m_thread, THREAD_PRIORITY_BELOW_NORMAL);
    }
    return m_thread != nullptr;
}

std::optional<ScopeAnswer> ScopeWorker::Take() noexcept
{
    const std::lock_guard guard(m_lock);
    return std::exchange(m_answer, std::nullopt);
}

void ScopeWorker::Stop() noexcept
{
    if (m_thread == nullptr)
    {
        return;
    }
    {
        const std::lock_guard guard(m_lock);
        m_isOver = true;
        m_isStale = true;
    }
    ::WakeConditionVariable(&m_asked);
    ::WaitForSingleObject(m_thread, INFINITE);
    ::CloseHandle(m_thread);
    m_thread = nullptr;
    m_isOver = false;
    m_next.reset();
    m_answer.reset();
}

DWORD WINAPI ScopeWorker::Run(void* self) noexcept
{
    auto& worker = *static_cast<ScopeWorker*>(self);
    while (!worker.m_isOver)
    {
        try
        {
            ScopeReader reader(worker.m_picture);
            const auto look = std::make_unique<PreparedLook>();
            worker.Work(reader, *look);
        }
        catch (const std::exception&) // memory is short
        {
            worker.Fail();
        }
    }
    return 0;
}

void ScopeWorker::Work(ScopeReader& reader, PreparedLook& look)
{
    std::optional<ScopeRequest> request;
    while (!m_isOver)
    {
        if (!request)
        {
            request = Next(INFINITE);
            continue;
        }
        const ScopeView view = request->view;
        look.Read(request->record);
        // Even if there is something newer: while a slider moves there always is.
        if (!reader.Count(view, look, Detail::Coarse, m_isOver))
        {
            return;
        }
        Answer(reader, view);
        request = Next(reader.Step() == 1 ? 0 : kScopeStillMs);
        if (!request && reader.Step() > 1 && reader.Count(view, look, Detail::Fine, m_isStale))
        {
            Answer(reader, view);
        }
    }
}

void ScopeWorker::Answer(const ScopeReader& reader, const ScopeView& view)
{
    ScopeAnswer answer{view, {}, ClippedText(reader.After())};
    answer.pixels.resize(static_cast<std::size_t>(view.size.width) *
                         static_cast<std::size_t>(view.size.height));
    reader.Draw(answer.pixels);
    Publish(std::move(answer));
}

void ScopeWorker::Publish(ScopeAnswer&& answer) noexcept
{
    {
        const std::lock_guard guard(m_lock);
        m_answer = std::move(answer);
    }
    ::PostMessageW(m_told, m_message, 0, 0);
}

std::optional<ScopeRequest> ScopeWorker::Next(DWORD milliseconds) noexcept
{
    const std::lock_guard guard(m_lock);
    WaitForRequest(milliseconds);
    m_isStale = m_isOver.load();
    return m_isOver ? std::nullopt : std::exchange(m_next, std::nullopt);
}

void ScopeWorker::Fail() noexcept
{
    {
        const std::lock_guard guard(m_lock);
        m_next.reset();
    }
    Publish({}); // with nothing to show
    const std::lock_guard guard(m_lock);
    WaitForRequest(INFINITE); // that one tries again
}

void ScopeWorker::WaitForRequest(DWORD milliseconds) noexcept
{
    while (!m_next && !m_isOver &&
           ::SleepConditionVariableSRW(&m_asked, &m_lock.Native(), milliseconds, 0))
    {
    }
}

} // namespace ReferenceRenderer
