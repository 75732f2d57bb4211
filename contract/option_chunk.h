// Copyright (c) 2026 The Glazel DX authors. SPDX-License-Identifier: MIT
// Copy this file into your own program, under the terms of LICENSE.

// The one part of a look record that is not the renderer's own: behind 8 bytes of its, a chunk of a
// tag, a length and the option word. Hosts and effects read and change the word; the length and the
// rest of a record stay as they are.
// Pure: no windows.h. Tests: tests/binding/session_data_test.cpp.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Tag and length are big-endian; the word is in the machine's order, which is little-endian.
static_assert(std::endian::native == std::endian::little);

// In bytes from the start of the record.
inline constexpr std::size_t kOptionChunk = 8;
inline constexpr std::size_t kOptionWord = 16;
inline constexpr std::size_t kOptionChunkEnd = 20;
inline constexpr std::array<std::uint8_t, 8> kOptionChunkHead{'f', 'l', 'a', 'g', 0, 0, 0, 4};
static_assert(kOptionChunk + kOptionChunkHead.size() == kOptionWord);

// Value of the option word while "Assume Linear Gamma" is on.
inline constexpr std::uint32_t kAssumeLinearGamma = 1;

// `record` may be null when `size` is 0.
inline bool HasOptionChunk(const void* record, std::size_t size) noexcept
{
    return size >= kOptionChunkEnd &&
           std::memcmp(static_cast<const std::uint8_t*>(record) + kOptionChunk,
                       kOptionChunkHead.data(), kOptionChunkHead.size()) == 0;
}
