#include "tools/glazelhost/io/y4m_stream.h"

#include "tests/tools/glazelhost/io/memory_streams.h"
#include "tests/tools/glazelhost/io/sample_images.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

constexpr std::size_t kFrameBytes = 4 * 2 + 2 * 2 * 1; // of 4 x 2 at 4:2:0

// `count` frames of 4 x 2 whose luma codes all are 100, 101, ...
std::string Clip(int count, const std::string& parameters = " C420jpeg")
{
    std::string clip = "YUV4MPEG2 W4 H2 F24:1 Ip A1:1" + parameters + '\n';
    for (int frame = 0; frame < count; ++frame)
    {
        clip += "FRAME\n" + std::string(8, static_cast<char>(100 + frame)) +
                std::string(4, static_cast<char>(128));
    }
    return clip;
}

Y4mSource SourceOf(std::string clip, const SourceOptions& options = {}, std::size_t piece = 1000000)
{
    return {ReaderOf(std::move(clip), piece), "clip.y4m", options};
}

std::string ErrorOf(const std::function<void()>& operation)
{
    try
    {
        operation();
    }
    catch (const HostError& error)
    {
        return error.what();
    }
    return "no error";
}

bool Says(const std::string& message, const std::string& part)
{
    return message.find(part) != std::string::npos;
}

std::string Rewritten(const std::string& clip, const SinkOptions& options = {},
                      SampleType type = SampleType::Float)
{
    WrittenBytes written;
    Y4mSource source = SourceOf(clip);
    Y4mSink sink(WriterTo(written), "out.y4m", options, source.Info());
    Image image;
    while (source.Read(image, type))
    {
        sink.Write(image);
    }
    sink.Finish();
    EXPECT_TRUE(written.committed);
    return written.content;
}

} // namespace

TEST(Y4mStream, FramesComeInOrderWhateverThePiecesOfTheStream)
{
    for (const std::size_t piece : {1U, 5U, 13U, 1000U})
    {
        Y4mSource source = SourceOf(Clip(3, " XCOLORRANGE=FULL"), {}, piece);
        Image image;
        for (int frame = 0; frame < 3; ++frame)
        {
            ASSERT_TRUE(source.Read(image, SampleType::Byte));
            EXPECT_EQ(ByteAt(image, 3, 1, 1), 100 + frame);
            EXPECT_EQ(source.FrameName(), "frame " + std::to_string(frame + 1) + " of clip.y4m");
        }
        EXPECT_FALSE(source.Read(image, SampleType::Byte));
        EXPECT_FALSE(source.Read(image, SampleType::Byte));
    }
}

TEST(Y4mStream, SkippedFramesCountAndAreNotDecoded)
{
    Y4mSource source = SourceOf(Clip(3, " XCOLORRANGE=FULL"));
    Image image;
    ASSERT_TRUE(source.Skip());
    ASSERT_TRUE(source.Skip());
    ASSERT_TRUE(source.Read(image, SampleType::Byte));
    EXPECT_EQ(ByteAt(image, 0, 0, 0), 102);
    EXPECT_EQ(source.FrameName(), "frame 3 of clip.y4m");
    EXPECT_FALSE(source.Skip());
}

TEST(Y4mStream, WhatWasUsedIsSaid)
{
    const Y4mSource byHeader = SourceOf(Clip(2, " C420mpeg2 XCOLORRANGE=FULL"));
    EXPECT_EQ(byHeader.Info().description, "Y4M 4:2:0 (MPEG-2 siting) full range, Rec. 601");
    EXPECT_EQ(byHeader.Info().frameCount, 2);
    EXPECT_EQ(byHeader.Info().framesPerSecond, 24.0);
    EXPECT_FALSE(byHeader.Info().firstNumber.has_value());

    SourceOptions options;
    options.range = YCbCrRange::Limited;
    options.matrix = YCbCrMatrix::Bt2020;
    options.framesPerSecond = 30.0;
    options.pixelAspect = 2.0;
    const Y4mSource byUser = SourceOf(Clip(2, " XCOLORRANGE=FULL"), options);
    EXPECT_EQ(byUser.Info().description, "Y4M 4:2:0 limited range, Rec. 2020");
    EXPECT_EQ(byUser.Info().framesPerSecond, 30.0);
    EXPECT_EQ(byUser.Info().pixelAspect, 2.0);

    EXPECT_EQ(SourceOf("YUV4MPEG2 W1280 H4\n").Info().description,
              "Y4M 4:2:0 limited range, Rec. 709");
}

TEST(Y4mStream, ALengthThatTheSizeDoesNotGiveExactlyIsNotKnown)
{
    EXPECT_FALSE(SourceOf(Clip(2) + "x").Info().frameCount.has_value());
    const Y4mSource pipe(std::make_unique<MemoryReader>(Clip(2), std::size_t{10}, false), "pipe",
                         {});
    EXPECT_FALSE(pipe.Info().frameCount.has_value());
    EXPECT_EQ(SourceOf(Clip(0)).Info().frameCount, 0);
}

TEST(Y4mStream, FrameLinesMayHaveParameters)
{
    std::string clip = Clip(2, " XCOLORRANGE=FULL");
    clip.replace(clip.rfind("FRAME"), 5, "FRAME Ip Xone");
    Y4mSource source = SourceOf(clip);
    Image image;
    ASSERT_TRUE(source.Read(image, SampleType::Byte));
    ASSERT_TRUE(source.Read(image, SampleType::Byte));
    EXPECT_EQ(ByteAt(image, 0, 0, 0), 101);
    EXPECT_FALSE(source.Read(image, SampleType::Byte));
}

TEST(Y4mStream, ACutStreamDeliversTheFramesBeforeAndThenSaysWhereItEnded)
{
    const std::string clip = Clip(3);
    for (std::size_t missing = 1; missing < kFrameBytes + 6; ++missing)
    {
        for (const bool skip : {false, true})
        {
            Y4mSource source = SourceOf(clip.substr(0, clip.size() - missing));
            Image image;
            ASSERT_TRUE(source.Read(image, SampleType::Byte));
            ASSERT_TRUE(source.Read(image, SampleType::Byte));
            const std::string error = ErrorOf(
                [&] { std::ignore = skip ? source.Skip() : source.Read(image, SampleType::Byte); });
            const std::size_t missingOfFrame = std::min(missing, kFrameBytes);
            EXPECT_TRUE(Says(error, "frame 3 of clip.y4m: the data ends in this frame: " +
                                        std::to_string(missingOfFrame) + " of its 12 bytes"))
                << error;
            EXPECT_FALSE(source.Read(image, SampleType::Byte));
        }
    }
}

TEST(Y4mStream, AStreamThatEndsInItsHeaderOrIsEmptyIsAnError)
{
    EXPECT_TRUE(Says(ErrorOf([] { SourceOf(""); }), "clip.y4m: it is empty"));
    EXPECT_TRUE(Says(ErrorOf([] { SourceOf("YUV4MPEG2 W4 H2"); }), "header has no end"));
    EXPECT_TRUE(Says(ErrorOf([] { SourceOf("YUV4MPEG2 W4 H2 " + std::string(9000, 'X')); }),
                     "header has no end"));
    EXPECT_TRUE(Says(ErrorOf([] { SourceOf("\x89PNG"); }), "not a Y4M stream"));
}

TEST(Y4mStream, DataBetweenFramesIsAnErrorAndTheEnd)
{
    for (const std::string rubbish : {"GARBAGE\n", "x", "FRAMES\n"})
    {
        Y4mSource source = SourceOf(Clip(1) + rubbish + Clip(1));
        Image image;
        ASSERT_TRUE(source.Read(image, SampleType::Byte));
        EXPECT_TRUE(Says(ErrorOf([&] { source.Read(image, SampleType::Byte); }),
                         "frame 2 of clip.y4m: there is no frame where one should begin"));
        EXPECT_FALSE(source.Read(image, SampleType::Byte));
    }
}

TEST(Y4mStream, ARewrittenClipHasTheSameHeaderAndTheSameBytes)
{
    for (const std::string sampling : {"420jpeg", "420mpeg2", "420paldv"})
    {
        const std::string clip = Clip(3, " C" + sampling + " XCOLORRANGE=FULL");
        EXPECT_EQ(Rewritten(clip), clip);
    }
    std::string clip = Clip(2, " C420jpeg XCOLORRANGE=LIMITED");
    clip.replace(clip.find("F24:1"), 5, "F30000:1001");
    clip.replace(clip.find("A1:1"), 4, "A16:15");
    EXPECT_EQ(Rewritten(clip), clip);
}

TEST(Y4mStream, TheUsersChoicesReplaceThoseOfTheSource)
{
    SinkOptions options;
    options.sampling = ChromaSampling::Full444;
    options.range = YCbCrRange::Full;
    const std::string clip = Rewritten(Clip(1), options);
    EXPECT_TRUE(Says(clip, "C444 XCOLORRANGE=FULL\n"));
    EXPECT_EQ(clip.size(), clip.find("FRAME\n") + 6 + 24);
}

TEST(Y4mStream, WithoutAY4mSourceTheClipIs420LimitedWith25FramesAndSquarePixels)
{
    WrittenBytes written;
    Y4mSink sink(WriterTo(written), "out.y4m", {}, {});
    sink.Write(RandomImage(3, 3, SampleType::Byte, true, 1));
    sink.Finish();
    EXPECT_TRUE(Says(written.content,
                     "YUV4MPEG2 W3 H3 F25:1 Ip A1:1 C420jpeg XCOLORRANGE=LIMITED\nFRAME\n"));
}

TEST(Y4mStream, MonochromeBecomesColourBecauseALookMayTintIt)
{
    std::string clip = "YUV4MPEG2 W4 H2 F24:1 Cmono\nFRAME\n" + std::string(8, 'd');
    EXPECT_TRUE(Says(Rewritten(clip), "C420jpeg"));
    SinkOptions options;
    options.sampling = ChromaSampling::Mono;
    EXPECT_TRUE(Says(Rewritten(clip, options), "Cmono"));
}

TEST(Y4mStream, AFrameOfAnotherSizeIsRefused)
{
    WrittenBytes written;
    Y4mSink sink(WriterTo(written), "out.y4m", {}, {});
    sink.Write(RandomImage(4, 2, SampleType::Byte, false, 1));
    const std::string error =
        ErrorOf([&] { sink.Write(RandomImage(2, 4, SampleType::Byte, false, 1)); });
    EXPECT_TRUE(Says(error, "out.y4m: a frame of 2 x 4 does not fit into a stream of 4 x 2"));
}

TEST(Y4mStream, AnOutputWithoutFramesIsAnErrorAndNotCommitted)
{
    WrittenBytes written;
    Y4mSink sink(WriterTo(written), "out.y4m", {}, {});
    EXPECT_TRUE(Says(ErrorOf([&] { sink.Finish(); }), "no frame to write"));
    EXPECT_FALSE(written.committed);
}

TEST(Y4mStream, AFailedWriteReachesTheCaller)
{
    WrittenBytes written;
    written.room = 60;
    Y4mSink sink(WriterTo(written), "out.y4m", {}, {});
    EXPECT_TRUE(Says(ErrorOf([&] { sink.Write(RandomImage(64, 64, SampleType::Byte, false, 1)); }),
                     "the disk is full"));
}
