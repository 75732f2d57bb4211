#include "reference_renderer/core/look_cache.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

// The count is read without ordering: whatever the last user read comes before what follows.
bool IsIdle(const std::shared_ptr<PreparedLook>& look) noexcept
{
    const bool idle = look != nullptr && look.use_count() == 1;
    std::atomic_thread_fence(std::memory_order_acquire);
    return idle;
}

} // namespace

LookCache::Answer LookCache::Find(std::span<const std::uint8_t> record)
{
    for (Place& place : m_places)
    {
        const bool same =
            std::equal(record.begin(), record.end(), place.record.begin(), place.record.end());
        if (same && !record.empty())
        {
            place.lastUse = ++m_uses;
            return {place.look, RecordState::Usable};
        }
    }
    const RecordState state = CheckRecord(record);
    if (state != RecordState::Usable)
    {
        return {nullptr, state};
    }
    Place& place = LeastRecent();
    place.record.clear(); // in case the memory for a new look is not there
    if (!IsIdle(place.look))
    {
        place.look = std::make_shared<PreparedLook>();
    }
    place.look->Read(record);
    place.record.assign(record.begin(), record.end());
    place.lastUse = ++m_uses;
    return {place.look, state};
}

std::shared_ptr<PreparedLook> LookCache::Keep(std::span<const std::uint8_t> record,
                                              std::shared_ptr<PreparedLook> look)
{
    Place& place = LeastRecent();
    place.record.assign(record.begin(), record.end());
    place.look.swap(look);
    place.lastUse = ++m_uses;
    return IsIdle(look) ? std::move(look) : nullptr;
}

LookCache::Place& LookCache::LeastRecent() noexcept
{
    return *std::min_element(
        m_places.begin(), m_places.end(),
        [](const Place& left, const Place& right) { return left.lastUse < right.lastUse; });
}

} // namespace ReferenceRenderer
