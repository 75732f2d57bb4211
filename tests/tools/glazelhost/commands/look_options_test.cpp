#include "tools/glazelhost/commands/command_line.h"

#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

namespace
{

RenderCommand Render(const std::vector<std::string>& more)
{
    std::vector<std::string> words{"render", "in.bgra", "out.bgra"};
    words.insert(words.end(), more.begin(), more.end());
    return std::get<RenderCommand>(ParseCommandLine(words));
}

std::string ErrorOf(const std::vector<std::string>& more)
{
    try
    {
        Render(more);
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::WrongUsage);
        return error.what();
    }
    return {};
}

bool Says(const std::string& line, const std::string& part)
{
    return line.find(part) != std::string::npos;
}

} // namespace

TEST(LookOptions, KeysAreTakenInTheirOrderAndLeaveThePlacesAlone)
{
    const auto command = std::get<RenderCommand>(ParseCommandLine(
        {"render", "--key", "48f=b.cube", "--key=0=a=b.cube", "in.bgra", "out.bgra"}));
    ASSERT_EQ(command.keys.size(), 2U);
    EXPECT_EQ(TextOf(command.keys[0].time), "48f");
    EXPECT_EQ(command.keys[0].look, "b.cube");
    EXPECT_EQ(TextOf(command.keys[1].time), "0");
    EXPECT_EQ(command.keys[1].look, "a=b.cube") << "the first sign divides";
    EXPECT_EQ(command.source.path, "in.bgra");
    EXPECT_EQ(command.ease, std::nullopt);
}

TEST(LookOptions, ReachTheirPlaces)
{
    const RenderCommand command =
        Render({"--project", "a.glz", "--save-project", "b.glz", "--ease", "smooth"});
    EXPECT_EQ(command.project, "a.glz");
    EXPECT_EQ(command.savedProject, "b.glz");
    EXPECT_EQ(command.ease, Ease::Smooth);
    EXPECT_EQ(Render({"--look", "a", "--preset", "(Default)"}).preset, "(Default)");
    EXPECT_EQ(Render({"--key", "0=a", "--ease", "linear"}).ease, Ease::Linear);
}

TEST(LookOptions, APresetAloneIsALook)
{
    EXPECT_EQ(Render({"--preset", "(Default)"}).look, std::nullopt);
    EXPECT_TRUE(Says(ErrorOf({}), "no --look"));
}

TEST(LookOptions, ThoseThatContradictEachOtherAreNamed)
{
    EXPECT_TRUE(Says(ErrorOf({"--look", "a", "--key", "0=b"}), "--look and --key"));
    EXPECT_TRUE(Says(ErrorOf({"--look", "a", "--project", "p"}), "--look and --project"));
    EXPECT_TRUE(Says(ErrorOf({"--key", "0=a", "--project", "p"}), "--key and --project"));
    EXPECT_TRUE(Says(ErrorOf({"--key", "0=a", "--preset", "p"}), "--preset and --key"));
    EXPECT_TRUE(
        Says(ErrorOf({"--look", "a", "--preset", "p", "--linear", "on"}), "--preset and --linear"));
    EXPECT_TRUE(Says(ErrorOf({"--project", "a", "--unclamped"}), "--project and --unclamped"));
    EXPECT_TRUE(Says(ErrorOf({"--look", "a", "--ease", "smooth"}), "--ease"));
    EXPECT_TRUE(Says(ErrorOf({"--look", "a", "--look", "b"}), "--look"));
}

TEST(LookOptions, AKeyThatIsNotOneIsQuoted)
{
    for (const char* key : {"a.cube", "1s=a.cube", "1=", "=a.cube", "-1=a.cube", "1:99=a.cube"})
    {
        EXPECT_TRUE(Says(ErrorOf({"--key", key}), key)) << key;
    }
    EXPECT_TRUE(Says(ErrorOf({"--key", "0=a", "--ease", "fast"}), "fast"));
}

TEST(LookOptions, MoreKeysThanAProjectHoldsAreRefused)
{
    std::vector<std::string> words;
    for (std::size_t frame = 0; frame <= kMostKeyframes; ++frame)
    {
        words.insert(words.end(), {"--key", std::to_string(frame) + "f=a"});
    }
    EXPECT_TRUE(Says(ErrorOf(words), "1000"));
    words.resize(2 * kMostKeyframes);
    EXPECT_EQ(Render(words).keys.size(), kMostKeyframes);
}

TEST(LookOptions, BlendAndPresetsAreCommandsOfTheirOwn)
{
    const auto blend = std::get<BlendCommand>(
        ParseCommandLine({"blend", "a.cube", "b.cc", "0.25", "o.look", "--overwrite"}));
    EXPECT_EQ(blend.earlier, "a.cube");
    EXPECT_EQ(blend.later, "b.cc");
    EXPECT_EQ(blend.fraction, 0.25);
    EXPECT_EQ(blend.output, "o.look");
    EXPECT_TRUE(blend.overwrite);
    EXPECT_TRUE(std::get<PresetsCommand>(ParseCommandLine({"presets", "--json"})).json);
    for (const char* fraction : {"-0.1", "1.1", "nan", "half"})
    {
        EXPECT_THROW(ParseCommandLine({"blend", "a", "b", fraction, "o"}), HostError) << fraction;
    }
}

} // namespace GlazelHost
