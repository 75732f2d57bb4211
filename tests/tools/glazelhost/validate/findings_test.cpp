#include "tools/glazelhost/validate/findings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace GlazelHost
{

namespace
{

using Texts = std::vector<std::string>;

// What a process that found these things, and then ended so, comes to.
template <typename Find>
GroupResult ResultOf(const ProcessEnding& ending, Find&& find, const std::string& strange = "")
{
    std::string output;
    Findings findings([&output](const std::string& line) { output += line; });
    find(findings);
    GroupResult result;
    ReadFindings(output + strange, ending, result);
    return result;
}

} // namespace

TEST(Findings, AProcessThatEndsBeforeItIsThereOrWithoutItsConnectionIsLost)
{
    std::string output;
    Findings findings([&output](const std::string& line) { output += line; });
    EXPECT_TRUE(IsLost(output));
    EXPECT_TRUE(IsLost("wine: could not load kernel32.dll\n"));
    findings.Begin();
    EXPECT_FALSE(IsLost(output));
    EXPECT_FALSE(IsLost("a DLL's own words\n" + output + "wine: Unhandled page fault\n"));
    EXPECT_TRUE(IsLost(output + "wine client error:0: sendmsg: Broken pipe\n"));
}

TEST(Findings, NothingFoundIsPassed)
{
    const GroupResult result = ResultOf({}, [](Findings& findings) {
        findings.Begin();
        findings.Finish();
    });
    EXPECT_EQ(result.state, GroupState::Passed);
    EXPECT_EQ(result.reasons, Texts{});
}

TEST(Findings, AFailureIsStrongerThanAWarningAndThatThanHavingBeenSkipped)
{
    const auto skip = [](Findings& findings) {
        findings.Skip("no desktop");
        findings.Finish();
    };
    const auto warn = [&](Findings& findings) {
        findings.Warn("odd");
        skip(findings);
    };
    const auto fail = [&](Findings& findings) {
        findings.Fail("wrong \"\xC3\xA9\"");
        warn(findings);
    };
    EXPECT_EQ(ResultOf({}, skip).state, GroupState::Skipped);
    EXPECT_EQ(ResultOf({}, warn).state, GroupState::Warning);
    EXPECT_EQ(ResultOf({}, fail).state, GroupState::Failed);
    EXPECT_EQ(ResultOf({}, fail).reasons, (Texts{"wrong \"\xC3\xA9\"", "odd", "no desktop"}));
}

TEST(Findings, AReasonIsToldOnceAndOfManyOnlyTheFirst)
{
    const GroupResult result = ResultOf({}, [](Findings& findings) {
        for (int round = 0; round < 3; ++round)
        {
            for (int number = 0; number < 20; ++number)
            {
                findings.Fail("reason " + std::to_string(number));
            }
        }
        findings.Fail("one more");
        findings.Fail("and another");
        findings.Finish();
    });
    ASSERT_EQ(result.reasons.size(), 21U);
    EXPECT_EQ(result.reasons.back(), "and 2 more");
}

TEST(Findings, AnEndBeforeTheEndIsACrashAndKeepsWhatWasFound)
{
    const auto find = [](Findings& findings) { findings.Fail("wrong"); };
    const GroupResult silent = ResultOf({.exitCode = 0xC0000005}, find);
    EXPECT_EQ(silent.state, GroupState::Crashed);
    EXPECT_EQ(silent.reasons, (Texts{"wrong", "the process ended with code 0xC0000005"}));
    const GroupResult told = ResultOf({.exitCode = 1}, find, "glazelhost: a.dll: it crashed\r\n");
    EXPECT_EQ(told.reasons, (Texts{"wrong", "glazelhost: a.dll: it crashed"}));
}

TEST(Findings, ACrashWhileTheProcessEndsIsNoPass)
{
    const GroupResult result =
        ResultOf({.exitCode = 3}, [](Findings& findings) { findings.Finish(); });
    EXPECT_EQ(result.state, GroupState::Crashed);
    EXPECT_EQ(result.reasons, Texts{"when all was asked, the process ended with code 0x00000003"});
}

TEST(Findings, WhatTookTooLongNamesItsWindows)
{
    const GroupResult result =
        ResultOf({.timedOut = true, .timeLimit = 9, .windows = {"Really?"}}, [](Findings&) {});
    EXPECT_EQ(result.state, GroupState::TimedOut);
    EXPECT_EQ(result.reasons, Texts{"not done within 9 s; it shows a window \"Really?\""});
}

TEST(Findings, LinesOfOthersDoNotCountAsFindings)
{
    for (const char* const line : {"{\"failure\": 1}\n", "{\"a\": \"b\", \"failure\": \"c\"}\n",
                                   "[\"failure\"]\n", "\"failure\"\n", "{}\n"})
    {
        const GroupResult result = ResultOf(
            {}, [](Findings& findings) { findings.Finish(); }, line);
        EXPECT_EQ(result.state, GroupState::Passed) << line;
    }
}

TEST(Findings, EveryStateIsFoundByItsName)
{
    for (const char* const name : kStateNames)
    {
        ASSERT_TRUE(StateCalled(name));
        EXPECT_STREQ(NameOf(*StateCalled(name)), name);
    }
    EXPECT_FALSE(StateCalled("fine"));
}

} // namespace GlazelHost
