#include "tools/glazelhost/project/project_text.h"

#include "support/crc32.h"
#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace GlazelHost
{

namespace
{

std::span<const std::byte> BytesOf(const std::string& text)
{
    return std::as_bytes(std::span(text));
}

StoredProject Sample()
{
    StoredProject stored{"{class}", {std::byte{1}, std::byte{255}}, {Ease::Smooth, {}}};
    stored.project.keyframes.push_back({ParseKeyTime("0f").value(), stored.look});
    stored.project.keyframes.push_back({ParseKeyTime("2.5").value(), {}});
    return stored;
}

bool AreSame(const StoredProject& one, const StoredProject& other)
{
    return one.effect == other.effect && one.look == other.look &&
           one.project.ease == other.project.ease &&
           std::ranges::equal(one.project.keyframes, other.project.keyframes,
                              [](const Keyframe& a, const Keyframe& b) {
                                  return a.time == b.time && a.record == b.record;
                              });
}

std::string ErrorOf(const std::string& text)
{
    try
    {
        ParseProject(text, "a.project");
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

TEST(ProjectTexts, AreReadAsTheyWereWritten)
{
    for (const StoredProject& stored : {Sample(), StoredProject()})
    {
        EXPECT_TRUE(AreSame(ParseProject(TextOf(stored), "a.project"), stored));
    }
}

TEST(ProjectTexts, HaveRoomForTheMostKeyframesAndNoMore)
{
    StoredProject stored;
    stored.project.keyframes.resize(kMostKeyframes);
    EXPECT_TRUE(AreSame(ParseProject(TextOf(stored), "a.project"), stored));
    stored.project.keyframes.resize(kMostKeyframes + 1);
    EXPECT_TRUE(Says(ErrorOf(TextOf(stored)), "damaged: its list of keyframes"));
}

TEST(ProjectTexts, EveryChangedValueIsFound)
{
    const std::string text = TextOf(Sample());
    for (std::size_t index = 0; index < text.size(); ++index)
    {
        for (const int mask : {1, 2, 16, 128})
        {
            std::string changed = text;
            changed[index] = static_cast<char>(changed[index] ^ mask);
            // White space between values may be other white space.
            EXPECT_TRUE(!ErrorOf(changed).empty() ||
                        AreSame(ParseProject(changed, "a.project"), Sample()))
                << changed;
        }
        if (index + 1 < text.size()) // which is the end of the line
        {
            EXPECT_NE(ErrorOf(text.substr(0, index)), "") << index;
        }
    }
}

TEST(ProjectTexts, WhatIsNotOursIsNoProject)
{
    for (const char* text : {"", "{}", "[]", "null", "1", "{\"format\":\"other\"}", "\xFF\xFE"})
    {
        EXPECT_TRUE(Says(ErrorOf(text), "not a project")) << text;
    }
}

TEST(ProjectTexts, ANewerFormIsSaidToBeNewerWhateverElseItHolds)
{
    EXPECT_TRUE(Says(ErrorOf(R"({"format":"glazelhost project","version":2,"new":[]})"), "newer"));
    EXPECT_TRUE(Says(ErrorOf(R"({"format":"glazelhost project","version":2})"), "form 2"));
}

TEST(ProjectTexts, ASealAndAVersionAreWholeNumbersAsTheyStand)
{
    const std::string members = R"("format":"glazelhost project","version":1,"effect":"",)"
                                R"("ease":"linear","look":"","keyframes":[])";
    const std::uint64_t seal = Crc32(BytesOf("{" + members + "}"));
    const auto error = [&](const std::string& number) {
        return ErrorOf("{" + members + ",\"crc32\":" + number + "}");
    };
    EXPECT_EQ(error(std::to_string(seal)), "");
    for (const std::string& number : {std::to_string(seal) + ".0", std::string("4e11"),
                                      std::to_string(seal + (std::uint64_t{1} << 32))})
    {
        EXPECT_TRUE(Says(error(number), "damaged")) << number;
    }
    EXPECT_TRUE(Says(ErrorOf(R"({"format":"glazelhost project","version":1e300})"), "damaged"));
}

TEST(ProjectTexts, ASealDoesNotMakeNonsenseAProject)
{
    const std::string head = R"("format":"glazelhost project","version":)";
    for (const std::string& members :
         {head + "1", head + "0", head + "\"1\"",
          head + R"(1,"effect":"","ease":1,"look":"","keyframes":[])",
          head + R"(1,"effect":"","ease":"linear","look":{},"keyframes":[])",
          head + R"(1,"effect":"","ease":"linear","look":"?","keyframes":[])",
          head + R"(1,"effect":"","ease":"linear","look":"","keyframes":[{"time":"x","look":""}])",
          head + R"(1,"effect":"","ease":"linear","look":"","keyframes":[{"time":"1f"}])",
          head + R"(1,"effect":"","ease":"linear","look":"","keyframes":[1])"})
    {
        EXPECT_TRUE(Says(ErrorOf(Sealed(members)), "damaged")) << members;
    }
}

TEST(ProjectTexts, AreDamagedWhenTheyNestWithoutEnd)
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
