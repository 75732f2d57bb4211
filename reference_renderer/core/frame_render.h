// Checks the two images of a frame and splits the work on them into rows. Pure: no windows.h.
// Tests: tests/reference_renderer/core/frame_render_test.cpp.
#pragma once

#include "contract/frame_buffer_desc.h"
#include "reference_renderer/core/prepared_look.h"

#include <cstdint>

namespace ReferenceRenderer
{

// One frame to render: rows of two checked images, and what is done to each row.
struct FrameJob
{
    const std::byte* source = nullptr;
    std::byte* target = nullptr;
    std::size_t sourcePitch = 0; // bytes
    std::size_t targetPitch = 0; // bytes
    std::size_t width = 0;       // pixels
    std::size_t height = 0;      // rows
    std::size_t pixelBytes = 0;
    const PreparedLook* look = nullptr; // null = copy
    RowFunction* row = nullptr;         // null = copy

    // Renders rows from `first` up to but without `end`. Any thread.
    void RenderRows(std::size_t first, std::size_t end) const noexcept;
};

// Checks both images and describes the work on them; without a look the source is copied. Answers
// kFrameRendered, or what is wrong, a negative number; `job` is unchanged then. Rows keep their
// place in memory, so it does not matter which of them is the top one.
std::int32_t DescribeFrame(const FrameBufferDesc* source, const FrameBufferDesc* destination,
                           const PreparedLook* look, std::uint32_t flags, FrameJob& job) noexcept;

} // namespace ReferenceRenderer
