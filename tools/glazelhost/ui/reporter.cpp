#include "tools/glazelhost/ui/reporter.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace GlazelHost
{

namespace
{

// Seconds between two showings: smooth for the eye, sparse for a log, useful for a program.
double IntervalOf(ReportStyle style) noexcept
{
    switch (style)
    {
    case ReportStyle::Bar:
        return 0.1;
    case ReportStyle::Json:
        return 0.5;
    case ReportStyle::Plain:
    case ReportStyle::Quiet:
        return 5.0;
    }
    return 5.0;
}

// Malformed UTF-8 (a file name may hold anything) is replaced, not refused.
std::string Dump(const nlohmann::ordered_json& line)
{
    return line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

} // namespace

Reporter::Reporter(ReportStyle style, Outlets outlets)
    : m_style(style), m_outlets(std::move(outlets))
{
}

void Reporter::Note(const std::string& text)
{
    switch (m_style)
    {
    case ReportStyle::Json:
        Event("note", text);
        break;
    case ReportStyle::Bar:
    case ReportStyle::Plain:
        Line(text);
        break;
    case ReportStyle::Quiet:
        break;
    }
}

void Reporter::Warn(const std::string& text)
{
    switch (m_style)
    {
    case ReportStyle::Json:
        Event("warning", text);
        break;
    case ReportStyle::Bar:
    case ReportStyle::Plain:
        Line("warning: " + text);
        break;
    case ReportStyle::Quiet:
        break;
    }
}

void Reporter::Fail(const std::string& line)
{
    if (m_style == ReportStyle::Json)
    {
        Event("error", line);
    }
    else
    {
        Line(line);
    }
}

void Reporter::Begin(std::optional<std::int64_t> total)
{
    m_total = total;
    m_done = 0;
    m_begin = m_outlets.seconds();
    m_lastShown = m_begin;
}

void Reporter::Size(int width, int height)
{
    if (m_style == ReportStyle::Json)
    {
        m_outlets.write(Dump({{"event", "size"}, {"width", width}, {"height", height}}) + "\n");
    }
}

void Reporter::Advance(std::int64_t done)
{
    m_done = done;
    const double now = m_outlets.seconds();
    if (m_style == ReportStyle::Quiet || now - m_lastShown < IntervalOf(m_style))
    {
        return;
    }
    m_lastShown = now;
    const Progress progress = Now();
    switch (m_style)
    {
    case ReportStyle::Bar:
    {
        // The last column stays free: writing there makes some terminals begin a new line.
        std::string bar = BarLine(progress, m_outlets.columns() - 1);
        const std::size_t length = bar.size();
        bar.resize(std::max(length, m_barLength), ' ');
        m_outlets.write(bar.insert(0, 1, '\r'));
        m_barLength = length;
        break;
    }
    case ReportStyle::Plain:
        Line(PlainLine(progress));
        break;
    case ReportStyle::Json:
        m_outlets.write(JsonLine(progress) + "\n");
        break;
    case ReportStyle::Quiet:
        break;
    }
}

void Reporter::Done(const std::string& output)
{
    const Progress progress{m_done, m_done, m_outlets.seconds() - m_begin};
    const auto speed = FramesPerSecond(progress);
    if (m_style == ReportStyle::Json)
    {
        const nlohmann::ordered_json line{
            {"event", "done"},
            {"output", output},
            {"frames", m_done},
            {"seconds", std::round(progress.seconds * 1000.0) / 1000.0},
            {"framesPerSecond", speed ? nlohmann::json(std::round(*speed * 1000.0) / 1000.0)
                                      : nlohmann::json(nullptr)},
        };
        m_outlets.write(Dump(line) + "\n");
        return;
    }
    if (m_style == ReportStyle::Quiet)
    {
        return;
    }
    std::string line = output + ": " + FrameCountText(m_done);
    if (speed && m_done > 1)
    {
        // The speed's own text, without the time left, which is none.
        const std::string plain = PlainLine(Progress{m_done, std::nullopt, progress.seconds});
        line += " in " + DurationText(progress.seconds) + plain.substr(plain.find(','));
    }
    Line(line);
}

Progress Reporter::Now() const
{
    return {m_done, m_total, m_outlets.seconds() - m_begin};
}

void Reporter::ClearBar()
{
    if (m_barLength > 0)
    {
        std::string blank(m_barLength + 2, ' ');
        blank.front() = '\r';
        blank.back() = '\r';
        m_outlets.write(blank);
        m_barLength = 0;
    }
}

void Reporter::Line(const std::string& text)
{
    ClearBar();
    m_outlets.write("glazelhost: " + text + "\n");
}

void Reporter::Event(const char* event, const std::string& text)
{
    m_outlets.write(Dump({{"event", event}, {"text", text}}) + "\n");
}

} // namespace GlazelHost
