#include "tests/doubles/allocation_count.h"

#include <windows.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace
{

constexpr std::size_t kPage = 4096;

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

// Null when there is no place or no memory. A block whose end is guarded begins wherever that puts
// it: at a multiple of its size only.
void* GuardedAllocate(std::size_t size) noexcept
{
    const std::size_t pages = (size + kPage - 1) / kPage * kPage;
    auto* const first = static_cast<std::byte*>(
        ::VirtualAlloc(nullptr, pages + 2 * kPage, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
    DWORD before = 0;
    if (first == nullptr || !::VirtualProtect(first, kPage, PAGE_NOACCESS, &before) ||
        !::VirtualProtect(first + kPage + pages, kPage, PAGE_NOACCESS, &before))
    {
        return nullptr;
    }
    std::byte* const block = first + kPage + (g_guardBehind ? pages - size : 0);
    for (GuardedBlock& place : g_guarded)
    {
        void* free = nullptr;
        if (place.block.compare_exchange_strong(free, block))
        {
            place.pages = first;
            return block;
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

void Free(void* block) noexcept
{
    if (!GuardedFree(block))
    {
        std::free(block);
    }
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
    void* block = nullptr;
    if (size < g_limit)
    {
        block = size >= g_guardedFrom ? GuardedAllocate(size) : std::malloc(size == 0 ? 1 : size);
    }
    if (block != nullptr)
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
