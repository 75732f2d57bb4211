#include "tools/glazelhost/media/picture_light.h"

#include "tools/glazelhost/media/picture_blocks.h"
#include "tools/glazelhost/media/tiff_directory.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace GlazelHost
{

namespace
{

constexpr std::uint16_t kTiffDescription = 270;
constexpr std::uint16_t kTiffProfile = 34675;

// The contents of a tag; empty when there is none.
std::span<const std::byte> TagOf(std::span<const std::byte> profile, std::uint32_t tag) noexcept
{
    constexpr std::size_t kTable = 128; // behind the header: a count, then 12 bytes for each tag
    const std::size_t count = BigEndianAt(profile, kTable, 4);
    for (std::size_t entry = kTable + 4, index = 0; index < count && entry + 12 <= profile.size();
         entry += 12, ++index)
    {
        const std::size_t place = BigEndianAt(profile, entry + 4, 4);
        const std::size_t bytes = BigEndianAt(profile, entry + 8, 4);
        if (BigEndianAt(profile, entry, 4) == tag && place <= profile.size() &&
            bytes <= profile.size() - place)
        {
            return profile.subspan(place, bytes);
        }
    }
    return {};
}

bool IsLinearCurve(std::span<const std::byte> curve) noexcept
{
    if (BigEndianAt(curve, 0, 4) == BlockName("para"))
    {
        constexpr std::uint32_t kPlainPower = 0;
        constexpr std::uint32_t kOne = 0x10000;
        return BigEndianAt(curve, 8, 2) == kPlainPower && BigEndianAt(curve, 12, 4) == kOne;
    }
    if (curve.size() < 12 || BigEndianAt(curve, 0, 4) != BlockName("curv"))
    {
        return false;
    }
    const std::size_t points = BigEndianAt(curve, 8, 4);
    if (points < 2) // none is a straight line, one is an exponent with 8 bits behind the point
    {
        return points == 0 || BigEndianAt(curve, 12, 2) == 0x100;
    }
    if (points > (curve.size() - 12) / 2)
    {
        return false;
    }
    for (std::size_t point = 0; point < points; ++point)
    {
        constexpr std::int64_t kRounding = 1;
        const auto straight = static_cast<std::int64_t>(point * 65535 / (points - 1));
        const auto stated = std::int64_t{BigEndianAt(curve, 12 + 2 * point, 2)};
        if (std::max(straight, stated) - std::min(straight, stated) > kRounding)
        {
            return false;
        }
    }
    return true;
}

std::string_view TextOf(std::span<const std::byte> bytes) noexcept
{
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return text.substr(0, text.find('\0'));
}

} // namespace

std::optional<bool> ProfileIsLinear(std::span<const std::byte> profile) noexcept
{
    constexpr std::array kCurves{BlockName("rTRC"), BlockName("gTRC"), BlockName("bTRC"),
                                 BlockName("kTRC")};
    std::optional<bool> linear;
    for (const std::uint32_t tag : kCurves)
    {
        if (const auto curve = TagOf(profile, tag); !curve.empty())
        {
            linear = linear.value_or(true) && IsLinearCurve(curve);
        }
    }
    return linear;
}

Light LightOf(std::span<const std::byte> file, bool isFloat)
{
    if (!isFloat)
    {
        return {};
    }
    const auto directory = TiffDirectory::Read(file);
    if (directory && TextOf(directory->Bytes(kTiffDescription)) == kDisplayEncodedNote)
    {
        return {false, "its description says that it is display-encoded"};
    }
    const auto profile = directory ? directory->Bytes(kTiffProfile) : std::span<const std::byte>();
    if (profile.empty())
    {
        return {true, "it holds floats, and nothing in it says otherwise"};
    }
    if (ProfileIsLinear(profile).value_or(false))
    {
        return {true, "its colour profile is linear"};
    }
    return {false, "its colour profile is not linear"};
}

} // namespace GlazelHost
