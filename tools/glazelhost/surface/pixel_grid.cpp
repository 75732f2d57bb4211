#include "tools/glazelhost/surface/pixel_grid.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <cstring>

namespace GlazelHost
{

namespace
{

constexpr std::byte kGuardPattern{0xB5};

std::uint8_t ByteOf(float value) noexcept
{
    // The comparison is false for what is not a number, which so becomes 0.
    const float limited = value > 0.0F ? std::min(value, 1.0F) : 0.0F;
    return static_cast<std::uint8_t>(std::lround(limited * 255.0F));
}

Sample SampleOf(const std::byte* pixel, SurfaceFormat format) noexcept
{
    if (format != SurfaceFormat::StraightFloat)
    {
        Sample sample;
        std::memcpy(&sample, pixel, sizeof(sample));
        return sample;
    }
    std::array<float, 4> channels{};
    std::memcpy(channels.data(), pixel, sizeof(channels));
    return {ByteOf(channels[0]), ByteOf(channels[1]), ByteOf(channels[2]), ByteOf(channels[3])};
}

void Put(std::byte* pixel, SurfaceFormat format, Sample sample) noexcept
{
    if (format != SurfaceFormat::StraightFloat)
    {
        std::memcpy(pixel, &sample, sizeof(sample));
        return;
    }
    const std::array channels{
        static_cast<float>(sample.blue) / 255.0F, static_cast<float>(sample.green) / 255.0F,
        static_cast<float>(sample.red) / 255.0F, static_cast<float>(sample.alpha) / 255.0F};
    std::memcpy(pixel, channels.data(), sizeof(channels));
}

bool HoldsPremultiplied(SurfaceFormat format) noexcept
{
    return format == SurfaceFormat::Premultiplied8;
}

std::size_t PixelBytesOf(SurfaceFormat format) noexcept
{
    return SurfaceLayout{.format = format}.PixelBytes();
}

// Whether rows in `format` hold exactly the samples that are asked for, byte for byte.
bool IsPlainCopy(SurfaceFormat format, bool premultiplied) noexcept
{
    return format != SurfaceFormat::StraightFloat && HoldsPremultiplied(format) == premultiplied;
}

} // namespace

PixelGrid::PixelGrid(const SurfaceLayout& layout) : m_layout(layout)
{
    assert(layout.width > 0 && layout.height > 0);
    m_own = PixelBuffer(PixelsBytes(), std::byte{0});
    m_pixels = m_own.data();
    RestoreGuards();
}

PixelGrid::PixelGrid(const SurfaceLayout& layout, std::byte* pixels) noexcept
    : m_layout(layout), m_pixels(pixels)
{
    if (HasMemory())
    {
        RestoreGuards();
    }
}

std::byte* PixelGrid::Row(int y) const noexcept
{
    assert(y >= 0 && y < m_layout.height);
    const int stored = m_layout.bottomUp ? m_layout.height - 1 - y : y;
    return m_pixels + m_layout.PitchBytes() * static_cast<std::size_t>(stored);
}

std::byte* PixelGrid::At(int x, int y) const noexcept
{
    return Row(y) + static_cast<std::size_t>(x) * m_layout.PixelBytes();
}

std::ptrdiff_t PixelGrid::Pitch() const noexcept
{
    const auto pitch = static_cast<std::ptrdiff_t>(m_layout.PitchBytes());
    return m_layout.bottomUp ? -pitch : pitch;
}

std::size_t PixelGrid::PixelsBytes() const noexcept
{
    return m_layout.PitchBytes() * static_cast<std::size_t>(m_layout.height);
}

bool PixelGrid::GuardsAreIntact() const noexcept
{
    const auto isIntact = [](const std::byte* guard) {
        return std::all_of(guard, guard + kGuardBytes,
                           [](std::byte value) { return value == kGuardPattern; });
    };
    return isIntact(m_pixels - kGuardBytes) && isIntact(m_pixels + PixelsBytes());
}

void PixelGrid::RestoreGuards() noexcept
{
    std::fill_n(m_pixels - kGuardBytes, kGuardBytes, kGuardPattern);
    std::fill_n(m_pixels + PixelsBytes(), kGuardBytes, kGuardPattern);
}

void LoadSamples(const std::byte* pixels, SurfaceFormat format, bool wantPremultiplied,
                 std::span<Sample> samples) noexcept
{
    if (IsPlainCopy(format, wantPremultiplied))
    {
        std::memcpy(samples.data(), pixels, samples.size_bytes());
        return;
    }
    const bool held = HoldsPremultiplied(format);
    for (Sample& sample : samples)
    {
        sample = SampleOf(pixels, format);
        if (held != wantPremultiplied)
        {
            sample = wantPremultiplied ? Premultiplied(sample) : Straight(sample);
        }
        pixels += PixelBytesOf(format);
    }
}

void StoreSamples(std::byte* pixels, SurfaceFormat format, bool arePremultiplied,
                  std::span<const Sample> samples) noexcept
{
    if (IsPlainCopy(format, arePremultiplied))
    {
        std::memcpy(pixels, samples.data(), samples.size_bytes());
        return;
    }
    const bool held = HoldsPremultiplied(format);
    for (Sample sample : samples)
    {
        if (held != arePremultiplied)
        {
            sample = held ? Premultiplied(sample) : Straight(sample);
        }
        Put(pixels, format, sample);
        pixels += PixelBytesOf(format);
    }
}

} // namespace GlazelHost
