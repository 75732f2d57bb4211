#include "tools/glazelhost/media/chosen_frame.h"

namespace GlazelHost
{

std::int64_t ReadChosenFrame(FrameSource& source, const std::string& path,
                             std::optional<std::int64_t> number, SampleType type, Image& image)
{
    const std::int64_t first = source.Info().firstNumber.value_or(1);
    const std::int64_t chosen = number.value_or(first);
    bool isThere = chosen >= first;
    for (std::int64_t passed = first; isThere && passed < chosen; ++passed)
    {
        isThere = source.Skip();
    }
    if (!isThere || !source.Read(image, type))
    {
        throw HostError(path, "it has no frame " + std::to_string(chosen),
                        "choose one of its frames with --frame");
    }
    return chosen;
}

} // namespace GlazelHost
