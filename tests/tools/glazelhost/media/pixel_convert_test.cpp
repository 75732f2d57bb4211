#include "tools/glazelhost/media/pixel_convert.h"

#include "tests/tools/glazelhost/media/sample_images.h"
#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <vector>

namespace GlazelHost
{

namespace
{

template <typename Value>
std::vector<std::byte> BytesOf(const std::vector<Value>& values)
{
    const auto* const first = reinterpret_cast<const std::byte*>(values.data());
    return {first, first + values.size() * sizeof(Value)};
}

template <typename Value, typename Source>
std::vector<Value> Unpacked(const PixelLayout& layout, const std::vector<Source>& source, int width)
{
    const SampleType type = sizeof(Value) == 1 ? SampleType::Byte : SampleType::Float;
    std::vector<Value> target(static_cast<std::size_t>(width) * 4);
    UnpackRow(layout, BytesOf(source).data(), width, type,
              reinterpret_cast<std::byte*>(target.data()));
    return target;
}

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

} // namespace

TEST(PixelConvert, EveryByteAndWordSurvivesTheWayThroughAFloat)
{
    for (unsigned code = 0; code <= 255; ++code)
    {
        EXPECT_EQ(ByteOf(FloatOf(static_cast<std::uint8_t>(code))), code);
    }
    for (unsigned code = 0; code <= 65535; ++code)
    {
        EXPECT_EQ(WordOf(FloatOf(static_cast<std::uint16_t>(code))), code);
    }
}

TEST(PixelConvert, FloatsAreTheNearestToTheQuotient)
{
    for (unsigned code = 0; code <= 65535; ++code)
    {
        EXPECT_EQ(FloatOf(static_cast<std::uint16_t>(code)), static_cast<float>(code / 65535.0));
    }
}

TEST(PixelConvert, FloatsRoundToTheNearestCodeAndHalvesUpwards)
{
    EXPECT_EQ(ByteOf(100.49F / 255.0F), 100);
    EXPECT_EQ(ByteOf(100.51F / 255.0F), 101);
    EXPECT_EQ(ByteOf(0.5F), 128); // 127.5 exactly
    EXPECT_EQ(WordOf(0.5F), 32768);
    EXPECT_EQ(ByteOf(std::nextafter(0.5F, 0.0F)), 127);
}

TEST(PixelConvert, ValuesOutsideTheCodesBecomeTheNearestEnd)
{
    for (const float low : {-1.0F, -0.0F, -kInfinity, kNan, -1e30F})
    {
        EXPECT_EQ(ByteOf(low), 0);
        EXPECT_EQ(WordOf(low), 0);
    }
    for (const float high : {1.0F, 1.5F, kInfinity, 1e30F})
    {
        EXPECT_EQ(ByteOf(high), 255);
        EXPECT_EQ(WordOf(high), 65535);
    }
}

TEST(PixelConvert, WordsBecomeTheNearestByteAndBytesComeBack)
{
    for (unsigned code = 0; code <= 65535; ++code)
    {
        EXPECT_EQ(ByteOf(static_cast<std::uint16_t>(code)),
                  static_cast<unsigned>(std::floor(code * 255.0 / 65535.0 + 0.5)));
    }
    for (unsigned code = 0; code <= 255; ++code)
    {
        EXPECT_EQ(ByteOf(WordOf(static_cast<std::uint8_t>(code))), code);
    }
}

TEST(PixelConvert, ChannelsAreTakenFromWhereTheLayoutSays)
{
    const PixelLayout rgb{FileSample::Bits8, 3, 0, 1, 2, -1, false};
    EXPECT_EQ(Unpacked<std::uint8_t>(rgb, std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6}, 2),
              (std::vector<std::uint8_t>{3, 2, 1, 255, 6, 5, 4, 255}));
    const PixelLayout unusedFourth{FileSample::Bits8, 4, 2, 1, 0, -1, false};
    EXPECT_EQ(Unpacked<std::uint8_t>(unusedFourth, std::vector<std::uint8_t>{1, 2, 3, 0}, 1),
              (std::vector<std::uint8_t>{1, 2, 3, 255}));
}

TEST(PixelConvert, GreyFillsAllColours)
{
    const PixelLayout grey{FileSample::Bits16, 1, 0, 0, 0, -1, false};
    EXPECT_EQ(Unpacked<float>(grey, std::vector<std::uint16_t>{0, 65535, 13107}, 3),
              (std::vector<float>{0, 0, 0, 1, 1, 1, 1, 1, 0.2F, 0.2F, 0.2F, 1}));
}

TEST(PixelConvert, PremultipliedColoursAreDividedByTheirAlpha)
{
    const PixelLayout rgba{FileSample::Float32, 4, 0, 1, 2, 3, true};
    EXPECT_EQ(Unpacked<float>(rgba, std::vector<float>{0.25F, 0.5F, 1.0F, 0.5F}, 1),
              (std::vector<float>{2.0F, 1.0F, 0.5F, 0.5F}));
    const PixelLayout bgra8{FileSample::Bits8, 4, 2, 1, 0, 3, true};
    EXPECT_EQ(Unpacked<std::uint8_t>(bgra8, std::vector<std::uint8_t>{50, 100, 0, 100}, 1),
              (std::vector<std::uint8_t>{128, 255, 0, 100}));
}

TEST(PixelConvert, PremultipliedColoursWithoutAlphaBecomeZero)
{
    const PixelLayout rgba{FileSample::Float32, 4, 0, 1, 2, 3, true};
    EXPECT_EQ(Unpacked<float>(rgba, std::vector<float>{0.25F, 0.5F, 1.0F, 0.0F}, 1),
              (std::vector<float>{0, 0, 0, 0}));
}

TEST(PixelConvert, FloatsOfAFileKeepWhatLiesOutsideZeroToOne)
{
    const PixelLayout rgb{FileSample::Float32, 3, 0, 1, 2, -1, false};
    EXPECT_EQ(Unpacked<float>(rgb, std::vector<float>{-2.0F, 7.5F, 1e20F}, 1),
              (std::vector<float>{1e20F, 7.5F, -2.0F, 1.0F}));
}

TEST(PixelConvert, PackingAndUnpackingAreInverse)
{
    const PixelLayout layouts[] = {
        {FileSample::Bits8, 4, 2, 1, 0, 3, false},   {FileSample::Bits8, 4, 0, 1, 2, 3, false},
        {FileSample::Bits16, 4, 0, 1, 2, 3, false},  {FileSample::Float32, 4, 0, 1, 2, 3, false},
        {FileSample::Bits8, 3, 2, 1, 0, -1, false},  {FileSample::Bits16, 3, 0, 1, 2, -1, false},
        {FileSample::Float32, 3, 0, 1, 2, -1, false}};
    for (const PixelLayout& layout : layouts)
    {
        for (const SampleType type : {SampleType::Byte, SampleType::Float})
        {
            const unsigned steps = layout.sample == FileSample::Bits8 ? 255 : 65535;
            const Image image = RandomImage(33, 1, type, layout.HasAlpha(), 5, steps);
            Image again;
            Reshape(again, 33, 1, type, layout.HasAlpha());
            std::vector<std::byte> file(33 * layout.PixelBytes());
            PackRow(layout, image.pixels.data(), 33, type, file.data());
            UnpackRow(layout, file.data(), 33, type, again.pixels.data());
            EXPECT_EQ(again.pixels, image.pixels)
                << layout.BitsPerChannel() << " bits, " << layout.channels << " channels";
        }
    }
}

TEST(PixelConvert, SizesFromOneToTheLargestSideAreTaken)
{
    EXPECT_NO_THROW(CheckSize("x", 1, 1));
    EXPECT_NO_THROW(CheckSize("x", kLargestSide, kLargestSide));
    for (const auto& [width, height] :
         {std::pair{0, 5}, {5, 0}, {-1, 5}, {kLargestSide + 1, 5}, {5, kLargestSide + 1}})
    {
        EXPECT_THROW(CheckSize("x", width, height), HostError) << width << " x " << height;
    }
}

TEST(PixelConvert, ReshapingToASmallerImageKeepsTheMemory)
{
    Image image;
    Reshape(image, 100, 100, SampleType::Float, true);
    const std::byte* const memory = image.pixels.data();
    Reshape(image, 10, 10, SampleType::Byte, false);
    EXPECT_EQ(image.pixels.data(), memory);
    EXPECT_EQ(image.pixels.size(), 400U);
}

TEST(PixelConvert, FloatsOf16BitsHaveTheirValues)
{
    EXPECT_EQ(FloatOfHalf(0x0000), 0.0F);
    EXPECT_EQ(FloatOfHalf(0x3C00), 1.0F);
    EXPECT_EQ(FloatOfHalf(0xC000), -2.0F);
    EXPECT_EQ(FloatOfHalf(0x3555), 1365.0F / 4096.0F);
    EXPECT_EQ(FloatOfHalf(0x7BFF), 65504.0F);
    EXPECT_EQ(FloatOfHalf(0x0001), std::ldexp(1.0F, -24)) << "the smallest";
    EXPECT_EQ(FloatOfHalf(0x0400), std::ldexp(1.0F, -14));
    EXPECT_EQ(FloatOfHalf(0xFC00), -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(FloatOfHalf(0x7C01)));
}

TEST(PixelConvert, FloatsOf16BitsBecomeFloatsAndBytes)
{
    const std::array<std::uint16_t, 3> pixel{0x3C00, 0x3800, 0x4400}; // 1, 0.5, 4
    const PixelLayout layout{FileSample::Float16, 3, 0, 1, 2, -1, false};
    EXPECT_EQ(layout.PixelBytes(), sizeof pixel);
    const auto* const source = reinterpret_cast<const std::byte*>(pixel.data());
    std::array<float, 4> floats{};
    UnpackRow(layout, source, 1, SampleType::Float, reinterpret_cast<std::byte*>(floats.data()));
    EXPECT_EQ(floats, (std::array{4.0F, 0.5F, 1.0F, 1.0F}));
    std::array<std::uint8_t, 4> bytes{};
    UnpackRow(layout, source, 1, SampleType::Byte, reinterpret_cast<std::byte*>(bytes.data()));
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 4>{255, 128, 255, 255}));
}

} // namespace GlazelHost
