// Which groups of checks a run takes. Pure: no windows.h.
// Tests: tests/tools/glazelhost/validate/group_choice_test.cpp.
#pragma once

#include "tools/glazelhost/validate/check_group.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace GlazelHost
{

inline constexpr unsigned kMostJobs = 32;            // of them can be waited for at once
inline constexpr unsigned kLongestLimit = 24 * 3600; // seconds

// What a run depends on, the files beside. Kept in its report, so that it can be repeated.
struct ValidateOptions
{
    int level = kHostLevel;
    std::vector<std::string> only; // patterns; none: all
    std::vector<std::string> skip; // patterns, stronger than `only`
    std::uint32_t seed = 0;
    unsigned jobs = 1;          // groups at a time, > 0
    unsigned timeLimit = 60;    // of a group, seconds, > 0
    std::string rendererFolder; // UTF-8; of a plug-in's renderer; empty means the default

    friend bool operator==(const ValidateOptions&, const ValidateOptions&) = default;
};

// `*` stands for any characters, `?` for one; all others for themselves.
bool Matches(std::string_view pattern, std::string_view name) noexcept;

bool IsChosen(const CheckGroup& group, const ValidateOptions& options) noexcept;

// A seed for one group, whichever others run.
std::uint32_t SeedOf(std::string_view group, std::uint32_t seed) noexcept;

} // namespace GlazelHost
