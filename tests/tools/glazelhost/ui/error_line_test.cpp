#include "tools/glazelhost/ui/error_line.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace GlazelHost
{

namespace
{

std::string LineOf(ReportStyle style, const std::string& text)
{
    ErrorLine line(style);
    line.Add(text);
    return std::string(line.End());
}

std::string ReportersLine(ReportStyle style, const std::string& text)
{
    std::string written;
    Reporter reporter(style, {[&](const std::string& line) { written += line; }, [] { return 0.0; },
                              [] { return 80; }});
    reporter.Fail(text);
    return written;
}

std::string JsonText(const std::string& line)
{
    const nlohmann::json event = nlohmann::json::parse(line);
    EXPECT_EQ(event.at("event"), "error");
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    return event.at("text");
}

} // namespace

TEST(ErrorLine, ItIsTheLineOfTheReporter)
{
    const std::string text = "C:\\gr\xC3\xBCn \xE2\x82\xAC \xF0\x9F\x8E\x9E\\\"a\".dll: it crashed";
    for (const ReportStyle style : {ReportStyle::Plain, ReportStyle::Json, ReportStyle::Quiet})
    {
        EXPECT_EQ(LineOf(style, text), ReportersLine(style, text));
    }
}

TEST(ErrorLine, ABarKeepsItsOwnLine)
{
    EXPECT_EQ(LineOf(ReportStyle::Bar, "interrupted"), "\nglazelhost: interrupted\n");
}

TEST(ErrorLine, PartsFollowEachOther)
{
    ErrorLine line(ReportStyle::Plain);
    line.Add("a.dll");
    line.Add("");
    line.Add(": it crashed");
    EXPECT_EQ(line.End(), "glazelhost: a.dll: it crashed\n");
}

TEST(ErrorLine, ControlCharactersAreEscapedInJson)
{
    std::string text = "a";
    for (char character = 0; character < ' '; ++character)
    {
        text += character;
    }
    text += "\x7F";
    EXPECT_EQ(JsonText(LineOf(ReportStyle::Json, text)), text);
}

TEST(ErrorLine, ALongPathAndItsWordsFitWhateverItsLetters)
{
    const std::string words = ": it crashed (exception 0xC0000005 at offset 0xFFFFFFFFFFFFFFFF); "
                              "report this to its makers";
    for (const std::string letter : {"a", "\\", "\xC3\xBC", "\xE2\x82\xAC"})
    {
        std::string path;
        for (int unit = 0; unit < 260; ++unit)
        {
            path += letter;
        }
        EXPECT_EQ(JsonText(LineOf(ReportStyle::Json, path + words)), path + words);
    }
}

TEST(ErrorLine, WhatDoesNotFitIsLeftOutInWholeCharacters)
{
    for (const std::string letter : {"a", "\\", "\n", "\xE2\x82\xAC", "\xF0\x9F\x8E\x9E"})
    {
        std::string whole;
        for (int count = 0; count < 2000; ++count)
        {
            whole += letter;
        }
        for (const std::string before : {"", "1", "12", "123", "1234", "12345"})
        {
            ErrorLine line(ReportStyle::Json);
            line.Add(before + whole);
            line.Add("more"); // would leave a hole
            const std::string shown = JsonText(std::string(line.End()));
            EXPECT_EQ(shown.substr(0, before.size()), before);
            EXPECT_EQ((shown.size() - before.size()) % letter.size(), 0u);
            EXPECT_EQ(shown, (before + whole).substr(0, shown.size()));
        }
    }
}

} // namespace GlazelHost
