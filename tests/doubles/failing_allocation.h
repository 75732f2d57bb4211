// Lets allocations that answer null for want of memory do so. Replaces operator new(nothrow) of the
// program that it is linked into.
#pragma once

#include <cstddef>

// Since the program's start.
std::size_t NothrowAllocations() noexcept;

// While one lives, every such allocation fails. One thread at a time.
class NoMemory
{
public:
    NoMemory() noexcept;
    ~NoMemory();
    NoMemory(const NoMemory&) = delete;
    NoMemory& operator=(const NoMemory&) = delete;
};
