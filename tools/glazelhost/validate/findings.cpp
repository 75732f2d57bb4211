#include "tools/glazelhost/validate/findings.h"

#include "tools/glazelhost/one_line.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>

namespace GlazelHost
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr std::size_t kMostReasons = 20;

constexpr const char* kBegun = "begun";
constexpr const char* kFinished = "finished";

std::string Line(const char* kind, const std::string& text)
{
    return Json{{kind, text}}.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string Hexadecimal(unsigned number)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08X", number);
    return text.data();
}

// Failures are stronger than warnings, both than having been skipped.
GroupState StateOf(bool failed, bool warned, bool skipped) noexcept
{
    if (failed)
    {
        return GroupState::Failed;
    }
    if (warned)
    {
        return GroupState::Warning;
    }
    return skipped ? GroupState::Skipped : GroupState::Passed;
}

} // namespace

std::optional<GroupState> StateCalled(std::string_view name) noexcept
{
    const auto* const found = std::ranges::find(kStateNames, name);
    if (found == kStateNames.end())
    {
        return std::nullopt;
    }
    return static_cast<GroupState>(found - kStateNames.begin());
}

void Findings::Tell(const char* kind, const std::string& text)
{
    if (m_told.size() >= kMostReasons && !m_told.contains(text))
    {
        ++m_untold;
        return;
    }
    if (m_told.insert(text).second)
    {
        m_write(Line(kind, text));
    }
}

void Findings::Begin()
{
    m_write(Line(kBegun, ""));
}

void Findings::Finish()
{
    if (m_untold != 0)
    {
        m_write(Line("note", "and " + std::to_string(m_untold) + " more"));
    }
    m_write(Line(kFinished, ""));
}

bool IsLost(std::string_view output)
{
    return output.find(Line(kBegun, "")) == std::string_view::npos ||
           output.find("wine client error:") != std::string_view::npos;
}

void ReadFindings(std::string_view output, const ProcessEnding& ending, GroupResult& result)
{
    bool failed = false;
    bool warned = false;
    bool skipped = false;
    bool finished = false;
    std::string strange; // what no finding is: the line of a crash
    while (!output.empty())
    {
        const std::size_t end = std::min(output.find('\n'), output.size());
        const std::string line(output.substr(0, end));
        output.remove_prefix(std::min(end + 1, output.size()));
        const Json finding = Json::parse(line, nullptr, false);
        if (!finding.is_object() || finding.size() != 1 || !finding.front().is_string())
        {
            strange = OneLine(line).empty() ? strange : OneLine(line);
            continue;
        }
        const std::string& kind = finding.begin().key();
        finished = finished || kind == kFinished;
        failed = failed || kind == "failure";
        warned = warned || kind == "warning";
        skipped = skipped || kind == "skipped";
        if (kind != kBegun && kind != kFinished)
        {
            result.reasons.push_back(finding.front().get<std::string>());
        }
    }
    if (ending.timedOut)
    {
        result.state = GroupState::TimedOut;
        std::string reason = "not done within " + std::to_string(ending.timeLimit) + " s";
        for (const std::string& title : ending.windows)
        {
            reason += "; it shows a window \"" + OneLine(title) + "\"";
        }
        result.reasons.push_back(reason);
    }
    else if (!finished)
    {
        result.state = GroupState::Crashed;
        result.reasons.push_back(strange.empty()
                                     ? "the process ended with code " + Hexadecimal(ending.exitCode)
                                     : strange);
    }
    else if (ending.exitCode != 0)
    {
        result.state = GroupState::Crashed;
        result.reasons.push_back(strange.empty()
                                     ? "when all was asked, the process ended with code " +
                                           Hexadecimal(ending.exitCode)
                                     : strange);
    }
    else
    {
        result.state = StateOf(failed, warned, skipped);
    }
}

} // namespace GlazelHost
