#include "tools/glazelhost/commands/picture_difference.h"

#include "tools/glazelhost/media/pixel_convert.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace GlazelHost
{

namespace
{

constexpr int kColours = 3;
constexpr int kChannels = 4;

float ValueAt(const Image& image, std::size_t index) noexcept
{
    float value = 0.0F;
    std::memcpy(&value, image.pixels.data() + index * sizeof value, sizeof value);
    return value;
}

} // namespace

double DistanceOf(double first, double second) noexcept
{
    if (first == second || (std::isnan(first) && std::isnan(second)))
    {
        return 0.0;
    }
    const double distance = std::abs(first - second);
    return std::isnan(distance) ? std::numeric_limits<double>::infinity() : distance;
}

bool IsOver(double distance, double limit) noexcept
{
    constexpr double kTwoRoundings = 1e-7; // of floats up to 1.0
    return distance > (limit > 0.0 ? limit + kTwoRoundings : limit);
}

void PictureDifference::Add(std::int64_t frame, const Image& first, const Image& second) noexcept
{
    const int channels = first.hasAlpha || second.hasAlpha ? kChannels : kColours;
    for (int y = 0; y < first.height; ++y)
    {
        for (int x = 0; x < first.width; ++x)
        {
            const std::size_t pixel =
                static_cast<std::size_t>(y) * static_cast<std::size_t>(first.width) +
                static_cast<std::size_t>(x);
            double worst = 0.0;
            for (int channel = 0; channel < channels; ++channel)
            {
                const std::size_t index = kChannels * pixel + static_cast<std::size_t>(channel);
                const double a = ValueAt(first, index);
                const double b = ValueAt(second, index);
                const double distance = DistanceOf(a, b);
                m_sum += distance;
                m_squares += distance * distance;
                worst = std::max(worst, distance);
                if (distance > m_largest)
                {
                    m_largest = distance;
                    m_worst = Place{frame, x, y, channel, a, b};
                }
            }
            m_over += IsOver(worst, m_threshold) ? 1U : 0U;
        }
    }
    const std::uint64_t pixels =
        static_cast<std::uint64_t>(first.width) * static_cast<std::uint64_t>(first.height);
    m_pixels += pixels;
    m_channels += pixels * static_cast<std::uint64_t>(channels);
    ++m_frames;
}

double PictureDifference::Mean() const noexcept
{
    return m_channels == 0 ? 0.0 : m_sum / static_cast<double>(m_channels);
}

std::optional<double> PictureDifference::Psnr() const noexcept
{
    if (m_squares == 0.0)
    {
        return std::nullopt;
    }
    return 10.0 * std::log10(static_cast<double>(m_channels) / m_squares);
}

double PictureDifference::ShareOverThreshold() const noexcept
{
    return m_pixels == 0 ? 0.0 : static_cast<double>(m_over) / static_cast<double>(m_pixels);
}

void DrawDifference(const Image& first, const Image& second, double factor, Image& target)
{
    Reshape(target, first.width, first.height, SampleType::Byte, false);
    for (std::size_t index = 0; index < target.pixels.size(); ++index)
    {
        const double distance = DistanceOf(ValueAt(first, index), ValueAt(second, index));
        target.pixels[index] =
            index % kChannels == kColours
                ? std::byte{255}
                : static_cast<std::byte>(ByteOf(static_cast<float>(distance * factor)));
    }
}

} // namespace GlazelHost
