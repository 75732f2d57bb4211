#include "tools/glazelhost/media/dither.h"

#include "tools/glazelhost/media/blue_noise.h"
#include "tools/glazelhost/media/pixel_convert.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace GlazelHost
{

namespace
{

constexpr std::size_t kColours = 3;

// Where the tile of each colour begins in a frame: anywhere.
std::array<std::size_t, kColours> TileOffsets(std::uint32_t seed, std::int64_t frame)
{
    std::array<std::size_t, kColours> offsets{};
    auto state = std::uint64_t{seed} << 32U ^ static_cast<std::uint64_t>(frame);
    for (std::size_t& offset : offsets)
    {
        // The steps of the SplitMix64 generator.
        state += 0x9E3779B97F4A7C15;
        std::uint64_t mixed = state;
        mixed = (mixed ^ mixed >> 30U) * 0xBF58476D1CE4E5B9;
        mixed = (mixed ^ mixed >> 27U) * 0x94D049BB133111EB;
        offset = static_cast<std::size_t>(mixed >> 33U) % (kBlueNoiseSide * kBlueNoiseSide);
    }
    return offsets;
}

std::byte Dithered(float value, float threshold) noexcept
{
    const double code = static_cast<double>(value) * 255.0;
    // Compared so that NaN becomes 0; a threshold below 1 lifts nothing above 255 past it.
    const double within = code > 0.0 ? std::min(code, 255.0) : 0.0;
    return static_cast<std::byte>(within + static_cast<double>(threshold));
}

} // namespace

Dither::Dither(std::uint32_t seed) : m_seed(seed)
{
    const std::vector<std::uint16_t> ranks = BlueNoiseRanks(seed);
    m_thresholds.reserve(ranks.size());
    for (const std::uint16_t rank : ranks)
    {
        // In the middle of its step: the mean is exactly a half, and a code that a float cannot
        // hold exactly is further from the next one than any threshold lifts it.
        m_thresholds.push_back((static_cast<float>(rank) + 0.5F) /
                               static_cast<float>(ranks.size()));
    }
}

void Dither::ToBytes(const Image& floats, std::int64_t frame, Image& bytes) const
{
    Reshape(bytes, floats.width, floats.height, SampleType::Byte, floats.hasAlpha);
    bytes.facts = floats.facts;
    const auto offsets = TileOffsets(m_seed, frame);
    const std::byte* source = floats.pixels.data();
    std::byte* target = bytes.pixels.data();
    for (std::size_t y = 0; y < static_cast<std::size_t>(floats.height); ++y)
    {
        for (std::size_t x = 0; x < static_cast<std::size_t>(floats.width); ++x)
        {
            std::array<float, kColours + 1> values{};
            std::memcpy(values.data(), source, sizeof values);
            for (std::size_t colour = 0; colour < kColours; ++colour)
            {
                const std::size_t row = (y + offsets[colour] / kBlueNoiseSide) % kBlueNoiseSide;
                const std::size_t column = (x + offsets[colour]) % kBlueNoiseSide;
                target[colour] =
                    Dithered(values[colour], m_thresholds[row * kBlueNoiseSide + column]);
            }
            target[kColours] = std::byte{ByteOf(values[kColours])};
            source += sizeof values;
            target += values.size();
        }
    }
}

DitheredSink::DitheredSink(std::unique_ptr<FrameSink> sink, std::uint32_t seed)
    : m_sink(std::move(sink)), m_dither(seed)
{
}

void DitheredSink::Write(const Image& image)
{
    if (image.type == SampleType::Byte)
    {
        m_sink->Write(image);
    }
    else
    {
        m_dither.ToBytes(image, m_frame, m_bytes);
        m_sink->Write(m_bytes);
    }
    ++m_frame;
}

void DitheredSink::Pass()
{
    m_sink->Pass();
    ++m_frame;
}

} // namespace GlazelHost
