#include "tools/glazelhost/project/project_description.h"

#include "support/crc32.h"
#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

namespace
{

std::span<const std::byte> BytesOf(const std::string& text)
{
    return std::as_bytes(std::span(text));
}

ProjectDescription Sample()
{
    ProjectDescription description{Ease::Smooth, {5, 77}, {}};
    description.keys.push_back({ParseKeyTime("0f").value(), {130654, 0xFFFFFFFF}});
    description.keys.push_back({ParseKeyTime("2.5").value(), {0, 0}});
    return description;
}

std::string ErrorOf(const std::string& text)
{
    try
    {
        ParseProjectDescription(text, "a.project");
    }
    catch (const HostError& error)
    {
        const std::string line = error.what();
        EXPECT_EQ(line.rfind("a.project: ", 0), 0U) << line;
        EXPECT_EQ(line.find('\n'), std::string::npos);
        return line;
    }
    return {};
}

// With the seal that the text would have.
std::string Sealed(const std::string& members)
{
    const std::string text = "{" + members + "}";
    return "{" + members + ",\"crc32\":" + std::to_string(Crc32(BytesOf(text))) + "}";
}

bool Says(const std::string& line, const std::string& part)
{
    return line.find(part) != std::string::npos;
}

} // namespace

TEST(Crc32Values, AreThoseOfTheStandardCheck)
{
    EXPECT_EQ(Crc32(BytesOf("123456789")), 0xCBF43926U);
    EXPECT_EQ(Crc32({}), 0U);
}

TEST(ProjectDescriptions, AreReadAsTheyWereWritten)
{
    EXPECT_EQ(ParseProjectDescription(TextOf(Sample()), "a.project"), Sample());
    EXPECT_EQ(ParseProjectDescription(TextOf(ProjectDescription()), "a.project"),
              ProjectDescription());
}

TEST(ProjectDescriptions, HaveRoomForTheMostKeyframesAndNoMore)
{
    ProjectDescription description;
    description.keys.resize(kMostKeyframes);
    EXPECT_EQ(ParseProjectDescription(TextOf(description), "a.project"), description);
    description.keys.resize(kMostKeyframes + 1);
    EXPECT_TRUE(Says(ErrorOf(TextOf(description)), "damaged"));
}

TEST(ProjectDescriptions, EveryChangedCharacterIsFound)
{
    const std::string text = TextOf(Sample());
    for (std::size_t index = 0; index < text.size(); ++index)
    {
        for (const int mask : {1, 2, 16, 128})
        {
            std::string changed = text;
            changed[index] = static_cast<char>(changed[index] ^ mask);
            EXPECT_NE(ErrorOf(changed), "") << changed;
        }
        EXPECT_NE(ErrorOf(text.substr(0, index)), "") << index;
    }
}

TEST(ProjectDescriptions, WhatIsNotOursIsNoProject)
{
    for (const char* text : {"", "{}", "[]", "null", "1", "{\"format\":\"other\"}", "\xFF\xFE"})
    {
        EXPECT_TRUE(Says(ErrorOf(text), "not a project")) << text;
    }
}

TEST(ProjectDescriptions, ANewerFormIsSaidToBeNewerWhateverElseItHolds)
{
    EXPECT_TRUE(Says(ErrorOf(R"({"format":"glazelhost project","version":2,"new":[]})"), "newer"));
    EXPECT_TRUE(Says(ErrorOf(R"({"format":"glazelhost project","version":2})"), "form 2"));
}

TEST(ProjectDescriptions, ASealDoesNotMakeNonsenseAProject)
{
    const std::string head = R"("format":"glazelhost project","version":)";
    for (const std::string& members :
         {head + "1", head + "0", head + "\"1\"", head + R"(1,"ease":1,"look":{},"keyframes":[])",
          head + R"(1,"ease":"linear","look":{"bytes":1,"crc32":1},"keyframes":[{"time":"x"}])",
          head + R"(1,"ease":"linear","look":{"bytes":1,"crc32":1},"keyframes":[1])"})
    {
        EXPECT_TRUE(Says(ErrorOf(Sealed(members)), "damaged")) << members;
    }
}

TEST(ProjectDescriptions, AreDamagedWhenTheyNestWithoutEnd)
{
    constexpr std::size_t kLevels = 200'000;
    for (const auto& [opened, closed] : {std::pair{"[", "]"}, std::pair{"{\"a\":", "}"}})
    {
        std::string nested;
        for (std::size_t level = 0; level < kLevels; ++level)
        {
            nested += opened;
        }
        nested += "1";
        for (std::size_t level = 0; level < kLevels; ++level)
        {
            nested += closed;
        }
        const std::string text =
            R"({"format":"glazelhost project","version":1,"crc32":1,"keyframes":)" + nested + "}";
        EXPECT_TRUE(Says(ErrorOf(text), "damaged")) << opened;
    }
}

} // namespace GlazelHost
