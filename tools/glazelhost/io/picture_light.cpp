#include "tools/glazelhost/io/picture_light.h"

#include "tools/glazelhost/io/tiff_directory.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace
{

constexpr std::uint16_t kTiffDescription = 270;
constexpr std::uint16_t kTiffProfile = 34675;

constexpr std::uint32_t Signature(std::string_view letters) noexcept
{
    std::uint32_t value = 0;
    for (const char letter : letters)
    {
        value = value << 8 | static_cast<unsigned char>(letter);
    }
    return value;
}

// A number of an ICC profile, which is big-endian throughout; 0 where there is none.
std::uint32_t NumberAt(std::span<const std::byte> bytes, std::size_t place,
                       std::size_t count) noexcept
{
    if (place > bytes.size() || count > bytes.size() - place)
    {
        return 0;
    }
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i)
    {
        value = value << 8 | std::to_integer<std::uint32_t>(bytes[place + i]);
    }
    return value;
}

// The contents of a tag; empty when there is none.
std::span<const std::byte> TagOf(std::span<const std::byte> profile, std::uint32_t tag) noexcept
{
    constexpr std::size_t kTable = 128; // behind the header: a count, then 12 bytes for each tag
    const std::size_t count = NumberAt(profile, kTable, 4);
    for (std::size_t entry = kTable + 4, index = 0; index < count && entry + 12 <= profile.size();
         entry += 12, ++index)
    {
        const std::size_t place = NumberAt(profile, entry + 4, 4);
        const std::size_t bytes = NumberAt(profile, entry + 8, 4);
        if (NumberAt(profile, entry, 4) == tag && place <= profile.size() &&
            bytes <= profile.size() - place)
        {
            return profile.subspan(place, bytes);
        }
    }
    return {};
}

bool IsLinearCurve(std::span<const std::byte> curve) noexcept
{
    if (NumberAt(curve, 0, 4) == Signature("para"))
    {
        constexpr std::uint32_t kPlainPower = 0;
        constexpr std::uint32_t kOne = 0x10000;
        return NumberAt(curve, 8, 2) == kPlainPower && NumberAt(curve, 12, 4) == kOne;
    }
    if (curve.size() < 12 || NumberAt(curve, 0, 4) != Signature("curv"))
    {
        return false;
    }
    const std::size_t points = NumberAt(curve, 8, 4);
    if (points < 2) // none is a straight line, one is an exponent with 8 bits behind the point
    {
        return points == 0 || NumberAt(curve, 12, 2) == 0x100;
    }
    if (points > (curve.size() - 12) / 2)
    {
        return false;
    }
    for (std::size_t point = 0; point < points; ++point)
    {
        constexpr std::int64_t kRounding = 1;
        const auto straight = static_cast<std::int64_t>(point * 65535 / (points - 1));
        const auto stated = std::int64_t{NumberAt(curve, 12 + 2 * point, 2)};
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
    constexpr std::array kCurves{Signature("rTRC"), Signature("gTRC"), Signature("bTRC"),
                                 Signature("kTRC")};
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
