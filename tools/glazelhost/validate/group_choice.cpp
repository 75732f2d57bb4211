#include "tools/glazelhost/validate/group_choice.h"

#include <algorithm>

namespace GlazelHost
{

bool Matches(std::string_view pattern, std::string_view name) noexcept
{
    std::size_t at = 0;
    std::size_t in = 0;
    std::size_t star = std::string_view::npos; // the last one met
    std::size_t covered = 0;                   // how far it reaches in the name
    while (in < name.size())
    {
        if (at < pattern.size() && pattern[at] == '*')
        {
            star = at++;
            covered = in;
        }
        else if (at < pattern.size() && (pattern[at] == '?' || pattern[at] == name[in]))
        {
            ++at;
            ++in;
        }
        else if (star != std::string_view::npos)
        {
            at = star + 1;
            in = ++covered;
        }
        else
        {
            return false;
        }
    }
    return pattern.find_first_not_of('*', at) == std::string_view::npos;
}

bool IsChosen(const CheckGroup& group, const ValidateOptions& options) noexcept
{
    const auto fits = [&group](const std::string& pattern) { return Matches(pattern, group.name); };
    return group.level <= options.level &&
           (options.only.empty() || std::ranges::any_of(options.only, fits)) &&
           std::ranges::none_of(options.skip, fits);
}

std::uint32_t SeedOf(std::string_view group, std::uint32_t seed) noexcept
{
    constexpr std::uint32_t kFnvPrime = 16777619; // the 32-bit hash of Fowler, Noll and Vo
    std::uint32_t hash = 2166136261U ^ seed;
    for (const char character : group)
    {
        hash = (hash ^ static_cast<std::uint8_t>(character)) * kFnvPrime;
    }
    return hash;
}

} // namespace GlazelHost
