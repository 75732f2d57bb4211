#include "tools/glazelhost/commands/command_line.h"

#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace GlazelHost
{

namespace
{

RenderCommand Render(std::vector<std::string> more)
{
    std::vector<std::string> words{"render", "in.png", "out.png", "--look", "a.cube"};
    words.insert(words.end(), more.begin(), more.end());
    return std::get<RenderCommand>(ParseCommandLine(words));
}

// The line of the usage error that these words get; empty when they are accepted.
std::string ErrorOf(const std::vector<std::string>& words)
{
    try
    {
        ParseCommandLine(words);
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::WrongUsage);
        return error.what();
    }
    return {};
}

std::string RenderErrorOf(std::vector<std::string> more)
{
    std::vector<std::string> words{"render", "in.png", "out.png", "--look", "a.cube"};
    words.insert(words.end(), more.begin(), more.end());
    return ErrorOf(words);
}

} // namespace

TEST(CommandLine, AShortRenderLeavesEveryChoiceOpen)
{
    const RenderCommand render = Render({});
    EXPECT_EQ(render.source.path, "in.png");
    EXPECT_EQ(render.sink.path, "out.png");
    EXPECT_EQ(render.look, "a.cube");
    EXPECT_EQ(render.depth, std::nullopt);
    EXPECT_EQ(render.linear, std::nullopt);
    EXPECT_EQ(render.source.format, std::nullopt);
    EXPECT_EQ(render.sink.bits, std::nullopt);
    EXPECT_EQ(render.sink.quality, 95);
    EXPECT_EQ(render.sink.ditherSeed, std::nullopt);
    EXPECT_EQ(Render({"--dither"}).sink.ditherSeed, 0U);
    EXPECT_EQ(render.source.framesPerSecond, 0.0);
    EXPECT_FALSE(render.sink.overwrite);
    EXPECT_FALSE(render.skipBadFrames);
    EXPECT_EQ(render.progress, ProgressChoice::Auto);
    EXPECT_FALSE(render.frames.has_value());
}

TEST(CommandLine, EveryRenderOptionReachesItsPlace)
{
    const RenderCommand render = Render({"--depth",     "float",
                                         "--linear",    "off",
                                         "--fps",       "23.976",
                                         "--aspect",    "1.5",
                                         "--frames",    "2-4",
                                         "--first",     "1001",
                                         "--overwrite", "--renderer",
                                         "D:\\r",       "--plugin",
                                         "p.dll",       "--bits",
                                         "16",          "--quality",
                                         "80",          "--skip-bad-frames",
                                         "--unclamped", "--progress",
                                         "json",        "--size",
                                         "1920x1080",   "--expect",
                                         "72",          "--input-format",
                                         "bgra16",      "--output-format",
                                         "gbraf32",     "--input-light",
                                         "linear",      "--dither",
                                         "--seed",      "7"});
    EXPECT_EQ(render.depth, SampleType::Float);
    EXPECT_EQ(render.linear, false);
    EXPECT_EQ(render.source.framesPerSecond, 23.976);
    EXPECT_EQ(render.source.pixelAspect, 1.5);
    EXPECT_FALSE(render.frames.value().Contains(1));
    EXPECT_TRUE(render.frames.value().Contains(4));
    EXPECT_EQ(render.source.firstNumber, 1001);
    EXPECT_TRUE(render.sink.overwrite);
    EXPECT_EQ(render.tools.rendererFolder, "D:\\r");
    EXPECT_EQ(render.tools.plugin, "p.dll");
    EXPECT_EQ(render.sink.bits, 16);
    EXPECT_EQ(render.sink.quality, 80);
    EXPECT_EQ(render.sink.ditherSeed, 7U);
    EXPECT_TRUE(render.skipBadFrames);
    EXPECT_TRUE(render.unclamped);
    EXPECT_EQ(render.progress, ProgressChoice::Json);
    EXPECT_EQ(render.expectedFrames, 72);
    EXPECT_EQ(render.source.width, 1920);
    EXPECT_EQ(render.source.height, 1080);
    EXPECT_EQ(render.source.format, StreamFormat::Bgra16);
    EXPECT_TRUE(render.source.isLinearLight);
    EXPECT_EQ(render.sink.format, StreamFormat::GbraFloat);
}

TEST(CommandLine, TheWeightsOfLumaCountAtBothEnds)
{
    const RenderCommand render = Render({"--luma-weights", "0.299,0.114"});
    EXPECT_EQ(render.source.lumaWeights.red, 0.299);
    EXPECT_EQ(render.sink.lumaWeights.blue, 0.114);
}

TEST(CommandLine, ARateMayBeAFraction)
{
    EXPECT_EQ(Render({"--fps", "30000/1001"}).source.framesPerSecond, 30000.0 / 1001.0);
}

TEST(CommandLine, OptionsMayStandBeforeThePlaces)
{
    const auto command =
        ParseCommandLine({"render", "--look=a.cube", "--depth=8", "in.png", "out.png"});
    EXPECT_EQ(std::get<RenderCommand>(command).depth, SampleType::Byte);
}

TEST(CommandLine, APathMayBeginWithASlash)
{
    const auto render = std::get<RenderCommand>(
        ParseCommandLine({"render", "/a/in.png", "/a/out.png", "--look", "/a/look.cube"}));
    EXPECT_EQ(render.source.path, "/a/in.png");
    EXPECT_EQ(render.sink.path, "/a/out.png");
    EXPECT_EQ(render.look, "/a/look.cube");
}

TEST(CommandLine, RawInputIsOfBytesAndStandardOutputIsAsRawInputUnlessAFormatIsGiven)
{
    const auto formats = [](const std::string& input, std::vector<std::string> more) {
        std::vector<std::string> words{"render", input, "-", "--look", "a.cube"};
        words.insert(words.end(), more.begin(), more.end());
        const auto render = std::get<RenderCommand>(ParseCommandLine(words));
        return std::pair(render.source.format, render.sink.format);
    };
    const std::optional<StreamFormat> bytes = StreamFormat::Bgra8;
    const std::optional<StreamFormat> words = StreamFormat::Bgra16;
    EXPECT_EQ(formats("-", {}), std::pair(bytes, bytes));
    EXPECT_EQ(formats("a.bgra", {}), std::pair(bytes, bytes));
    EXPECT_EQ(formats("-", {"--input-format", "bgra16"}), std::pair(words, words));
    EXPECT_EQ(formats("-", {"--output-format", "bgra16"}), std::pair(bytes, words));
    EXPECT_EQ(formats("a.png", {}).second, std::nullopt) << "8 bits or 16 is for the user to say";
}

TEST(CommandLine, QuietWinsOverTheKindOfProgress)
{
    EXPECT_EQ(Render({"--quiet", "--progress", "bar"}).progress, ProgressChoice::None);
}

TEST(CommandLine, LookAndInfoHaveTheirOwnOptions)
{
    const auto look = std::get<LookCommand>(
        ParseCommandLine({"look", "a.ccc#x", "a.look", "--linear", "on", "--overwrite"}));
    EXPECT_EQ(look.input, "a.ccc#x");
    EXPECT_EQ(look.output, "a.look");
    EXPECT_EQ(look.linear, true);
    EXPECT_TRUE(look.overwrite);
    EXPECT_TRUE(std::get<InfoCommand>(ParseCommandLine({"info", "--json"})).json);
}

TEST(CommandLine, ValidateTakesAFileOrAReportOrAList)
{
    const auto validate = std::get<ValidateCommand>(ParseCommandLine(
        {"validate", "--only", "a.*", "b.dll", "--only", "c", "--skip", "d", "--level", "10",
         "--time-limit", "5", "--seed", "4294967295", "--json", "r.json", "--renderer", "dir"}));
    EXPECT_EQ(validate.file, "b.dll");
    EXPECT_EQ(validate.options,
              (ValidateOptions{10, {"a.*", "c"}, {"d"}, 4294967295U, 0, 5, "dir"}));
    EXPECT_EQ(validate.report, "r.json");
    EXPECT_EQ(std::get<ValidateCommand>(ParseCommandLine({"validate", "--again", "r"})).again, "r");
    EXPECT_TRUE(std::get<ValidateCommand>(ParseCommandLine({"validate", "--list"})).list);
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"validate"},
                                               {"validate", "a.dll", "--list"},
                                               {"validate", "a.dll", "--level", "11"},
                                               {"validate", "--again", "r", "--seed", "1"},
                                               {"validate", "a.dll", "--jobs", "0"}})
    {
        EXPECT_NE(ErrorOf(words).find("--help"), std::string::npos) << words.back();
    }
}

TEST(CommandLine, HelpAndVersionAreTexts)
{
    const auto text = [](std::vector<std::string> words) {
        return std::get<TextCommand>(ParseCommandLine(words)).text;
    };
    EXPECT_NE(text({"--help"}).find("render"), std::string::npos);
    EXPECT_NE(text({"render", "--help"}).find("--skip-bad-frames"), std::string::npos);
    EXPECT_NE(text({"render", "--help"}).find("Examples:"), std::string::npos);
    EXPECT_NE(text({"look", "--help"}).find("--points"), std::string::npos);
    EXPECT_EQ(text({"--version"}).rfind("glazelhost ", 0), 0u);
}

TEST(CommandLine, WrongUsageIsOneLineThatSaysWhereToRead)
{
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{},
                                               {"paint"},
                                               {"render"},
                                               {"render", "a"},
                                               {"render", "a", "b"},
                                               {"look", "a"},
                                               {"page", "a"},
                                               {"info", "extra"},
                                               {"--nonsense"}})
    {
        const std::string line = ErrorOf(words);
        EXPECT_NE(line.find("--help"), std::string::npos) << line;
        EXPECT_EQ(line.find('\n'), std::string::npos) << line;
    }
}

TEST(CommandLine, ValuesThatMakeNoSenseAreQuoted)
{
    EXPECT_NE(RenderErrorOf({"--depth", "12"}).find("12"), std::string::npos);
    EXPECT_NE(RenderErrorOf({"--fps", "0"}), "");
    EXPECT_NE(RenderErrorOf({"--fps", "fast"}).find("fast"), std::string::npos);
    EXPECT_NE(RenderErrorOf({"--fps", "inf"}), "");
    EXPECT_NE(RenderErrorOf({"--fps", "30000/0"}), "");
    EXPECT_NE(RenderErrorOf({"--fps", "30/1/1"}), "");
    EXPECT_NE(RenderErrorOf({"--aspect", "nan"}), "");
    EXPECT_NE(RenderErrorOf({"--bits", "12"}), "");
    for (const char* weights :
         {"0.3", "0.3,x", "0.3,0.1,0.6", "0.3,0", "-0.1,0.3", "0.7,0.3", "nan,nan"})
    {
        EXPECT_NE(RenderErrorOf({"--luma-weights", weights}), "") << weights;
    }
    EXPECT_NE(RenderErrorOf({"--quality", "0"}), "");
    EXPECT_NE(RenderErrorOf({"--quality", "101"}), "");
    EXPECT_NE(RenderErrorOf({"--seed", "3"}), "") << "without --dither";
    EXPECT_NE(RenderErrorOf({"--dither", "--seed", "-1"}), "");
    EXPECT_NE(RenderErrorOf({"--dither", "--seed", "4294967296"}), "");
    EXPECT_NE(RenderErrorOf({"--frames", "5-1"}), "");
    EXPECT_NE(RenderErrorOf({"--linear", "maybe"}).find("maybe"), std::string::npos);
    EXPECT_THROW(ParseCommandLine({"look", "a.cube", "b.look", "--linear", "auto"}), HostError)
        << "a record says on or off";
    EXPECT_NE(RenderErrorOf({"--progress", "loud"}).find("loud"), std::string::npos);
}

TEST(CommandLine, ASizeIsTwoNumbersWithinTheProgramsLimits)
{
    EXPECT_EQ(Render({"--size", "16384x1"}).source.width, 16384);
    for (const char* size : {"", "x", "0x5", "5x0", "16385x5", "5x16385", "5", "5x", "x5", "5x5x5",
                             "5X5", "-5x5", "99999999999x5", "5 x5"})
    {
        EXPECT_NE(RenderErrorOf({"--size", size}), "") << size;
    }
}

TEST(CommandLine, APageNeedsNoOption)
{
    const auto page = std::get<PageCommand>(ParseCommandLine({"page"}));
    EXPECT_EQ(page.image, std::nullopt);
    EXPECT_EQ(page.look, std::nullopt);
    EXPECT_EQ(page.depth, std::nullopt);
    EXPECT_EQ(page.savedLook, std::nullopt);
    EXPECT_FALSE(page.overwrite);
}

TEST(CommandLine, APageTakesAPictureALookAndWhereToKeepIt)
{
    const auto page = std::get<PageCommand>(
        ParseCommandLine({"page", "--image", "a.png", "--frame", "7", "--look", "b.cube",
                          "--linear", "off", "--unclamped", "--depth", "float", "--save-look",
                          "c.look", "--overwrite", "--renderer", "d"}));
    EXPECT_EQ(page.image, "a.png");
    EXPECT_EQ(page.frame, 7);
    EXPECT_EQ(page.look, "b.cube");
    EXPECT_EQ(page.linear, false);
    EXPECT_TRUE(page.unclamped);
    EXPECT_EQ(page.depth, SampleType::Float);
    EXPECT_EQ(page.savedLook, "c.look");
    EXPECT_TRUE(page.overwrite);
    EXPECT_EQ(page.tools.rendererFolder, "d");
}

TEST(CommandLine, HowALookIsReadNeedsALook)
{
    EXPECT_NE(ErrorOf({"page", "--linear", "on"}).find("--linear"), std::string::npos);
    EXPECT_NE(ErrorOf({"page", "--unclamped"}).find("--unclamped"), std::string::npos);
    EXPECT_NE(ErrorOf({"page", "--frame", "2"}).find("--frame"), std::string::npos);
}

TEST(CommandLine, APageWorksOnFilesAndOverwritesOnlyTheLookThatItSaves)
{
    EXPECT_NE(ErrorOf({"page", "--image", "-"}).find("has to be a file"), std::string::npos);
    EXPECT_NE(ErrorOf({"page", "--save-look", "-"}).find("goes to a file"), std::string::npos);
    EXPECT_NE(ErrorOf({"page", "--overwrite"}).find("--save-look"), std::string::npos);
}

TEST(CommandLine, EveryHelpEndsItsLastLine)
{
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"--help"}, {"render", "--help"}, {"page", "--help"}, {"info", "--help"}})
    {
        const std::string text = std::get<TextCommand>(ParseCommandLine(words)).text;
        ASSERT_GT(text.size(), 2U);
        EXPECT_EQ(text.back(), '\n');
        EXPECT_NE(text[text.size() - 2], '\n');
    }
}

} // namespace GlazelHost
