// The guard that is linked into every program and DLL, seen from within one program.
#include "tests/doubles/child_test.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstddef>
#include <cstdint>

extern "C" std::uintptr_t __stack_chk_guard;

namespace
{

constexpr std::uint64_t kUnseeded = 0x00002B992DDFA232U;

// Writes over the end of its array when `count` is larger than that.
[[gnu::noinline]] int FillArray(std::size_t count)
{
    volatile char bytes[16];
    volatile char* const first = bytes; // what follows is not known to be this array
    for (std::size_t index = 0; index < count; ++index)
    {
        first[index] = 'x';
    }
    return bytes[3];
}

} // namespace

TEST(StackGuard, DiffersFromProcessToProcessAndBeginsWithAZero)
{
    if (IsChild())
    {
        ::TerminateProcess(::GetCurrentProcess(), static_cast<DWORD>(__stack_chk_guard >> 8));
    }
    EXPECT_NE(__stack_chk_guard, kUnseeded);
    EXPECT_EQ(__stack_chk_guard & 0xFF, 0U);
    const DWORD own = static_cast<DWORD>(__stack_chk_guard >> 8);
    const DWORD first = ExitCodeOf(L"StackGuard.Differs*");
    const DWORD second = ExitCodeOf(L"StackGuard.Differs*");
    EXPECT_NE(first, own);
    EXPECT_NE(second, own);
    EXPECT_NE(first, second);
}

TEST(StackGuard, AnOverwrittenStackEndsTheProcessAtOnce)
{
    if (IsChild())
    {
        ::SetErrorMode(SEM_NOGPFAULTERRORBOX); // no debugger is to ask anybody
        FillArray(40);
        ::TerminateProcess(::GetCurrentProcess(), 0); // not reached
    }
    EXPECT_EQ(FillArray(16), 'x') << "a full array is none of its business";
    EXPECT_EQ(ExitCodeOf(L"StackGuard.AnOverwritten*"),
              static_cast<DWORD>(STATUS_STACK_BUFFER_OVERRUN));
}
