// The look record: the one fixed-size form in which a look is stored and handed to every entry
// point. docs/renderer-contract.md describes it for other programs.
// Pure: no windows.h. Tests: tests/reference_renderer/core/look_record_test.cpp.
#pragma once

#include "reference_renderer/core/look.h"

#include "contract/option_chunk.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ReferenceRenderer
{

// The largest tables that a record holds.
inline constexpr std::uint32_t kStoredCubeSize = 65;     // nodes a side
inline constexpr std::uint32_t kStoredCurveSize = 65536; // entries per curve

constexpr std::size_t NodeCount(std::uint32_t cubeSize) noexcept
{
    return std::size_t{cubeSize} * cubeSize * cubeSize;
}

// In bytes.
inline constexpr std::size_t kRecordTitleSize = 64; // UTF-8, zero-padded
inline constexpr std::size_t kRecordTableOffset = 268;
inline constexpr std::size_t kRecordSize = 130654;
inline constexpr std::size_t kRecordTableSize = kRecordSize - kRecordTableOffset;
static_assert(kRecordSize < 131072, "what a host stores of a look ends there");

// Of records: the tables are 16-bit steps one by one, or coded.
inline constexpr std::uint32_t kPlainVersion = 1;
inline constexpr std::uint32_t kCodedVersion = 2; // of new records

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

    // Sizes are 0 where there is no table. Ranges enclose all values of their table, low <= high.
    // The vectors keep their full length and are filled from the front as in Curves and Cube.
    std::uint32_t curveSize = 0;
    Domain curveDomain;
    Domain curveRange;
    std::vector<float> curveValues;
    std::uint32_t cubeSize = 0;
    Domain cubeDomain;
    Domain cubeRange;
    std::vector<float> cubeNodes;

    // The tables as they lie in a record, kRecordTableSize bytes, and the version of that record.
    // They are written as they were read, so a look that is stored again and again never changes.
    // Whoever fills the tables sees to it with CodeTables (record_tables.h).
    std::uint32_t codedVersion = kCodedVersion;
    std::vector<std::uint8_t> coded;

    bool HasTables() const noexcept { return curveSize != 0 || cubeSize != 0; }
    // Curves and cube as those of `source`; the strength stays.
    void CopyTables(const StoredLook& source) noexcept;
    void RemoveTables() noexcept;
    // Neutral and without tables.
    void Clear() noexcept;
};

// What ReadRecord would answer.
RecordState CheckRecord(std::span<const std::uint8_t> bytes) noexcept;

// Fills `look` from a record; it is cleared unless the answer is Usable. Reads nothing outside
// `bytes`, which need no alignment. Tables that `look` holds already are not decoded again.
RecordState ReadRecord(std::span<const std::uint8_t> bytes, StoredLook& look) noexcept;

// Fills `stored` from a look with a cube of at most kStoredCubeSize and curves of at most
// kStoredCurveSize, at the precision of a record. Throws std::bad_alloc.
void StoreLook(const Look& look, StoredLook& stored);

// Writes the whole record; its option word is 1, as in every new record.
void WriteRecord(const StoredLook& look, RecordBytes record) noexcept;

// Writes the sum over a record of kCodedVersion again, after a change to it.
void SealRecord(RecordBytes record) noexcept;

} // namespace ReferenceRenderer
