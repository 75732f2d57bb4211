// Counts what a DLL can leave behind in the process. Tests: tests/module/process_census_test.cpp.
#pragma once

#include <windows.h>

#include <cstddef>
#include <ostream>

namespace GlazelHost
{

struct ProcessCensus
{
    std::size_t handles = 0;
    std::size_t privateBytes = 0;
    std::size_t heapBlocks = 0; // allocated, in all heaps
    std::size_t freeTlsSlots = 0;
    std::size_t freeFlsSlots = 0;
    std::size_t atoms = 0;   // global atoms, registered messages and clipboard formats
    std::size_t classes = 0; // window classes that the module at the given address can use
    std::size_t modules = 0;
    std::size_t threads = 0;
    std::size_t gdiObjects = 0; // 0 where the system does not tell, as that of the windows
    std::size_t userObjects = 0;
};

// No other thread may allocate meanwhile. `module` is where the DLL was, or is.
ProcessCensus TakeCensus(HMODULE module);

std::ostream& operator<<(std::ostream& stream, const ProcessCensus& census);

} // namespace GlazelHost
