// Counts what operator new is asked for in this program, since its start and on all threads, and
// lets it fail. Link test_allocation_count: it replaces the operators. With GLAZEL_GUARD=after (or
// before) in the environment every block lies against a page that nobody can touch, behind it (or
// before it), and nobody can touch it when it was freed: a step over its bounds ends the program.
#pragma once

#include <cstddef>

long AllocationCount() noexcept;

// While it lives, each new block of `bytes` and more lies against a page that nobody can touch, so
// that a step over its end (or over its beginning) ends the program. One at a time; for blocks that
// are few.
class GuardedMemory
{
public:
    enum class Side
    {
        Behind,
        Before,
    };
    GuardedMemory(std::size_t bytes, Side side) noexcept;
    ~GuardedMemory();
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
};

// While it lives, memory is short for blocks of `bytes` and more, on all threads. One at a time.
class ShortMemory
{
public:
    explicit ShortMemory(std::size_t bytes) noexcept;
    ~ShortMemory();
    ShortMemory(const ShortMemory&) = delete;
    ShortMemory& operator=(const ShortMemory&) = delete;
};
