// Lets each thing fail, one after the other, that a loaded module asks of the system and of a
// test's objects, and knows what the module holds of the system.
#pragma once

#include "tests/module/stand_ins.h"

#include <windows.h>

#include <cstddef>
#include <map>
#include <string>
#include <vector>

// A point is reached when the module calls one of the imports in fault_points.cpp, or when a
// double asks IsDue. One at a time in a process. What the running program gives back counts as
// given back by the module: blocks of memory go from one to the other.
class FaultPoints
{
public:
    enum class Which
    {
        One,    // memory comes back
        Onward, // it does not
    };

    explicit FaultPoints(HMODULE module);

    // The `nth` point that the calling thread reaches from now on fails.
    void Arm(std::size_t nth, Which which);
    // Ends that and answers the points that failed, in their order.
    std::vector<std::string> Disarm();
    // Blocks, device contexts and drawing objects, by what they came from and how many.
    static std::map<std::string, int> Held();
    // Where the pointer is on the screen, as the module sees it.
    static void PutPointer(POINT place);
    // The boxes that the module wanted to show since the last call: nobody sees them.
    static std::vector<std::string> TakeBoxes();

    // For the doubles: whether the call that asks has to fail.
    static bool IsDue(const char* point);

private:
    StandIns m_module;
    StandIns m_program;
};
