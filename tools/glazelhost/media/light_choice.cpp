#include "tools/glazelhost/media/light_choice.h"

namespace GlazelHost
{

namespace
{

constexpr char kLinear[] = "as linear light";
constexpr char kNotLinear[] = "not as linear light";

} // namespace

SampleType DepthOf(std::optional<SampleType> asked, const StreamInfo& info)
{
    return asked.value_or(info.bitsPerChannel > 8 ? SampleType::Float : SampleType::Byte);
}

std::optional<bool> OptionToRender(SampleType depth, std::optional<bool> asked, const Light& light)
{
    if (depth == SampleType::Byte || asked)
    {
        return asked;
    }
    return light.isLinear ? std::nullopt : std::optional(false);
}

std::string RenderText(SampleType depth, std::optional<bool> asked, const Light& light,
                       LookOptions looks)
{
    if (depth == SampleType::Byte)
    {
        return std::string("8 bits, ") + kNotLinear + " (8 bits never are)";
    }
    const std::string depthText = "float, ";
    if (looks == LookOptions::None)
    {
        return "float";
    }
    if (asked)
    {
        return depthText + (*asked ? kLinear : kNotLinear) + " (--linear " +
               (*asked ? "on" : "off") + ")";
    }
    if (!light.isLinear)
    {
        return depthText + kNotLinear + " (" + light.why + ")";
    }
    if (looks == LookOptions::Off)
    {
        return depthText + kNotLinear + " (the look's option is off)";
    }
    return depthText + kLinear +
           (looks == LookOptions::Mixed ? " where a keyframe's option is on" : "") + " (" +
           light.why + ")";
}

std::string CheckBoxText(SampleType depth, const Light& light, std::optional<bool> option)
{
    if (!option)
    {
        return "";
    }
    if (depth == SampleType::Byte)
    {
        return "\"Assume Linear Gamma\" does nothing here: the picture is rendered in 8 bits.";
    }
    if (*option)
    {
        return std::string("Graded as linear light") +
               (light.isLinear ? ": " + light.why + "."
                               : ", which this picture is not: " + light.why +
                                     ". Clear \"Assume Linear Gamma\".");
    }
    return std::string("Graded as it is, not as linear light") +
           (light.isLinear ? ", which this picture is: " + light.why + "."
                           : ": " + light.why + ".");
}

} // namespace GlazelHost
