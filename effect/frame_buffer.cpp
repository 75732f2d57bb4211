#include "effect/frame_buffer.h"

#include "support/trace.h"

#include <cstring>
#include <new>

FrameBuffer::~FrameBuffer()
{
    Release();
}

void* FrameBuffer::Allocate(std::uint32_t newWidth, std::uint32_t newHeight,
                            std::uint32_t newFormat, const FrameRoom& room) noexcept
{
    if (pixels != nullptr && width == newWidth && height == newHeight && format == newFormat &&
        m_room.before >= room.before && m_room.behind >= room.behind)
    {
        return pixels;
    }
    Release();
    format = newFormat;
    // Of what operator new gives, and so of the image behind the room.
    constexpr std::size_t alignment = 16;
    FrameRoom rounded = room;
    std::size_t imageBytes = 0;
    std::size_t bytes = 0;
    const bool tooLarge =
        __builtin_add_overflow(room.before, (alignment - room.before % alignment) % alignment,
                               &rounded.before) ||
        __builtin_mul_overflow(std::size_t{newWidth}, std::size_t{newHeight}, &imageBytes) ||
        __builtin_mul_overflow(imageBytes, std::size_t{BytesPerPixel(newFormat)}, &imageBytes) ||
        __builtin_add_overflow(imageBytes, rounded.before, &bytes) ||
        __builtin_add_overflow(bytes, rounded.behind, &bytes);
    if (tooLarge)
    {
        return nullptr;
    }
    Trace(0, "allocating temp frame buffer  w=%d h=%d f=%d\n", newWidth, newHeight, newFormat);
    m_block = static_cast<std::byte*>(::operator new(bytes, std::nothrow)); // even for no bytes
    if (m_block != nullptr)
    {
        std::memset(m_block, 0, rounded.before);
        std::memset(m_block + rounded.before + imageBytes, 0, rounded.behind);
        m_room = rounded;
        pixels = m_block + rounded.before;
        width = newWidth;
        height = newHeight;
        rowPitch = newWidth;
    }
    return pixels;
}

void FrameBuffer::Release() noexcept
{
    if (m_block != nullptr)
    {
        Trace(0, "deleting temp frame buffer... \n");
        ::operator delete(m_block);
    }
    m_block = nullptr;
    m_room = {};
    pixels = nullptr;
    width = 0;
    height = 0;
    rowPitch = 0;
    sw = 0;
    scale = 1.0F;
}
