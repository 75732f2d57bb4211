// The two symbols that -fstack-protector needs. Stands in for the compiler's libssp, whose start-up
// opens a cryptographic provider, which loads libraries: not allowed while a DLL is being loaded.
// Tests: tests/module/stack_guard_test.cpp.
#include <windows.h>

#include <cstdint>

extern "C"
{
// What functions put between their arrays and their return address.
std::uintptr_t __stack_chk_guard = 0x00002B992DDFA232U;

// The guard was overwritten: the stack cannot be trusted, so nothing is unwound and nobody is
// asked.
[[noreturn]] void __stack_chk_fail()
{
    // What __fastfail does, which these headers lack: ends the process with
    // STATUS_STACK_BUFFER_OVERRUN.
    constexpr unsigned int kStackCookieCheckFailure = 2;
    asm volatile("int $0x29" : : "c"(kStackCookieCheckFailure));
    __builtin_unreachable();
}
}

namespace
{

std::uint64_t Mixed(std::uint64_t state, std::uint64_t value) noexcept
{
    // The finishing steps of SplitMix64: each bit of the input changes half of the output's.
    state = (state ^ value) + 0x9E3779B97F4A7C15U;
    state = (state ^ (state >> 30)) * 0xBF58476D1CE4E5B9U;
    state = (state ^ (state >> 27)) * 0x94D049BB133111EBU;
    return state ^ (state >> 31);
}

// The same sources as the system's own run time has: what an attacker outside the process cannot
// know. Runs before all other constructors; must not be guarded, since the guard changes within.
__attribute__((constructor(101), no_stack_protector)) void SeedStackGuard() noexcept
{
    FILETIME time;
    ::GetSystemTimePreciseAsFileTime(&time);
    LARGE_INTEGER counter;
    ::QueryPerformanceCounter(&counter);
    std::uint64_t seed = Mixed(time.dwLowDateTime, time.dwHighDateTime);
    seed = Mixed(seed, static_cast<std::uint64_t>(counter.QuadPart));
    seed = Mixed(seed, ::GetCurrentProcessId());
    seed = Mixed(seed, ::GetCurrentThreadId());
    seed = Mixed(seed, reinterpret_cast<std::uintptr_t>(&time));           // the stack's place
    seed = Mixed(seed, reinterpret_cast<std::uintptr_t>(&SeedStackGuard)); // the module's place
    // The lowest byte in memory stays 0: text that runs over its end cannot write the guard.
    __stack_chk_guard = seed & ~std::uint64_t{0xFF};
}

} // namespace
