#include "tools/glazelhost/validate/report.h"

#include "tools/glazelhost/validate/report_text.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace GlazelHost
{

namespace
{

using Texts = std::vector<std::string>;

ValidateReport Sample()
{
    ValidateReport report;
    report.program = "1.2.3";
    report.kind = SubjectKind::PlugIn;
    report.files = {{"plug-in", "C:\\a.dll", "1.0", "aa"}, {"renderer", "C:\\b.dll", "", "bb"}};
    report.options = {7, {"plugin.*"}, {"*.x"}, 42, 2, 30, "C:\\r"};
    report.machine = {"Windows 10.0.1", "8.0", "A processor", 4, "de-DE"};
    report.time = "2026-01-02T03:04:05Z";
    report.seconds = 1.5;
    report.groups = {{"plugin.a", 1, "a holds", GroupState::Passed, {}, 0.25},
                     {"plugin.b", 2, "b holds", GroupState::Failed, {"x < \"y\" & z"}, 0.5}};
    return report;
}

std::optional<ValidateReport> Parse(const std::string& text)
{
    std::string why;
    return ParseReport(text, why);
}

} // namespace

TEST(ValidateReport, ComesBackFromItsJson)
{
    const ValidateReport report = Sample();
    const auto again = Parse(JsonOf(report));
    ASSERT_TRUE(again);
    EXPECT_EQ(JsonOf(*again), JsonOf(report));
    EXPECT_EQ(again->options, report.options);
    EXPECT_EQ(again->machine, report.machine);
    EXPECT_EQ(again->files, report.files);
    EXPECT_EQ(DifferencesOf(report, *again), Texts{});
}

TEST(ValidateReport, WithoutAnyPartOfItsJsonIsRefused)
{
    const auto whole = nlohmann::json::parse(JsonOf(Sample()));
    for (const char* const part : {"format", "version", "program", "kind", "files", "options",
                                   "machine", "time", "seconds", "groups"})
    {
        auto json = whole;
        json.erase(part);
        EXPECT_FALSE(Parse(json.dump())) << part;
        json[part] = nullptr;
        EXPECT_FALSE(Parse(json.dump())) << part;
    }
    auto noFile = whole;
    noFile["files"] = nlohmann::json::array();
    EXPECT_FALSE(Parse(noFile.dump()));
    auto strangeState = whole;
    strangeState["groups"][0]["state"] = "fine";
    EXPECT_FALSE(Parse(strangeState.dump()));
}

TEST(ValidateReport, WithOptionsThatCannotBeRunIsRefused)
{
    const auto whole = nlohmann::json::parse(JsonOf(Sample()));
    for (const auto& [name, value] :
         {std::pair{"level", 0}, {"level", 11}, {"jobs", 0}, {"jobs", 33}, {"timeLimit", 0}})
    {
        auto json = whole;
        json["options"][name] = value;
        EXPECT_FALSE(Parse(json.dump())) << name << " " << value;
    }
}

TEST(ValidateReport, TheVerdictCountsWhatDidNotHold)
{
    ValidateReport report = Sample();
    EXPECT_EQ(VerdictOf(report), "NOT held: 1 of 2 groups up to level 7: 1 passed, 1 failed");
    EXPECT_EQ(ExitCodeOf(report), ExitCode::OverLimit);
    report.groups[1].state = GroupState::Skipped;
    EXPECT_EQ(VerdictOf(report), "held: 2 groups up to level 7: 1 passed, 1 skipped");
    EXPECT_EQ(ExitCodeOf(report), ExitCode::Done);
    report.groups[1].state = GroupState::Warning;
    EXPECT_EQ(ExitCodeOf(report), ExitCode::OverWarning);
    for (const GroupState state : {GroupState::Crashed, GroupState::TimedOut})
    {
        report.groups[1].state = state;
        EXPECT_EQ(ExitCodeOf(report), ExitCode::OverLimit);
    }
}

TEST(ValidateReport, AGroupIsALineAndALineForEachReason)
{
    EXPECT_EQ(TextOf(Sample().groups[1]), "FAILED    plugin.b (level 2): b holds\n"
                                          "          x < \"y\" & z\n");
}

TEST(ValidateReport, BuildServersGetXmlWithEveryStateInItsPlace)
{
    ValidateReport report = Sample();
    report.groups.push_back({"plugin.c", 3, "", GroupState::Crashed, {"gone\x01"}, 0.0});
    report.groups.push_back({"plugin.d", 3, "", GroupState::Skipped, {"no"}, 0.0});
    report.groups.push_back({"plugin.e", 3, "", GroupState::Warning, {"odd"}, 0.0});
    const std::string xml = JUnitOf(report);
    for (const char* const part :
         {"tests=\"5\" failures=\"1\" errors=\"1\" skipped=\"1\"",
          "<testcase classname=\"plugin\" name=\"plugin.a\" time=\"0.250\"/>",
          "<failure message=\"failed\">x &lt; &quot;y&quot; &amp; z\n</failure>",
          "<error message=\"crashed\">gone \n</error>",
          "<skipped message=\"skipped\">no\n</skipped>", "<system-out>odd\n</system-out>"})
    {
        EXPECT_NE(xml.find(part), std::string::npos) << part << " is not in " << xml;
    }
}

TEST(ValidateReport, DifferencesNameWhatChangedAndNotTheTimes)
{
    const ValidateReport earlier = Sample();
    ValidateReport later = Sample();
    later.time = "another";
    later.seconds = later.groups[0].seconds = 9.0;
    EXPECT_EQ(DifferencesOf(earlier, later), Texts{});
    later.files[0].sha256 = "cc";
    later.machine.wine = "";
    later.groups[0].state = GroupState::Crashed;
    later.groups[1].reasons = {"other"};
    later.groups.push_back({"plugin.new", 1, "", GroupState::Passed, {}, 0.0});
    EXPECT_EQ(DifferencesOf(earlier, later),
              (Texts{"plug-in, SHA-256: was \"aa\", is \"cc\"", "Wine: was \"8.0\", is \"\"",
                     "plugin.a: was \"passed\", is \"crashed\"",
                     "plugin.b: failed for other reasons: were x < \"y\" & z; are other",
                     "plugin.new: was not asked, is \"passed\""}));
    EXPECT_EQ(DifferencesOf(later, earlier).back(), "plugin.new: was \"passed\", is not asked");
}

TEST(ValidateReport, WhereACrashStrikesIsNoDifference)
{
    ValidateReport earlier = Sample();
    earlier.groups[0].state = GroupState::Crashed;
    ValidateReport later = earlier;
    later.groups[0].reasons = {"elsewhere"};
    EXPECT_EQ(DifferencesOf(earlier, later), Texts{});
}

} // namespace GlazelHost
