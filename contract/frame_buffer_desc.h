// Copyright (c) 2026 The Glazel DX authors. SPDX-License-Identifier: MIT
// Copy this file into your own program, under the terms of LICENSE.

// The renderer's description of an image in memory: a plain record whose layout both sides fix.
// Pure: no windows.h. Tests: tests/contract/.
#pragma once

#include <cstddef>
#include <cstdint>

// The two pixel formats that the effect uses. Channel order in memory is blue, green, red, alpha
// in both.
inline constexpr std::uint32_t kFormatBgra8 = 3;      // four 8-bit channels, 4 bytes a pixel
inline constexpr std::uint32_t kFormatBgraFloat = 17; // four 32-bit floats, 16 bytes a pixel

// Bytes that one pixel of `format` takes; 4 for every code that the renderer does not list.
constexpr std::uint32_t BytesPerPixel(std::uint32_t format) noexcept
{
    // clang-format off
    constexpr std::uint8_t kBytes[]{ // by format code, 0 to 17
        3, 4, 4, 4, 6, 8, 8, 6, 8, 8, 12, 16, 16, 1, 2, 2, 4, 16,
    };
    // clang-format on
    return format < sizeof(kBytes) ? kBytes[format] : 4U;
}

// Does not own `pixels`: who fills a record says in its own contract whose memory that is.
struct FrameBufferDesc
{
    std::uint32_t format = 1;   // pixel format code, see BytesPerPixel
    void* pixels = nullptr;     // first pixel of the lowest-addressed row
    std::uint32_t width = 0;    // pixels per row
    std::uint32_t height = 0;   // rows
    std::uint32_t rowPitch = 0; // pixels, not bytes, from one row to the next
    float scale = 1.0F;
    std::uint32_t sw = 0;
    float aspect = 1.0F;       // width of a pixel divided by its height
    std::uint32_t texture = 0; // texture handle, 0 = none
    float minValue = -1000.0F; // bounds that the renderer may clip to
    float maxValue = 1000.0F;
    std::uint32_t unused; // belongs to the renderer: never written here
    std::uint32_t reserved[3] = {};

    // True when there is an image: a size, and either addressable pixels or a texture.
    bool IsValid() const noexcept
    {
        const bool addressable = pixels != nullptr && rowPitch != 0;
        return width != 0 && height != 0 && (addressable || texture != 0);
    }
    // Bytes from one row to the next.
    std::size_t RowBytes() const noexcept { return std::size_t{rowPitch} * BytesPerPixel(format); }
    void SetAspect(float pixelAspect) noexcept { aspect = pixelAspect; }
};

static_assert(sizeof(FrameBufferDesc) == 72);
static_assert(offsetof(FrameBufferDesc, format) == 0);
static_assert(offsetof(FrameBufferDesc, pixels) == 8);
static_assert(offsetof(FrameBufferDesc, width) == 16);
static_assert(offsetof(FrameBufferDesc, height) == 20);
static_assert(offsetof(FrameBufferDesc, rowPitch) == 24);
static_assert(offsetof(FrameBufferDesc, scale) == 28);
static_assert(offsetof(FrameBufferDesc, sw) == 32);
static_assert(offsetof(FrameBufferDesc, aspect) == 36);
static_assert(offsetof(FrameBufferDesc, texture) == 40);
static_assert(offsetof(FrameBufferDesc, minValue) == 44);
static_assert(offsetof(FrameBufferDesc, maxValue) == 48);
static_assert(offsetof(FrameBufferDesc, unused) == 52);
static_assert(offsetof(FrameBufferDesc, reserved) == 56);
