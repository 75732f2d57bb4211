// Where the two libraries are that a job is done with.
#pragma once

#include <string>

namespace GlazelHost
{

// UTF-8; empty means the default.
struct ToolPaths
{
    std::string rendererFolder;
    std::string plugin;
};

} // namespace GlazelHost
