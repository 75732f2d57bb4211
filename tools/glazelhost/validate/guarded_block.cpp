#include "tools/glazelhost/validate/guarded_block.h"

#include <algorithm>
#include <new>

namespace GlazelHost
{

namespace
{

constexpr std::size_t kPage = 4096;
// On each side, only reserved: who believes a wrong size goes further than a page.
constexpr std::size_t kForbidden = std::size_t{1} << 20;

std::size_t InPages(std::size_t size) noexcept
{
    return std::max((size + kPage - 1) / kPage, std::size_t{1}) * kPage;
}

} // namespace

GuardedBlock::GuardedBlock(std::size_t size, GuardedEnd end) : m_size(size)
{
    const std::size_t usable = InPages(size);
    m_pages.reset(static_cast<std::byte*>(
        ::VirtualAlloc(nullptr, usable + 2 * kForbidden, MEM_RESERVE, PAGE_NOACCESS)));
    if (!m_pages ||
        ::VirtualAlloc(m_pages.get() + kForbidden, usable, MEM_COMMIT, PAGE_READWRITE) == nullptr)
    {
        throw std::bad_alloc();
    }
    m_data = m_pages.get() + kForbidden + (end == GuardedEnd::Back ? usable - size : 0);
}

GuardedBlock::GuardedBlock(std::span<const std::byte> contents, GuardedEnd end)
    : GuardedBlock(contents.size(), end)
{
    std::ranges::copy(contents, m_data);
}

void GuardedBlock::MakeReadOnly() noexcept
{
    DWORD old = 0;
    ::VirtualProtect(m_pages.get() + kForbidden, InPages(m_size), PAGE_READONLY, &old);
}

} // namespace GlazelHost
