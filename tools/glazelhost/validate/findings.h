// What a group of checks found, how its process tells it and what its ending adds.
// Pure: no windows.h. Tests: tests/tools/glazelhost/validate/findings_test.cpp.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace GlazelHost
{

enum class GroupState
{
    Passed,
    Warning,
    Failed,
    Skipped,
    Crashed,
    TimedOut,
    Count
};

// clang-format off
inline constexpr std::array<const char*, static_cast<std::size_t>(GroupState::Count)> kStateNames{
    "passed", "warning", "failed", "skipped", "crashed", "timed out",
};
// clang-format on

inline const char* NameOf(GroupState state) noexcept
{
    return kStateNames[static_cast<std::size_t>(state)];
}
std::optional<GroupState> StateCalled(std::string_view name) noexcept;

// Whether the group's sentence holds as far as it was asked.
inline bool Holds(GroupState state) noexcept
{
    return state == GroupState::Passed || state == GroupState::Warning ||
           state == GroupState::Skipped;
}

// Tells each finding at once, so that a crash leaves what was found before it. Texts are UTF-8.
class Findings
{
public:
    // `write` gets whole lines.
    explicit Findings(std::function<void(const std::string&)> write) : m_write(std::move(write)) {}

    // The group's process is there: from now on what happens is the file's doing.
    void Begin();
    void Fail(const std::string& text) { Tell("failure", text); }
    void Warn(const std::string& text) { Tell("warning", text); }
    // The group cannot be asked here; what was found before counts.
    void Skip(const std::string& why) { Tell("skipped", why); }
    // The group has come to its end.
    void Finish();

private:
    void Tell(const char* kind, const std::string& text);

    std::function<void(const std::string&)> m_write;
    std::set<std::string> m_told; // each reason once: loops find the same thing often
    std::size_t m_untold = 0;
};

// How the process of a group ended.
struct ProcessEnding
{
    unsigned exitCode = 0;
    bool timedOut = false;
    unsigned timeLimit = 0;             // seconds
    std::vector<std::string> windows{}; // titles of those that stood open when the time was over
};

struct GroupResult
{
    std::string name;
    int level = 0;
    std::string asks;
    GroupState state = GroupState::Skipped;
    std::vector<std::string> reasons;
    double seconds = 0.0;
};

// Whether its output says that the system lost a process that has ended: before Begin, or with its
// connection to Wine's server. That says nothing about the file.
bool IsLost(std::string_view output);

// State and reasons out of what Findings wrote; lines of anybody else are the words of a crash.
void ReadFindings(std::string_view output, const ProcessEnding& ending, GroupResult& result);

} // namespace GlazelHost
