// Small images for tests, and a look into their channels.
#pragma once

#include "tools/glazelhost/media/pixel_convert.h"

#include <cmath>
#include <cstring>
#include <random>

namespace GlazelHost
{

// Channel 0 is blue, 1 green, 2 red, 3 alpha.
inline float FloatAt(const Image& image, int x, int y, int channel)
{
    const auto index = static_cast<std::size_t>(4 * (y * image.width + x) + channel);
    if (image.type == SampleType::Byte)
    {
        return static_cast<float>(image.pixels[index]) / 255.0F;
    }
    float value = 0.0F;
    std::memcpy(&value, image.pixels.data() + index * sizeof value, sizeof value);
    return value;
}

inline int ByteAt(const Image& image, int x, int y, int channel)
{
    return static_cast<int>(
        image.pixels[static_cast<std::size_t>(4 * (y * image.width + x) + channel)]);
}

inline void SetFloat(Image& image, int x, int y, int channel, float value)
{
    const auto index = static_cast<std::size_t>(4 * (y * image.width + x) + channel);
    std::memcpy(image.pixels.data() + index * sizeof value, &value, sizeof value);
}

// Every channel random; float values from 0 to 1 on the grid of `floatSteps` steps.
inline Image RandomImage(int width, int height, SampleType type, bool hasAlpha, unsigned seed,
                         unsigned floatSteps = 65535)
{
    std::mt19937 random(seed);
    Image image;
    Reshape(image, width, height, type, hasAlpha);
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            for (int channel = 0; channel < 4; ++channel)
            {
                const bool opaque = channel == 3 && !hasAlpha;
                if (type == SampleType::Byte)
                {
                    image.pixels[static_cast<std::size_t>(4 * (y * width + x) + channel)] =
                        static_cast<std::byte>(opaque ? 255 : random() & 255);
                }
                else
                {
                    const auto step = static_cast<float>(random() % (floatSteps + 1));
                    SetFloat(image, x, y, channel,
                             opaque ? 1.0F : step / static_cast<float>(floatSteps));
                }
            }
        }
    }
    return image;
}

// Largest distance of two images of one size over the first `channels` channels, in units of 1.0.
inline float Distance(const Image& a, const Image& b, int channels = 4)
{
    float largest = 0.0F;
    for (int y = 0; y < a.height; ++y)
    {
        for (int x = 0; x < a.width; ++x)
        {
            for (int channel = 0; channel < channels; ++channel)
            {
                const float distance =
                    std::abs(FloatAt(a, x, y, channel) - FloatAt(b, x, y, channel));
                largest = std::max(largest, std::isnan(distance) ? 1e9F : distance);
            }
        }
    }
    return largest;
}

} // namespace GlazelHost
