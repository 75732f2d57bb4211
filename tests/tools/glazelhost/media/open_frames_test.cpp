#include "tools/glazelhost/media/open_frames.h"

#include "tests/tools/glazelhost/media/sample_images.h"
#include "tests/tools/glazelhost/media/scratch_folder.h"

#include <gtest/gtest.h>

#include <objbase.h>

#include <string>

namespace GlazelHost
{

namespace
{

class OpenFrames : public testing::Test
{
protected:
    void SetUp() override { ASSERT_GE(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), 0); }
    void TearDown() override { ::CoUninitialize(); }

    SourceOptions From(const std::string& name) const
    {
        SourceOptions options;
        options.path = m_folder / name;
        return options;
    }
    SinkOptions To(const std::string& name) const
    {
        SinkOptions options;
        options.path = m_folder / name;
        return options;
    }
    void Write(const std::string& name, const Image& image) const
    {
        const auto sink = OpenSink(To(name), {});
        sink->Write(image);
        sink->Finish();
    }
    Image Read(const std::string& name, SampleType type = SampleType::Byte) const
    {
        Image image;
        EXPECT_TRUE(OpenSource(From(name))->Read(image, type));
        return image;
    }

    const ScratchFolder m_folder;
};

Image Sample(unsigned seed = 1)
{
    return RandomImage(6, 4, SampleType::Byte, true, seed);
}

} // namespace

TEST_F(OpenFrames, EveryExtensionWritesItsKindAndReadsBack)
{
    const Image image = Sample();
    for (const std::string name : {"a.png", "a.TIF", "a.tiff", "a.bmp"})
    {
        Write(name, image);
        EXPECT_EQ(Read(name).pixels, image.pixels) << name;
    }
    Write("a.jpg", image);
    EXPECT_EQ(m_folder.Content("a.jpg").substr(0, 2), "\xff\xd8");
    Write("a.bgra", image);
    EXPECT_EQ(m_folder.Content("a.bgra").size(), image.pixels.size());
}

TEST_F(OpenFrames, ASinglePictureSaysItsSizeDepthAndLength)
{
    SinkOptions options = To("a.png");
    options.bits = 16;
    const auto sink = OpenSink(options, {});
    sink->Write(Sample());
    sink->Finish();
    const auto source = OpenSource(From("a.png"));
    EXPECT_EQ(source->Info().width, 6);
    EXPECT_EQ(source->Info().height, 4);
    EXPECT_EQ(source->Info().bitsPerChannel, 16);
    EXPECT_EQ(source->Info().frameCount, 1);
    EXPECT_EQ(source->Info().description, "PNG picture, 16 bits");
    Image image;
    EXPECT_TRUE(source->Read(image, SampleType::Byte));
    EXPECT_EQ(source->FrameName(), m_folder / "a.png");
    EXPECT_FALSE(source->Read(image, SampleType::Byte));
}

TEST_F(OpenFrames, ContentGoesBeforeAWrongExtension)
{
    Write("a.png", Sample());
    m_folder.Put("b.bmp", m_folder.Content("a.png"));
    EXPECT_EQ(Read("b.bmp").pixels, Sample().pixels);
    m_folder.Put("c", m_folder.Content("a.png"));
    EXPECT_EQ(Read("c").pixels, Sample().pixels);
}

TEST_F(OpenFrames, RawPixelsMayBeginLikeAnotherKind)
{
    m_folder.Put("a.raw", "BM\x01\xff");
    SourceOptions options = From("a.raw");
    options.width = 1;
    options.height = 1;
    Image image;
    EXPECT_TRUE(OpenSource(options)->Read(image, SampleType::Byte));
    EXPECT_EQ(ByteAt(image, 0, 0, 0), 'B');
}

TEST_F(OpenFrames, InputsThatAreNoneAreErrorsThatNameThem)
{
    m_folder.Put("empty.png", "");
    m_folder.Put("clip.y4m", "YUV4MPEG2 W2 H2 F25:1 C444\nFRAME\n012345678901");
    m_folder.Put("text.png", "hello world, this is text");
    m_folder.Put("text.xyz", "hello world, this is text");
    const std::pair<const char*, const char*> cases[] = {
        {"none.png", "it cannot be opened"},
        {"empty.png", "it is empty"},
        {"text.png", "it does not begin like a PNG file"},
        {"text.xyz", "this kind of file is not known"},
        {"none_%04d.png", "there is no picture of this sequence"},
        {"clip.y4m", "this kind of file is not known; use .png, .jpg, .tif, .bmp or .bgra, or "
                     "\"glazel render\", which takes every video"},
        {"no\\folder\\a.bgra", "it cannot be opened"},
    };
    for (const auto& [name, part] : cases)
    {
        const std::string error = ErrorOf([&] { OpenSource(From(name)); });
        EXPECT_TRUE(Says(error, (m_folder / name) + ": " + part)) << error;
    }
}

TEST_F(OpenFrames, StandardStreamsNeedAFormat)
{
    SourceOptions source;
    source.path = "-";
    EXPECT_TRUE(Says(ErrorOf([&] { OpenSource(source); }), "standard input: its format"));
    SinkOptions sink;
    sink.path = "-";
    EXPECT_TRUE(Says(ErrorOf([&] { OpenSink(sink, {}); }), "standard output: its format"));
}

TEST_F(OpenFrames, OutputsAreCheckedBeforeAnyWork)
{
    m_folder.Put("there.png", "old");
    m_folder.Put("there.bgra", "old");
    m_folder.Put("shot_0003.png", "old");
    StreamInfo two;
    two.frameCount = 2;
    const auto refusal = [&](const std::string& name, const StreamInfo& info = {}) {
        return ErrorOf([&] { OpenSink(To(name), info); });
    };
    EXPECT_TRUE(Says(refusal("there.png"), "it exists already"));
    EXPECT_TRUE(Says(refusal("there.bgra"), "it exists already"));
    EXPECT_TRUE(Says(refusal("shot_%04d.png"), "shot_0003.png: it exists already"));
    EXPECT_EQ(refusal("shot_%04d.png", two), "no error"); // numbers 1 and 2 are free
    EXPECT_TRUE(Says(refusal("no\\where\\a.png"), "does not exist"));
    EXPECT_TRUE(Says(refusal("no\\where\\a_%d.png"), "does not exist"));
    EXPECT_TRUE(Says(refusal("a.gif"), "the extension does not say what to write"));
    EXPECT_TRUE(Says(refusal("a.y4m"), "\"glazel render\""));
    EXPECT_TRUE(Says(refusal("a_%d.bgra"), "a stream is one file"));
    EXPECT_EQ(m_folder.Names().size(), 3U);
}

TEST_F(OpenFrames, BitsThatAKindCannotHoldAreRefused)
{
    const std::pair<const char*, int> refused[] = {
        {"a.png", 32}, {"a.jpg", 16}, {"a.bmp", 16}, {"a.tif", 12}, {"a.bgra", 32}};
    for (const auto& [name, bits] : refused)
    {
        SinkOptions options = To(name);
        options.bits = bits;
        EXPECT_TRUE(Says(ErrorOf([&] { OpenSink(options, {}); }), "does not hold")) << name;
    }
    SinkOptions options = To("a.jpg");
    options.quality = 101;
    EXPECT_TRUE(Says(ErrorOf([&] { OpenSink(options, {}); }), "quality"));
}

TEST_F(OpenFrames, DepthFollowsTheImageTheKindAndTheSource)
{
    const Image bytes = Sample();
    const Image floats = RandomImage(6, 4, SampleType::Float, false, 1);
    StreamInfo from16;
    from16.bitsPerChannel = 16;
    struct Case
    {
        const char* name;
        const Image& image;
        StreamInfo info;
        int bits;
    };
    const Case cases[] = {
        {"a.png", bytes, {}, 8},   {"b.png", floats, {}, 16},     {"c.tif", bytes, {}, 8},
        {"d.tif", floats, {}, 32}, {"e.tif", floats, from16, 16}, {"f.jpg", floats, {}, 8},
        {"g.bmp", floats, {}, 8},
    };
    for (const Case& one : cases)
    {
        const auto sink = OpenSink(To(one.name), one.info);
        sink->Write(one.image);
        sink->Finish();
        EXPECT_EQ(OpenSource(From(one.name))->Info().bitsPerChannel, one.bits) << one.name;
    }
}

TEST_F(OpenFrames, ASecondFrameDoesNotFitIntoOnePicture)
{
    {
        const auto sink = OpenSink(To("a.png"), {});
        sink->Write(Sample());
        EXPECT_TRUE(Says(ErrorOf([&] { sink->Write(Sample()); }), "one picture holds one frame"));
    }
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(OpenFrames, APictureHasItsNameOnlyWhenItIsFinished)
{
    const auto sink = OpenSink(To("a.png"), {});
    sink->Write(Sample());
    EXPECT_EQ(m_folder.Content("a.png"), "(not there)");
    sink->Finish();
    EXPECT_NE(m_folder.Content("a.png"), "(not there)");
    EXPECT_EQ(m_folder.Names().size(), 1U);
}

TEST_F(OpenFrames, NothingWrittenIsAnErrorForEveryKind)
{
    for (const std::string name : {"a.png", "a_%d.png", "a.bgra"})
    {
        const auto sink = OpenSink(To(name), {});
        EXPECT_TRUE(Says(ErrorOf([&] { sink->Finish(); }), "there was no frame to write")) << name;
    }
    EXPECT_TRUE(m_folder.Names().empty());
}

TEST_F(OpenFrames, ASequenceBeginsAtItsFirstNumberAndReportsEachGap)
{
    Write("s_0007.png", Sample(7));
    Write("s_0008.png", Sample(8));
    Write("s_0010.png", Sample(10));
    Write("s_123.png", Sample(123)); // not of this sequence
    const auto source = OpenSource(From("s_%04d.png"));
    EXPECT_EQ(source->Info().frameCount, 4);
    EXPECT_EQ(source->Info().firstNumber, 7);
    EXPECT_EQ(source->Info().width, 0);
    EXPECT_EQ(source->Info().description, "PNG pictures 7 to 10, 8 bits");
    Image image;
    ASSERT_TRUE(source->Read(image, SampleType::Byte));
    EXPECT_EQ(image.pixels, Sample(7).pixels);
    ASSERT_TRUE(source->Skip());
    const std::string error = ErrorOf([&] { source->Read(image, SampleType::Byte); });
    EXPECT_TRUE(
        Says(error, (m_folder / "s_0009.png") + ": this picture of the sequence is missing"));
    EXPECT_EQ(source->FrameName(), m_folder / "s_0009.png");
    ASSERT_TRUE(source->Read(image, SampleType::Byte));
    EXPECT_EQ(image.pixels, Sample(10).pixels);
    EXPECT_FALSE(source->Read(image, SampleType::Byte));
    EXPECT_FALSE(source->Skip());
}

TEST_F(OpenFrames, ADamagedFirstPictureIsAnErrorOfItsFrameOnly)
{
    m_folder.Put("s_1.png", "\x89PNG\r\n\x1a\nrubbish");
    Write("s_2.png", Sample(2));
    const auto source = OpenSource(From("s_%d.png"));
    Image image;
    EXPECT_TRUE(Says(ErrorOf([&] { source->Read(image, SampleType::Byte); }), "s_1.png: "));
    ASSERT_TRUE(source->Read(image, SampleType::Byte));
    EXPECT_EQ(image.pixels, Sample(2).pixels);
}

TEST_F(OpenFrames, TheFirstNumberCanBeChosen)
{
    Write("s_1.png", Sample(1));
    Write("s_2.png", Sample(2));
    SourceOptions options = From("s_%d.png");
    options.firstNumber = 2;
    Image image;
    ASSERT_TRUE(OpenSource(options)->Read(image, SampleType::Byte));
    EXPECT_EQ(image.pixels, Sample(2).pixels);
    options.firstNumber = 3;
    EXPECT_TRUE(Says(ErrorOf([&] { OpenSource(options); }), "no picture of this sequence"));
    options.firstNumber = -1;
    EXPECT_TRUE(Says(ErrorOf([&] { OpenSource(options); }), "below 0"));
}

TEST_F(OpenFrames, AWrittenSequenceKeepsTheNumbersOfItsSource)
{
    StreamInfo info;
    info.firstNumber = 1001;
    const auto sink = OpenSink(To("o_%05d.png"), info);
    sink->Write(Sample(1));
    EXPECT_NE(m_folder.Content("o_01001.png"), "(not there)"); // whole, so it has its name
    sink->Pass();
    sink->Write(Sample(3));
    sink->Finish();
    EXPECT_EQ(Read("o_01003.png").pixels, Sample(3).pixels);
    EXPECT_EQ(m_folder.Names().size(), 2U);
}

TEST_F(OpenFrames, AnOutputIsNoneOfTheFilesOfItsSource)
{
    for (const int number : {1, 1000, 1001})
    {
        Write("s_" + std::to_string(number) + ".png", Sample(1));
    }
    Write("clip.bgra", Sample(1));
    ASSERT_TRUE(::CreateHardLinkA((m_folder / "link.png").c_str(), (m_folder / "s_1.png").c_str(),
                                  nullptr));
    const auto refusal = [&](const std::string& from, const std::string& to, bool overwrite) {
        SourceOptions source = From(from);
        source.width = 6;
        source.height = 4;
        SinkOptions sink = To(to);
        sink.overwrite = overwrite;
        return ErrorOf([&] { OpenSink(sink, OpenSource(source)->Info()); });
    };
    const std::pair<const char*, const char*> cases[] = {
        {"s_%d.png", "s_%d.png"},   {"s_%d.png", ".\\S_#.PNG"}, {"s_%d.png", "s_%04d.png"},
        {"s_1.png", "s_1.png"},     {"s_1.png", "link.png"},    {"s_%d.png", "link.png"},
        {"clip.bgra", "CLIP.bgra"},
    };
    for (const auto& [from, to] : cases)
    {
        for (const bool overwrite : {false, true})
        {
            const std::string error = refusal(from, to, overwrite);
            EXPECT_TRUE(Says(error, ": it is the input too; ")) << from << ' ' << to << error;
        }
    }
    EXPECT_TRUE(Says(refusal("s_%d.png", "s_%04d.png", true), "s_1000.png: "));
    EXPECT_EQ(refusal("s_%d.png", "s_%05d.png", true), "no error");
    EXPECT_EQ(refusal("s_1.png", "s_1000.png", true), "no error");
}

TEST_F(OpenFrames, ANameWithANumberIsThatOfTheFileThatHasIt)
{
    Write("plain.png", Sample(2));
    for (const std::string name : {"x%d.png", "x%5d.png", "x##.png"})
    {
        m_folder.Put(name, m_folder.Content("plain.png"));
        EXPECT_TRUE(OpenSource(From(name))->Info().isPicture) << name;
        EXPECT_EQ(Read(name).pixels, Sample(2).pixels) << name;
    }
    Write("y1.png", Sample(1));
    EXPECT_EQ(OpenSource(From("y%d.png"))->Info().firstNumber, 1);
    EXPECT_EQ(OpenSource(From("y#.png"))->Info().firstNumber, 1);
}

TEST_F(OpenFrames, ASinglePictureIsWrittenUnderTheNameAsItIs)
{
    Write("plain.png", Sample(1));
    for (const std::string name : {"q%d.png", "q%d_%d.png", "q##.bmp", "q%d.bgra"})
    {
        const auto sink = OpenSink(To(name), OpenSource(From("plain.png"))->Info());
        sink->Write(Sample(1));
        sink->Finish();
        EXPECT_NE(m_folder.Content(name), "(not there)") << name;
    }
    EXPECT_EQ(m_folder.Names().size(), 5U);
}

TEST_F(OpenFrames, PicturesOfDifferentSizesDoNotFitIntoOneStream)
{
    const auto sink = OpenSink(To("a.bgra"), {});
    sink->Write(Sample());
    EXPECT_TRUE(Says(ErrorOf([&] { sink->Write(RandomImage(5, 5, SampleType::Byte, false, 1)); }),
                     "does not fit into a stream"));
}

TEST_F(OpenFrames, PathsWithForwardSlashesWork)
{
    Write("a.png", Sample());
    SourceOptions options = From("a.png");
    for (char& c : options.path)
    {
        c = c == '\\' ? '/' : c;
    }
    Image image;
    EXPECT_TRUE(OpenSource(options)->Read(image, SampleType::Byte));
}

} // namespace GlazelHost
