#include "tools/glazelhost/one_line.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

TEST(OneLine, RunsOfControlCharactersAndSpacesBecomeOneSpace)
{
    EXPECT_EQ(OneLine("a\r\n\tb  c\x7F\x01"
                      "d"),
              "a b c d");
}

TEST(OneLine, NothingIsLeftAtEitherEnd)
{
    EXPECT_EQ(OneLine(" \n a \n "), "a");
    EXPECT_EQ(OneLine(" \n "), "");
}

TEST(OneLine, OtherScriptsStayAsTheyAre)
{
    EXPECT_EQ(OneLine("Gr\xC3\xBC\xC3\x9F"), "Gr\xC3\xBC\xC3\x9F");
}

} // namespace GlazelHost
