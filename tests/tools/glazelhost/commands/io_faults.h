// Lets each call go wrong, one after the other, by which this program and a library open, read,
// write and name files, pipes and folders, on whatever thread.
#pragma once

#include "tests/module/stand_ins.h"

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

// A point is a function with the file that it is called for, "ReadFile in.png". Nothing counts but
// files that were opened, and handles that were named, while it is armed. One at a time in a
// process.
class IoFaults
{
public:
    enum class Kind
    {
        Fails,   // once
        Stays,   // fails from then on
        Part,    // moves one byte and says so
        Nothing, // moves none from then on and says that it worked
    };
    struct Point
    {
        std::string name;
        std::size_t calls;
    };

    explicit IoFaults(HMODULE library);

    static void Name(HANDLE handle, const std::string& name);
    // The `nth` call at that point goes wrong; an empty one is reached by none.
    static void Arm(const std::string& point, std::size_t nth, Kind kind);
    // Ends that and answers the points that were reached, by when they first were.
    static std::vector<Point> Disarm();
    // What was opened and has not been closed.
    static std::vector<std::string> Held();

private:
    StandIns m_program;
    StandIns m_library;
};
