// Counts what operator new is asked for in this program, since its start and on all threads, and
// lets it fail. Link test_allocation_count: it replaces the operators.
#pragma once

#include <cstddef>

long AllocationCount() noexcept;

// While it lives, memory is short for blocks of `bytes` and more, on all threads. One at a time.
class ShortMemory
{
public:
    explicit ShortMemory(std::size_t bytes) noexcept;
    ~ShortMemory();
    ShortMemory(const ShortMemory&) = delete;
    ShortMemory& operator=(const ShortMemory&) = delete;
};
