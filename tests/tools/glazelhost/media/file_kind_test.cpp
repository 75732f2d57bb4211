#include "tools/glazelhost/media/file_kind.h"

#include <gtest/gtest.h>

#include <string>

namespace GlazelHost
{

namespace
{

std::optional<FileKind> KindOf(const std::string& bytes)
{
    return KindFromContent(std::as_bytes(std::span(bytes)));
}

} // namespace

TEST(FileKind, ContentIsKnownByItsFirstBytes)
{
    EXPECT_EQ(KindOf("\x89PNG\r\n\x1a\n...."), FileKind::Png);
    EXPECT_EQ(KindOf("\xff\xd8\xff\xe0"), FileKind::Jpeg);
    EXPECT_EQ(KindOf(std::string("II*\0....", 8)), FileKind::Tiff);
    EXPECT_EQ(KindOf(std::string("MM\0*....", 8)), FileKind::Tiff);
    EXPECT_EQ(KindOf("BM......"), FileKind::Bmp);
}

TEST(FileKind, ContentThatSaysNothingHasNoKind)
{
    EXPECT_FALSE(KindOf("").has_value());
    EXPECT_FALSE(KindOf("\x89PN").has_value());
    EXPECT_FALSE(KindOf(std::string(16, '\0')).has_value());
}

TEST(FileKind, ExtensionsCountInAnyCase)
{
    EXPECT_EQ(KindFromName("a.PNG"), FileKind::Png);
    EXPECT_EQ(KindFromName("dir.x/a.b.JpEg"), FileKind::Jpeg);
    EXPECT_EQ(KindFromName("a.tif"), FileKind::Tiff);
    EXPECT_EQ(KindFromName("a.bmp"), FileKind::Bmp);
    EXPECT_EQ(KindFromName("a.raw"), FileKind::Raw);
    EXPECT_EQ(KindFromName("a.bgra"), FileKind::Raw);
}

TEST(FileKind, NamesWithoutAKnownExtensionHaveNoKind)
{
    for (const char* const name :
         {"", "png", "a.gif", "a.y4m", "a.pngx", "dir.png/a", "dir.png\\a", "a.", "-"})
    {
        EXPECT_FALSE(KindFromName(name).has_value()) << name;
    }
}

} // namespace GlazelHost
