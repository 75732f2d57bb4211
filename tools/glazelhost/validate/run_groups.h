// Runs groups of checks, each in a process of its own, some at a time.
#pragma once

#include "tools/glazelhost/validate/check_group.h"
#include "tools/glazelhost/validate/findings.h"
#include "tools/glazelhost/validate/group_choice.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace GlazelHost
{

// `done` gets each result as soon as it and all before it are there. Throws HostError when no
// process can be started. Processes that still run end with this one.
std::vector<GroupResult> RunGroups(const std::string& file,
                                   std::span<const CheckGroup* const> groups,
                                   const ValidateOptions& options,
                                   const std::function<void(const GroupResult&)>& done);

} // namespace GlazelHost
