#include "tools/glazelhost/page/command_text.h"

#include "tools/glazelhost/commands/command_line.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

namespace
{

bool NoFile(const std::string&)
{
    return false;
}

RepeatedRender Render()
{
    RepeatedRender render;
    render.image = R"(C:\pictures\photo.png)";
    render.output = R"(C:\pictures\photo_graded.png)";
    render.look.path = R"(C:\looks\warm.cube)";
    return render;
}

} // namespace

TEST(CommandTexts, NameImageOutputAndLook)
{
    EXPECT_EQ(CommandText(Render()),
              R"(glazelhost render C:\pictures\photo.png C:\pictures\photo_graded.png)"
              R"( --look C:\looks\warm.cube)");
}

TEST(CommandTexts, SayOnlyWhatWasChosen)
{
    RepeatedRender render = Render();
    render.look.linear = false;
    render.look.unclamped = true;
    render.depth = SampleType::Float;
    render.frame = 1001;
    render.tools = {R"(D:\renderer)", R"(E:\GlazelDX_x64.dll)"};
    EXPECT_EQ(CommandText(render), CommandText(Render()) +
                                       " --unclamped --linear off --depth float --frames 1001"
                                       R"( --renderer D:\renderer --plugin E:\GlazelDX_x64.dll)");
}

TEST(CommandTexts, AreReadBackAsTheyWereMeant)
{
    RepeatedRender render = Render();
    render.look.linear = true;
    render.depth = SampleType::Byte;
    const std::vector<std::string> words{"render", render.image,     render.output,
                                         "--look", render.look.path, "--linear",
                                         "on",     "--depth",        "8"};
    const auto command = std::get<RenderCommand>(ParseCommandLine(words));
    std::string joined = "glazelhost";
    for (const std::string& word : words)
    {
        joined += " " + word;
    }
    EXPECT_EQ(CommandText(render), joined);
    EXPECT_EQ(command.linear, true);
    EXPECT_EQ(command.depth, SampleType::Byte);
}

TEST(CommandTexts, QuoteWhatAPromptWouldTakeApart)
{
    RepeatedRender render = Render();
    render.image = R"(C:\my pictures\a & b.png)";
    render.look.path = "day.ccc#shot12|warm.cube";
    render.tools.rendererFolder = "C:\\the renderer\\";
    EXPECT_EQ(CommandText(render),
              R"(glazelhost render "C:\my pictures\a & b.png" C:\pictures\photo_graded.png)"
              R"( --look "day.ccc#shot12|warm.cube" --renderer "C:\the renderer\\")");
}

TEST(CommandTexts, AreQuotedForAShellWhereOneTakesThem)
{
    RepeatedRender render;
    render.image = "/home/ann/my pictures/it's $HOME.png";
    render.output = "/home/ann/a_b-1.png";
    render.look.path = "a.cc|b.cube";
    render.tools.plugin = R"(a\b.dll)";
    EXPECT_EQ(CommandText(render, {true, "./glazel"}),
              R"(./glazel render '/home/ann/my pictures/it'\''s $HOME.png' /home/ann/a_b-1.png)"
              R"( --look 'a.cc|b.cube' --plugin 'a\b.dll')");
}

TEST(CommandTexts, KeepLettersBeyondAsciiPlain)
{
    RepeatedRender render = Render();
    render.image = "gr\xC3\xBCn.png";
    EXPECT_EQ(CommandText(render).find('"'), std::string::npos);
}

TEST(GradedNames, StandBesideTheImage)
{
    EXPECT_EQ(GradedNameOf(R"(C:\a.b\photo.png)", NoFile), R"(C:\a.b\photo_graded.png)");
    EXPECT_EQ(GradedNameOf("photo.TIF", NoFile), "photo_graded.TIF");
    EXPECT_EQ(GradedNameOf("shot_%04d.png", NoFile), "shot_%04d_graded.png");
}

TEST(GradedNames, HaveAnExtensionThatCanBeWritten)
{
    EXPECT_EQ(GradedNameOf(R"(C:\a.b\photo)", NoFile), R"(C:\a.b\photo_graded.png)");
    EXPECT_EQ(GradedNameOf("photo.webp", NoFile), "photo_graded.png");
    EXPECT_EQ(GradedNameOf(".hidden", NoFile), ".hidden_graded.png");
}

TEST(GradedNames, AreNotThoseOfFilesThatExist)
{
    const auto exists = [](const std::string& name) {
        return name == "photo_graded.png" || name == "photo_graded_2.png";
    };
    EXPECT_EQ(GradedNameOf("photo.png", exists), "photo_graded_3.png");
    EXPECT_NE(GradedNameOf("photo.png", [](const std::string&) { return true; }), "")
        << "the search ends";
}

} // namespace GlazelHost
