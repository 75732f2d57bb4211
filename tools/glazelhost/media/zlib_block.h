// Blocks of bytes packed as PNG packs them. Pure: no windows.h.
// Tests: tests/tools/glazelhost/media/zlib_block_test.cpp.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace GlazelHost
{

// None when the block is damaged or holds more than 16 MB. Throws std::bad_alloc.
std::optional<std::vector<std::byte>> Unpacked(std::span<const std::byte> block);

// Throws std::bad_alloc.
std::vector<std::byte> Packed(std::span<const std::byte> bytes);

} // namespace GlazelHost
