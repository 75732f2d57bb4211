// Puts functions of a test in the place of those that a loaded module imports.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <span>

struct StandIn
{
    const char* name;     // as imported
    std::uintptr_t call;  // the stand-in
    std::uintptr_t* real; // gets the address of what it stands in for
};

// From construction to destruction, or until the module is unloaded. The table outlives this; a
// stand-in may be in one place at a time only.
class StandIns
{
public:
    StandIns(HMODULE module, std::span<const StandIn> table);
    ~StandIns();
    StandIns(const StandIns&) = delete;
    StandIns& operator=(const StandIns&) = delete;

    std::size_t Slots() const { return m_slots; } // that were exchanged

private:
    void Exchange(bool in);

    HMODULE m_module;
    std::span<const StandIn> m_table;
    std::size_t m_slots = 0;
};
