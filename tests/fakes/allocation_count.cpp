#include "tests/fakes/allocation_count.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<long> g_count = 0;

}

long AllocationCount() noexcept
{
    return g_count;
}

// The array and nothrow forms of the library come through these.
void* operator new(std::size_t size)
{
    ++g_count;
    if (void* const block = std::malloc(size == 0 ? 1 : size))
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
