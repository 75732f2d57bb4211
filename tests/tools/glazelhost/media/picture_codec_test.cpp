#include "tools/glazelhost/media/picture_codec.h"

#include "tests/tools/glazelhost/media/memory_streams.h"
#include "tests/tools/glazelhost/media/sample_images.h"
#include "tests/tools/glazelhost/media/scratch_folder.h"

#include <gtest/gtest.h>

#include <objbase.h>

#include <random>
#include <string>

namespace GlazelHost
{

namespace
{

class PictureCodec : public testing::Test
{
protected:
    void SetUp() override { ASSERT_GE(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), 0); }
    void TearDown() override { ::CoUninitialize(); }
};

std::string Encoded(const Image& image, const PictureFormat& format)
{
    WrittenBytes written;
    MemoryWriter writer(written);
    EncodePicture(image, format, writer, "picture");
    return written.content;
}

PictureDecoder DecoderOf(const std::string& file)
{
    const auto* const first = reinterpret_cast<const std::byte*>(file.data());
    return {std::vector<std::byte>(first, first + file.size()), "picture"};
}

Image Decoded(const std::string& file, SampleType type)
{
    Image image;
    DecoderOf(file).Decode(image, type);
    return image;
}

// Every value is one that the file's depth holds, so that nothing may change on the way.
void ExpectLossless(FileKind kind, int bits)
{
    const unsigned steps = bits == 8 ? 255U : 65535U;
    for (const bool hasAlpha : {false, true})
    {
        for (const auto& [width, height] : {std::pair{1, 1}, {7, 5}, {64, 33}})
        {
            const Image image = RandomImage(width, height, SampleType::Float, hasAlpha, 17, steps);
            const std::string file = Encoded(image, {kind, bits, 95});
            EXPECT_EQ(DecoderOf(file).BitsPerChannel(), bits);
            const Image again = Decoded(file, SampleType::Float);
            EXPECT_EQ(again.width, width);
            EXPECT_EQ(again.height, height);
            EXPECT_EQ(again.hasAlpha, hasAlpha);
            EXPECT_EQ(Distance(image, again), 0.0F)
                << DescribeKind(kind) << ' ' << bits << " bits, alpha " << hasAlpha;
        }
    }
}

// A picture without edges, as JPEG likes it.
Image Smooth(int width, int height)
{
    Image image;
    Reshape(image, width, height, SampleType::Byte, false);
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            const int values[4] = {x * 255 / width, y * 255 / height, (x + y) * 127 / width, 255};
            for (int channel = 0; channel < 4; ++channel)
            {
                image.pixels[static_cast<std::size_t>(4 * (y * width + x) + channel)] =
                    static_cast<std::byte>(values[channel]);
            }
        }
    }
    return image;
}

} // namespace

TEST_F(PictureCodec, Png8IsLossless)
{
    ExpectLossless(FileKind::Png, 8);
}

TEST_F(PictureCodec, Png16IsLossless)
{
    ExpectLossless(FileKind::Png, 16);
}

TEST_F(PictureCodec, Tiff8IsLossless)
{
    ExpectLossless(FileKind::Tiff, 8);
}

TEST_F(PictureCodec, Tiff16IsLossless)
{
    ExpectLossless(FileKind::Tiff, 16);
}

TEST_F(PictureCodec, TiffFloatIsLossless)
{
    ExpectLossless(FileKind::Tiff, 32);
}

TEST_F(PictureCodec, BmpIsLossless)
{
    ExpectLossless(FileKind::Bmp, 8);
}

TEST_F(PictureCodec, BytesSurviveEveryLosslessKindAtEveryDepth)
{
    const Image image = RandomImage(31, 9, SampleType::Byte, true, 23);
    for (const auto& [kind, bits] : {std::pair{FileKind::Png, 8},
                                     {FileKind::Png, 16},
                                     {FileKind::Tiff, 8},
                                     {FileKind::Tiff, 16},
                                     {FileKind::Tiff, 32},
                                     {FileKind::Bmp, 8}})
    {
        EXPECT_EQ(Decoded(Encoded(image, {kind, bits, 95}), SampleType::Byte).pixels, image.pixels)
            << DescribeKind(kind) << ' ' << bits;
    }
}

TEST_F(PictureCodec, FloatTiffKeepsWhatLiesOutsideZeroToOne)
{
    Image image = RandomImage(2, 1, SampleType::Float, true, 1);
    SetFloat(image, 0, 0, 0, -3.25F);
    SetFloat(image, 0, 0, 1, 1e20F);
    SetFloat(image, 1, 0, 2, 12.5F);
    EXPECT_EQ(Decoded(Encoded(image, {FileKind::Tiff, 32, 95}), SampleType::Float).pixels,
              image.pixels);
}

TEST_F(PictureCodec, JpegIsNearAndHasNoAlpha)
{
    Image image = Smooth(64, 48);
    image.hasAlpha = true;
    const Image again = Decoded(Encoded(image, {FileKind::Jpeg, 8, 95}), SampleType::Byte);
    EXPECT_FALSE(again.hasAlpha);
    EXPECT_LE(Distance(image, again), 4.0F / 255.0F);
}

TEST_F(PictureCodec, JpegQualityDecidesTheSize)
{
    const Image image = RandomImage(64, 64, SampleType::Byte, false, 3);
    EXPECT_GT(Encoded(image, {FileKind::Jpeg, 8, 95}).size(),
              2 * Encoded(image, {FileKind::Jpeg, 8, 30}).size());
}

TEST_F(PictureCodec, RowsOfABandAreWhereTheyBelong)
{
    // More rows than one band of the encoder holds, and columns that no alignment fits.
    const Image image = RandomImage(1001, 3000, SampleType::Byte, true, 8);
    EXPECT_EQ(Decoded(Encoded(image, {FileKind::Tiff, 16, 95}), SampleType::Byte).pixels,
              image.pixels);
}

TEST_F(PictureCodec, CutFilesAreErrorsAndNotHalfPictures)
{
    const Image image = RandomImage(40, 40, SampleType::Byte, false, 5);
    for (const auto& [kind, bits] : {std::pair{FileKind::Png, 8},
                                     {FileKind::Png, 16},
                                     {FileKind::Jpeg, 8},
                                     {FileKind::Tiff, 8},
                                     {FileKind::Tiff, 32},
                                     {FileKind::Bmp, 8}})
    {
        const std::string whole = Encoded(image, {kind, bits, 95});
        for (const std::size_t length : {std::size_t{0}, std::size_t{1}, std::size_t{10},
                                         whole.size() / 4, whole.size() / 2, whole.size() * 9 / 10})
        {
            const std::string error =
                ErrorOf([&] { Decoded(whole.substr(0, length), SampleType::Byte); });
            EXPECT_TRUE(Says(error, "picture: ")) << DescribeKind(kind) << ' ' << bits << " cut to "
                                                  << length << " of " << whole.size();
        }
    }
}

TEST_F(PictureCodec, DamagedFilesAreDecodedOrRefusedAndNothingElse)
{
    constexpr unsigned kSeed = 77;
    std::mt19937 random(kSeed);
    const Image image = RandomImage(16, 16, SampleType::Byte, true, 5);
    for (const auto& [kind, bits] : {std::pair{FileKind::Png, 8},
                                     {FileKind::Jpeg, 8},
                                     {FileKind::Tiff, 16},
                                     {FileKind::Tiff, 32},
                                     {FileKind::Bmp, 8}})
    {
        const std::string whole = Encoded(image, {kind, bits, 95});
        for (int round = 0; round < 60; ++round)
        {
            std::string damaged = whole;
            for (int change = 0; change < 3; ++change)
            {
                damaged[random() % std::min<std::size_t>(damaged.size(), 300)] =
                    static_cast<char>(random());
            }
            ErrorOf([&] { Decoded(damaged, SampleType::Byte); });
        }
    }
}

TEST_F(PictureCodec, AFailedWriteReachesTheCaller)
{
    WrittenBytes written;
    written.room = 100;
    MemoryWriter writer(written);
    const Image image = RandomImage(40, 40, SampleType::Byte, true, 5);
    for (const auto& [kind, bits] :
         {std::pair{FileKind::Png, 8}, {FileKind::Tiff, 32}, {FileKind::Bmp, 8}})
    {
        EXPECT_TRUE(Says(ErrorOf([&] {
                             EncodePicture(image, {kind, bits, 95}, writer, "picture");
                         }),
                         "the disk is full"));
    }
}

} // namespace GlazelHost
