// A record's bytes as foreign code gets them, for as long as its call lasts.
// Pure: no windows.h. Tests: tests/propertypage/editor_launch_test.cpp, panel_paint_test.cpp,
// tests/effect/reentry_test.cpp.
#pragma once

#include "binding/session_data.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

// A copy: a renderer or a stream may come back during the call, by a message or by itself, and free
// the record's own bytes. They are those only where there is no memory for a copy.
class RecordBytes
{
public:
    explicit RecordBytes(const SessionData& record) noexcept
        : m_copy(record.data != nullptr ? new (std::nothrow) std::uint8_t[record.size] : nullptr),
          m_data(m_copy != nullptr ? m_copy.get() : record.data), m_size(record.size)
    {
        if (m_copy != nullptr)
        {
            std::memcpy(m_copy.get(), record.data, record.size);
        }
    }

    const std::uint8_t* Data() const noexcept { return m_data; } // null when the record is empty
    std::uint32_t Size() const noexcept { return m_size; }

private:
    std::unique_ptr<std::uint8_t[]> m_copy;
    const std::uint8_t* m_data;
    std::uint32_t m_size;
};
