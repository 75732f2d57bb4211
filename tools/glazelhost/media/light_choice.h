// Which pictures are graded as linear light, and the words for it.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/light_choice_test.cpp.
#pragma once

#include "tools/glazelhost/media/frame_io.h"

#include <optional>
#include <string>

namespace GlazelHost
{

// What the options "assume linear gamma" of everything that is rendered say.
enum class LookOptions
{
    None, // there is no look with such an option
    Off,
    On,
    Mixed, // of keyframes
};

// What a render works in: 8 bits for an 8-bit source, else float, unless the user has `asked`.
SampleType DepthOf(std::optional<SampleType> asked, const StreamInfo& info);

// The option that a render puts into its records in the place of their own; none: they keep it. It
// is on in every new look, so it counts only for a picture that is linear light, unless the user
// has `asked` for something. The effect obeys it in float only.
std::optional<bool> OptionToRender(SampleType depth, std::optional<bool> asked, const Light& light);

// What comes of it, behind "rendered in": "float, not as linear light (its codes are whole
// numbers)". `looks` say what they say before OptionToRender.
std::string RenderText(SampleType depth, std::optional<bool> asked, const Light& light,
                       LookOptions looks);

// What the check box "Assume Linear Gamma" does for a picture on the screen; none: there is no look
// with that option.
std::string CheckBoxText(SampleType depth, const Light& light, std::optional<bool> option);

} // namespace GlazelHost
