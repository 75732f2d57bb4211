#include "effect/frame_buffer.h"

#include "support/trace.h"

#include <new>

FrameBuffer::~FrameBuffer()
{
    Release();
}

void* FrameBuffer::Allocate(std::uint32_t newWidth, std::uint32_t newHeight,
                            std::uint32_t newFormat) noexcept
{
    if (pixels != nullptr && width == newWidth && height == newHeight && format == newFormat)
    {
        return pixels;
    }
    Release();
    format = newFormat;
    std::size_t bytes = 0;
    const bool tooLarge =
        __builtin_mul_overflow(std::size_t{newWidth}, std::size_t{newHeight}, &bytes) ||
        __builtin_mul_overflow(bytes, std::size_t{BytesPerPixel(newFormat)}, &bytes);
    if (tooLarge)
    {
        return nullptr;
    }
    Trace(0, "allocating temp frame buffer  w=%d h=%d f=%d\n", newWidth, newHeight, newFormat);
    pixels = ::operator new(bytes, std::nothrow); // a place even for no bytes at all
    if (pixels != nullptr)
    {
        width = newWidth;
        height = newHeight;
        rowPitch = newWidth;
    }
    return pixels;
}

void FrameBuffer::Release() noexcept
{
    if (pixels != nullptr)
    {
        Trace(0, "deleting temp frame buffer... \n");
        ::operator delete(pixels);
    }
    pixels = nullptr;
    width = 0;
    height = 0;
    rowPitch = 0;
    sw = 0;
    scale = 1.0F;
}
