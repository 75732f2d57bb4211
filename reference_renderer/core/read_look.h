// What a reader makes of a file. Pure: no windows.h.
#pragma once

#include "reference_renderer/core/look.h"

#include <string>
#include <vector>

namespace ReferenceRenderer
{

struct ReadLook
{
    Look look;
    std::vector<std::string> warnings;
    double largestError = 0.0; // of the look against what the file says, in any channel
};

} // namespace ReferenceRenderer
