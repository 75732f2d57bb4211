#include "effect/surface_memory.h"

#include <algorithm>
#include <cstring>
#include <emmintrin.h>

namespace
{

// A picture of this size would only drive everything else out of the caches.
constexpr std::size_t kLargeCopy = std::size_t{8} << 20; // bytes
constexpr std::size_t kLine = 64;
constexpr std::size_t kPage = 4096;
// Going on in several pages at once keeps more of the memory's banks busy.
constexpr std::size_t kPagesAtOnce = 4;
constexpr std::size_t kAhead = 512;

// A line of the target, which is aligned to 16 bytes, past the caches.
void StreamLine(std::uint8_t* target, const std::uint8_t* source) noexcept
{
    for (std::size_t i = 0; i < kLine; i += sizeof(__m128i))
    {
        _mm_stream_si128(reinterpret_cast<__m128i*>(target + i),
                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + i)));
    }
}

// The caller fences.
void StreamBytes(std::uint8_t* target, const std::uint8_t* source, std::size_t bytes) noexcept
{
    const std::size_t before =
        std::min((0 - reinterpret_cast<std::uintptr_t>(target)) % sizeof(__m128i), bytes);
    std::memcpy(target, source, before);
    std::size_t done = before;
    for (; bytes - done >= kPagesAtOnce * kPage; done += kPagesAtOnce * kPage)
    {
        for (std::size_t line = done; line < done + kPage; line += kLine)
        {
            for (std::size_t place = line; place < line + kPagesAtOnce * kPage; place += kPage)
            {
                __builtin_prefetch(source + place + kAhead);
                StreamLine(target + place, source + place);
            }
        }
    }
    for (; bytes - done >= kLine; done += kLine)
    {
        StreamLine(target + done, source + done);
    }
    std::memcpy(target + done, source + done, bytes - done);
}

} // namespace

std::uint8_t* SurfaceMemory::LowestRow() const noexcept
{
    if (firstByte == nullptr || !IsBottomUp() || height == 0)
    {
        return firstByte;
    }
    return firstByte - PitchBytes() * (std::size_t{height} - 1);
}

FrameBufferDesc Describe(const SurfaceMemory& memory, std::uint32_t format, float aspect) noexcept
{
    FrameBufferDesc desc;
    desc.format = format;
    desc.pixels = memory.LowestRow();
    desc.width = memory.width;
    desc.height = memory.height;
    desc.rowPitch = static_cast<std::uint32_t>(memory.PitchBytes() / BytesPerPixel(format));
    desc.aspect = aspect;
    return desc;
}

void CopyRows(const SurfaceMemory& memory, const FrameBufferDesc& target) noexcept
{
    const std::uint8_t* const source = memory.LowestRow();
    auto* const destination = static_cast<std::uint8_t*>(target.pixels);
    if (source == nullptr || destination == nullptr)
    {
        return;
    }
    const std::size_t bytes = std::min(memory.PitchBytes(), target.RowBytes());
    const std::uint32_t rows = std::min(memory.height, target.height);
    const bool isLarge = bytes * rows >= kLargeCopy;
    const auto copy = [isLarge](std::uint8_t* to, const std::uint8_t* from, std::size_t size) {
        if (isLarge)
        {
            StreamBytes(to, from, size);
        }
        else
        {
            std::memcpy(to, from, size);
        }
    };
    const bool isOneBlock =
        !memory.IsBottomUp() && bytes == memory.PitchBytes() && bytes == target.RowBytes();
    if (isOneBlock)
    {
        copy(destination, source, bytes * rows);
    }
    for (std::uint32_t row = isOneBlock ? rows : 0; row < rows; ++row)
    {
        // Bottom-up memory ends with the top row.
        const std::uint32_t sourceRow = memory.IsBottomUp() ? memory.height - 1 - row : row;
        copy(destination + row * target.RowBytes(), source + sourceRow * memory.PitchBytes(),
             bytes);
    }
    if (isLarge)
    {
        _mm_sfence(); // before another thread is told of the picture
    }
}
