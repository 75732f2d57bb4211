#include "reference_renderer/editor/look_history.h"

#include <gtest/gtest.h>

namespace ReferenceRenderer
{

namespace
{

constexpr Run kSteps{Run::Kind::Steps, Control::SlopeRed};
constexpr Run kTyping{Run::Kind::Typing, Control::SlopeRed};

class LookHistoryTest : public testing::Test
{
protected:
    // The step to a look with this slope of red.
    HistoryStep To(float slope)
    {
        m_draft.Set(Control::SlopeRed, slope);
        return {"to " + std::to_string(slope).substr(0, 3), m_draft.State(), false};
    }
    float SlopeNow()
    {
        m_draft.Restore(m_history.Now());
        return m_draft.Value(Control::SlopeRed);
    }
    // What is undone and where that leads; "" when there is nothing.
    std::string Undone()
    {
        const HistoryStep* const step = m_history.Undo();
        return step == nullptr ? ""
                               : step->what + " from " + std::to_string(SlopeNow()).substr(0, 3);
    }
    std::string Redone()
    {
        const HistoryStep* const step = m_history.Redo();
        return step == nullptr ? "" : step->what;
    }

    LookDraft m_draft{{}};
    LookHistory m_history{m_draft.State()};
};

TEST_F(LookHistoryTest, GivesBackWhatWasDoneInTheOppositeOrder)
{
    m_history.Did(To(1.1F));
    m_history.Did(To(1.2F));
    EXPECT_EQ(Undone(), "to 1.2 from 1.1");
    EXPECT_EQ(Undone(), "to 1.1 from 1.0");
    EXPECT_EQ(Undone(), "");
    EXPECT_EQ(Redone(), "to 1.1");
    EXPECT_EQ(Redone(), "to 1.2");
    EXPECT_EQ(Redone(), "");
    EXPECT_EQ(SlopeNow(), 1.2F);
}

TEST_F(LookHistoryTest, ANewStepEndsWhatCouldBeDoneAgain)
{
    m_history.Did(To(1.1F));
    Undone();
    m_history.Did(To(1.3F));
    EXPECT_EQ(Redone(), "");
    EXPECT_EQ(Undone(), "to 1.3 from 1.0");
}

TEST_F(LookHistoryTest, AStepThatChangesNothingIsNoneAndLeavesTheOthers)
{
    m_history.Did(To(1.1F));
    Undone();
    m_history.Did(To(1.0F));
    m_history.DidInRun(kSteps, 0, To(1.0F));
    EXPECT_EQ(Redone(), "to 1.1");
}

TEST_F(LookHistoryTest, TheLastHundredStepsAreKept)
{
    for (int i = 1; i <= 130; ++i)
    {
        m_history.Did(To(1.0F + static_cast<float>(i) / 10.0F));
    }
    int undone = 0;
    while (m_history.Undo() != nullptr)
    {
        ++undone;
    }
    EXPECT_EQ(undone, 100);
    EXPECT_FLOAT_EQ(SlopeNow(), 4.0F);
}

TEST_F(LookHistoryTest, StepsOfARunAreOne)
{
    m_history.DidInRun(kSteps, 0, To(1.1F));
    m_history.DidInRun(kSteps, 900, To(1.2F));
    m_history.DidInRun(kSteps, 1900, To(1.3F));
    EXPECT_EQ(Undone(), "to 1.1 from 1.0");
    EXPECT_EQ(Redone(), "to 1.1");
    EXPECT_EQ(SlopeNow(), 1.3F);
}

TEST_F(LookHistoryTest, ARunAtTheDepthOfTheHistoryIsOneStepToo)
{
    for (int i = 1; i <= 100; ++i)
    {
        m_history.Did(To(1.0F + static_cast<float>(i) / 10.0F));
    }
    m_history.DidInRun(kSteps, 0, To(1.1F));
    m_history.DidInRun(kSteps, 1, To(1.2F));
    Undone();
    EXPECT_EQ(SlopeNow(), 11.0F);
}

TEST_F(LookHistoryTest, APauseEndsARunOfSteps)
{
    m_history.DidInRun(kSteps, 0, To(1.1F));
    m_history.DidInRun(kSteps, kRunPauseMs + 1, To(1.2F));
    EXPECT_EQ(Undone(), "to 1.2 from 1.1");
}

TEST_F(LookHistoryTest, TypingPausesAsLongAsItLikes)
{
    m_history.DidInRun(kTyping, 0, To(1.1F));
    EXPECT_TRUE(m_history.IsTyping(Control::SlopeRed));
    EXPECT_FALSE(m_history.IsTyping(Control::SlopeBlue));
    m_history.DidInRun(kTyping, 60000, To(1.2F));
    EXPECT_EQ(Undone(), "to 1.1 from 1.0");
    EXPECT_FALSE(m_history.IsTyping(Control::SlopeRed));
}

TEST_F(LookHistoryTest, AnotherControlAnotherKindAndAnythingElseEndARun)
{
    m_history.DidInRun(kSteps, 0, To(1.1F));
    m_history.DidInRun({Run::Kind::Steps, Control::SlopeBlue}, 0, To(1.2F));
    m_history.DidInRun({Run::Kind::StepsOfAll, Control::SlopeBlue}, 0, To(1.3F));
    m_history.Did(To(1.4F));
    m_history.DidInRun(kSteps, 0, To(1.5F));
    m_history.EndRun();
    m_history.DidInRun(kSteps, 0, To(1.6F));
    EXPECT_EQ(Undone(), "to 1.6 from 1.5");
    EXPECT_EQ(Undone(), "to 1.5 from 1.4");
    EXPECT_EQ(Undone(), "to 1.4 from 1.3");
    EXPECT_EQ(Undone(), "to 1.3 from 1.2");
    EXPECT_EQ(Undone(), "to 1.2 from 1.1");
}

TEST_F(LookHistoryTest, ARunDoesNotGoOnInAStepThatWasDoneAgain)
{
    m_history.DidInRun(kSteps, 0, To(1.1F));
    Undone();
    Redone();
    m_history.DidInRun(kSteps, 1, To(1.2F));
    EXPECT_EQ(Undone(), "to 1.2 from 1.1");
}

TEST_F(LookHistoryTest, ARunThatComesBackIsNoStep)
{
    m_history.Did(To(1.1F));
    m_history.DidInRun(kSteps, 0, To(1.2F));
    m_history.DidInRun(kSteps, 0, To(1.1F));
    EXPECT_EQ(Undone(), "to 1.1 from 1.0");
}

} // namespace

} // namespace ReferenceRenderer
