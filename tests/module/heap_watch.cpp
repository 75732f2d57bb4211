#include "tests/module/heap_watch.h"

#include <objbase.h>

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <stdexcept>

namespace
{

std::atomic<std::size_t> g_allocations;

// A counting stand-in for one function; `real` is what the module imported. Tags keep functions of
// the same signature apart.
template <int Tag, typename Result, typename... Arguments>
struct Counted
{
    static inline Result (*real)(Arguments...) = nullptr;
    static Result Call(Arguments... arguments)
    {
        ++g_allocations;
        return real(arguments...);
    }
};

template <typename Function>
StandIn Entry(const char* name)
{
    return {name, std::bit_cast<std::uintptr_t>(&Function::Call),
            reinterpret_cast<std::uintptr_t*>(&Function::real)};
}

const std::array<StandIn, 9>& Allocators()
{
    // clang-format off
    static const std::array<StandIn, 9> entries{
        Entry<Counted<0, void*, std::size_t>>("malloc"),
        Entry<Counted<1, void*, std::size_t, std::size_t>>("calloc"),
        Entry<Counted<2, void*, void*, std::size_t>>("realloc"),
        Entry<Counted<3, void*, HANDLE, DWORD, SIZE_T>>("HeapAlloc"),
        Entry<Counted<4, void*, HANDLE, DWORD, void*, SIZE_T>>("HeapReAlloc"),
        Entry<Counted<5, HLOCAL, UINT, SIZE_T>>("LocalAlloc"),
        Entry<Counted<6, HGLOBAL, UINT, SIZE_T>>("GlobalAlloc"),
        Entry<Counted<7, void*, SIZE_T>>("CoTaskMemAlloc"),
        Entry<Counted<8, void*, void*, SIZE_T, DWORD, DWORD>>("VirtualAlloc"),
    };
    // clang-format on
    return entries;
}

} // namespace

HeapWatch::HeapWatch(HMODULE module) : m_standIns(module, Allocators())
{
    g_allocations = 0;
    if (m_standIns.Slots() == 0)
    {
        throw std::runtime_error("the module imports nothing that allocates");
    }
}

std::size_t HeapWatch::Allocations() const
{
    return g_allocations;
}
