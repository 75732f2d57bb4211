#include "tools/glazelhost/commands/command_line.h"

#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

namespace
{

CompareCommand Compare(const std::vector<std::string>& more)
{
    std::vector<std::string> words{"compare", "a.png", "b.png"};
    words.insert(words.end(), more.begin(), more.end());
    return std::get<CompareCommand>(ParseCommandLine(words));
}

std::string ErrorOf(const std::vector<std::string>& more)
{
    try
    {
        Compare(more);
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::WrongUsage);
        return error.what();
    }
    return {};
}

} // namespace

TEST(CompareOptions, WithoutAnyNothingIsLimitedAndOneCodeCounts)
{
    const CompareCommand command = Compare({});
    EXPECT_EQ(command.first.path, "a.png");
    EXPECT_EQ(command.second.path, "b.png");
    EXPECT_DOUBLE_EQ(command.threshold, 1.0 / 255.0);
    EXPECT_EQ(command.warnOver, std::nullopt);
    EXPECT_EQ(command.failOver, std::nullopt);
    EXPECT_EQ(command.picture, std::nullopt);
    EXPECT_EQ(command.amplify, 16.0);
    EXPECT_FALSE(command.json);
}

TEST(CompareOptions, ReachTheirPlaces)
{
    const CompareCommand command =
        Compare({"--threshold", "0.25", "--warn-over", "1/255", "--fail-over", "3/4", "--picture",
                 "d.png", "--amplify", "2", "--overwrite", "--size", "4x3", "--json"});
    EXPECT_EQ(command.threshold, 0.25);
    EXPECT_DOUBLE_EQ(command.warnOver.value(), 1.0 / 255.0);
    EXPECT_EQ(command.failOver, 0.75);
    EXPECT_EQ(command.picture, "d.png");
    EXPECT_EQ(command.amplify, 2.0);
    EXPECT_TRUE(command.overwrite);
    EXPECT_EQ(command.first.width, 4);
    EXPECT_EQ(command.second.height, 3);
    EXPECT_TRUE(command.json);
    EXPECT_EQ(Compare({"--fail-over", "0"}).failOver, 0.0);
}

TEST(CompareOptions, NonsenseIsWrongUsageAndNamed)
{
    for (const char* word : {"x", "-1", "1/0", "1/", "/2", "1/2/3", "nan", "inf", "1e999"})
    {
        EXPECT_NE(ErrorOf({std::string("--fail-over=") + word}).find("--fail-over"),
                  std::string::npos)
            << word;
    }
    EXPECT_NE(ErrorOf({"--overwrite"}).find("--picture"), std::string::npos);
    EXPECT_NE(ErrorOf({"--picture", "-"}).find("file"), std::string::npos);
    EXPECT_NE(ErrorOf({"--amplify", "0"}), "");
    EXPECT_NE(ErrorOf({"--size", "4"}).find("compare --help"), std::string::npos);
    EXPECT_THROW(ParseCommandLine({"compare", "a.png"}), HostError);
    EXPECT_THROW(ParseCommandLine({"compare", "-", "a.png"}), HostError);
}

} // namespace GlazelHost
