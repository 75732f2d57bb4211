// What an effect did to a surface against the surface's contract: counted, so that the host can
// report it, and never carried out.
// Pure: no windows.h. Tests: tests/tools/glazelhost/surface/contract_log_test.cpp.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <string>

namespace GlazelHost
{

enum class Violation
{
    OutsideLock,      // samples beyond the locked area were read or written
    NullBuffer,       // no buffer where the format or the method needs one
    BadDescriptor,    // a rectangle turned inside out or a row padding below minus its width
    GuardOverwritten, // the bytes before or after the surface's memory have changed
    LockLeftOpen,     // a lock was still held when the operation had ended
    Count
};

// Any thread; reading the summary while others still note gives some of what they noted.
class ContractLog
{
public:
    void Note(Violation violation) noexcept
    {
        m_counts[static_cast<std::size_t>(violation)].fetch_add(1, std::memory_order_relaxed);
    }
    unsigned CountOf(Violation violation) const noexcept
    {
        return m_counts[static_cast<std::size_t>(violation)].load(std::memory_order_relaxed);
    }
    // Empty when nothing was noted; else one line for the user.
    std::string Summary() const;
    void Clear() noexcept;

private:
    std::array<std::atomic<unsigned>, static_cast<std::size_t>(Violation::Count)> m_counts{};
};

} // namespace GlazelHost
