#include "tools/glazelhost/media/picture_blocks.h"

#include "tests/tools/glazelhost/media/picture_sample.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

TEST(PictureBlocks, OfAPngAreItsChunks)
{
    const auto file = BytesOfText(SamplePng({{"abCD", "12345"}}));
    const auto header = PngChunkAt(file, kFirstPngChunk);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->name, BlockName("IHDR"));
    EXPECT_EQ(header->contents.size(), 13U);
    const auto second = PngChunkAt(file, header->end);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->name, BlockName("abCD"));
    EXPECT_TRUE(BeginsWith(second->contents, "12345"));
    EXPECT_EQ(second->contents.size(), 5U);
}

TEST(PictureBlocks, OfAJpegAreItsSegmentsUpToTheScan)
{
    const auto file = BytesOfText(SampleJpeg({{"\xE0", "first"}, {"\xFF\xFF\xE1", "second"}}));
    const auto first = JpegSegmentAt(file, kFirstJpegSegment);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->name, 0xE0U);
    EXPECT_EQ(first->contents.size(), 5U);
    const auto second = JpegSegmentAt(file, first->end);
    ASSERT_TRUE(second) << "a mark may stand several times";
    EXPECT_EQ(second->name, 0xE1U);
    EXPECT_TRUE(BeginsWith(second->contents, "second"));
    EXPECT_FALSE(JpegSegmentAt(file, second->end));
}

TEST(PictureBlocks, AreCutAnywhereWithoutHarm)
{
    for (const std::string& whole : {SamplePng({}), SampleJpeg({{"\xE0", "first"}})})
    {
        for (std::size_t size = 0; size <= whole.size(); ++size)
        {
            const auto file = BytesOfText(whole.substr(0, size));
            for (std::size_t place = 0; place <= whole.size() + 1; ++place)
            {
                const auto chunk = PngChunkAt(file, place);
                EXPECT_TRUE(!chunk || chunk->end <= size);
                const auto segment = JpegSegmentAt(file, place);
                EXPECT_TRUE(!segment || segment->end <= size);
            }
        }
    }
}

TEST(PictureBlocks, FindTheExifBlockOfEachKind)
{
    const std::string exif = "MM and so on";
    EXPECT_TRUE(BeginsWith(DirectoryBytes(BytesOfText(SamplePng({{"eXIf", exif}}))), exif));
    const std::string marked = std::string("Exif\0\0", 6) + exif;
    const auto jpeg = BytesOfText(SampleJpeg({{"\xE1", "something else"}, {"\xE1", marked}}));
    EXPECT_TRUE(BeginsWith(DirectoryBytes(jpeg), exif));
    EXPECT_TRUE(DirectoryBytes(BytesOfText(SamplePng({}))).empty());
    EXPECT_TRUE(DirectoryBytes(BytesOfText("BM is a BMP")).empty());
}

} // namespace GlazelHost
