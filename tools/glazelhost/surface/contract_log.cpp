#include "tools/glazelhost/surface/contract_log.h"

namespace GlazelHost
{

namespace
{

struct ViolationText
{
    Violation violation;
    const char* text;
};

// clang-format off
constexpr std::array kTexts{
    ViolationText{Violation::OutsideLock,      "samples outside the locked area were asked for"},
    ViolationText{Violation::NullBuffer,       "a sample buffer was missing"},
    ViolationText{Violation::BadDescriptor,    "a rectangle or its row padding made no sense"},
    ViolationText{Violation::GuardOverwritten, "memory before or after the surface was overwritten"},
    ViolationText{Violation::LockLeftOpen,     "a surface lock was not released"},
};
// clang-format on
static_assert(kTexts.size() == static_cast<std::size_t>(Violation::Count));

} // namespace

std::string ContractLog::Summary() const
{
    std::string summary;
    for (const ViolationText& row : kTexts)
    {
        if (const unsigned count = CountOf(row.violation); count > 0)
        {
            summary += (summary.empty() ? "" : ", ") + std::string(row.text);
            summary += count > 1 ? " (" + std::to_string(count) + " times)" : "";
        }
    }
    return summary;
}

void ContractLog::Clear() noexcept
{
    for (std::atomic<unsigned>& count : m_counts)
    {
        count.store(0, std::memory_order_relaxed);
    }
}

} // namespace GlazelHost
