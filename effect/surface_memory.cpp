#include "effect/surface_memory.h"

#include <algorithm>
#include <cstring>

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
    for (std::uint32_t row = 0; row < rows; ++row)
    {
        // Bottom-up memory ends with the top row.
        const std::uint32_t sourceRow = memory.IsBottomUp() ? memory.height - 1 - row : row;
        std::memcpy(destination + row * target.RowBytes(), source + sourceRow * memory.PitchBytes(),
                    bytes);
    }
}
