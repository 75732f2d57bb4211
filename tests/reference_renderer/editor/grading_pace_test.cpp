#include "reference_renderer/editor/grading_pace.h"

#include <gtest/gtest.h>

namespace ReferenceRenderer
{

namespace
{

TEST(GradingPace, AllowsEverythingWhileNothingIsKnown)
{
    EXPECT_TRUE(GradingPace().Allows(100000000));
}

TEST(GradingPace, JudgesAPictureByTheTimeThatAnotherTook)
{
    GradingPace pace;
    pace.Took(kGradingBudgetMs, 1000);
    EXPECT_TRUE(pace.Allows(1000));
    EXPECT_FALSE(pace.Allows(1001));
    EXPECT_TRUE(pace.Allows(10));
}

TEST(GradingPace, ForgetsAPictureThatTookLongForOnce)
{
    GradingPace pace;
    pace.Took(kGradingBudgetMs * 100, 1000);
    EXPECT_FALSE(pace.Allows(1000));
    pace.Took(kGradingBudgetMs / 2, 500);
    EXPECT_TRUE(pace.Allows(1000));
}

} // namespace

} // namespace ReferenceRenderer
