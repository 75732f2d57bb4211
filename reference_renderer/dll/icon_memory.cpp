#include "reference_renderer/dll/icon_memory.h"

#include <new>

namespace ReferenceRenderer
{

namespace
{

void CALLBACK FreePixels(void* pixels) noexcept
{
    delete[] static_cast<std::uint32_t*>(pixels);
}

} // namespace

void IconMemory::Prepare() noexcept
{
    if (m_slot == FLS_OUT_OF_INDEXES)
    {
        m_slot = ::FlsAlloc(FreePixels);
    }
}

std::uint32_t* IconMemory::OfThisThread() noexcept
{
    if (m_slot == FLS_OUT_OF_INDEXES)
    {
        return nullptr;
    }
    auto* pixels = static_cast<std::uint32_t*>(::FlsGetValue(m_slot));
    if (pixels == nullptr)
    {
        pixels = new (std::nothrow) std::uint32_t[kIconPixels];
        if (pixels != nullptr && !::FlsSetValue(m_slot, pixels))
        {
            FreePixels(pixels);
            pixels = nullptr;
        }
    }
    return pixels;
}

void IconMemory::Release() noexcept
{
    if (m_slot != FLS_OUT_OF_INDEXES)
    {
        ::FlsFree(m_slot); // calls FreePixels for each thread that has some
        m_slot = FLS_OUT_OF_INDEXES;
    }
}

} // namespace ReferenceRenderer
