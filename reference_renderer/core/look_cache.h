// Keeps the looks that were used last ready for pixels, so that a steady picture decodes its record
// once and an animation decodes only the blend of each frame. Pure: no windows.h.
// Tests: tests/reference_renderer/core/look_cache_test.cpp.
#pragma once

#include "reference_renderer/core/prepared_look.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ReferenceRenderer
{

// Not thread-safe: whoever holds it guards Find. What Find hands out may be used by any thread and
// outlives the cache's own interest in it.
class LookCache
{
public:
    struct Answer
    {
        std::shared_ptr<const PreparedLook> look; // null unless the record is usable
        RecordState state;
    };

    // The look of a record. Allocates only until every place was used once, and while more looks
    // than places are in use at a time. Throws std::bad_alloc.
    Answer Find(std::span<const std::uint8_t> record);

    // Keeps a look that is ready already, so that Find does not decode its record. Answers the look
    // that had to go, for reuse; null when somebody still works with it. Throws std::bad_alloc.
    std::shared_ptr<PreparedLook> Keep(std::span<const std::uint8_t> record,
                                       std::shared_ptr<PreparedLook> look);

private:
    struct Place
    {
        std::vector<std::uint8_t> record; // empty = never used
        std::shared_ptr<PreparedLook> look;
        std::uint64_t lastUse = 0;
    };

    Place& LeastRecent() noexcept;

    // A pair of keyframes, the blend of this frame, and as much again for a second clip.
    std::array<Place, 6> m_places;
    std::uint64_t m_uses = 0;
};

} // namespace ReferenceRenderer
