// Whether paths that are spelt differently name one file.
// Pure declarations: no windows.h.
#pragma once

#include <string>
#include <vector>

namespace GlazelHost
{

// Also of a folder. UTF-8.
bool IsThere(const std::string& path);

// Throws HostError (WrongUsage) when one of `outputs` is one of `inputs`, by whatever name, link or
// folder. Paths where nothing is count for nothing.
void CheckApart(const std::vector<std::string>& outputs, const std::vector<std::string>& inputs);

} // namespace GlazelHost
