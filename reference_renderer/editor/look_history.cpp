#include "reference_renderer/editor/look_history.h"

namespace ReferenceRenderer
{

LookHistory::LookHistory(LookState start)
{
    m_steps.push_back({{}, std::move(start), false});
}

bool LookHistory::Add(HistoryStep step)
{
    if (step.look == Now())
    {
        return false;
    }
    m_steps.reserve(m_now + 2); // from here on nothing fails
    m_run.reset();
    m_steps.resize(m_now + 1);
    m_steps.push_back(std::move(step));
    ++m_now;
    if (m_now > kUndoDepth)
    {
        m_steps.erase(m_steps.begin());
        --m_now;
    }
    return true;
}

void LookHistory::DidInRun(const Run& run, std::uint64_t nowMs, HistoryStep step)
{
    const bool inTime = run.kind == Run::Kind::Typing || nowMs - m_runMs <= kRunPauseMs;
    if (m_run != run || !inTime)
    {
        if (!Add(std::move(step)))
        {
            return;
        }
    }
    else if (step.look == m_steps[m_now - 1].look)
    {
        TakeBackRun();
        return;
    }
    else
    {
        m_steps[m_now].look = std::move(step.look);
    }
    m_run = run;
    m_runMs = nowMs;
}

bool LookHistory::TakeBackRun() noexcept
{
    if (!m_run)
    {
        return false;
    }
    m_steps.erase(m_steps.begin() + static_cast<std::ptrdiff_t>(m_now), m_steps.end());
    --m_now;
    m_run.reset();
    return true;
}

const HistoryStep* LookHistory::Undo() noexcept
{
    EndRun();
    return m_now == 0 ? nullptr : &m_steps[m_now--];
}

const HistoryStep* LookHistory::Redo() noexcept
{
    EndRun();
    return m_now + 1 == m_steps.size() ? nullptr : &m_steps[++m_now];
}

} // namespace ReferenceRenderer
