#include "reference_renderer/editor/look_draft.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <limits>

namespace ReferenceRenderer
{

namespace
{

using Bytes = std::vector<std::uint8_t>;
using Slopes = std::array<float, 3>; // or powers

Bytes Written(const LookDraft& draft)
{
    Bytes record(kRecordSize);
    draft.Write(RecordBytes(record.data(), kRecordSize));
    return record;
}

StoredLook Read(const Bytes& record)
{
    StoredLook look;
    EXPECT_EQ(ReadRecord(record, look), RecordState::Usable);
    return look;
}

Look FullLook()
{
    Look look = CubeLook(CubeOf(9, Swirled));
    look.curves = CurvesOf(64, [](double x) { return x * x; });
    look.cdlMode = CdlMode::Unclamped;
    look.cdl.slope = {1.5F, 0.5F, 7.0F};
    look.cdl.saturation = 0.3F;
    look.strength = 0.4F;
    look.title = "Full";
    return look;
}

ImportedLook Imported(const Look& look, const std::string& kind)
{
    ImportedLook imported;
    imported.record = RecordOf(look);
    imported.kind = kind;
    imported.title = look.title;
    return imported;
}

// One step of the keyboard: from where the channels are.
void MoveTogether(LookDraft& draft, Control control, float value)
{
    draft.MoveTogether(control, value, draft.Numbers());
}

TEST(LookDraft, AnUntouchedLookGivesTheBytesItStartedFrom)
{
    Bytes record = RecordOf(FullLook());
    EXPECT_EQ(Written(LookDraft(record)), record);
    record[16] = 0; // the option word is the host's
    EXPECT_EQ(Written(LookDraft(record)), record);
}

TEST(LookDraft, ChangesThatAreTakenBackLeaveNoTrace)
{
    const Bytes record = RecordOf(CubeLook(CubeOf(5, Inverted)));
    LookDraft draft(record);
    EXPECT_TRUE(draft.Set(Control::OffsetBlue, 0.25F));
    EXPECT_NE(Written(draft), record);
    draft.Reset(Control::OffsetBlue);
    EXPECT_EQ(Written(draft), record);
}

TEST(LookDraft, StartsNeutralFromARecordThatCannotBeUsed)
{
    const Bytes foreign(200, 7);
    Bytes damaged = RecordOf(FullLook());
    damaged.pop_back();
    EXPECT_EQ(LookDraft({}).Origin(), RecordState::Empty);
    EXPECT_EQ(LookDraft(foreign).Origin(), RecordState::Foreign);
    EXPECT_EQ(LookDraft(damaged).Origin(), RecordState::Damaged);
    EXPECT_EQ(Written(LookDraft(foreign)), RecordOf(Look()));
    EXPECT_TRUE(LookDraft(damaged).IsNeutral());
    EXPECT_FALSE(LookDraft(damaged).HasTables());
}

TEST(LookDraft, EachControlReachesItsOwnNumber)
{
    for (const ControlFacts& facts : kControls)
    {
        if (!IsIn(facts.step, View::Cdl))
        {
            continue; // a way to say several of the others
        }
        LookDraft draft(RecordOf(CubeLook(CubeOf(2, Inverted))));
        const float value = facts.control == Control::Strength ? 0.5F : 1.25F;
        EXPECT_TRUE(draft.Set(facts.control, value));
        EXPECT_FALSE(draft.IsNeutral());
        for (const ControlFacts& other : kControls)
        {
            const bool same = other.control == facts.control;
            EXPECT_TRUE(!IsIn(other.step, View::Cdl) ||
                        draft.Value(other.control) == (same ? value : other.neutral))
                << facts.name << " moved " << other.name;
        }
        EXPECT_EQ(LookDraft(Written(draft)).Value(facts.control), value) << facts.name;
    }
}

TEST(LookDraft, ValuesThatNoLookTakesChangeNothing)
{
    LookDraft draft({});
    EXPECT_FALSE(draft.Set(Control::SlopeRed, -0.1F));
    EXPECT_FALSE(draft.Set(Control::PowerRed, 0.0F));
    EXPECT_FALSE(draft.Set(Control::Strength, 1.1F));
    EXPECT_FALSE(draft.Set(Control::OffsetRed, std::numeric_limits<float>::quiet_NaN()));
    MoveTogether(draft, Control::OffsetRed, std::numeric_limits<float>::infinity());
    EXPECT_TRUE(draft.IsNeutral());
}

TEST(LookDraft, ALookWithoutACdlGetsAClampedOneOnlyWhileANumberDiffers)
{
    LookDraft draft(RecordOf(CubeLook(CubeOf(2, Inverted))));
    draft.Set(Control::Strength, 0.5F);
    EXPECT_EQ(Read(Written(draft)).cdlMode, CdlMode::None);
    draft.Set(Control::Saturation, 0.0F);
    EXPECT_EQ(Read(Written(draft)).cdlMode, CdlMode::Clamped);
    draft.ResetAll();
    EXPECT_EQ(Read(Written(draft)).cdlMode, CdlMode::None);
}

TEST(LookDraft, ACdlThatDoesNotClampStaysOne)
{
    LookDraft draft(RecordOf(CdlLook({}, CdlMode::Unclamped)));
    draft.Set(Control::SlopeRed, 2.0F);
    EXPECT_EQ(Read(Written(draft)).cdlMode, CdlMode::Unclamped);
    draft.ResetAll();
    EXPECT_EQ(Read(Written(draft)).cdlMode, CdlMode::Unclamped);
}

TEST(LookDraft, ChannelsThatMoveTogetherKeepTheirDistanceOnTheSliders)
{
    LookDraft draft({});
    draft.Set(Control::SlopeGreen, 1.2F);
    MoveTogether(draft, Control::SlopeRed, 1.1F);
    EXPECT_FLOAT_EQ(draft.Value(Control::SlopeRed), 1.1F);
    EXPECT_FLOAT_EQ(draft.Value(Control::SlopeGreen), 1.3F);
    EXPECT_FLOAT_EQ(draft.Value(Control::SlopeBlue), 1.1F);
    draft.Set(Control::PowerGreen, 2.0F);
    MoveTogether(draft, Control::PowerBlue, 0.5F);
    EXPECT_FLOAT_EQ(draft.Value(Control::PowerRed), 0.5F);
    EXPECT_FLOAT_EQ(draft.Value(Control::PowerGreen), 1.0F);
    EXPECT_EQ(draft.Value(Control::OffsetRed), 0.0F);
}

TEST(LookDraft, ChannelsThatMoveTogetherStopAtTheirOwnLimits)
{
    LookDraft draft({});
    draft.Set(Control::SlopeGreen, 0.1F);
    MoveTogether(draft, Control::SlopeRed, 0.5F);
    EXPECT_EQ(draft.Value(Control::SlopeGreen), 0.0F);
}

TEST(LookDraft, ChannelsThatMoveTogetherAreCountedFromWhereTheDragBegan)
{
    LookDraft draft({});
    draft.Set(Control::SlopeGreen, 0.1F);
    draft.Set(Control::SlopeBlue, 1.23456F);
    const GradeNumbers before = draft.Numbers();
    for (const float value : {0.5F, 0.0F, 0.75F})
    {
        draft.MoveTogether(Control::SlopeRed, value, before);
    }
    EXPECT_EQ(draft.Numbers().cdl.slope, (Slopes{0.75F, 0.0F, 0.985F}));
    draft.MoveTogether(Control::SlopeRed, 1.0F, before);
    EXPECT_EQ(draft.Numbers().cdl.slope, before.cdl.slope) << "back to the last digit";
}

TEST(LookDraft, AChannelBeyondWhatCanBeTypedDoesNotMoveWithTheOthers)
{
    Cdl cdl;
    cdl.slope[2] = 150.0F;
    cdl.power[0] = 0.001F;
    LookDraft draft(RecordOf(CdlLook(cdl)));
    MoveTogether(draft, Control::SlopeRed, 1.1F);
    EXPECT_EQ(draft.Numbers().cdl.slope, (Slopes{1.1F, 1.1F, 150.0F}));
    MoveTogether(draft, Control::PowerGreen, 2.0F);
    EXPECT_EQ(draft.Numbers().cdl.power, (Slopes{0.001F, 2.0F, 2.0F}));
}

TEST(LookDraft, TheNumbersAreGivenBackAsTheyWere)
{
    Cdl cdl;
    cdl.slope = {0.12345F, 1.0F, 150.0F};
    const Bytes record = RecordOf(CdlLook(cdl));
    LookDraft draft(record);
    const GradeNumbers before = draft.Numbers();
    EXPECT_EQ(before.cdl.slope, cdl.slope);
    MoveTogether(draft, Control::SlopeGreen, 0.5F);
    draft.SetNumbers(before);
    EXPECT_EQ(Written(draft), record);
}

TEST(LookDraft, ResettingAllKeepsTheTables)
{
    LookDraft draft(RecordOf(FullLook()));
    draft.ResetAll();
    EXPECT_TRUE(draft.IsNeutral());
    EXPECT_TRUE(draft.HasTables());
    EXPECT_EQ(draft.TablesText(), "1D, 64 entries + 3D, 9 x 9 x 9");
}

TEST(LookDraft, RemovedTablesLeaveWhatALookWithoutThemHas)
{
    LookDraft draft(RecordOf(CubeLook(CubeOf(5, Inverted))));
    draft.Set(Control::Strength, 0.5F);
    draft.RemoveTables();
    EXPECT_EQ(draft.TablesText(), "");
    EXPECT_EQ(Written(draft), RecordOf(Look()));
}

TEST(LookDraft, AnImportedLutReplacesTheTablesAndKeepsTheCdl)
{
    LookDraft draft(RecordOf(FullLook()));
    Look lut = CubeLook(CubeOf(3, Inverted));
    lut.title = "Inverted";
    EXPECT_TRUE(draft.Merge(Imported(lut, "3D LUT"), "file"));
    EXPECT_EQ(draft.TablesText(), "3D, 3 x 3 x 3");
    EXPECT_EQ(draft.Title(), "Inverted");
    EXPECT_EQ(draft.Value(Control::SlopeBlue), 7.0F);
    EXPECT_EQ(draft.Value(Control::Strength), 1.0F);
    EXPECT_EQ(Read(Written(draft)).cdlMode, CdlMode::Unclamped);
}

TEST(LookDraft, AnImportedCdlReplacesTheNumbersAndKeepsTheTables)
{
    LookDraft draft(RecordOf(FullLook()));
    Cdl cdl;
    cdl.offset = {0.1F, 0.2F, 0.3F};
    EXPECT_TRUE(draft.Merge(Imported(CdlLook(cdl), "CDL"), "file"));
    EXPECT_EQ(draft.Value(Control::OffsetGreen), 0.2F);
    EXPECT_EQ(draft.Value(Control::SlopeBlue), 1.0F);
    EXPECT_EQ(draft.Value(Control::Strength), 0.4F);
    EXPECT_EQ(draft.TablesText(), "1D, 64 entries + 3D, 9 x 9 x 9");
    EXPECT_EQ(draft.Title(), "Full") << "the tables keep their name";
}

TEST(LookDraft, AnImportedRecordReplacesEverything)
{
    LookDraft draft(RecordOf(FullLook()));
    EXPECT_TRUE(draft.Merge(Imported(Look(), "look record"), ""));
    EXPECT_EQ(Written(draft), RecordOf(Look()));
}

TEST(LookDraft, ALutWithoutATitleIsCalledAfterItsFile)
{
    LookDraft draft({});
    draft.Merge(Imported(CubeLook(CubeOf(2, Inverted)), "3D LUT"), "my_lut");
    EXPECT_EQ(draft.Title(), "my_lut");
}

TEST(LookDraft, AnImportThatIsNoRecordChangesNothing)
{
    const Bytes record = RecordOf(FullLook());
    LookDraft draft(record);
    EXPECT_FALSE(draft.Merge(ImportedLook{}, "file"));
    EXPECT_EQ(Written(draft), record);
}

TEST(LookDraft, AStateBringsBackNumbersTablesAndNameToTheLastByte)
{
    const Bytes records[] = {RecordOf(FullLook()), PlainRecordOf(FullLook()), RecordOf(Look())};
    for (const Bytes& record : records)
    {
        LookDraft draft(record);
        const LookState state = draft.State();
        EXPECT_TRUE(draft.Merge(Imported(CubeLook(CubeOf(5, Inverted)), "3D LUT"), "Other"));
        draft.Set(Control::SlopeRed, 1.25F);
        const LookState changed = draft.State();
        const Bytes changedRecord = Written(draft);
        EXPECT_FALSE(changed == state);
        draft.Restore(state);
        EXPECT_EQ(Written(draft), record);
        EXPECT_TRUE(draft.State() == state);
        draft.Restore(changed);
        EXPECT_EQ(Written(draft), changedRecord);
        EXPECT_EQ(draft.Title(), "Other");
    }
}

TEST(LookDraft, AStateRemembersWhetherTheLookCameWithACdl)
{
    Look neutral = CubeLook(CubeOf(2, Inverted));
    neutral.cdlMode = CdlMode::Unclamped;
    LookDraft draft(RecordOf(Look()));
    const LookState before = draft.State();
    EXPECT_TRUE(draft.Merge(Imported(neutral, "look record"), "Other"));
    draft.Restore(before);
    draft.Set(Control::SlopeRed, 1.5F);
    EXPECT_EQ(Read(Written(draft)).cdlMode, CdlMode::Clamped);
    draft.Reset(Control::SlopeRed);
    EXPECT_EQ(Read(Written(draft)).cdlMode, CdlMode::None);
}

TEST(LookDraft, StatesWithTheSameTablesShareThem)
{
    LookDraft draft(RecordOf(FullLook()));
    const LookState first = draft.State();
    draft.Set(Control::SlopeRed, 1.25F);
    EXPECT_EQ(draft.State().tables, first.tables);
    draft.RemoveTables();
    EXPECT_NE(draft.State().tables, first.tables);
}

TEST(LookDraft, NumbersBeyondTheBoxesAreKeptUntilTheyAreEdited)
{
    Cdl cdl;
    cdl.slope = {5000.0F, 1.0F, 1.0F};
    const Bytes record = RecordOf(CdlLook(cdl));
    LookDraft draft(record);
    EXPECT_EQ(draft.Value(Control::SlopeRed), 5000.0F);
    EXPECT_EQ(Written(draft), record);
}

} // namespace

} // namespace ReferenceRenderer
