#include "samples/renderer/look_cache.h"

#include <algorithm>
#include <atomic>

LookCache::Answer LookCache::Find(std::span<const std::uint8_t> record)
{
    const RecordState state = CheckRecord(record);
    if (state != RecordState::Usable)
    {
        return {nullptr, state};
    }
    ++m_uses;
    for (Place& place : m_places)
    {
        if (std::equal(record.begin(), record.end(), place.record.begin(), place.record.end()))
        {
            place.lastUse = m_uses;
            return {place.look, state};
        }
    }
    Place& place = LeastRecent();
    place.record.clear(); // in case the memory for a new look is not there
    if (place.look == nullptr || place.look.use_count() != 1)
    {
        place.look = std::make_shared<PreparedLook>();
    }
    // The count is read without ordering: whatever the last user read comes before what follows.
    std::atomic_thread_fence(std::memory_order_acquire);
    place.look->Read(record);
    place.record.assign(record.begin(), record.end());
    place.lastUse = m_uses;
    return {place.look, state};
}

LookCache::Place& LookCache::LeastRecent() noexcept
{
    return *std::min_element(
        m_places.begin(), m_places.end(),
        [](const Place& left, const Place& right) { return left.lastUse < right.lastUse; });
}
