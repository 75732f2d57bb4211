// Bytes in order, from and to anything. Pure: no windows.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace GlazelHost
{

// Not thread-safe.
class ByteReader
{
public:
    virtual ~ByteReader() = default;
    ByteReader() = default;
    ByteReader(const ByteReader&) = delete;
    ByteReader& operator=(const ByteReader&) = delete;

    // Reads at least one byte and at most `size`; 0 only at the end (and for a size of 0). Throws
    // HostError.
    virtual std::size_t Read(std::byte* target, std::size_t size) = 0;
    // Passes over at most `size` bytes and says how many there were: fewer only at the end. Throws
    // HostError.
    virtual std::uint64_t Skip(std::uint64_t size) = 0;
    // All bytes from the beginning to the end; none for a pipe.
    virtual std::optional<std::uint64_t> Size() const = 0;
};

// Reads `size` bytes however many a call of Read gives; fewer only at the end.
std::size_t ReadFully(ByteReader& reader, std::byte* target, std::size_t size);

// Not thread-safe.
class ByteWriter
{
public:
    virtual ~ByteWriter() = default; // discards what was not committed
    ByteWriter() = default;
    ByteWriter(const ByteWriter&) = delete;
    ByteWriter& operator=(const ByteWriter&) = delete;

    // Writes all bytes or throws HostError.
    virtual void Write(const std::byte* source, std::size_t size) = 0;
    // Everything was written: gives a file its final name. Throws HostError.
    virtual void Commit() = 0;
};

} // namespace GlazelHost
