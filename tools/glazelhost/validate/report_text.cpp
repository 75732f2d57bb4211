#include "tools/glazelhost/validate/report_text.h"

#include "support/xml_text.h"
#include "tools/glazelhost/one_line.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace GlazelHost
{

namespace
{

std::size_t CountOf(const StateCounts& counts, GroupState state) noexcept
{
    return counts[static_cast<std::size_t>(state)];
}

// Names what is not plainly passed: "1 failed, 2 skipped".
std::string CountsText(const StateCounts& counts)
{
    std::vector<std::string> parts;
    for (std::size_t state = 0; state < counts.size(); ++state)
    {
        if (counts[state] != 0)
        {
            parts.push_back(std::to_string(counts[state]) + " " + kStateNames[state]);
        }
    }
    return Joined(parts);
}

std::string SecondsText(double seconds)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f", seconds);
    return text.data();
}

std::string JUnitCase(const GroupResult& group)
{
    std::string text = "  <testcase classname=\"" +
                       XmlEscaped(group.name.substr(0, group.name.find('.'))) + "\" name=\"" +
                       XmlEscaped(group.name) + "\" time=\"" + SecondsText(group.seconds) + "\"";
    std::string reasons;
    for (const std::string& reason : group.reasons)
    {
        reasons += XmlEscaped(reason) + "\n";
    }
    const char* element = nullptr;
    switch (group.state)
    {
    case GroupState::Passed:
        return text + "/>\n";
    case GroupState::Warning:
        return text + ">\n    <system-out>" + reasons + "</system-out>\n  </testcase>\n";
    case GroupState::Skipped:
        element = "skipped";
        break;
    case GroupState::Failed:
        element = "failure";
        break;
    default:
        element = "error";
    }
    return text + ">\n    <" + element + " message=\"" + NameOf(group.state) + "\">" + reasons +
           "</" + element + ">\n  </testcase>\n";
}

template <typename Value>
void Compare(const char* what, const Value& earlier, const Value& later,
             std::vector<std::string>& differences)
{
    if (earlier != later)
    {
        differences.push_back(std::string(what) + ": was \"" + earlier + "\", is \"" + later +
                              "\"");
    }
}

void CompareFiles(const ValidateReport& earlier, const ValidateReport& later,
                  std::vector<std::string>& differences)
{
    for (const JudgedFile& file : later.files)
    {
        const auto before = std::ranges::find(earlier.files, file.role, &JudgedFile::role);
        if (before == earlier.files.end())
        {
            differences.push_back(file.role + ": was not there, is \"" + file.file + "\"");
            continue;
        }
        Compare((file.role + ", file").c_str(), before->file, file.file, differences);
        Compare((file.role + ", SHA-256").c_str(), before->sha256, file.sha256, differences);
    }
}

void CompareMachines(const MachineFacts& earlier, const MachineFacts& later,
                     std::vector<std::string>& differences)
{
    Compare("system", earlier.system, later.system, differences);
    Compare("Wine", earlier.wine, later.wine, differences);
    Compare("processor", earlier.processor, later.processor, differences);
    Compare("processors", std::to_string(earlier.processors), std::to_string(later.processors),
            differences);
    Compare("locale", earlier.locale, later.locale, differences);
}

void CompareGroups(const GroupResult& earlier, const GroupResult& later,
                   std::vector<std::string>& differences)
{
    if (earlier.state != later.state)
    {
        Compare(later.name.c_str(), std::string(NameOf(earlier.state)),
                std::string(NameOf(later.state)), differences);
        return;
    }
    // Where a crash strikes may depend on where the system put things.
    if (earlier.reasons != later.reasons && later.state != GroupState::Crashed)
    {
        differences.push_back(later.name + ": " + NameOf(later.state) +
                              " for other reasons: were " + Joined(earlier.reasons) + "; are " +
                              Joined(later.reasons));
    }
}

} // namespace

const char* NameOf(SubjectKind kind) noexcept
{
    return kind == SubjectKind::Renderer ? "renderer" : "plug-in";
}

std::string TextOf(const GroupResult& group)
{
    std::string state = NameOf(group.state);
    if (!Holds(group.state))
    {
        std::ranges::transform(state, state.begin(), [](char letter) {
            return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
        });
    }
    state.resize(std::max<std::size_t>(state.size(), 10), ' ');
    std::string text =
        state + group.name + " (level " + std::to_string(group.level) + "): " + group.asks + "\n";
    for (const std::string& reason : group.reasons)
    {
        text += "          " + OneLine(reason) + "\n";
    }
    return text;
}

std::string VerdictOf(const ValidateReport& report)
{
    const auto broken = std::ranges::count_if(
        report.groups, [](const GroupResult& group) { return !Holds(group.state); });
    const std::string groups = std::to_string(report.groups.size()) + " groups up to level " +
                               std::to_string(report.options.level);
    const std::string counts = ": " + CountsText(CountsOf(report));
    return broken == 0 ? "held: " + groups + counts
                       : "NOT held: " + std::to_string(broken) + " of " + groups + counts;
}

ExitCode ExitCodeOf(const ValidateReport& report) noexcept
{
    const StateCounts counts = CountsOf(report);
    if (CountOf(counts, GroupState::Failed) + CountOf(counts, GroupState::Crashed) +
            CountOf(counts, GroupState::TimedOut) !=
        0)
    {
        return ExitCode::OverLimit;
    }
    return CountOf(counts, GroupState::Warning) != 0 ? ExitCode::OverWarning : ExitCode::Done;
}

std::string JUnitOf(const ValidateReport& report)
{
    const StateCounts counts = CountsOf(report);
    const std::size_t errors =
        CountOf(counts, GroupState::Crashed) + CountOf(counts, GroupState::TimedOut);
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"glazelhost "
                       "validate " +
                       XmlEscaped(report.files.empty() ? "" : report.files.front().file) +
                       "\" tests=\"" + std::to_string(report.groups.size()) + "\" failures=\"" +
                       std::to_string(CountOf(counts, GroupState::Failed)) + "\" errors=\"" +
                       std::to_string(errors) + "\" skipped=\"" +
                       std::to_string(CountOf(counts, GroupState::Skipped)) + "\" timestamp=\"" +
                       XmlEscaped(report.time) + "\" time=\"" + SecondsText(report.seconds) +
                       "\">\n";
    for (const GroupResult& group : report.groups)
    {
        text += JUnitCase(group);
    }
    return text + "</testsuite>\n";
}

std::vector<std::string> DifferencesOf(const ValidateReport& earlier, const ValidateReport& later)
{
    std::vector<std::string> differences;
    Compare("program", earlier.program, later.program, differences);
    CompareFiles(earlier, later, differences);
    CompareMachines(earlier.machine, later.machine, differences);
    for (const GroupResult& group : later.groups)
    {
        const auto before = std::ranges::find(earlier.groups, group.name, &GroupResult::name);
        if (before == earlier.groups.end())
        {
            differences.push_back(group.name + ": was not asked, is \"" + NameOf(group.state) +
                                  "\"");
            continue;
        }
        CompareGroups(*before, group, differences);
    }
    for (const GroupResult& group : earlier.groups)
    {
        if (std::ranges::find(later.groups, group.name, &GroupResult::name) == later.groups.end())
        {
            differences.push_back(group.name + ": was \"" + NameOf(group.state) +
                                  "\", is not asked");
        }
    }
    return differences;
}

} // namespace GlazelHost
