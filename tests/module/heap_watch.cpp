#include "tests/module/heap_watch.h"

#include "tools/glazelhost/plugin/pe_image.h"

#include <objbase.h>

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

using namespace GlazelHost;

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

struct StandIn
{
    const char* name;
    std::uintptr_t address;
    std::uintptr_t* real;
};

template <typename Function>
StandIn Entry(const char* name)
{
    return {name, std::bit_cast<std::uintptr_t>(&Function::Call),
            reinterpret_cast<std::uintptr_t*>(&Function::real)};
}

const std::array<StandIn, 9>& StandIns()
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

std::span<const std::byte> ImageOf(HMODULE module)
{
    const auto* const base = reinterpret_cast<const std::byte*>(module);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const nt = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    return {base, nt->OptionalHeader.SizeOfImage};
}

} // namespace

HeapWatch::HeapWatch(HMODULE module) : m_module(module)
{
    g_allocations = 0;
    Exchange(true);
    if (m_slots == 0)
    {
        throw std::runtime_error("the module imports nothing that allocates");
    }
}

HeapWatch::~HeapWatch()
{
    Exchange(false);
}

std::size_t HeapWatch::Allocations() const
{
    return g_allocations;
}

void HeapWatch::Exchange(bool watch)
{
    const auto image = ReadPeImage(ImageOf(m_module), PeLayout::Loaded);
    if (!image)
    {
        return;
    }
    for (const ImportedLibrary& library : image->imports)
    {
        for (const ImportSlot& slot : library.slots)
        {
            for (const StandIn& standIn : StandIns())
            {
                if (slot.function != standIn.name)
                {
                    continue;
                }
                auto* const place = reinterpret_cast<std::uintptr_t*>(
                    reinterpret_cast<std::byte*>(m_module) + slot.slotOffset);
                DWORD protection = 0;
                ::VirtualProtect(place, sizeof *place, PAGE_READWRITE, &protection);
                if (watch)
                {
                    *standIn.real = *place;
                }
                *place = watch ? standIn.address : *standIn.real;
                ::VirtualProtect(place, sizeof *place, protection, &protection);
                m_slots += watch ? 1U : 0U;
            }
        }
    }
}
