// The look while it is edited: its numbers, its tables, and what an import changes of it.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/look_draft_test.cpp.
#pragma once

#include "reference_renderer/core/look_import.h"
#include "reference_renderer/core/look_record.h"
#include "reference_renderer/editor/grade_numbers.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ReferenceRenderer
{

// All of a look at one moment. Copies share the tables, which are most of it.
struct LookState
{
    using Tables = std::vector<std::uint8_t>;

    std::array<std::uint8_t, kRecordTableOffset> front{}; // of its record
    std::shared_ptr<const Tables> tables;                 // the rest, without the record's sum
    std::uint32_t version = kCodedVersion;
    CdlMode modeGiven = CdlMode::None;
    float pivot = kMiddleGrey;

    friend bool operator==(const LookState& a, const LookState& b) noexcept
    {
        return a.front == b.front && a.version == b.version && a.modeGiven == b.modeGiven &&
               a.pivot == b.pivot &&
               (a.tables == b.tables || (a.tables && b.tables && *a.tables == *b.tables));
    }
};

// Allocates in its constructor only, except for titles and states.
class LookDraft
{
public:
    // Starts from a record; from a neutral look when the record cannot be used.
    explicit LookDraft(std::span<const std::uint8_t> record);

    // What the record was that this started from.
    RecordState Origin() const noexcept { return m_origin; }

    float Value(Control control) const noexcept;
    bool IsNeutral(Control control) const noexcept;
    bool IsNeutral() const noexcept; // all numbers; tables do not count
    bool HasTables() const noexcept { return m_look.HasTables(); }
    // What the look is called, UTF-8; the name of its tables when it has some.
    std::string Title() const;
    // One line on the tables, or "" without.
    std::string TablesText() const;

    // False, and nothing changes, where SetNumber says so.
    bool Set(Control control, float value) noexcept;
    // Goes to `value` from where the control stood in `before`, or as far that way as a look can.
    // All else is as it was then.
    void Approach(Control control, float value, const GradeNumbers& before) noexcept;
    // Moves the control to `value` and the other channels of its step by as much of their sliders,
    // counted from `before`: from where a drag began, a limit on the way costs nothing. A channel
    // that was outside what can be typed there keeps that number.
    void MoveTogether(Control control, float value, const GradeNumbers& before) noexcept;
    GradeNumbers Numbers() const noexcept;
    // As Numbers gave them, whatever they are.
    void SetNumbers(const GradeNumbers& numbers) noexcept;
    void Reset(Control control) noexcept;
    void ResetAll() noexcept; // the numbers; tables stay
    void RemoveTables() noexcept;

    // Takes over what `imported` has: a whole look record, a CDL, tables, or both. The rest stays.
    // `name` is the title where the file has none. False when the record cannot be used.
    bool Merge(const ImportedLook& imported, std::string_view name);

    // What Restore brings back, with its name, from any state that this draft has had.
    LookState State();
    void Restore(const LookState& state);

    // The record of the look as it is now. A look that was not changed gives the bytes it started
    // from; the option word is kept in any case.
    void Write(RecordBytes record) const noexcept;

private:
    void SetTitle(std::string_view title);

    StoredLook m_look;
    RecordState m_origin; // what reading into m_look said, so declared after it
    // The mode that the look came with. A look without a CDL gets one as soon as a number differs.
    CdlMode m_modeGiven;
    float m_pivot = kMiddleGrey;
    std::array<std::uint8_t, 4> m_option;              // as in the record
    std::shared_ptr<const LookState::Tables> m_tables; // of the last state
};

} // namespace ReferenceRenderer
