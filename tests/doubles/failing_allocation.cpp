#include "tests/doubles/failing_allocation.h"

#include <atomic>
#include <new>

namespace
{

std::atomic<bool> g_fail = false;
std::atomic<std::size_t> g_count = 0;

// By the forms that throw: their blocks are those that the ordinary operator delete frees.
template <typename Allocate>
void* Allocated(Allocate&& allocate) noexcept
{
    ++g_count;
    try
    {
        return g_fail ? nullptr : allocate();
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

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

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept
{
    return Allocated([=] { return ::operator new(bytes); });
}

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept
{
    return Allocated([=] { return ::operator new[](bytes); });
}
