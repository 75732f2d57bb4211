#include "tools/glazelhost/media/orientation.h"

#include "tests/tools/glazelhost/media/sample_images.h"
#include "tests/tools/glazelhost/media/tiff_sample.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace GlazelHost
{

namespace
{

// In a block of its own size, so that a look outside it is noticed.
int OrientationOfFile(const std::string& file)
{
    const std::vector<char> exact(file.begin(), file.end());
    return OrientationOf(std::as_bytes(std::span(exact)));
}

std::string Tagged(std::uint32_t orientation, bool bigEndian = false)
{
    return SampleTiff({{274, 3, NumberBytes(orientation, 2, bigEndian)}}, bigEndian);
}

std::string Segment(int marker, const std::string& contents)
{
    return std::string("\xFF") + static_cast<char>(marker) +
           NumberBytes(static_cast<std::uint32_t>(contents.size() + 2), 2, true) + contents;
}

std::string Jpeg(const std::string& exif)
{
    return "\xFF\xD8" + Segment(0xE0, "JFIF") + Segment(0xE1, "http://ns.adobe.com") +
           Segment(0xE1, std::string("Exif\0\0", 6) + exif) + Segment(0xDA, "scan");
}

std::string Chunk(const std::string& name, const std::string& contents)
{
    return NumberBytes(static_cast<std::uint32_t>(contents.size()), 4, true) + name + contents +
           "sum.";
}

std::string Png(const std::string& exif)
{
    return "\x89PNG\r\n\x1A\n" + Chunk("IHDR", "............") + Chunk("eXIf", exif) +
           Chunk("IDAT", "pixels");
}

// Each pixel's blue says which it is, row by row.
Image Numbered(int width, int height, SampleType type)
{
    Image image = RandomImage(width, height, type, true, 3);
    for (int i = 0; i < width * height; ++i)
    {
        if (type == SampleType::Byte)
        {
            image.pixels[static_cast<std::size_t>(4 * i)] = static_cast<std::byte>(i);
        }
        else
        {
            SetFloat(image, i % width, i / width, 0, static_cast<float>(i) / 255.0F);
        }
    }
    return image;
}

} // namespace

TEST(Orientations, AreReadFromTiffJpegAndPng)
{
    for (std::uint32_t orientation = 1; orientation <= 8; ++orientation)
    {
        const auto expected = static_cast<int>(orientation);
        EXPECT_EQ(OrientationOfFile(Tagged(orientation)), expected);
        EXPECT_EQ(OrientationOfFile(Jpeg(Tagged(orientation, true))), expected);
        EXPECT_EQ(OrientationOfFile(Png(Tagged(orientation))), expected);
    }
}

TEST(Orientations, AreUprightWhereNothingSensibleIsSaid)
{
    for (const std::string& file :
         {std::string(), std::string("BM"), Tagged(0), Tagged(9), Tagged(0xFFFF), SampleTiff({}),
          Jpeg(""), Jpeg("nonsense"), Png("II*"), "\xFF\xD8" + Segment(0xDA, "Exif")})
    {
        EXPECT_EQ(OrientationOfFile(file), 1);
    }
}

TEST(Orientations, OfCutFilesAreReadWithoutHarm)
{
    for (const std::string& whole : {Jpeg(Tagged(6)), Png(Tagged(6)), Tagged(6)})
    {
        for (std::size_t size = 0; size < whole.size(); ++size)
        {
            const int orientation = OrientationOfFile(whole.substr(0, size));
            EXPECT_TRUE(orientation == 1 || orientation == 6) << size;
        }
    }
}

TEST(Orientations, TurnPicturesAsExifNumbersThem)
{
    // The stored picture is 0 1 2 over 3 4 5.
    constexpr std::array<std::array<int, 6>, 8> kUpright{{{0, 1, 2, 3, 4, 5},
                                                          {2, 1, 0, 5, 4, 3},
                                                          {5, 4, 3, 2, 1, 0},
                                                          {3, 4, 5, 0, 1, 2},
                                                          {0, 3, 1, 4, 2, 5},
                                                          {3, 0, 4, 1, 5, 2},
                                                          {5, 2, 4, 1, 3, 0},
                                                          {2, 5, 1, 4, 0, 3}}};
    for (const SampleType type : {SampleType::Byte, SampleType::Float})
    {
        for (int orientation = 1; orientation <= 8; ++orientation)
        {
            Image image = Numbered(3, 2, type);
            MakeUpright(orientation, image);
            ASSERT_EQ(image.width, SwapsSides(orientation) ? 2 : 3);
            ASSERT_EQ(image.height, SwapsSides(orientation) ? 3 : 2);
            for (int i = 0; i < 6; ++i)
            {
                EXPECT_EQ(std::lround(FloatAt(image, i % image.width, i / image.width, 0) * 255.0F),
                          kUpright[static_cast<std::size_t>(orientation - 1)]
                                  [static_cast<std::size_t>(i)])
                    << orientation;
            }
        }
    }
}

} // namespace GlazelHost
