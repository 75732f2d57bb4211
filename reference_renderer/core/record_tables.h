// What the table chunk of a look record holds: curves and a cube, coded.
// docs/renderer-contract.md describes it for other programs.
// Pure: no windows.h. Tests: tests/reference_renderer/core/look_record_test.cpp.
#pragma once

#include "reference_renderer/core/look_record.h"
#include "reference_renderer/core/table_coding.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace ReferenceRenderer
{

// Steps of a table, as exponents of 2: at the finest, values are within a 123000th of the range of
// their channel, half a step and the rounding to codes.
inline constexpr std::uint32_t kFinestStep = 4;

// Nodes of the larger table of a look.
std::size_t LargestTableOf(const StoredLook& look) noexcept;

// Whether the contents of a table chunk can be decoded.
bool AreTables(std::span<const std::uint8_t> bytes, std::uint32_t version, std::uint32_t curveSize,
               std::uint32_t cubeSize) noexcept;

// Fills the tables of a look from its `coded`, which AreTables accepted, at its sizes and ranges.
void DecodeTables(StoredLook& look) noexcept;

// Sets the ranges to what encloses the values.
void FindRanges(StoredLook& look) noexcept;

// Fills `coded` from the tables and their ranges, and brings the values to what decoding gives: in
// the finest steps, for the cube from `cubeStep` on, with which it fits.
void CodeTables(StoredLook& look, std::uint32_t cubeStep, TableEncoder& encoder) noexcept;

// The step of the cube; that of a record of kPlainVersion is kFinestStep, as that of no cube.
std::uint32_t CubeStepOf(const StoredLook& look) noexcept;

// Bytes that the cube takes in `coded`.
std::size_t CubeBytesOf(const StoredLook& look) noexcept;

} // namespace ReferenceRenderer
