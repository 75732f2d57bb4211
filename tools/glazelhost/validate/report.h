// The report of a run: what was judged, with what, where, and what came out; as JSON and back.
// Pure: no windows.h. docs/validate.md describes the JSON.
// Tests: tests/tools/glazelhost/validate/report_test.cpp.
#pragma once

#include "tools/glazelhost/validate/findings.h"
#include "tools/glazelhost/validate/group_choice.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace GlazelHost
{

// Texts are UTF-8.

struct JudgedFile
{
    std::string role; // "renderer" or "plug-in"
    std::string file;
    std::string version; // of its resource; empty without one
    std::string sha256;  // 64 hexadecimal digits

    friend bool operator==(const JudgedFile&, const JudgedFile&) = default;
};

struct MachineFacts
{
    std::string system;    // "Windows 10.0.19043"
    std::string wine;      // "8.0"; empty on Windows itself
    std::string processor; // as it calls itself
    unsigned processors = 0;
    std::string locale; // "en-GB"

    friend bool operator==(const MachineFacts&, const MachineFacts&) = default;
};

struct ValidateReport
{
    std::string program; // version of this one
    SubjectKind kind = SubjectKind::Renderer;
    std::vector<JudgedFile> files; // the one that is judged, then those that it needs
    ValidateOptions options;
    MachineFacts machine;
    std::string time; // of the beginning, ISO 8601 in UTC
    double seconds = 0.0;
    std::vector<GroupResult> groups;
};

using StateCounts = std::array<std::size_t, static_cast<std::size_t>(GroupState::Count)>;
StateCounts CountsOf(const ValidateReport& report) noexcept;

std::string JsonOf(const ValidateReport& report);

// None with a reason in `why` when the text is no report that this program knows.
std::optional<ValidateReport> ParseReport(std::string_view json, std::string& why);

} // namespace GlazelHost
