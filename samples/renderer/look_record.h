// The look record: the one fixed-size form in which a look is stored and handed to every entry
// point. docs/renderer-contract.md describes it for other programs.
// Pure: no windows.h. Tests: tests/samples/renderer/look_record_test.cpp.
#pragma once

#include "samples/renderer/look.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

// A cube of 27 nodes a side fills a record together with 2048 entries per curve; smaller cubes
// leave more room for curves.
inline constexpr std::uint32_t kStoredCubeSize = 27;
inline constexpr std::uint32_t kStoredCurveSize = 2048;

constexpr std::size_t NodeCount(std::uint32_t cubeSize) noexcept
{
    return std::size_t{cubeSize} * cubeSize * cubeSize;
}

inline constexpr std::size_t kStoredTriples = NodeCount(kStoredCubeSize) + kStoredCurveSize;

// Entries per curve that fit beside a cube of `cubeSize` <= 27 nodes a side; 0 means no cube.
constexpr std::uint32_t CurveCapacity(std::uint32_t cubeSize) noexcept
{
    return static_cast<std::uint32_t>(kStoredTriples - NodeCount(cubeSize));
}

// In bytes.
inline constexpr std::size_t kRecordOptionEnd = 20; // header and option chunk
inline constexpr std::size_t kRecordTitleSize = 64; // UTF-8, zero-padded
inline constexpr std::size_t kRecordTableOffset = 268;
inline constexpr std::size_t kRecordSize =
    kRecordTableOffset + kStoredTriples * 3 * sizeof(std::uint16_t);
static_assert(kRecordSize < 131072, "what a host stores of a look ends there");

using RecordBytes = std::span<std::uint8_t, kRecordSize>;

// What a reader finds.
enum class RecordState
{
    Usable,
    Empty,   // no bytes
    Foreign, // not a record of this renderer, or of a version that is not known
    Damaged, // cut short, or with a value that no look has
};

// A look at the precision of a record, with storage for the largest that fits: nothing but the
// constructor allocates.
struct StoredLook
{
    StoredLook();

    CdlMode cdlMode = CdlMode::None;
    Cdl cdl;
    float strength = 1.0F;
    std::array<char, kRecordTitleSize> title{};

    // Sizes are 0 where there is no table. Ranges enclose all values of their table, low <= high;
    // storing rounds a value to a 65535th of its range. The vectors keep their full length and are
    // filled from the front as in Curves and Cube.
    std::uint32_t curveSize = 0;
    Domain curveDomain;
    Domain curveRange;
    std::vector<float> curveValues;
    std::uint32_t cubeSize = 0;
    Domain cubeDomain;
    Domain cubeRange;
    std::vector<float> cubeNodes;

    bool HasTables() const noexcept { return curveSize != 0 || cubeSize != 0; }
    // Neutral and without tables.
    void Clear() noexcept;
};

// What ReadRecord would answer.
RecordState CheckRecord(std::span<const std::uint8_t> bytes) noexcept;

// Fills `look` from a record; it is cleared unless the answer is Usable. Reads nothing outside
// `bytes`, which need no alignment.
RecordState ReadRecord(std::span<const std::uint8_t> bytes, StoredLook& look) noexcept;

// Fills `stored` from a look whose tables fit: a cube of at most kStoredCubeSize, curves of at most
// CurveCapacity entries. Values are not rounded yet.
void StoreLook(const Look& look, StoredLook& stored) noexcept;

// Writes the whole record; its option word is 1, as in every new record.
void WriteRecord(const StoredLook& look, RecordBytes record) noexcept;
