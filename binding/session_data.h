// The look record: a block of bytes that only the renderer understands, and one option word that is
// mirrored into a tagged chunk of that block.
// Pure: no windows.h. Tests: tests/binding/session_data_test.cpp.
#pragma once

#include "contract/option_chunk.h"

#include <cstdint>

// Not thread-safe: whoever holds a record guards it. No operation reports an error: an empty record
// (no block, size 0) is valid.
class SessionData
{
public:
    // Takes over `initialData` (from operator new, `initialSize` bytes, may be null).
    explicit SessionData(std::uint8_t* initialData = nullptr,
                         std::uint32_t initialSize = 0) noexcept;
    ~SessionData();
    SessionData(const SessionData&) = delete; // the block has one owner; the effect copies deeply
    SessionData& operator=(const SessionData&) = delete;

    // Makes the block exactly `newSize` bytes and returns it. A block that already has that size is
    // kept with its bytes; the bytes of a new one are undefined. Null for size 0 and when memory is
    // short; the record is then empty.
    std::uint8_t* AllocateData(std::uint32_t newSize) noexcept;
    // The same with a new block's bytes 0, for what somebody else is to fill: what they leave out
    // must not be whatever the heap held, because the block goes into the host's project.
    std::uint8_t* AllocateClearedData(std::uint32_t newSize) noexcept;
    void FreeData() noexcept;
    // The two records' blocks change places; their option words stay.
    void SwapData(SessionData& other) noexcept;

    // The option word, refreshed from the block's chunk when there is one.
    std::uint32_t GetFlag() noexcept;
    // Sets the option word, in the block's chunk too when there is one.
    void SetFlag(std::uint32_t value) noexcept;

    std::uint8_t* data;                      // owned; null when empty
    std::uint32_t size;                      // bytes
    std::uint32_t flag = kAssumeLinearGamma; // as last set or refreshed
};
