// A report for people and for build servers, and where two of them differ.
// Pure: no windows.h. Tests: tests/tools/glazelhost/validate/report_test.cpp.
#pragma once

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/validate/report.h"

#include <string>
#include <vector>

namespace GlazelHost
{

// "renderer" or "plug-in".
const char* NameOf(SubjectKind kind) noexcept;

// "passed     renderer.frames (level 4): ..." and a line for each reason.
std::string TextOf(const GroupResult& group);

// One line, such as "NOT held: 2 of 12 groups up to level 5: 1 failed, 1 crashed".
std::string VerdictOf(const ValidateReport& report);

// Done when all held, OverWarning when there are warnings, OverLimit when something did not hold.
ExitCode ExitCodeOf(const ValidateReport& report) noexcept;

// JUnit's XML, as build servers read it.
std::string JUnitOf(const ValidateReport& report);

// A line for each difference between an earlier report and this one, times apart.
std::vector<std::string> DifferencesOf(const ValidateReport& earlier, const ValidateReport& later);

} // namespace GlazelHost
