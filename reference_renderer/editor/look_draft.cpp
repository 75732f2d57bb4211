#include "reference_renderer/editor/look_draft.h"

#include "reference_renderer/core/text_scanning.h"

#include <algorithm>
#include <cassert>
#include <memory>

namespace ReferenceRenderer
{

namespace
{

constexpr std::size_t kOptionOffset = 16;
constexpr std::array<std::uint8_t, 4> kNewOption{1, 0, 0, 0};

std::array<std::uint8_t, 4> OptionOf(std::span<const std::uint8_t> record,
                                     RecordState state) noexcept
{
    std::array<std::uint8_t, 4> option = kNewOption;
    if (state == RecordState::Usable)
    {
        std::copy_n(record.begin() + kOptionOffset, option.size(), option.begin());
    }
    return option;
}

} // namespace

LookDraft::LookDraft(std::span<const std::uint8_t> record)
    : m_origin(ReadRecord(record, m_look)), m_modeGiven(m_look.cdlMode),
      m_option(OptionOf(record, m_origin))
{
}

float LookDraft::Value(Control control) const noexcept
{
    return NumberOf(Numbers(), control);
}

bool LookDraft::IsNeutral(Control control) const noexcept
{
    return ReferenceRenderer::IsNeutral(Numbers(), control);
}

bool LookDraft::IsNeutral() const noexcept
{
    return std::all_of(kControls.begin(), kControls.end(),
                       [&](const ControlFacts& facts) { return IsNeutral(facts.control); });
}

std::string LookDraft::Title() const
{
    return CleanText(m_look.title.data());
}

std::string LookDraft::TablesText() const
{
    std::string text;
    if (m_look.curveSize != 0)
    {
        text = "1D, " + std::to_string(m_look.curveSize) + " entries";
    }
    if (m_look.cubeSize != 0)
    {
        const std::string side = std::to_string(m_look.cubeSize);
        text += (text.empty() ? "3D, " : " + 3D, ") + side + " x " + side + " x " + side;
    }
    return text;
}

bool LookDraft::Set(Control control, float value) noexcept
{
    GradeNumbers numbers = Numbers();
    if (!SetNumber(numbers, control, value))
    {
        return false;
    }
    SetNumbers(numbers);
    return true;
}

void LookDraft::Approach(Control control, float value, const GradeNumbers& before) noexcept
{
    GradeNumbers numbers = before;
    ReferenceRenderer::Approach(numbers, control, value);
    SetNumbers(numbers);
}

void LookDraft::MoveTogether(Control control, float value, const GradeNumbers& before) noexcept
{
    const ControlFacts& facts = FactsOf(control);
    if (!CanBeTyped(facts, value))
    {
        return;
    }
    GradeNumbers numbers = before;
    ReferenceRenderer::Approach(numbers, control, value);
    const double moved = PositionOf(facts, value) - PositionOf(facts, NumberOf(before, control));
    for (const ControlFacts& other : kControls)
    {
        const float from = NumberOf(before, other.control);
        // Where nothing moved, nothing is rounded either.
        if (other.step == facts.step && other.control != control && moved != 0.0 &&
            CanBeTyped(other, from))
        {
            ReferenceRenderer::Approach(numbers, other.control,
                                        ValueAt(other, PositionOf(other, from) + moved));
        }
    }
    SetNumbers(numbers);
}

GradeNumbers LookDraft::Numbers() const noexcept
{
    return {m_look.cdl, m_look.strength, m_pivot};
}

void LookDraft::SetNumbers(const GradeNumbers& numbers) noexcept
{
    m_look.cdl = numbers.cdl;
    m_look.strength = numbers.strength;
    m_pivot = numbers.pivot;
    const Cdl neutral;
    const Cdl& cdl = m_look.cdl;
    const bool same = cdl.slope == neutral.slope && cdl.offset == neutral.offset &&
                      cdl.power == neutral.power && cdl.saturation == neutral.saturation;
    if (m_modeGiven == CdlMode::None)
    {
        m_look.cdlMode = same ? CdlMode::None : CdlMode::Clamped;
    }
}

void LookDraft::Reset(Control control) noexcept
{
    Approach(control, FactsOf(control).neutral, Numbers());
}

void LookDraft::ResetAll() noexcept
{
    SetNumbers({});
}

void LookDraft::RemoveTables() noexcept
{
    m_look.RemoveTables();
    m_look.strength = FactsOf(Control::Strength).neutral;
    m_look.title = {}; // it named the tables
}

bool LookDraft::Merge(const ImportedLook& imported, std::string_view name)
{
    const auto look = std::make_unique<StoredLook>();
    if (ReadRecord(imported.record, *look) != RecordState::Usable)
    {
        return false;
    }
    const bool hasCdl = look->cdlMode != CdlMode::None;
    const bool whole = imported.kind == "look record" || (hasCdl && look->HasTables());
    const std::string title = imported.title.empty() ? std::string(name) : imported.title;
    if (whole || look->HasTables() || !m_look.HasTables())
    {
        SetTitle(title); // a CDL does not rename the tables that stay
    }
    if (whole || hasCdl)
    {
        m_look.cdl = look->cdl;
        m_look.cdlMode = look->cdlMode;
        m_modeGiven = look->cdlMode;
    }
    if (whole || look->HasTables())
    {
        m_look.strength = look->strength;
        m_look.CopyTables(*look);
    }
    return true;
}

LookState LookDraft::State()
{
    std::vector<std::uint8_t> record(kRecordSize);
    Write(RecordBytes(record.data(), kRecordSize));
    LookState state;
    std::copy_n(record.begin(), state.front.size(), state.front.begin());
    if (!m_tables || *m_tables != m_look.coded)
    {
        m_tables = std::make_shared<const LookState::Tables>(m_look.coded);
    }
    state.tables = m_tables;
    state.version = m_look.codedVersion;
    state.modeGiven = m_modeGiven;
    state.pivot = m_pivot;
    return state;
}

void LookDraft::Restore(const LookState& state)
{
    std::vector<std::uint8_t> record(state.front.begin(), state.front.end());
    record.insert(record.end(), state.tables->begin(), state.tables->end());
    if (state.version == kCodedVersion)
    {
        SealRecord(RecordBytes(record.data(), kRecordSize));
    }
    [[maybe_unused]] const RecordState read = ReadRecord(record, m_look);
    assert(read == RecordState::Usable);
    m_modeGiven = state.modeGiven;
    m_pivot = state.pivot;
}

void LookDraft::Write(RecordBytes record) const noexcept
{
    WriteRecord(m_look, record);
    std::copy(m_option.begin(), m_option.end(), record.begin() + kOptionOffset);
}

void LookDraft::SetTitle(std::string_view title)
{
    const std::string clean = CleanText(title, kRecordTitleSize - 1);
    m_look.title = {};
    std::copy(clean.begin(), clean.end(), m_look.title.begin());
}

} // namespace ReferenceRenderer
