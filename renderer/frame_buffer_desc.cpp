#include "renderer/frame_buffer_desc.h"

std::uint32_t BytesPerPixel(std::uint32_t format) noexcept
{
    // clang-format off
    static constexpr std::uint8_t kBytes[]{ // by format code, 0 to 17
        3, 4, 4, 4, 6, 8, 8, 6, 8, 8, 12, 16, 16, 1, 2, 2, 4, 16,
    };
    // clang-format on
    return format < sizeof(kBytes) ? kBytes[format] : 4U;
}

bool FrameBufferDesc::IsValid() const noexcept
{
    const bool addressable = pixels != nullptr && rowPitch != 0;
    return width != 0 && height != 0 && (addressable || texture != 0);
}

std::size_t FrameBufferDesc::RowBytes() const noexcept
{
    return std::size_t{rowPitch} * BytesPerPixel(format);
}
