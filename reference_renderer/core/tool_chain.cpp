#include "reference_renderer/core/tool_chain.h"

#include <cmath>

namespace ReferenceRenderer
{

void ToolChain::Begin() noexcept
{
    *this = {};
}

std::int32_t ToolChain::Add(std::uint32_t tool) noexcept
{
    if (tool < kToolSlope || tool > kToolSaturation)
    {
        return kToolRefused;
    }
    if (m_places[tool] == 0)
    {
        m_places[tool] = ++m_count;
    }
    return m_places[tool] - 1;
}

bool ToolChain::Set(std::uint32_t tool, std::uint32_t parameter, double value) noexcept
{
    const bool known = tool < m_places.size() && m_places[tool] != 0 && parameter <= kParameterAll;
    if (!known || !(std::abs(value) <= double{kLargestNumber}))
    {
        return false;
    }
    const auto number = static_cast<float>(value);
    if ((tool != kToolOffset && number < 0.0F) || (tool == kToolPower && number == 0.0F))
    {
        return false;
    }
    if (tool == kToolSaturation)
    {
        m_cdl.saturation = number;
        return true;
    }
    std::array<float, 3>& values = tool == kToolSlope    ? m_cdl.slope
                                   : tool == kToolOffset ? m_cdl.offset
                                                         : m_cdl.power;
    for (std::uint32_t channel = 0; channel < 3; ++channel)
    {
        if (parameter == channel || parameter == kParameterAll)
        {
            values[channel] = number;
        }
    }
    return true;
}

Look ToolChain::Result() const
{
    Look look;
    look.cdlMode = CdlMode::Clamped;
    look.cdl = m_cdl;
    look.title = "Tool chain";
    return look;
}

} // namespace ReferenceRenderer
