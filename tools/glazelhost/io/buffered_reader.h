// Lines and blocks out of a byte stream that gives as much at a time as it likes.
// Pure: no windows.h. Tests: tests/tools/glazelhost/io/buffered_reader_test.cpp.
#pragma once

#include "tools/glazelhost/io/byte_stream.h"

#include <memory>
#include <string>
#include <vector>

// Not thread-safe. HostErrors of the stream below pass through.
class BufferedReader
{
public:
    explicit BufferedReader(std::unique_ptr<ByteReader> below);

    enum class Line
    {
        Whole,   // without its line feed
        End,     // nothing was left
        Cut,     // the stream ended before the line feed
        TooLong, // no line feed within `longest` bytes
    };
    Line ReadLine(std::string& line, std::size_t longest);

    // Reads `size` bytes; fewer only at the end.
    std::size_t ReadFully(std::byte* target, std::size_t size);
    std::uint64_t Skip(std::uint64_t size);
    std::optional<std::uint64_t> Size() const { return m_below->Size(); }

private:
    bool Fill(); // false at the end

    std::unique_ptr<ByteReader> m_below;
    std::vector<std::byte> m_buffer;
    std::size_t m_begin = 0; // of what the buffer holds
    std::size_t m_end = 0;
};
