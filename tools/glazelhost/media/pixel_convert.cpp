#include "tools/glazelhost/media/pixel_convert.h"

#include "tools/glazelhost/host_error.h"

#include <cassert>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

namespace GlazelHost
{

namespace
{

// A float of 16 bits, for which there is no type.
struct Half
{
    std::uint16_t bits;
};

// The four channels of a pixel of an Image, in its order.
constexpr int kImageChannels = 4;

template <typename Target, typename Source>
Target Converted(Source value) noexcept
{
    if constexpr (std::is_same_v<Target, Source>)
    {
        return value;
    }
    else if constexpr (std::is_same_v<Source, Half>)
    {
        return Converted<Target>(FloatOfHalf(value.bits));
    }
    else if constexpr (std::is_same_v<Target, std::uint8_t>)
    {
        return ByteOf(value);
    }
    else if constexpr (std::is_same_v<Target, std::uint16_t>)
    {
        return WordOf(value);
    }
    else
    {
        return FloatOf(value);
    }
}

template <typename Target>
constexpr Target kOpaque = std::is_same_v<Target, float>
                               ? static_cast<Target>(1)
                               : static_cast<Target>(~0U); // all bits of an integer channel

// Files give no promise about alignment: channels are copied out, never pointed at.
template <typename Value>
Value Load(const std::byte* source) noexcept
{
    Value value;
    std::memcpy(&value, source, sizeof value);
    return value;
}

template <typename Value>
void Store(std::byte* target, Value value) noexcept
{
    std::memcpy(target, &value, sizeof value);
}

template <typename Source, typename Target>
void UnpackStraight(const PixelLayout& layout, const std::byte* source, int width,
                    std::byte* target) noexcept
{
    const auto channel = [](const std::byte* pixel, int index) {
        return Converted<Target>(
            Load<Source>(pixel + static_cast<std::size_t>(index) * sizeof(Source)));
    };
    const std::size_t step = layout.PixelBytes();
    for (int x = 0; x < width; ++x)
    {
        const Target values[kImageChannels] = {
            channel(source, layout.blue), channel(source, layout.green),
            channel(source, layout.red),
            layout.HasAlpha() ? channel(source, layout.alpha) : kOpaque<Target>};
        std::memcpy(target, values, sizeof values);
        source += step;
        target += sizeof values;
    }
}

template <typename Source, typename Target>
void UnpackPremultiplied(const PixelLayout& layout, const std::byte* source, int width,
                         std::byte* target) noexcept
{
    const auto channel = [](const std::byte* pixel, int index) {
        return Converted<float>(
            Load<Source>(pixel + static_cast<std::size_t>(index) * sizeof(Source)));
    };
    const std::size_t step = layout.PixelBytes();
    for (int x = 0; x < width; ++x)
    {
        const float alpha = channel(source, layout.alpha);
        const auto straight = [&](int index) {
            return Converted<Target>(alpha > 0.0F ? channel(source, index) / alpha : 0.0F);
        };
        const Target values[kImageChannels] = {straight(layout.blue), straight(layout.green),
                                               straight(layout.red), Converted<Target>(alpha)};
        std::memcpy(target, values, sizeof values);
        source += step;
        target += sizeof values;
    }
}

template <typename Source, typename Target>
void Unpack(const PixelLayout& layout, const std::byte* source, int width,
            std::byte* target) noexcept
{
    if (layout.premultiplied)
    {
        UnpackPremultiplied<Source, Target>(layout, source, width, target);
    }
    else
    {
        UnpackStraight<Source, Target>(layout, source, width, target);
    }
}

template <typename Source, typename Target>
void Pack(const PixelLayout& layout, const std::byte* source, int width, std::byte* target) noexcept
{
    const int order[kImageChannels] = {layout.blue, layout.green, layout.red, layout.alpha};
    const std::size_t step = layout.PixelBytes();
    for (int x = 0; x < width; ++x)
    {
        for (int channel = 0; channel < (layout.HasAlpha() ? 4 : 3); ++channel)
        {
            const auto place = static_cast<std::size_t>(order[channel]) * sizeof(Target);
            Store(target + place,
                  Converted<Target>(
                      Load<Source>(source + static_cast<std::size_t>(channel) * sizeof(Source))));
        }
        source += kImageChannels * sizeof(Source);
        target += step;
    }
}

// Calls `operation` with a value of the C++ type that holds a channel of `sample`.
template <typename Operation>
void WithFileType(FileSample sample, Operation&& operation)
{
    switch (sample)
    {
    case FileSample::Bits8:
        operation(std::uint8_t{});
        break;
    case FileSample::Bits16:
        operation(std::uint16_t{});
        break;
    case FileSample::Float16:
        assert(false); // only read
        break;
    case FileSample::Float32:
        operation(float{});
        break;
    }
}

constexpr PixelLayout kByteImageLayout{}; // an Image of bytes as if it were a file

} // namespace

float FloatOfHalf(std::uint16_t bits) noexcept
{
    constexpr int kBias = 15;
    constexpr int kFractionBits = 10;
    constexpr unsigned kNotFinite = 31;
    const unsigned exponent = bits >> kFractionBits & 31U;
    const auto fraction = static_cast<float>(bits & 1023U);
    float size = 0.0F;
    if (exponent == kNotFinite)
    {
        size = (bits & 1023U) == 0 ? std::numeric_limits<float>::infinity()
                                   : std::numeric_limits<float>::quiet_NaN();
    }
    else if (exponent == 0)
    {
        size = std::ldexp(fraction, 1 - kBias - kFractionBits);
    }
    else
    {
        size = std::ldexp(1024.0F + fraction, static_cast<int>(exponent) - kBias - kFractionBits);
    }
    return (bits & 0x8000U) != 0 ? -size : size;
}

int PixelLayout::BitsPerChannel() const noexcept
{
    switch (sample)
    {
    case FileSample::Bits8:
        return 8;
    case FileSample::Bits16:
    case FileSample::Float16:
        return 16;
    case FileSample::Float32:
        break;
    }
    return 32;
}

std::size_t PixelLayout::PixelBytes() const noexcept
{
    return static_cast<std::size_t>(channels * BitsPerChannel() / 8);
}

void UnpackRow(const PixelLayout& layout, const std::byte* source, int width, SampleType type,
               std::byte* target) noexcept
{
    if (layout == kByteImageLayout && type == SampleType::Byte)
    {
        std::memcpy(target, source, static_cast<std::size_t>(width) * kImageChannels);
        return;
    }
    const auto unpack = [&]<typename Source>(Source) {
        if (type == SampleType::Byte)
        {
            Unpack<Source, std::uint8_t>(layout, source, width, target);
        }
        else
        {
            Unpack<Source, float>(layout, source, width, target);
        }
    };
    if (layout.sample == FileSample::Float16)
    {
        unpack(Half{});
        return;
    }
    WithFileType(layout.sample, unpack);
}

void PackRow(const PixelLayout& layout, const std::byte* source, int width, SampleType type,
             std::byte* target) noexcept
{
    assert(!layout.premultiplied && layout.red != layout.green);
    if (layout == kByteImageLayout && type == SampleType::Byte)
    {
        std::memcpy(target, source, static_cast<std::size_t>(width) * kImageChannels);
        return;
    }
    WithFileType(layout.sample, [&]<typename Target>(Target) {
        if (type == SampleType::Byte)
        {
            Pack<std::uint8_t, Target>(layout, source, width, target);
        }
        else
        {
            Pack<float, Target>(layout, source, width, target);
        }
    });
}

void SwapWords(std::span<std::byte> words) noexcept
{
    for (std::size_t place = 0; place + 1 < words.size(); place += 2)
    {
        std::swap(words[place], words[place + 1]);
    }
}

void Reshape(Image& image, int width, int height, SampleType type, bool hasAlpha)
{
    image.width = width;
    image.height = height;
    image.type = type;
    image.hasAlpha = hasAlpha;
    image.pixels.resize(image.RowBytes() * static_cast<std::size_t>(height));
}

void CheckSize(const std::string& what, std::int64_t width, std::int64_t height)
{
    if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide)
    {
        const std::string largest = std::to_string(kLargestSide);
        throw HostError(what,
                        "its size is " + std::to_string(width) + " x " + std::to_string(height),
                        "use pictures of 1 x 1 to " + largest + " x " + largest + " pixels");
    }
}

} // namespace GlazelHost
