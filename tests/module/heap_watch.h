// Counts the heap allocations that one loaded module makes, by way of its import table.
#pragma once

#include "tests/module/stand_ins.h"

#include <windows.h>

#include <cstddef>

// From construction to destruction every import of `module` that allocates memory goes by way of a
// counter. One at a time in a process. Throws std::runtime_error when the module imports no
// allocation function at all: nothing could be counted then.
class HeapWatch
{
public:
    explicit HeapWatch(HMODULE module);
    std::size_t Allocations() const;

private:
    StandIns m_standIns;
};
