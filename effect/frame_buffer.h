// An image buffer that owns its memory and keeps it from frame to frame.
// Pure: no windows.h. Tests: tests/effect/frame_buffer_test.cpp.
#pragma once

#include "renderer/frame_buffer_desc.h"

#include <cstdint>

// Is handed to the renderer as the record it derives from. Not thread-safe.
class FrameBuffer : public FrameBufferDesc
{
public:
    FrameBuffer() noexcept = default;
    ~FrameBuffer();
    FrameBuffer(const FrameBuffer&) = delete;
    FrameBuffer& operator=(const FrameBuffer&) = delete;

    // Gives memory for an image without row padding. While size and format stay the same it is the
    // same memory, with the last contents; otherwise its contents are undefined. Null when memory
    // is short or the size is 0: the buffer is then not valid.
    void* Allocate(std::uint32_t newWidth, std::uint32_t newHeight,
                   std::uint32_t newFormat) noexcept;
    // Frees the memory. Format, aspect, texture and bounds keep their values.
    void Release() noexcept;
};

// The renderer reads it as the plain record.
static_assert(sizeof(FrameBuffer) == sizeof(FrameBufferDesc));
