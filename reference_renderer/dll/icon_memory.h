// Pixels of the icon that each thread last asked for.
#pragma once

#include "reference_renderer/core/look_icon.h"

#include <cstdint>
#include <span>

#include <windows.h>

namespace ReferenceRenderer
{

// Needs no destructor; Release gives everything back.
class IconMemory
{
public:
    constexpr IconMemory() noexcept = default;
    IconMemory(const IconMemory&) = delete;
    IconMemory& operator=(const IconMemory&) = delete;

    // Takes the slot that leads a thread to its pixels, unless it is taken. Before any other use.
    void Prepare() noexcept;
    // kIconPixels pixels of the calling thread, the same ones each time; freed with the thread.
    // Null when memory is short.
    std::uint32_t* OfThisThread() noexcept;
    // Frees the pixels of all threads. While no other operation runs.
    void Release() noexcept;

private:
    DWORD m_slot = FLS_OUT_OF_INDEXES;
};

} // namespace ReferenceRenderer
