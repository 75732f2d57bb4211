#include "reference_renderer/core/base64.h"

#include <gtest/gtest.h>

namespace ReferenceRenderer
{

namespace
{

std::span<const std::byte> BytesOf(std::string_view text)
{
    return std::as_bytes(std::span(text));
}

} // namespace

TEST(Base64, IsThatOfTheStandardsExamples)
{
    for (const auto& [bytes, text] :
         {std::pair{"", ""}, std::pair{"f", "Zg=="}, std::pair{"fo", "Zm8="},
          std::pair{"foo", "Zm9v"}, std::pair{"foob", "Zm9vYg=="}, std::pair{"fooba", "Zm9vYmE="},
          std::pair{"foobar", "Zm9vYmFy"}})
    {
        EXPECT_EQ(Base64Of(BytesOf(bytes)), text);
    }
}

TEST(Base64, ComesBackAsTheSameBytes)
{
    std::vector<std::byte> bytes;
    for (int value = 0; value < 256; ++value)
    {
        EXPECT_EQ(ParseBase64(Base64Of(bytes)), bytes);
        bytes.push_back(static_cast<std::byte>(value * 7));
    }
}

TEST(Base64, IsReadInItsOneSpellingAlone)
{
    for (const char* text : {"Z", "Zg", "Zg=", "Zg===", "Zh==", "Zm9=", "Zm9v=", "=",
                             "Zg==Zg==", "Zm 9v", "Zm-v", "Zm9v\n", "Zm9\xFF"})
    {
        EXPECT_FALSE(ParseBase64(text)) << text;
    }
}

} // namespace ReferenceRenderer
