#include "tools/glazelhost/plugin/preset_list.h"

#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

namespace
{

std::string ErrorOf(const std::vector<std::string>& names, const std::string& name)
{
    try
    {
        PresetIndex(names, name);
    }
    catch (const HostError& error)
    {
        return error.what();
    }
    return {};
}

} // namespace

TEST(PresetLists, ANameIsFoundLetterByLetter)
{
    const std::vector<std::string> names{"(Default)", "Night"};
    EXPECT_EQ(PresetIndex(names, "(Default)"), 0U);
    EXPECT_EQ(PresetIndex(names, "Night"), 1U);
    EXPECT_NE(ErrorOf(names, "night"), "");
    EXPECT_NE(ErrorOf(names, ""), "");
}

TEST(PresetLists, AnUnknownNameIsToldWhatThereIs)
{
    EXPECT_NE(ErrorOf({"(Default)", "Night"}, "Day").find("\"(Default)\", \"Night\""),
              std::string::npos);
    EXPECT_NE(ErrorOf({}, "Day").find("no presets"), std::string::npos);
}

} // namespace GlazelHost
