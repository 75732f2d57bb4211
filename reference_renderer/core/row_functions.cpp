#include "reference_renderer/core/row_functions.h"

#include "reference_renderer/core/colour_math.h"

#include <cstring>

namespace ReferenceRenderer
{

namespace
{

constexpr std::size_t kChannels = 4; // blue, green, red, alpha

// What follows slope, offset and power. Holds what it needs of the look itself, where stores to a
// row cannot change it.
class LastSteps
{
public:
    explicit LastSteps(const PreparedLook& look) noexcept
        : m_mode(look.Stored().cdlMode), m_cdl(look.Stored().cdl),
          m_strength(look.Stored().strength), m_hasTables(look.Stored().HasTables()), m_look(look)
    {
    }

    Rgb Apply(Rgb value) const noexcept
    {
        if (m_mode == CdlMode::Clamped)
        {
            value = ApplySaturation<CdlMode::Clamped>(m_cdl, value);
        }
        else if (m_mode == CdlMode::Unclamped)
        {
            value = ApplySaturation<CdlMode::Unclamped>(m_cdl, value);
        }
        return m_hasTables ? AtStrength(m_strength, value, m_look.SampleTables(value)) : value;
    }

private:
    CdlMode m_mode;
    Cdl m_cdl;
    float m_strength;
    bool m_hasTables;
    const PreparedLook& m_look;
};

std::byte Round8(float value) noexcept
{
    return static_cast<std::byte>(Code8(value));
}

} // namespace

float ApplyFirstSteps(const StoredLook& look, std::size_t channel, float value) noexcept
{
    switch (look.cdlMode)
    {
    case CdlMode::None:
        break;
    case CdlMode::Clamped:
        return ApplySlopeOffsetPower<CdlMode::Clamped>(look.cdl, channel, value);
    case CdlMode::Unclamped:
        return ApplySlopeOffsetPower<CdlMode::Unclamped>(look.cdl, channel, value);
    }
    return value;
}

void RenderPlainRow8(const PreparedLook& look, const std::byte* source, std::byte* target,
                     std::size_t width)
{
    const auto first = [&](std::size_t channel, std::byte code) {
        return look.FirstSteps()[channel][std::to_integer<std::size_t>(code)];
    };
    const LastSteps last(look);
    const std::byte* const end = source + width * kChannels;
    for (; source != end; source += kChannels, target += kChannels)
    {
        const std::byte alpha = source[3];
        const Rgb graded =
            last.Apply({first(0, source[2]), first(1, source[1]), first(2, source[0])});
        target[0] = Round8(graded.b);
        target[1] = Round8(graded.g);
        target[2] = Round8(graded.r);
        target[3] = alpha;
    }
}

void RenderPlainRowFloat(const PreparedLook& look, bool linear, const std::byte* source,
                         std::byte* target, std::size_t width)
{
    constexpr std::size_t kColourBytes = 3 * sizeof(float);
    constexpr std::size_t kBytes = kChannels * sizeof(float);
    const LastSteps lastSteps(look);
    const std::byte* const end = source + width * kBytes;
    for (; source != end; source += kBytes, target += kBytes)
    {
        float pixel[3]; // blue, green, red
        std::memcpy(pixel, source, kColourBytes);
        const auto first = [&](std::size_t channel) {
            const float value = Finite(pixel[2 - channel]);
            return ApplyFirstSteps(look.Stored(), channel, linear ? EncodeSrgb(value) : value);
        };
        const Rgb graded = lastSteps.Apply({first(0), first(1), first(2)});
        const auto last = [&](float value) {
            return linear ? DecodeSrgb(Finite(value)) : Finite(value);
        };
        const float result[3]{last(graded.b), last(graded.g), last(graded.r)};
        // Alpha goes as bytes: through a float register a signalling NaN might change.
        std::memcpy(target + kColourBytes, source + kColourBytes, sizeof(float));
        std::memcpy(target, result, kColourBytes);
    }
}

} // namespace ReferenceRenderer
