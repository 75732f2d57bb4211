#include "tools/glazelhost/io/raw_stream.h"

#include "tests/tools/glazelhost/io/memory_streams.h"
#include "tests/tools/glazelhost/io/sample_images.h"

#include <gtest/gtest.h>

#include <string>

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
        RawSource source(ReaderOf(Content(image) + Content(image), piece), "in.raw", Sized(5, 3));
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

TEST(RawStream, FloatsAreTheBytesDividedBy255AndComeBackTheSame)
{
    const Image image = RandomImage(16, 16, SampleType::Byte, true, 2);
    RawSource source(ReaderOf(Content(image)), "in.raw", Sized(16, 16));
    Image read;
    ASSERT_TRUE(source.Read(read, SampleType::Float));
    EXPECT_EQ(Distance(read, image), 0.0F);
    WrittenBytes written;
    RawSink sink(WriterTo(written), "out.raw");
    sink.Write(read);
    sink.Finish();
    EXPECT_EQ(written.content, Content(image));
    EXPECT_TRUE(written.committed);
}

TEST(RawStream, TheLengthIsKnownWhenTheSizeIsAWholeNumberOfFrames)
{
    EXPECT_EQ(RawSource(ReaderOf(std::string(24, 'x')), "in", Sized(3, 1)).Info().frameCount, 2);
    EXPECT_FALSE(
        RawSource(ReaderOf(std::string(25, 'x')), "in", Sized(3, 1)).Info().frameCount.has_value());
}

TEST(RawStream, SkippedFramesCount)
{
    RawSource source(ReaderOf("aaaabbbbcccc"), "in.raw", Sized(1, 1));
    Image image;
    ASSERT_TRUE(source.Skip());
    ASSERT_TRUE(source.Skip());
    ASSERT_TRUE(source.Read(image, SampleType::Byte));
    EXPECT_EQ(Content(image), "cccc");
    EXPECT_FALSE(source.Skip());
}

TEST(RawStream, ACutFrameIsAnErrorThatSaysHowMuchIsMissing)
{
    RawSource source(ReaderOf("aaaabb"), "in.raw", Sized(1, 1));
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
        RawSource source(ReaderOf("aaaa"), "in.raw", {});
        FAIL() << "accepted";
    }
    catch (const HostError& error)
    {
        EXPECT_EQ(error.Code(), ExitCode::WrongUsage);
    }
    EXPECT_THROW(RawSource(ReaderOf("aaaa"), "in.raw", Sized(1, 0)), HostError);
    EXPECT_THROW(RawSource(ReaderOf("aaaa"), "in.raw", Sized(16385, 1)), HostError);
}

TEST(RawStream, AFrameOfAnotherSizeAndAnEmptyOutputAreErrors)
{
    WrittenBytes written;
    RawSink sink(WriterTo(written), "out.raw");
    EXPECT_THROW(sink.Finish(), HostError);
    sink.Write(RandomImage(2, 2, SampleType::Byte, true, 1));
    EXPECT_THROW(sink.Write(RandomImage(2, 3, SampleType::Byte, true, 1)), HostError);
}
