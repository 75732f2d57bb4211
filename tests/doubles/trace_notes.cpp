#include "tests/doubles/trace_notes.h"

#include "support/trace.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace
{

TraceNotes* g_notes = nullptr; // whoever notes at the moment

TraceNote Formatted(int level, const char* format, va_list arguments)
{
    char text[256];
    std::vsnprintf(text, sizeof text, format, arguments);
    return {level, format, text};
}

} // namespace

std::ostream& operator<<(std::ostream& stream, const TraceNote& note)
{
    return stream << "level " << note.level << ", \"" << note.format << "\", \"" << note.text
                  << '"';
}

TraceNote Traced(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    TraceNote note = Formatted(0, format, arguments);
    va_end(arguments);
    return note;
}

TraceNotes::TraceNotes() noexcept
{
    g_notes = this;
}

TraceNotes::~TraceNotes()
{
    g_notes = nullptr;
}

std::vector<TraceNote> TraceNotes::Take()
{
    return std::exchange(m_notes, {});
}

std::vector<std::string> TraceNotes::TakeTexts()
{
    std::vector<std::string> texts;
    for (TraceNote& note : Take())
    {
        texts.push_back(std::move(note.text));
    }
    return texts;
}

void Trace(int level, const char* format, ...) noexcept
{
    if (g_notes == nullptr)
    {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    g_notes->m_notes.push_back(Formatted(level, format, arguments));
    va_end(arguments);
}
