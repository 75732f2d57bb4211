#include "tests/doubles/guard_pages.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

namespace
{

constexpr wchar_t kGuardVariable[] = L"GLAZEL_GUARD";
constexpr std::size_t kPage = 4096;
constexpr int kFresh = 0xA5; // what new memory holds: nothing that looks like a result
constexpr std::size_t kMostFilled = 1048576; // bytes: a block of gigabytes stays untouched

// Of those that were freed last, which nobody can touch: too many would use up what the system
// keeps of mappings.
std::array<std::atomic<void*>, 4096> g_freed;
std::atomic<std::size_t> g_freedCount = 0;

constinit std::atomic<GuardedSide> g_side = GuardedSide::Unknown;

GuardedSide AskEnvironment() noexcept
{
    std::array<wchar_t, 8> side{};
    const DWORD length =
        ::GetEnvironmentVariableW(kGuardVariable, side.data(), static_cast<DWORD>(side.size()));
    return length == 0 || side[0] == L'n' ? GuardedSide::None
           : side[0] == L'a'              ? GuardedSide::Behind
                                          : GuardedSide::Before;
}

} // namespace

GuardPages TakePages(std::size_t size, bool behind) noexcept
{
    const std::size_t bytes = (std::max(size, std::size_t{1}) + kPage - 1) / kPage * kPage;
    auto* const first = static_cast<std::byte*>(
        ::VirtualAlloc(nullptr, bytes + 2 * kPage, MEM_RESERVE, PAGE_NOACCESS));
    if (first == nullptr ||
        ::VirtualAlloc(first + kPage, bytes, MEM_COMMIT, PAGE_READWRITE) == nullptr)
    {
        return {};
    }
    std::memset(first + kPage, kFresh, std::min(bytes, kMostFilled));
    return {first, first + kPage + (behind ? bytes - size : 0)};
}

void LockAway(void* block) noexcept
{
    MEMORY_BASIC_INFORMATION pages{};
    ::VirtualQuery(block, &pages, sizeof pages);
    ::VirtualFree(pages.BaseAddress, pages.RegionSize, MEM_DECOMMIT);
    if (void* const old = g_freed[g_freedCount++ % g_freed.size()].exchange(pages.AllocationBase))
    {
        ::VirtualFree(old, 0, MEM_RELEASE);
    }
}

GuardedSide GuardedSideOfAll() noexcept
{
    if (g_side == GuardedSide::Unknown)
    {
        const DWORD lastError = ::GetLastError();
        g_side = AskEnvironment();
        ::SetLastError(lastError);
    }
    return g_side;
}
