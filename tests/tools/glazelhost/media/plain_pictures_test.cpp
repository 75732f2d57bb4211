#include "tools/glazelhost/media/plain_pictures.h"

#include "tests/tools/glazelhost/media/memory_streams.h"
#include "tests/tools/glazelhost/media/sample_images.h"
#include "tools/glazelhost/media/picture_light.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace GlazelHost
{

namespace
{

std::uint32_t Number(const std::string& file, std::size_t place, int bytes)
{
    std::uint32_t number = 0;
    for (int i = bytes - 1; i >= 0; --i)
    {
        number =
            number << 8 | static_cast<unsigned char>(file.at(place + static_cast<unsigned>(i)));
    }
    return number;
}

// The directory of a TIFF: values by tag, or the places of values.
struct Directory
{
    std::map<std::uint32_t, std::pair<std::uint32_t, std::uint32_t>> entries; // tag: count, value
    std::uint32_t Value(std::uint32_t tag) const { return entries.at(tag).second; }
    std::uint32_t Count(std::uint32_t tag) const { return entries.at(tag).first; }
};

Directory DirectoryOf(const std::string& file)
{
    EXPECT_EQ(file.substr(0, 4), std::string("II*\0", 4));
    const std::uint32_t place = Number(file, 4, 4);
    const std::uint32_t count = Number(file, place, 2);
    Directory directory;
    std::uint32_t before = 0;
    for (std::uint32_t i = 0; i < count; ++i)
    {
        const std::uint32_t entry = place + 2 + 12 * i;
        const std::uint32_t tag = Number(file, entry, 2);
        EXPECT_LT(before, tag) << "the tags must rise";
        before = tag;
        directory.entries[tag] = {Number(file, entry + 4, 4), Number(file, entry + 8, 4)};
    }
    EXPECT_EQ(Number(file, place + 2 + 12 * count, 4), 0U);
    return directory;
}

// All strips, one after the other, as the directory says where they are.
std::string PixelsOf(const std::string& file, const Directory& directory)
{
    std::string pixels;
    const std::uint32_t strips = directory.Count(273);
    for (std::uint32_t strip = 0; strip < strips; ++strip)
    {
        const auto value = [&](std::uint32_t tag) {
            return strips == 1 ? directory.Value(tag)
                               : Number(file, directory.Value(tag) + 4 * strip, 4);
        };
        pixels += file.substr(value(273), value(279));
    }
    return pixels;
}

} // namespace

TEST(PlainPictures, AFloatTiffHoldsEveryValueWhereItsDirectorySays)
{
    for (const bool hasAlpha : {false, true})
    {
        for (const auto& [width, height] : {std::pair{1, 1}, {5, 3}, {700, 90}})
        {
            const Image image = RandomImage(width, height, SampleType::Float, hasAlpha, 4);
            WrittenBytes written;
            MemoryWriter writer(written);
            WriteFloatTiff(image, writer, "a.tif");
            const Directory directory = DirectoryOf(written.content);
            const std::uint32_t channels = hasAlpha ? 4 : 3;
            EXPECT_EQ(directory.Value(256), static_cast<std::uint32_t>(width));
            EXPECT_EQ(directory.Value(257), static_cast<std::uint32_t>(height));
            EXPECT_EQ(directory.Value(277), channels);
            EXPECT_EQ(directory.entries.contains(338), hasAlpha);
            for (std::uint32_t channel = 0; channel < channels; ++channel)
            {
                EXPECT_EQ(Number(written.content, directory.Value(258) + 2 * channel, 2), 32U);
                EXPECT_EQ(Number(written.content, directory.Value(339) + 2 * channel, 2), 3U);
            }
            const std::string pixels = PixelsOf(written.content, directory);
            ASSERT_EQ(pixels.size(), 4U * channels * static_cast<unsigned>(width * height));
            Image again;
            Reshape(again, width, height, SampleType::Float, hasAlpha);
            const PixelLayout layout{
                FileSample::Float32, static_cast<int>(channels), 0, 1, 2, hasAlpha ? 3 : -1, false};
            UnpackRow(layout, reinterpret_cast<const std::byte*>(pixels.data()), width * height,
                      SampleType::Float, again.pixels.data());
            EXPECT_EQ(again.pixels, image.pixels);
        }
    }
}

TEST(PlainPictures, AFloatTiffThatIsNotLinearSaysSo)
{
    const Image image = RandomImage(5, 3, SampleType::Float, true, 4);
    const auto written = [&image](bool isLinear) {
        WrittenBytes bytes;
        MemoryWriter writer(bytes);
        WriteFloatTiff(image, writer, "a.tif", isLinear);
        return bytes.content;
    };
    for (const bool isLinear : {true, false})
    {
        const std::string file = written(isLinear);
        EXPECT_EQ(LightOf(std::as_bytes(std::span(file)), true).isLinear, isLinear);
    }
    EXPECT_EQ(PixelsOf(written(false), DirectoryOf(written(false))),
              PixelsOf(written(true), DirectoryOf(written(true))));
}

TEST(PlainPictures, ATiffAboveFourGigabytesIsRefusedBeforeAnythingIsWritten)
{
    Image image; // only its size is looked at
    image.width = 16384;
    image.height = 16384;
    image.type = SampleType::Float;
    image.hasAlpha = true;
    WrittenBytes written;
    MemoryWriter writer(written);
    EXPECT_THROW(WriteFloatTiff(image, writer, "a.tif"), HostError);
    EXPECT_TRUE(written.content.empty());
}

TEST(PlainPictures, ABmpHoldsAlphaAndItsRowsFromTheBottom)
{
    const Image image = RandomImage(3, 2, SampleType::Byte, true, 4);
    WrittenBytes written;
    MemoryWriter writer(written);
    WriteAlphaBmp(image, writer, "a.bmp");
    const std::string& file = written.content;
    EXPECT_EQ(file.substr(0, 2), "BM");
    EXPECT_EQ(Number(file, 2, 4), file.size());
    EXPECT_EQ(Number(file, 10, 4), 122U);
    EXPECT_EQ(Number(file, 14, 4), 108U);
    EXPECT_EQ(Number(file, 18, 4), 3U);
    EXPECT_EQ(Number(file, 22, 4), 2U);
    EXPECT_EQ(Number(file, 66, 4), 0xFF000000U); // the mask of alpha
    ASSERT_EQ(file.size(), 122U + 24U);
    for (std::size_t i = 0; i < 12; ++i)
    {
        EXPECT_EQ(static_cast<std::byte>(file[122 + i]), image.pixels[12 + i]);
        EXPECT_EQ(static_cast<std::byte>(file[134 + i]), image.pixels[i]);
    }
}

} // namespace GlazelHost
