#include "tools/glazelhost/media/raw_stream.h"

#include "tests/tools/glazelhost/media/memory_streams.h"
#include "tests/tools/glazelhost/media/sample_images.h"

#include <gtest/gtest.h>

#include <string>

namespace GlazelHost
{

namespace
{

SourceOptions Sized(int width, int height)
{
    SourceOptions options;
    options.width = width;
    options.height = height;
    return options;
}

std::string Content(const Image& image)
{
    return {reinterpret_cast<const char*>(image.pixels.data()), image.pixels.size()};
}

std::string ErrorOf(RawSource& source)
{
    try
    {
        Image image;
        source.Read(image, SampleType::Byte);
    }
    catch (const HostError& error)
    {
        return error.what();
    }
    return "no error";
}

} // namespace

TEST(RawStream, BytesAreTakenAsTheyAreInPiecesOfAnySize)
{
    const Image image = RandomImage(5, 3, SampleType::Byte, true, 1);
    for (const std::size_t piece : {1U, 7U, 1000U})
    {
        RawSource source(ReaderOf(Content(image) + Content(image), piece), "in.raw",
                         StreamFormat::Bgra8, Sized(5, 3));
        Image read;
        for (int frame = 0; frame < 2; ++frame)
        {
            ASSERT_TRUE(source.Read(read, SampleType::Byte));
            EXPECT_EQ(read.pixels, image.pixels);
            EXPECT_TRUE(read.hasAlpha);
        }
        EXPECT_FALSE(source.Read(read, SampleType::Byte));
    }
}

TEST(RawStream, AnOpaqueStreamGivesPicturesWithoutAlpha)
{
    const Image image = RandomImage(5, 3, SampleType::Byte, true, 1);
    SourceOptions options = Sized(5, 3);
    options.isOpaque = true;
    RawSource source(ReaderOf(Content(image)), "in.raw", StreamFormat::Bgra8, options);
    Image read;
    ASSERT_TRUE(source.Read(read, SampleType::Byte));
    EXPECT_FALSE(read.hasAlpha);
}

TEST(RawStream, FloatsAreTheBytesDividedBy255AndComeBackTheSame)
{
    const Image image = RandomImage(16, 16, SampleType::Byte, true, 2);
    RawSource source(ReaderOf(Content(image)), "in.raw", StreamFormat::Bgra8, Sized(16, 16));
    Image read;
    ASSERT_TRUE(source.Read(read, SampleType::Float));
    EXPECT_EQ(Distance(read, image), 0.0F);
    WrittenBytes written;
    RawSink sink(WriterTo(written), "out.raw", StreamFormat::Bgra8);
    sink.Write(read);
    sink.Finish();
    EXPECT_EQ(written.content, Content(image));
    EXPECT_TRUE(written.committed);
}

TEST(RawStream, WordsAndPlanesOfFloatsLieAsTheirFormatSays)
{
    const std::string words("\x01\x02\x03\x04\x05\x06\x07\x08", 8); // little-endian, from blue on
    RawSource source(ReaderOf(words), "in", StreamFormat::Bgra16, Sized(1, 1));
    EXPECT_EQ(source.Info().bitsPerChannel, 16);
    Image read;
    ASSERT_TRUE(source.Read(read, SampleType::Float));
    EXPECT_EQ(FloatAt(read, 0, 0, 0), 0x0201 / 65535.0F);
    EXPECT_EQ(FloatAt(read, 0, 0, 3), 0x0807 / 65535.0F);

    const float planes[] = {0.25F, 1.25F, -0.5F, 8.0F, 0.75F, 0.125F, 1.0F, 0.5F};
    const std::string floats(reinterpret_cast<const char*>(planes), sizeof planes);
    RawSource planar(ReaderOf(floats), "in", StreamFormat::GbraFloat, Sized(2, 1));
    EXPECT_EQ(planar.Info().bitsPerChannel, 32);
    ASSERT_TRUE(planar.Read(read, SampleType::Float));
    const float expected[2][4] = {{-0.5F, 0.25F, 0.75F, 1.0F}, {8.0F, 1.25F, 0.125F, 0.5F}};
    for (int x = 0; x < 2; ++x)
    {
        for (int channel = 0; channel < 4; ++channel)
        {
            EXPECT_EQ(FloatAt(read, x, 0, channel), expected[x][channel]);
        }
    }
}

TEST(RawStream, PlanesWithoutAlphaGiveOpaquePicturesOfEitherType)
{
    const std::string planes("\x01\x02\x33\x44\x05\xFF", 6); // green, blue, red of two pixels
    for (const SampleType type : {SampleType::Byte, SampleType::Float})
    {
        RawSource source(ReaderOf(planes), "in", StreamFormat::Gbr8, Sized(2, 1));
        Image read;
        ASSERT_TRUE(source.Read(read, type));
        EXPECT_FALSE(read.hasAlpha);
        if (type == SampleType::Byte)
        {
            EXPECT_EQ(Content(read), "\x33\x01\x05\xFF\x44\x02\xFF\xFF");
        }
        else
        {
            EXPECT_EQ(FloatAt(read, 1, 0, 0), 0x44 / 255.0F);
            EXPECT_EQ(FloatAt(read, 1, 0, 3), 1.0F);
        }
        WrittenBytes written;
        RawSink(WriterTo(written), "out", StreamFormat::Gbr8).Write(read);
        EXPECT_EQ(written.content, planes);
    }
}

TEST(RawStream, WhatIsReadIsWrittenTheSameInEveryFormatAndPrecision)
{
    for (const SampleType type : {SampleType::Byte, SampleType::Float})
    {
        const Image image = RandomImage(7, 5, type, true, 3);
        for (const auto format :
             {StreamFormat::Bgra8, StreamFormat::Bgra16, StreamFormat::GbraFloat})
        {
            if (type == SampleType::Float && format == StreamFormat::Bgra8)
            {
                continue; // of 8 bits there are only 256
            }
            WrittenBytes written;
            RawSink sink(WriterTo(written), "out", format);
            sink.Write(image);
            sink.Write(image);
            RawSource source(ReaderOf(written.content, 13), "in", format, Sized(7, 5));
            Image read;
            for (int frame = 0; frame < 2; ++frame)
            {
                ASSERT_TRUE(source.Read(read, type));
                EXPECT_EQ(read.pixels, image.pixels) << RowOf(format).name;
            }
            EXPECT_FALSE(source.Read(read, type));
        }
    }
}

TEST(RawStream, CodesOfYcbcrGoThroughFloatsUnchangedByTheWeightsThatAreGiven)
{
    std::string codes;
    for (int byte = 0; byte < 3 * 2 * 5 * 3; ++byte)
    {
        codes += static_cast<char>(byte * 89);
    }
    SourceOptions options = Sized(5, 3);
    options.lumaWeights = {0.299, 0.114};
    RawSource source(ReaderOf(codes), "in", StreamFormat::Ycbcr16, options);
    EXPECT_EQ(source.Info().bitsPerChannel, 16);
    Image read;
    ASSERT_TRUE(source.Read(read, SampleType::Float));
    EXPECT_FALSE(read.hasAlpha);
    const auto written = [&read](LumaWeights weights) {
        WrittenBytes bytes;
        RawSink(WriterTo(bytes), "out", StreamFormat::Ycbcr16, weights).Write(read);
        return bytes.content;
    };
    EXPECT_EQ(written(options.lumaWeights), codes);
    EXPECT_NE(written({}), codes);
}

TEST(RawStream, YcbcrBecomesBytesAndComesOutOfThem)
{
    const std::string white("\x00\xEB\x00\x80\x00\x80", 6);
    RawSource source(ReaderOf(white), "in", StreamFormat::Ycbcr16, Sized(1, 1));
    Image read;
    ASSERT_TRUE(source.Read(read, SampleType::Byte));
    EXPECT_EQ(Content(read), "\xFF\xFF\xFF\xFF");
    WrittenBytes written;
    RawSink(WriterTo(written), "out", StreamFormat::Ycbcr16).Write(read);
    EXPECT_EQ(written.content, white);
}

TEST(RawStream, FloatsOutsideTheRangeAreKeptInFloatsAndCutInIntegers)
{
    Image image = RandomImage(1, 1, SampleType::Float, true, 4);
    SetFloat(image, 0, 0, 0, -0.25F);
    SetFloat(image, 0, 0, 1, 1.5F);
    for (const auto format :
         {StreamFormat::Bgra16, StreamFormat::GbraFloat, StreamFormat::GbrFloat})
    {
        WrittenBytes written;
        RawSink(WriterTo(written), "out", format).Write(image);
        Image read;
        RawSource(ReaderOf(written.content), "in", format, Sized(1, 1))
            .Read(read, SampleType::Float);
        const bool isFloat = format != StreamFormat::Bgra16;
        EXPECT_EQ(FloatAt(read, 0, 0, 0), isFloat ? -0.25F : 0.0F);
        EXPECT_EQ(FloatAt(read, 0, 0, 1), isFloat ? 1.5F : 1.0F);
    }
}

TEST(RawStream, ItsNumbersAreLinearLightOnlyWhenTheUserSaysSo)
{
    SourceOptions options = Sized(1, 1);
    EXPECT_FALSE(
        RawSource(ReaderOf(""), "in", StreamFormat::GbraFloat, options).Info().light.isLinear);
    options.isLinearLight = true;
    EXPECT_TRUE(
        RawSource(ReaderOf(""), "in", StreamFormat::GbraFloat, options).Info().light.isLinear);
}

TEST(RawStream, TheLengthIsKnownWhenTheSizeIsAWholeNumberOfFrames)
{
    EXPECT_EQ(RawSource(ReaderOf(std::string(24, 'x')), "in", StreamFormat::Bgra8, Sized(3, 1))
                  .Info()
                  .frameCount,
              2);
    EXPECT_FALSE(RawSource(ReaderOf(std::string(25, 'x')), "in", StreamFormat::Bgra8, Sized(3, 1))
                     .Info()
                     .frameCount.has_value());
}

TEST(RawStream, SkippedFramesCount)
{
    RawSource source(ReaderOf("aaaabbbbcccc"), "in.raw", StreamFormat::Bgra8, Sized(1, 1));
    Image image;
    ASSERT_TRUE(source.Skip());
    ASSERT_TRUE(source.Skip());
    ASSERT_TRUE(source.Read(image, SampleType::Byte));
    EXPECT_EQ(Content(image), "cccc");
    EXPECT_FALSE(source.Skip());
}

TEST(RawStream, ACutFrameIsAnErrorThatSaysHowMuchIsMissing)
{
    RawSource source(ReaderOf("aaaabb"), "in.raw", StreamFormat::Bgra8, Sized(1, 1));
    EXPECT_EQ(ErrorOf(source), "no error");
    EXPECT_NE(ErrorOf(source).find("frame 2 of in.raw: the data ends in this frame: 2 of its 4"),
              std::string::npos);
    Image image;
    EXPECT_FALSE(source.Read(image, SampleType::Byte));
}

TEST(RawStream, WithoutASizeTheUseIsWrongAndBadSizesAreRefused)
{
    try
    {
        RawSource source(ReaderOf("aaaa"), "in.raw", StreamFormat::Bgra8, {});
        FAIL() << "accepted";
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::WrongUsage);
    }
    EXPECT_THROW(RawSource(ReaderOf("aaaa"), "in.raw", StreamFormat::Bgra8, Sized(1, 0)),
                 HostError);
    EXPECT_THROW(RawSource(ReaderOf("aaaa"), "in.raw", StreamFormat::Bgra8, Sized(16385, 1)),
                 HostError);
}

TEST(RawStream, AFrameOfAnotherSizeAndAnEmptyOutputAreErrors)
{
    WrittenBytes written;
    RawSink sink(WriterTo(written), "out.raw", StreamFormat::Bgra8);
    EXPECT_THROW(sink.Finish(), HostError);
    sink.Write(RandomImage(2, 2, SampleType::Byte, true, 1));
    EXPECT_THROW(sink.Write(RandomImage(2, 3, SampleType::Byte, true, 1)), HostError);
}

} // namespace GlazelHost
