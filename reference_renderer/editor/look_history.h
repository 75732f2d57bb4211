// What was done to the look, step by step, so that it can be taken back and done again.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/look_history_test.cpp.
#pragma once

#include "reference_renderer/editor/look_draft.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ReferenceRenderer
{

inline constexpr std::size_t kUndoDepth = 100;
inline constexpr std::uint64_t kRunPauseMs = 1000; // steps that are further apart are two gestures

// Small changes that follow each other on one control make one gesture.
struct Run
{
    enum class Kind
    {
        Steps,      // of the wheel or of keys
        StepsOfAll, // the same for all channels
        Pad,        // of keys on a pad; `control` is its first
        Typing,     // lasts until its box is left
    };
    Kind kind = Kind::Steps;
    Control control = Control::SlopeRed;

    friend bool operator==(const Run&, const Run&) = default;
};

struct HistoryStep
{
    std::string what;         // for the user, UTF-8
    LookState look;           // after it
    bool swapsMemory = false; // it changed places with the state in the memory
};

// Allocates with every step; what it throws leaves it as it was.
class LookHistory
{
public:
    explicit LookHistory(LookState start);

    // A whole gesture, after which the look is `step.look`. One that changed nothing is no step;
    // any other ends what could be done again.
    void Did(HistoryStep step) { Add(std::move(step)); }
    // A part of a gesture that has no end of its own: it joins the step before where that is the
    // same run and still goes on at `nowMs`. A run that came back to where it began is no step.
    void DidInRun(const Run& run, std::uint64_t nowMs, HistoryStep step);
    void EndRun() noexcept { m_run.reset(); }
    // Forgets the run that goes on, as if it had not been. False when there is none.
    bool TakeBackRun() noexcept;
    bool IsTyping(Control control) const noexcept
    {
        return m_run == Run{Run::Kind::Typing, control};
    }

    // The step that is taken back or done again, null when there is none; Now() is the look after
    // that. The pointer holds until the next Did.
    const HistoryStep* Undo() noexcept;
    const HistoryStep* Redo() noexcept;
    const LookState& Now() const noexcept { return m_steps[m_now].look; }

private:
    bool Add(HistoryStep step); // false when it is none

    std::vector<HistoryStep> m_steps; // the first is where it all began, or where memory of it ends
    std::size_t m_now = 0;            // index; what comes after can be done again
    std::optional<Run> m_run;         // of the step at m_now, while it can go on
    std::uint64_t m_runMs = 0;        // when it last did
};

} // namespace ReferenceRenderer
