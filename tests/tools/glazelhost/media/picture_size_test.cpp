#include "tools/glazelhost/media/picture_size.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace GlazelHost
{

namespace
{

std::optional<PictureSize> SizeOf(const std::string& file)
{
    return SizeFromHeader(std::as_bytes(std::span(file)));
}

std::string Png(const std::string& sides)
{
    return "\x89PNG\r\n\x1a\n" + std::string("\0\0\0\x0dIHDR", 8) + sides;
}

std::string Bmp(const std::string& infoHeader)
{
    return "BM" + std::string(12, '\0') + infoHeader;
}

const std::string kJfif("\xff\xe0\0\x06JFIF", 8);
const std::string kTable("\xff\xc4\0\x04\xff\xc0", 6); // holds what looks like a frame marker
const std::string kFrame("\xff\xc2\0\x0b\x08\x01\x02\x03\x04\x01", 10);

} // namespace

TEST(PictureSize, APngStatesItInItsFirstChunk)
{
    EXPECT_EQ(SizeOf(Png(std::string("\0\0\x01\x02\x80\0\0\x03", 8))),
              (PictureSize{258, 2147483651}));
}

TEST(PictureSize, ABmpStatesItInItsInfoHeader)
{
    EXPECT_EQ(SizeOf(Bmp(std::string("\x28\0\0\0\x02\x01\0\0\x05\0\0\0", 12))),
              (PictureSize{258, 5}));
    EXPECT_EQ(SizeOf(Bmp(std::string("\x28\0\0\0\x02\x01\0\0\xfb\xff\xff\xff", 12))),
              (PictureSize{258, 5})); // rows from the top
    EXPECT_EQ(SizeOf(Bmp(std::string("\x28\0\0\0\x02\x01\0\0\0\0\0\x80", 12))),
              (PictureSize{258, 2147483648}));
    EXPECT_EQ(SizeOf(Bmp(std::string("\x0c\0\0\0\x02\x01\x05\0\x01\0\x18\0", 12))),
              (PictureSize{258, 5})); // the old header
}

TEST(PictureSize, AJpegStatesItInItsFrameBehindOtherSegments)
{
    EXPECT_EQ(SizeOf("\xff\xd8" + kFrame), (PictureSize{772, 258}));
    EXPECT_EQ(SizeOf("\xff\xd8" + kJfif + kTable + "\xff\xff" + kFrame), (PictureSize{772, 258}));
}

TEST(PictureSize, WithoutAFrameOrOfAnotherKindItIsNotKnown)
{
    const std::string scan("\xff\xda\0\x08\x01\x01\x00\x00\x3f\x00", 10);
    EXPECT_FALSE(SizeOf("\xff\xd8" + kJfif + scan + kFrame).has_value());
    EXPECT_FALSE(SizeOf("\xff\xd8" + kJfif).has_value());
    EXPECT_FALSE(SizeOf("II*" + std::string(100, '\0')).has_value());
    EXPECT_FALSE(SizeOf("").has_value());
}

TEST(PictureSize, CutAndDamagedHeadersAreNeverReadBeyondTheirEnd)
{
    constexpr unsigned kSeed = 5;
    std::mt19937 random(kSeed);
    const std::string whole[] = {Png(std::string(8, '\x01')), Bmp(std::string(40, '\x01')),
                                 "\xff\xd8" + kJfif + kTable + kFrame};
    for (const std::string& file : whole)
    {
        for (std::size_t length = 0; length <= file.size(); ++length)
        {
            std::string cut = file.substr(0, length);
            cut.shrink_to_fit(); // the sanitiser sees the end
            SizeOf(cut);
        }
        for (int round = 0; round < 5000; ++round)
        {
            std::string damaged = file;
            damaged[random() % damaged.size()] = static_cast<char>(random());
            SizeOf(damaged);
        }
    }
}

} // namespace GlazelHost
