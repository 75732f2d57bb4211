// The census sees one more of each kind.
#include "tools/glazelhost/validate/process_census.h"

#include <gtest/gtest.h>

#include <cstring>

using GlazelHost::ProcessCensus;
using GlazelHost::TakeCensus;

TEST(ProcessCensus, CountsOneMoreOfEachKind)
{
    constexpr std::size_t kMemory = 1 << 20;
    const HMODULE module = ::GetModuleHandleW(nullptr);
    TakeCensus(module); // what taking it needs itself stays
    const ProcessCensus before = TakeCensus(module);

    const HANDLE event = ::CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const DWORD threadSlot = ::TlsAlloc();
    const DWORD fiberSlot = ::FlsAlloc(nullptr);
    const ATOM atom = ::GlobalAddAtomW(L"an atom of the census's test");
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = ::DefWindowProcW;
    windowClass.hInstance = module;
    windowClass.lpszClassName = L"a class of the census's test";
    ::RegisterClassW(&windowClass);
    const HMODULE library = ::LoadLibraryW(L"msimg32");
    void* const memory = ::VirtualAlloc(nullptr, kMemory, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    std::memset(memory, 1, kMemory);
    const ProcessCensus more = TakeCensus(module);
    void* const block = ::HeapAlloc(::GetProcessHeap(), 0, 100);
    const ProcessCensus withBlock = TakeCensus(module);

    EXPECT_GE(more.handles, before.handles + 1); // a library may hold some, too
    EXPECT_EQ(more.freeTlsSlots, before.freeTlsSlots - 1);
    EXPECT_EQ(more.freeFlsSlots, before.freeFlsSlots - 1);
    EXPECT_GE(more.atoms, before.atoms + 1);
    EXPECT_EQ(more.classes, before.classes + 1);
    EXPECT_EQ(more.modules, before.modules + 1);
    EXPECT_GE(more.privateBytes, before.privateBytes + kMemory);
    EXPECT_EQ(withBlock.heapBlocks, more.heapBlocks + 1);

    ::HeapFree(::GetProcessHeap(), 0, block);
    ::VirtualFree(memory, 0, MEM_RELEASE);
    ::FreeLibrary(library);
    ::UnregisterClassW(windowClass.lpszClassName, module);
    ::GlobalDeleteAtom(atom);
    ::FlsFree(fiberSlot);
    ::TlsFree(threadSlot);
    ::CloseHandle(event);
}
