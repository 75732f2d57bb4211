#include "tools/glazelhost/commands/explain_options.h"

#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

namespace
{

using Words = std::vector<std::string>;

ExplainCommand Parsed(Words words)
{
    words.insert(words.begin(), "explain");
    return std::get<ExplainCommand>(ParseCommandLine(words));
}

std::string Refusal(const Words& words)
{
    try
    {
        Parsed(words);
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::WrongUsage);
        return error.what();
    }
    return "accepted";
}

} // namespace

TEST(ExplainOptions, APixelHasAPlaceInAPicture)
{
    const ExplainCommand command = Parsed({"120,45", "a.png", "--look", "b.cube", "--frame", "7",
                                           "--linear", "on", "--depth", "8", "--unclamped"});
    EXPECT_EQ(command.x, 120);
    EXPECT_EQ(command.y, 45);
    EXPECT_EQ(command.render.source.path, "a.png");
    EXPECT_EQ(command.render.look, "b.cube");
    EXPECT_EQ(command.frame, 7);
    EXPECT_EQ(command.render.linear, true);
    EXPECT_EQ(command.render.depth, SampleType::Byte);
    EXPECT_TRUE(command.render.unclamped);
    EXPECT_FALSE(command.colour || command.json);
}

TEST(ExplainOptions, AColourHasNumbersOrQuotients)
{
    const ExplainCommand command = Parsed({"--colour", "-0.5,51/255,2", "--look", "b", "--json"});
    EXPECT_EQ(command.colour, (std::array{-0.5F, 0.2F, 2.0F}));
    EXPECT_TRUE(command.json);
    EXPECT_FALSE(command.render.linear || command.render.depth);
}

TEST(ExplainOptions, WhatIsNoPixelAndNoColourIsRefused)
{
    for (const char* place : {"1", "1,", "1,2,3", "a,2", "1.5,2", ",", "1 2"})
    {
        EXPECT_NE(Refusal({place, "a.png", "--look", "b"}).find("a pixel is X,Y"),
                  std::string::npos)
            << place;
    }
    for (const char* colour : {"1", "1,2", "1,2,3,4", "1,2,x", "1,2,", "1,2,1/0", "nan,1,1"})
    {
        EXPECT_NE(Refusal({"--colour", colour, "--look", "b"}).find("a colour is RED,GREEN,BLUE"),
                  std::string::npos)
            << colour;
    }
}

TEST(ExplainOptions, APixelOrAColourHasToBeThereAndNotBoth)
{
    EXPECT_NE(Refusal({"--look", "b"}).find("neither PIXEL and INPUT nor --colour"),
              std::string::npos);
    EXPECT_NE(Refusal({"1,2", "--look", "b"}).find("neither PIXEL and INPUT nor --colour"),
              std::string::npos);
    EXPECT_NE(Refusal({"1,2", "a.png", "--colour", "1,1,1", "--look", "b"}).find("in the place of"),
              std::string::npos);
    EXPECT_NE(Refusal({"1,2", "-", "--look", "b"}).find("standard input"), std::string::npos);
    EXPECT_NE(Refusal({"1,2", "a.png"}).find("--look"), std::string::npos);
}

} // namespace GlazelHost
