#include "tests/doubles/allocation_count.h"

#include "tests/doubles/guard_pages.h"

#include <windows.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace
{

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

std::atomic<long> g_count = 0;
std::atomic<std::size_t> g_limit = kNoLimit;
std::atomic<std::size_t> g_guardedFrom = kNoLimit; // bytes
std::atomic<bool> g_guardBehind = true;

struct GuardedBlock
{
    std::atomic<void*> block = nullptr; // null: the place is free
    void* pages = nullptr;
};
std::array<GuardedBlock, 64> g_guarded;

// Null when there is no place or no memory.
void* GuardedAllocate(std::size_t size) noexcept
{
    const GuardPages pages = TakePages(size, g_guardBehind);
    for (GuardedBlock& place : g_guarded)
    {
        void* free = nullptr;
        if (pages.first != nullptr && place.block.compare_exchange_strong(free, pages.block))
        {
            place.pages = pages.first;
            return pages.block;
        }
    }
    return nullptr;
}

bool GuardedFree(void* block) noexcept
{
    for (GuardedBlock& place : g_guarded)
    {
        if (block != nullptr && place.block == block)
        {
            ::VirtualFree(place.pages, 0, MEM_RELEASE);
            place.block = nullptr;
            return true;
        }
    }
    return false;
}

void* Allocate(std::size_t size) noexcept
{
    if (size >= g_limit)
    {
        return nullptr;
    }
    const GuardedSide always = GuardedSideOfAll();
    if (always != GuardedSide::None)
    {
        const bool behind =
            size >= g_guardedFrom ? g_guardBehind.load() : always == GuardedSide::Behind;
        return TakePages(size, behind).block;
    }
    return size >= g_guardedFrom ? GuardedAllocate(size) : std::malloc(size == 0 ? 1 : size);
}

void Free(void* block) noexcept
{
    if (block == nullptr)
    {
        return;
    }
    const DWORD lastError = ::GetLastError();
    if (GuardedSideOfAll() != GuardedSide::None)
    {
        LockAway(block);
    }
    else if (!GuardedFree(block))
    {
        std::free(block);
    }
    ::SetLastError(lastError);
}

} // namespace

long AllocationCount() noexcept
{
    return g_count;
}

ShortMemory::ShortMemory(std::size_t bytes) noexcept
{
    g_limit = bytes;
}

ShortMemory::~ShortMemory()
{
    g_limit = kNoLimit;
}

GuardedMemory::GuardedMemory(std::size_t bytes, Side side) noexcept
{
    g_guardBehind = side == Side::Behind;
    g_guardedFrom = bytes;
}

GuardedMemory::~GuardedMemory()
{
    g_guardedFrom = kNoLimit;
}

// The array and nothrow forms of the library come through these.
void* operator new(std::size_t size)
{
    ++g_count;
    if (void* const block = Allocate(size))
    {
        return block;
    }
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept
{
    Free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    Free(block);
}
