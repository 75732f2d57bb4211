// The memory of a picture. Pure: no windows.h.
// Tests: tests/tools/glazelhost/surface/pixel_grid_test.cpp.
#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <utility>

namespace GlazelHost
{

// Bytes with room before and behind them, where whoever lends them out can see whether somebody
// wrote past either end.
class PixelBuffer
{
public:
    static constexpr std::size_t kGuardBytes = 64; // keeps the pixels on a cache line's start

    PixelBuffer() = default;
    PixelBuffer(std::size_t size, std::byte value)
    {
        resize(size);
        std::fill(begin(), end(), value);
    }
    PixelBuffer(std::initializer_list<std::byte> bytes)
    {
        resize(bytes.size());
        std::copy(bytes.begin(), bytes.end(), begin());
    }
    PixelBuffer(const PixelBuffer& other) { *this = other; }
    PixelBuffer(PixelBuffer&& other) noexcept { *this = std::move(other); }
    PixelBuffer& operator=(const PixelBuffer& other)
    {
        if (this != &other)
        {
            resize(other.m_size);
            std::copy(other.begin(), other.end(), begin());
        }
        return *this;
    }
    PixelBuffer& operator=(PixelBuffer&& other) noexcept
    {
        m_memory = std::move(other.m_memory);
        m_size = std::exchange(other.m_size, 0);
        m_room = std::exchange(other.m_room, 0);
        return *this;
    }

    // The bytes are arbitrary afterwards. Memory that is enough is kept.
    void resize(std::size_t size) // NOLINT(readability-identifier-naming): as std::vector has it
    {
        if (!m_memory || size > m_room)
        {
            m_memory.reset(); // never both at once
            m_memory = std::make_unique_for_overwrite<std::byte[]>(size + 2 * kGuardBytes);
            m_room = size;
        }
        m_size = size;
    }

    std::size_t size() const noexcept { return m_size; }
    std::byte* data() noexcept { return m_memory ? m_memory.get() + kGuardBytes : nullptr; }
    const std::byte* data() const noexcept
    {
        return m_memory ? m_memory.get() + kGuardBytes : nullptr;
    }
    // The same, for whoever lends the bytes of a picture that it must not change to somebody who
    // promises the same.
    std::byte* Lent() const noexcept { return m_memory ? m_memory.get() + kGuardBytes : nullptr; }
    std::byte* begin() noexcept { return data(); }
    std::byte* end() noexcept { return data() + m_size; }
    const std::byte* begin() const noexcept { return data(); }
    const std::byte* end() const noexcept { return data() + m_size; }
    std::byte& operator[](std::size_t index) noexcept { return data()[index]; }
    const std::byte& operator[](std::size_t index) const noexcept { return data()[index]; }

    friend bool operator==(const PixelBuffer& left, const PixelBuffer& right) noexcept
    {
        return std::equal(left.begin(), left.end(), right.begin(), right.end());
    }

private:
    std::unique_ptr<std::byte[]> m_memory; // room, bytes, room
    std::size_t m_size = 0;
    std::size_t m_room = 0; // for so many bytes
};

} // namespace GlazelHost
