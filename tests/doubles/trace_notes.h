// Notes what the code under test traces. Link test_trace: its Trace takes the place of the real
// one, which does nothing. Pure: no windows.h.
#pragma once

#include <ostream>
#include <string>
#include <vector>

struct TraceNote
{
    int level;
    std::string format; // as the caller gave it
    std::string text;   // with the arguments in it

    bool operator==(const TraceNote&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const TraceNote& note);

// What a call of Trace at level 0 with these arguments is noted as.
TraceNote Traced(const char* format, ...);

// Notes every call while it lives. One at a time, and for the calls of one thread.
class TraceNotes
{
public:
    TraceNotes() noexcept;
    ~TraceNotes();
    TraceNotes(const TraceNotes&) = delete;
    TraceNotes& operator=(const TraceNotes&) = delete;

    // In the order of the calls, since the last time.
    std::vector<TraceNote> Take();
    // The same, without the format: a failed check hands its message on as an argument.
    std::vector<std::string> TakeTexts();

private:
    friend void Trace(int level, const char* format, ...) noexcept;

    std::vector<TraceNote> m_notes;
};
