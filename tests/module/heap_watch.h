// Counts the heap allocations that one loaded module makes, by way of its import table.
#pragma once

#include <windows.h>

#include <cstddef>

// From construction to destruction every import of `module` that allocates memory goes by way of a
// counter. One at a time in a process. Throws std::runtime_error when the module imports no
// allocation function at all: nothing could be counted then.
class HeapWatch
{
public:
    explicit HeapWatch(HMODULE module);
    ~HeapWatch();
    HeapWatch(const HeapWatch&) = delete;
    HeapWatch& operator=(const HeapWatch&) = delete;

    std::size_t Allocations() const;

private:
    void Exchange(bool watch);

    HMODULE m_module;
    std::size_t m_slots = 0;
};
