// Which areas of a surface are held for reading and which for writing.
// Pure: no windows.h. Tests: tests/tools/glazelhost/surface/area_locks_test.cpp.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace GlazelHost
{

// Half open: right and bottom lie outside.
struct Area
{
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    friend bool operator==(const Area&, const Area&) = default;
    int Width() const noexcept { return right - left; }
    int Height() const noexcept { return bottom - top; }
    bool Overlaps(const Area& other) const noexcept
    {
        return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
    }
};

// Readers share; a writer is alone on every sample of its area, so that bands which do not overlap
// can be written at the same time. Not synchronised: its owner has the lock.
class AreaLocks
{
public:
    bool CanEnter(const Area& area, bool forWriting) const noexcept
    {
        return std::none_of(m_held.begin(), m_held.end(), [&](const Held& held) {
            return (forWriting || held.forWriting) && held.area.Overlaps(area);
        });
    }
    void Enter(const Area& area, bool forWriting) { m_held.push_back({area, forWriting}); }
    // Gives back one lock of exactly this area and kind.
    void Leave(const Area& area, bool forWriting) noexcept
    {
        const auto held = std::find(m_held.begin(), m_held.end(), Held{area, forWriting});
        if (held != m_held.end())
        {
            m_held.erase(held);
        }
    }
    std::size_t Count() const noexcept { return m_held.size(); }

private:
    struct Held
    {
        Area area;
        bool forWriting;
        friend bool operator==(const Held&, const Held&) = default;
    };
    std::vector<Held> m_held;
};

} // namespace GlazelHost
