#include "tools/glazelhost/commands/frame_stages.h"

#include "tools/glazelhost/host_error.h"

#include <iterator>
#include <mutex>
#include <utility>

namespace GlazelHost
{

// Also what the thread has to keep alive, for it may outlast the job: Wine breaks no reading from a
// pipe off.
struct FrameReading::Work
{
    Work(std::shared_ptr<FrameSource> from, FrameChoice wanted)
        : source(std::move(from)), choice(std::move(wanted)), number(choice.first)
    {
    }

    // False when none follows.
    bool Take(TakenFrame& frame) noexcept
    {
        const bool isWanted = choice.frames.Contains(number);
        if (!isWanted && !choice.frames.NextAfter(number))
        {
            return false; // the rest of the source is of no interest
        }
        frame.kind = isWanted ? TakenFrame::Kind::Picture : TakenFrame::Kind::Nothing;
        frame.index = number++ - choice.first;
        try
        {
            return isWanted ? source->Read(frame.image, choice.depth) : source->Skip();
        }
        catch (const HostError&)
        {
            isOver = !choice.goesOnAfterBadFrames;
            frame.error = std::current_exception();
        }
        catch (...)
        {
            isOver = true;
            frame.error = std::current_exception();
        }
        frame.kind = TakenFrame::Kind::Failed;
        return true;
    }

    void ReadAhead() noexcept
    {
        while (!isOver)
        {
            TakenFrame* const frame = ring.Free();
            if (frame == nullptr || !Take(*frame))
            {
                break;
            }
            ring.HandOver();
        }
        ring.End();
    }

    std::shared_ptr<FrameSource> source;
    FrameChoice choice;
    std::int64_t number;
    bool isOver = false;
    TakenFrame single; // where there is no thread
    FrameRing<TakenFrame, kFramesAhead, StageGate> ring;
};

FrameReading::FrameReading(std::shared_ptr<FrameSource> source, FrameChoice choice, bool ahead)
    : m_work(std::make_shared<Work>(std::move(source), std::move(choice)))
{
    if (ahead)
    {
        m_thread.Start([work = m_work] { work->ReadAhead(); });
    }
}

FrameReading::~FrameReading()
{
    if (!m_thread.IsStarted())
    {
        return;
    }
    BreakOff();
    constexpr int kTries = 20; // the thread may not have begun to wait when it is told not to
    constexpr DWORD kBetweenMs = 10;
    for (int tries = 0; tries < kTries && !m_thread.EndsWithin(kBetweenMs); ++tries)
    {
        m_thread.BreakOffWaiting();
    }
}

TakenFrame* FrameReading::Next()
{
    if (m_thread.IsStarted())
    {
        return m_work->ring.Next();
    }
    return !m_work->isOver && m_work->Take(m_work->single) ? &m_work->single : nullptr;
}

void FrameReading::Done()
{
    if (m_thread.IsStarted())
    {
        m_work->ring.GiveBack();
    }
}

void FrameReading::BreakOff()
{
    m_work->ring.Close();
}

FrameWriting::FrameWriting(FrameSink& sink, bool behind, std::function<void()> onFailure)
    : m_sink(sink), m_onFailure(std::move(onFailure))
{
    if (behind)
    {
        m_thread.Start([this] {
            while (const GivenFrame* frame = m_ring.Next())
            {
                Take(*frame);
                m_ring.GiveBack();
            }
        });
    }
}

FrameWriting::~FrameWriting()
{
    if (m_thread.IsStarted())
    {
        m_ring.End();
        m_thread.EndsWithin(INFINITE);
    }
}

FrameWriting::GivenFrame& FrameWriting::Free()
{
    GivenFrame* const frame = m_thread.IsStarted() ? m_ring.Free() : &m_single;
    ThrowFailure();
    return *frame; // only a failure closes the ring
}

void FrameWriting::HandOver()
{
    if (m_thread.IsStarted())
    {
        m_ring.HandOver();
        return;
    }
    Take(m_single);
    ThrowFailure();
}

Image& FrameWriting::Place()
{
    return Free().image;
}

void FrameWriting::Write()
{
    Free().isPass = false;
    HandOver();
}

void FrameWriting::Pass()
{
    Free().isPass = true;
    HandOver();
}

void FrameWriting::Take(const GivenFrame& frame) noexcept
{
    try
    {
        if (frame.isPass)
        {
            m_sink.Pass();
            return;
        }
        m_sink.Write(frame.image);
        std::vector<std::string> remarks = m_sink.TakeRemarks();
        const std::lock_guard guard(m_lock);
        ++m_written;
        m_remarks.insert(m_remarks.end(), std::make_move_iterator(remarks.begin()),
                         std::make_move_iterator(remarks.end()));
    }
    catch (...)
    {
        {
            const std::lock_guard guard(m_lock);
            m_failure = std::current_exception();
        }
        m_ring.Close();
        m_onFailure();
    }
}

void FrameWriting::ThrowFailure()
{
    const std::lock_guard guard(m_lock);
    if (m_failure)
    {
        std::rethrow_exception(m_failure);
    }
}

void FrameWriting::Drain()
{
    m_ring.WaitUntilEmpty();
    ThrowFailure();
}

std::int64_t FrameWriting::Written()
{
    const std::lock_guard guard(m_lock);
    return m_written;
}

std::vector<std::string> FrameWriting::TakeRemarks()
{
    const std::lock_guard guard(m_lock);
    return std::exchange(m_remarks, {});
}

} // namespace GlazelHost
