#include "tests/reference_renderer/editor/gui_objects.h"

#include <windows.h>

#include <winternl.h>

#include <cstddef>
#include <cstdint>

namespace ReferenceRenderer
{

namespace
{

// An entry of the table that the process environment block leads to.
struct GdiEntry
{
    std::uint64_t object;
    std::uint32_t owner;
    std::uint16_t unique;
    std::uint8_t type; // 0 = free
    std::uint8_t flags;
    std::uint64_t user;
};
static_assert(sizeof(GdiEntry) == 24);

constexpr std::size_t kGdiTableOffset = 0xF8; // in the process environment block
constexpr std::size_t kGdiEntries = 65536;

unsigned CountTable()
{
    PROCESS_BASIC_INFORMATION information{};
    ::NtQueryInformationProcess(::GetCurrentProcess(), ProcessBasicInformation, &information,
                                sizeof information, nullptr);
    const auto* const block = reinterpret_cast<const std::byte*>(information.PebBaseAddress);
    const auto* const entries = *reinterpret_cast<const GdiEntry* const*>(block + kGdiTableOffset);
    unsigned count = 0;
    for (std::size_t i = 0; i < kGdiEntries; ++i)
    {
        count += entries[i].type != 0 ? 1U : 0U;
    }
    return count;
}

BOOL CALLBACK CountWindow(HWND window, LPARAM count) noexcept
{
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    *reinterpret_cast<unsigned*>(count) += process == ::GetCurrentProcessId() ? 1U : 0U;
    return TRUE;
}

unsigned CountWindows()
{
    unsigned count = 0;
    ::EnumWindows(CountWindow, reinterpret_cast<LPARAM>(&count));
    return count;
}

} // namespace

GuiObjects CountGuiObjects()
{
    const GuiObjects counted{::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS),
                             ::GetGuiResources(::GetCurrentProcess(), GR_USEROBJECTS)};
    return counted.gdi != 0 ? counted : GuiObjects{CountTable(), CountWindows()};
}

} // namespace ReferenceRenderer
