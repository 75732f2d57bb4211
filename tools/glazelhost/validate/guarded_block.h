// Memory beside pages that nobody may touch: who goes too far is caught in the act.
#pragma once

#include <windows.h>

#include <cstddef>
#include <memory>
#include <span>

namespace GlazelHost
{

// Which end of the block touches the forbidden page; the other end has slack.
enum class GuardedEnd
{
    Front,
    Back,
};

// Zero at first. Throws std::bad_alloc.
class GuardedBlock
{
public:
    explicit GuardedBlock(std::size_t size, GuardedEnd end = GuardedEnd::Back);
    explicit GuardedBlock(std::span<const std::byte> contents, GuardedEnd end = GuardedEnd::Back);

    std::byte* Data() const noexcept { return m_data; }
    std::size_t Size() const noexcept { return m_size; }
    std::span<std::byte> Bytes() const noexcept { return {m_data, m_size}; }
    // From now on writing is caught too.
    void MakeReadOnly() noexcept;

private:
    struct PagesDeleter
    {
        void operator()(std::byte* pages) const noexcept { ::VirtualFree(pages, 0, MEM_RELEASE); }
    };

    std::unique_ptr<std::byte, PagesDeleter> m_pages;
    std::byte* m_data = nullptr;
    std::size_t m_size;
};

} // namespace GlazelHost
