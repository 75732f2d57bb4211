// Counts what operator new is asked for in this program, since its start and on all threads. Link
// test_allocation_count: it replaces the operators.
#pragma once

long AllocationCount() noexcept;
