// Whether a compound document can be handed to the system without harm. Structured storage follows
// the links inside a file as they stand, and a damaged file that links in a circle stops it for
// ever. Pure: no windows.h. Tests: tests/tools/glazelhost/project/compound_check_test.cpp.
#pragma once

#include <cstddef>
#include <span>

namespace GlazelHost
{

// Whether the bytes begin as a compound document does, be it sound or not.
bool LooksCompound(std::span<const std::byte> bytes) noexcept;

// Whether every chain of sectors ends, lies within the file and shares no sector with another one,
// every stream is as long as it says, and the folders form a tree. Says nothing about contents.
// Throws std::bad_alloc alone.
bool IsSoundCompound(std::span<const std::byte> bytes);

} // namespace GlazelHost
