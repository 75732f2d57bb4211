// Memory against pages that nobody can touch. Takes no other memory, so that allocators can use it.
#pragma once

#include <cstddef>

struct GuardPages
{
    std::byte* first = nullptr; // of the pages, for VirtualFree; null: no memory
    std::byte* block = nullptr; // filled with a pattern that looks like no result
};

// There are such pages on both sides; the block lies directly against the one behind or before it.
// One whose end is guarded begins wherever that puts it: at a multiple of its size only.
GuardPages TakePages(std::size_t size, bool behind) noexcept;
// Nobody can touch the block's pages from here on, until thousands of others were locked away.
void LockAway(void* block) noexcept;

// Against which side the environment wants every block of the program: GLAZEL_GUARD=after,
// before or none.
enum class GuardedSide
{
    Unknown,
    None,
    Behind,
    Before,
};
GuardedSide GuardedSideOfAll() noexcept;
