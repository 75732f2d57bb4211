#include "tools/glazelhost/io/buffered_reader.h"

#include <algorithm>
#include <cstring>

namespace
{
constexpr std::size_t kBufferBytes = 4096; // lines are short; blocks pass it by
}

BufferedReader::BufferedReader(std::unique_ptr<ByteReader> below)
    : m_below(std::move(below)), m_buffer(kBufferBytes)
{
}

bool BufferedReader::Fill()
{
    m_begin = 0;
    m_end = 0; // nothing old is seen again when the read throws
    m_end = m_below->Read(m_buffer.data(), m_buffer.size());
    return m_end != 0;
}

BufferedReader::Line BufferedReader::ReadLine(std::string& line, std::size_t longest)
{
    line.clear();
    while (line.size() <= longest)
    {
        if (m_begin == m_end && !Fill())
        {
            return line.empty() ? Line::End : Line::Cut;
        }
        const auto first = m_buffer.begin() + static_cast<std::ptrdiff_t>(m_begin);
        const auto last = m_buffer.begin() + static_cast<std::ptrdiff_t>(m_end);
        const auto feed = std::find(first, last, std::byte{'\n'});
        line.append(reinterpret_cast<const char*>(m_buffer.data()) + m_begin,
                    static_cast<std::size_t>(feed - first));
        m_begin += static_cast<std::size_t>(feed - first);
        if (feed != last)
        {
            ++m_begin;
            return line.size() <= longest ? Line::Whole : Line::TooLong;
        }
    }
    return Line::TooLong;
}

std::size_t BufferedReader::ReadFully(std::byte* target, std::size_t size)
{
    const std::size_t done = std::min(size, m_end - m_begin);
    if (done != 0)
    {
        std::memcpy(target, m_buffer.data() + m_begin, done);
        m_begin += done;
    }
    return done + ::ReadFully(*m_below, target + done, size - done);
}

std::uint64_t BufferedReader::Skip(std::uint64_t size)
{
    const std::uint64_t held = std::min<std::uint64_t>(size, m_end - m_begin);
    m_begin += static_cast<std::size_t>(held);
    return held == size ? held : held + m_below->Skip(size - held);
}
