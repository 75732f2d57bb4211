#include "support/exception_info.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace
{

constexpr std::int32_t kSomeFailure = -2;

} // namespace

TEST(ExceptionInfo, AFailedCheckCarriesItsResultAndMessage)
{
    try
    {
        CheckThat(false, kSomeFailure, "no");
        FAIL() << "the check passed";
    }
    catch (const ExceptionInfo& error)
    {
        EXPECT_EQ(error.result, kSomeFailure);
        EXPECT_STREQ(error.message, "no");
    }
}

TEST(ExceptionInfo, ANullPointerCarriesOutOfMemory)
{
    std::int32_t current = kResultOk;
    EXPECT_EQ(ResultOf(current, [] { CheckPtr(nullptr, "null"); }), kResultOutOfMemory);
}

TEST(ExceptionInfo, ACheckOnAResultFailsOnlyWhenItIsNegative)
{
    EXPECT_NO_THROW(CheckHr(0, "ok"));
    EXPECT_NO_THROW(CheckHr(1, "also a success"));
    EXPECT_THROW(CheckHr(kSomeFailure, "failed"), ExceptionInfo);
}

TEST(ExceptionInfo, StepsEndAtTheFirstFailedCheck)
{
    int steps = 0;
    EXPECT_FALSE(RunSteps([&] {
        ++steps;
        CheckThat(false, kSomeFailure, "stop");
        ++steps;
    }));
    EXPECT_EQ(steps, 1);
    EXPECT_TRUE(RunSteps([&] { ++steps; }));
    EXPECT_EQ(steps, 2);
}

template <typename Result>
class ExceptionInfoResult : public testing::Test
{
};
using Results = testing::Types<int, long>; // the system's own is long
TYPED_TEST_SUITE(ExceptionInfoResult, Results);

TYPED_TEST(ExceptionInfoResult, ASuccessCodeIsReturnedAsTheOperationLeftIt)
{
    TypeParam current = kResultOk;
    EXPECT_EQ(ResultOf(current, [&] { current = 1; }), 1);
}

TYPED_TEST(ExceptionInfoResult, ForeignExceptionsEndAnOperationWithItsCurrentResult)
{
    TypeParam current = kResultOk;
    const auto result = ResultOf(current, [&] {
        current = 1;
        throw std::runtime_error("foreign");
    });
    EXPECT_EQ(result, 1);
}

TEST(ExceptionInfo, ForeignExceptionsEndSteps)
{
    EXPECT_FALSE(RunSteps([] { throw std::runtime_error("foreign"); }));
}
