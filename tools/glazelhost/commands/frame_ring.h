// Places for frames that go round between two threads: one fills them in order, the other takes
// them in that order and gives them back. Pure: no windows.h.
// Tests: tests/tools/glazelhost/commands/frame_ring_test.cpp.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace GlazelHost
{

// `Gate` is a lock with lock and unlock, and while it is held with Wait, which lets go of it until
// somebody calls WakeAll. What a place held stays in it for whoever has it next, so that memory is
// used again.
template <typename Item, std::size_t Places, typename Gate>
class FrameRing
{
public:
    FrameRing() = default;
    FrameRing(const FrameRing&) = delete;
    FrameRing& operator=(const FrameRing&) = delete;

    // Filling thread. The place to fill next, once there is one; null when the ring is closed.
    Item* Free()
    {
        const std::lock_guard guard(m_gate);
        while (!m_closed && m_filled - m_givenBack == Places)
        {
            m_gate.Wait();
        }
        return m_closed ? nullptr : &m_places[m_filled % Places];
    }
    // Filling thread. The place that Free gave is filled.
    void HandOver()
    {
        const std::lock_guard guard(m_gate);
        ++m_filled;
        m_gate.WakeAll();
    }
    // Filling thread. Nothing follows.
    void End()
    {
        const std::lock_guard guard(m_gate);
        m_ended = true;
        m_gate.WakeAll();
    }
    // Filling thread. Returns when everything is given back, or the ring is closed.
    void WaitUntilEmpty()
    {
        const std::lock_guard guard(m_gate);
        while (!m_closed && m_filled != m_givenBack)
        {
            m_gate.Wait();
        }
    }

    // Taking thread. The oldest filled place, once there is one; null when none follows, and when
    // the ring is closed.
    Item* Next()
    {
        const std::lock_guard guard(m_gate);
        while (!m_closed && !m_ended && m_filled == m_givenBack)
        {
            m_gate.Wait();
        }
        return m_closed || m_filled == m_givenBack ? nullptr : &m_places[m_givenBack % Places];
    }
    // Taking thread. The place that Next gave may be filled again.
    void GiveBack()
    {
        const std::lock_guard guard(m_gate);
        ++m_givenBack;
        m_gate.WakeAll();
    }

    // Any thread. Nobody waits any more, or gets a place.
    void Close()
    {
        const std::lock_guard guard(m_gate);
        m_closed = true;
        m_gate.WakeAll();
    }

private:
    Gate m_gate;
    std::array<Item, Places> m_places{}; // each belongs to the thread that has it
    std::uint64_t m_filled = 0;          // all below are guarded by m_gate
    std::uint64_t m_givenBack = 0;
    bool m_ended = false;
    bool m_closed = false;
};

} // namespace GlazelHost
