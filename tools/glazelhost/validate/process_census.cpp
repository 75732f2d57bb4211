#include "tools/glazelhost/validate/process_census.h"

#include "support/win32/file_handle.h"

#include <psapi.h>
#include <tlhelp32.h>

#include <array>
#include <cstdint>
#include <vector>

namespace GlazelHost
{

namespace
{

constexpr std::uintptr_t kHighestHandle = 0x8000; // far above what a test process reaches
constexpr UINT kFirstNamedAtom = 0xC000;
constexpr UINT kLastNamedAtom = 0xFFFF;

// One by one: not every system answers GetProcessHandleCount.
std::size_t Handles()
{
    std::size_t handles = 0;
    for (std::uintptr_t value = sizeof(DWORD); value < kHighestHandle; value += sizeof(DWORD))
    {
        DWORD flags = 0;
        handles +=
            ::GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != FALSE ? 1U : 0U;
    }
    return handles;
}

std::size_t HeapBlocks()
{
    std::array<HANDLE, 64> heaps{};
    const DWORD count = ::GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    std::size_t blocks = 0;
    for (DWORD index = 0; index < count; ++index)
    {
        ::HeapLock(heaps[index]);
        PROCESS_HEAP_ENTRY entry{};
        while (::HeapWalk(heaps[index], &entry) != FALSE)
        {
            blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? 1U : 0U;
        }
        ::HeapUnlock(heaps[index]);
    }
    return blocks;
}

template <typename Take, typename GiveBack>
std::size_t FreeSlots(Take take, GiveBack giveBack)
{
    std::vector<DWORD> slots;
    slots.reserve(8192);
    for (DWORD slot = take(); slot != TLS_OUT_OF_INDEXES; slot = take())
    {
        slots.push_back(slot);
    }
    for (const DWORD slot : slots)
    {
        giveBack(slot);
    }
    return slots.size();
}

std::size_t Atoms()
{
    std::size_t atoms = 0;
    WCHAR name[256];
    for (UINT atom = kFirstNamedAtom; atom <= kLastNamedAtom; ++atom)
    {
        atoms += ::GlobalGetAtomNameW(static_cast<ATOM>(atom), name, 256) != 0 ? 1U : 0U;
        atoms += ::GetClipboardFormatNameW(atom, name, 256) != 0 ? 1U : 0U;
    }
    return atoms;
}

std::size_t Classes(HMODULE module)
{
    std::size_t classes = 0;
    for (UINT atom = kFirstNamedAtom; atom <= kLastNamedAtom; ++atom)
    {
        WNDCLASSEXW description{};
        description.cbSize = sizeof description;
        const bool known =
            ::GetClassInfoExW(module, MAKEINTATOM(static_cast<WORD>(atom)), &description) != FALSE;
        classes += known && description.hInstance == module ? 1U : 0U;
    }
    return classes;
}

std::size_t Modules()
{
    std::array<HMODULE, 1024> modules{};
    DWORD bytes = 0;
    ::EnumProcessModules(::GetCurrentProcess(), modules.data(), sizeof modules, &bytes);
    return bytes / sizeof(HMODULE);
}

std::size_t Threads()
{
    const FileHandle all(::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    std::size_t threads = 0;
    for (BOOL found = ::Thread32First(all.get(), &entry); found != FALSE;
         found = ::Thread32Next(all.get(), &entry))
    {
        threads += entry.th32OwnerProcessID == ::GetCurrentProcessId() ? 1U : 0U;
    }
    return threads;
}

} // namespace

ProcessCensus TakeCensus(HMODULE module)
{
    ProcessCensus census;
    census.freeTlsSlots = FreeSlots(::TlsAlloc, ::TlsFree);
    census.freeFlsSlots = FreeSlots([] { return ::FlsAlloc(nullptr); }, ::FlsFree);
    census.atoms = Atoms();
    census.classes = Classes(module);
    census.modules = Modules();
    census.heapBlocks = HeapBlocks();
    PROCESS_MEMORY_COUNTERS memory{};
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &memory, sizeof memory);
    census.privateBytes = memory.PagefileUsage;
    census.threads = Threads();
    census.gdiObjects = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
    census.userObjects = ::GetGuiResources(::GetCurrentProcess(), GR_USEROBJECTS);
    census.handles = Handles();
    return census;
}

std::ostream& operator<<(std::ostream& stream, const ProcessCensus& census)
{
    return stream << census.handles << " handles, " << census.privateBytes << " private bytes, "
                  << census.heapBlocks << " heap blocks, " << census.freeTlsSlots
                  << " free TLS slots, " << census.freeFlsSlots << " free FLS slots, "
                  << census.atoms << " atoms, " << census.classes << " classes, " << census.modules
                  << " modules, " << census.threads << " threads, " << census.gdiObjects
                  << " GDI objects, " << census.userObjects << " user objects";
}

} // namespace GlazelHost
