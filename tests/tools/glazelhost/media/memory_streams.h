// Byte streams in memory, for tests: short reads and failures on demand.
#pragma once

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/byte_stream.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

namespace GlazelHost
{

// Gives `content` in pieces of at most `pieceBytes`.
class MemoryReader final : public ByteReader
{
public:
    explicit MemoryReader(std::string content,
                          std::size_t pieceBytes = std::numeric_limits<std::size_t>::max(),
                          bool knowsSize = true)
        : m_content(std::move(content)), m_pieceBytes(pieceBytes), m_knowsSize(knowsSize)
    {
    }
    std::size_t Read(std::byte* target, std::size_t size) override
    {
        const std::size_t count = std::min({size, m_pieceBytes, m_content.size() - m_position});
        std::memcpy(target, m_content.data() + m_position, count);
        m_position += count;
        return count;
    }
    std::uint64_t Skip(std::uint64_t size) override
    {
        const std::uint64_t count = std::min<std::uint64_t>(size, m_content.size() - m_position);
        m_position += static_cast<std::size_t>(count);
        return count;
    }
    std::optional<std::uint64_t> Size() const override
    {
        return m_knowsSize ? std::optional<std::uint64_t>(m_content.size()) : std::nullopt;
    }

private:
    std::string m_content;
    std::size_t m_pieceBytes;
    bool m_knowsSize;
    std::size_t m_position = 0;
};

// What a MemoryWriter got; outlives it.
struct WrittenBytes
{
    std::string content;
    bool committed = false;
    std::size_t room = std::numeric_limits<std::size_t>::max(); // writing more fails
};

class MemoryWriter final : public ByteWriter
{
public:
    explicit MemoryWriter(WrittenBytes& target) : m_target(target) {}
    void Write(const std::byte* source, std::size_t size) override
    {
        if (size > m_target.room - m_target.content.size())
        {
            throw HostError("memory", "the disk is full", "make room");
        }
        m_target.content.append(reinterpret_cast<const char*>(source), size);
    }
    void Commit() override { m_target.committed = true; }

private:
    WrittenBytes& m_target;
};

inline std::unique_ptr<ByteReader>
ReaderOf(std::string content, std::size_t pieceBytes = std::numeric_limits<std::size_t>::max())
{
    return std::make_unique<MemoryReader>(std::move(content), pieceBytes);
}

inline std::unique_ptr<ByteWriter> WriterTo(WrittenBytes& target)
{
    return std::make_unique<MemoryWriter>(target);
}

} // namespace GlazelHost
