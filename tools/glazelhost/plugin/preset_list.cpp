#include "tools/glazelhost/plugin/preset_list.h"

#include "tools/glazelhost/host_error.h"

#include <algorithm>

namespace GlazelHost
{

std::size_t PresetIndex(const std::vector<std::string>& names, const std::string& name)
{
    const auto found = std::ranges::find(names, name);
    if (found != names.end())
    {
        return static_cast<std::size_t>(found - names.begin());
    }
    std::string list;
    for (const std::string& known : names)
    {
        list += (list.empty() ? "" : ", ") + ('"' + known + '"');
    }
    throw HostError("preset \"" + name + '"', "the effect has none of this name",
                    list.empty() ? "leave --preset out: it has no presets at all"
                                 : "use one of " + list);
}

} // namespace GlazelHost
