#include "tools/glazelhost/ui/reporter.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <sstream>

namespace GlazelHost
{

namespace
{

class Desk
{
public:
    explicit Desk(ReportStyle style)
        : reporter(style, {[this](const std::string& text) { written += text; },
                           [this] { return now; }, [] { return 80; }})
    {
    }

    double now = 100.0;
    std::string written;
    Reporter reporter;
};

std::vector<nlohmann::json> Lines(const std::string& text)
{
    std::vector<nlohmann::json> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
    {
        lines.push_back(nlohmann::json::parse(line));
    }
    return lines;
}

} // namespace

TEST(Reporter, PlainLinesComeAtIntervals)
{
    Desk desk(ReportStyle::Plain);
    desk.reporter.Begin(100);
    for (int frame = 1; frame <= 100; ++frame)
    {
        desk.now += 0.125;
        desk.reporter.Advance(frame);
    }
    EXPECT_EQ(desk.written, "glazelhost: 40 of 100 frames (40%), 8.0 frames/s, 0:08 left\n"
                            "glazelhost: 80 of 100 frames (80%), 8.0 frames/s, 0:03 left\n");
}

TEST(Reporter, ProgramsAreToldTheSizeBeforeTheFirstFrame)
{
    Desk json(ReportStyle::Json);
    json.reporter.Size(1920, 1080);
    ASSERT_EQ(Lines(json.written).size(), 1u);
    EXPECT_EQ(Lines(json.written)[0],
              (nlohmann::json{{"event", "size"}, {"width", 1920}, {"height", 1080}}));
    Desk plain(ReportStyle::Plain);
    plain.reporter.Size(1920, 1080);
    EXPECT_EQ(plain.written, "");
}

TEST(Reporter, TheEndSaysHowManyFramesAndHowFast)
{
    Desk desk(ReportStyle::Plain);
    desk.reporter.Begin(std::nullopt);
    desk.now += 2.0;
    desk.reporter.Advance(50);
    desk.reporter.Done("out.bgra");
    EXPECT_EQ(desk.written, "glazelhost: out.bgra: 50 frames in 0:02, 25.0 frames/s\n");
}

TEST(Reporter, OnePictureHasNoSpeed)
{
    Desk desk(ReportStyle::Plain);
    desk.reporter.Begin(1);
    desk.now += 2.0;
    desk.reporter.Advance(1);
    desk.reporter.Done("out.png");
    EXPECT_EQ(desk.written, "glazelhost: out.png: 1 frame\n");
}

TEST(Reporter, ABarIsRedrawnOnItsLineAndClearedForOtherLines)
{
    Desk desk(ReportStyle::Bar);
    desk.reporter.Begin(10);
    desk.now += 1.0;
    desk.reporter.Advance(5);
    ASSERT_FALSE(desk.written.empty());
    EXPECT_EQ(desk.written.front(), '\r');
    EXPECT_EQ(desk.written.find('\n'), std::string::npos);
    const std::size_t barLength = desk.written.size() - 1;
    EXPECT_LE(barLength, 79u);

    desk.written.clear();
    desk.reporter.Warn("frame 6: torn");
    EXPECT_EQ(desk.written,
              "\r" + std::string(barLength, ' ') + "\r" + "glazelhost: warning: frame 6: torn\n");
}

TEST(Reporter, AShorterBarCoversTheLongerOneBeforeIt)
{
    Desk desk(ReportStyle::Bar);
    desk.reporter.Begin(std::nullopt);
    desk.now += 1000.0;
    desk.reporter.Advance(123456);
    const std::size_t before = desk.written.size();
    desk.written.clear();
    desk.now += 1e7;
    desk.reporter.Advance(123457);
    EXPECT_EQ(desk.written.size(), before);
    EXPECT_EQ(desk.written.back(), ' ');
}

TEST(Reporter, JsonIsOneObjectALineForEverything)
{
    Desk desk(ReportStyle::Json);
    desk.reporter.Note("input: \"a\"");
    desk.reporter.Begin(10);
    desk.now += 1.0;
    desk.reporter.Advance(5);
    desk.reporter.Warn("w");
    desk.reporter.Done("out\xFF.png"); // a name that is not UTF-8
    desk.reporter.Fail("f");
    const auto lines = Lines(desk.written);
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0], nlohmann::json({{"event", "note"}, {"text", "input: \"a\""}}));
    EXPECT_EQ(lines[1].at("event"), "progress");
    EXPECT_EQ(lines[2], nlohmann::json({{"event", "warning"}, {"text", "w"}}));
    EXPECT_EQ(lines[3].at("event"), "done");
    EXPECT_EQ(lines[3].at("frames"), 5);
    EXPECT_EQ(lines[4], nlohmann::json({{"event", "error"}, {"text", "f"}}));
}

TEST(Reporter, QuietWritesTheFailureOnly)
{
    Desk desk(ReportStyle::Quiet);
    desk.reporter.Note("n");
    desk.reporter.Warn("w");
    desk.reporter.Begin(10);
    desk.now += 100.0;
    desk.reporter.Advance(5);
    desk.reporter.Done("out.png");
    EXPECT_EQ(desk.written, "");
    desk.reporter.Fail("a.png: there is no such file; check the path");
    EXPECT_EQ(desk.written, "glazelhost: a.png: there is no such file; check the path\n");
}

} // namespace GlazelHost
