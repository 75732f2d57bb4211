#include "tests/doubles/failing_allocation.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<bool> g_fail = false;
std::atomic<std::size_t> g_count = 0;

} // namespace

std::size_t NothrowAllocations() noexcept
{
    return g_count;
}

NoMemory::NoMemory() noexcept
{
    g_fail = true;
}

NoMemory::~NoMemory()
{
    g_fail = false;
}

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept
{
    ++g_count;
    // The block is freed by the ordinary operator delete[], which is free().
    return g_fail ? nullptr : std::malloc(bytes != 0 ? bytes : 1);
}
