#include "tests/fakes/allocation_count.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace
{

constexpr std::size_t kNoLimit = std::numeric_limits<std::size_t>::max();

std::atomic<long> g_count = 0;
std::atomic<std::size_t> g_limit = kNoLimit;

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

// The array and nothrow forms of the library come through these.
void* operator new(std::size_t size)
{
    ++g_count;
    void* const block = size < g_limit ? std::malloc(size == 0 ? 1 : size) : nullptr;
    if (block != nullptr)
    {
        return block;
    }
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}
