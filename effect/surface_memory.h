// A locked surface's own memory, whichever end of it the top row is at: describing it for the
// renderer and copying its rows out.
// Pure: no windows.h. Tests: tests/effect/surface_memory_test.cpp.
#pragma once

#include "contract/frame_buffer_desc.h"

#include <cstddef>
#include <cstdint>

// Pixels that a surface owns, for as long as its lock lives.
struct SurfaceMemory
{
    std::uint8_t* firstByte = nullptr; // of the top row
    std::int64_t pitch = 0;            // bytes from a row to the one below; negative when bottom-up
    std::uint32_t width = 0;           // pixels per row
    std::uint32_t height = 0;          // rows

    bool IsBottomUp() const noexcept { return pitch < 0; }
    std::size_t PitchBytes() const noexcept
    {
        return static_cast<std::size_t>(pitch < 0 ? -pitch : pitch);
    }
    // First byte of the row at the lowest address; null when there is no memory.
    std::uint8_t* LowestRow() const noexcept;
};

// A description of `memory` as it lies, lowest-addressed row first, for pixels of `format`.
FrameBufferDesc Describe(const SurfaceMemory& memory, std::uint32_t format, float aspect) noexcept;

// Copies the rows of `memory`, top row first, into the rows of `target` as far as both reach, and
// of each row as many bytes as both hold. Bytes stay as they are. Copies nothing when either side
// has no memory.
void CopyRows(const SurfaceMemory& memory, const FrameBufferDesc& target) noexcept;
