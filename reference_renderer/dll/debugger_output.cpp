#include "reference_renderer/dll/debugger_output.h"

#include "support/win32/utf8.h"

#include <atomic>
#include <exception>
#include <string>

#include <windows.h>

namespace ReferenceRenderer
{

namespace
{

constexpr unsigned kOutOfMemoryBit = 31;

std::atomic<unsigned> g_told{0}; // one bit for each reason

void TellOnce(unsigned bit, std::string_view message) noexcept
{
    const unsigned mask = 1U << bit;
    if ((g_told.fetch_or(mask) & mask) == 0)
    {
        TellDebugger(message);
    }
}

const char* ReasonOf(RecordState state) noexcept
{
    switch (state)
    {
    case RecordState::Usable:
        break;
    case RecordState::Empty:
        return "the look record is empty; pictures pass unchanged";
    case RecordState::Foreign:
        return "the look record is not one of this renderer, or of a newer version; pictures pass "
               "unchanged";
    case RecordState::Damaged:
        return "the look record is damaged; pictures pass unchanged";
    }
    return "the look record is usable";
}

} // namespace

void TellDebugger(std::string_view message) noexcept
{
    try
    {
        ::OutputDebugStringW((L"GZ3Renderer: " + Wide(message) + L"\n").c_str());
    }
    catch (const std::exception&)
    {
        ::OutputDebugStringW(L"GZ3Renderer: out of memory for a message\n");
    }
}

void TellUnusableRecord(RecordState state) noexcept
{
    TellOnce(static_cast<unsigned>(state), ReasonOf(state));
}

void TellOutOfMemory() noexcept
{
    TellOnce(kOutOfMemoryBit, "no memory for the look; pictures pass unchanged");
}

} // namespace ReferenceRenderer
