// An image buffer that owns its memory and keeps it from frame to frame.
// Pure: no windows.h. Tests: tests/effect/frame_buffer_test.cpp.
#pragma once

#include "contract/frame_buffer_desc.h"

#include <cstddef>
#include <cstdint>

// Memory around an image, in bytes.
struct FrameRoom
{
    std::size_t before = 0;
    std::size_t behind = 0;
};

// Is handed to the renderer as the record it derives from. Not thread-safe.
class FrameBuffer : public FrameBufferDesc
{
public:
    FrameBuffer() noexcept = default;
    ~FrameBuffer();
    FrameBuffer(const FrameBuffer&) = delete;
    FrameBuffer& operator=(const FrameBuffer&) = delete;

    // Gives memory for an image without row padding, at a multiple of 16 bytes wherever operator
    // new gives one, with at least `room` around it, which is 0. While size and format stay the
    // same and the room is enough it is the same memory, with the last contents; otherwise the
    // image's are undefined. A size of 0 gives a place without room for a pixel, and a buffer that
    // is not valid. Null, and a buffer that is not valid, when memory is short.
    void* Allocate(std::uint32_t newWidth, std::uint32_t newHeight, std::uint32_t newFormat,
                   const FrameRoom& room = {}) noexcept;
    // Frees the memory. Format, aspect, texture and bounds keep their values.
    void Release() noexcept;

private:
    std::byte* m_block = nullptr; // owned; the image stands behind m_room.before
    FrameRoom m_room;
};
