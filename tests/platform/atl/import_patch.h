// Puts a function of a test in the place of one that this program imports from the system.
#pragma once

#include <windows.h>

#include <utility>

// The program's own calls go to `replacement` for as long as this lives. The slot of an imported
// function Name is the symbol __imp_Name, which the test declares itself:
// extern "C" decltype(&::Name) __imp_Name;
template <typename Function>
class ImportPatch
{
public:
    ImportPatch(Function*& slot, Function* replacement)
        : m_slot(slot), original(Exchange(slot, replacement))
    {
    }
    ~ImportPatch() { Exchange(m_slot, original); }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

private:
    static Function* Exchange(Function*& slot, Function* function)
    {
        DWORD protection = 0;
        ::VirtualProtect(&slot, sizeof slot, PAGE_READWRITE, &protection);
        Function* const before = std::exchange(slot, function);
        ::VirtualProtect(&slot, sizeof slot, protection, &protection);
        return before;
    }

    Function*& m_slot;

public:
    Function* const original;
};
