// Tells the user how a job goes, on standard error: as a bar that redraws itself, as plain lines,
// as JSON lines, or not at all.
// Pure: no windows.h. Tests: tests/tools/glazelhost/ui/reporter_test.cpp.
#pragma once

#include "tools/glazelhost/ui/progress_text.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace GlazelHost
{

enum class ReportStyle
{
    Bar,
    Plain,
    Json,  // one object a line; nothing else is written, errors included
    Quiet, // errors only
};

// All texts are UTF-8, without a line feed. One thread.
class Reporter
{
public:
    struct Outlets
    {
        std::function<void(const std::string&)> write; // to standard error, as it is
        std::function<double()> seconds;               // any clock that only goes forward
        std::function<int()> columns;                  // of the terminal; asked for the bar alone
    };

    Reporter(ReportStyle style, Outlets outlets);

    // What was found out or chosen: "input: PNG picture, 16 bits, ...".
    void Note(const std::string& text);
    // Something is wrong but the job goes on.
    void Warn(const std::string& text);
    // The line of a failure, which ends the job.
    void Fail(const std::string& line);

    // Frames begin. The speed counts from here.
    void Begin(std::optional<std::int64_t> total);
    // The size of the first picture, which what reads raw frames behind a pipe has to know. Only
    // programs are told.
    void Size(int width, int height);
    // So many frames are done. Shown when the last showing is long enough ago.
    void Advance(std::int64_t done);
    // All frames are done and `output` has its name.
    void Done(const std::string& output);

private:
    Progress Now() const;
    void Line(const std::string& text);
    void Event(const char* event, const std::string& text);
    void ClearBar();

    ReportStyle m_style;
    Outlets m_outlets;
    std::optional<std::int64_t> m_total;
    std::int64_t m_done = 0;
    double m_begin = 0.0;
    double m_lastShown = 0.0;
    std::size_t m_barLength = 0; // characters of the bar that stands on the terminal's line
};

} // namespace GlazelHost
