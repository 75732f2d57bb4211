#include "tools/glazelhost/media/facts_writer.h"

#include "tests/tools/glazelhost/media/memory_streams.h"
#include "tests/tools/glazelhost/media/picture_sample.h"
#include "tests/tools/glazelhost/media/sample_images.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/jpeg_writer.h"
#include "tools/glazelhost/media/plain_pictures.h"

#include <gtest/gtest.h>

#include <memory>

namespace GlazelHost
{

namespace
{

std::vector<std::byte> Profile(std::size_t bytes)
{
    std::vector<std::byte> profile(bytes);
    for (std::size_t i = 0; i < bytes; ++i)
    {
        profile[i] = static_cast<std::byte>(i * i / 7);
    }
    const auto space = std::as_bytes(std::span("RGB ")).first(4);
    std::ranges::copy(space, profile.begin() + 16);
    return profile;
}

PictureFacts Everything()
{
    PictureFacts facts;
    facts.profile = Profile(200000); // several segments of a JPEG
    facts.resolution = Resolution{72.5, 150.0, LengthUnit::Inch};
    facts.gamma = 2.0;
    facts.chromaticities = {0.3127, 0.329, 0.64, 0.33, 0.21, 0.71, 0.15, 0.06};
    return facts;
}

Image Picture()
{
    return RandomImage(7, 5, SampleType::Byte, true, 3);
}

std::vector<std::byte> FloatTiff(const Image& image)
{
    WrittenBytes written;
    MemoryWriter writer(written);
    WriteFloatTiff(image, writer, "picture");
    return BytesOfText(written.content);
}

std::vector<std::byte> AlphaBmp(const Image& image)
{
    WrittenBytes written;
    MemoryWriter writer(written);
    WriteAlphaBmp(image, writer, "picture");
    return BytesOfText(written.content);
}

std::vector<std::byte> Plain(FileKind kind)
{
    switch (kind)
    {
    case FileKind::Png:
        return BytesOfText(SamplePng({}));
    case FileKind::Jpeg:
        return JpegOf(Picture(), 95, "picture");
    case FileKind::Tiff:
        return FloatTiff(Picture());
    default:
        return AlphaBmp(Picture());
    }
}

void ExpectSame(const PictureFacts& read, const PictureFacts& written)
{
    EXPECT_EQ(read.profile, written.profile);
    EXPECT_EQ(read.srgbIntent, written.srgbIntent);
    EXPECT_EQ(read.codePoints, written.codePoints);
    EXPECT_NEAR(read.gamma.value_or(0.0), written.gamma.value_or(0.0), 1e-4);
    ASSERT_EQ(read.chromaticities.has_value(), written.chromaticities.has_value());
    for (std::size_t i = 0; read.chromaticities && i < read.chromaticities->size(); ++i)
    {
        EXPECT_NEAR((*read.chromaticities)[i], (*written.chromaticities)[i], 1e-5);
    }
    ASSERT_EQ(read.resolution.has_value(), written.resolution.has_value());
    if (read.resolution)
    {
        EXPECT_NEAR(read.resolution->across, written.resolution->across, 0.02);
        EXPECT_NEAR(read.resolution->down, written.resolution->down, 0.02);
        EXPECT_EQ(read.resolution->unit, written.resolution->unit);
    }
}

constexpr FileKind kRichKinds[] = {FileKind::Png, FileKind::Jpeg, FileKind::Tiff};

} // namespace

TEST(FactsInAFile, AreReadAsTheyWereWritten)
{
    PictureFacts srgb;
    srgb.srgbIntent = 0;
    PictureFacts metric;
    metric.resolution = Resolution{118.0, 118.0, LengthUnit::Centimetre};
    PictureFacts shape;
    shape.resolution = Resolution{4.0, 3.0, LengthUnit::None};
    for (const FileKind kind : kRichKinds)
    {
        for (const PictureFacts& facts : {Everything(), srgb, metric, shape})
        {
            SCOPED_TRACE(DescribeKind(kind));
            ExpectSame(FactsOf(WithFacts(kind, Plain(kind), facts, "picture")), facts);
            EXPECT_TRUE(LeftOut(kind, facts).empty());
        }
    }
}

TEST(FactsInAFile, ReplaceWhatItSaidBefore)
{
    PictureFacts second = Everything();
    second.profile = Profile(500);
    second.gamma = 1.8;
    second.resolution = Resolution{300.0, 300.0, LengthUnit::Inch};
    for (const FileKind kind : {FileKind::Png, FileKind::Tiff})
    {
        SCOPED_TRACE(DescribeKind(kind));
        auto file = WithFacts(kind, Plain(kind), Everything(), "picture");
        ExpectSame(FactsOf(WithFacts(kind, std::move(file), second, "picture")), second);
    }
}

TEST(FactsInAFile, ComeWithAnImageIntoATiffOfFloats)
{
    Image image = Picture();
    image.facts = std::make_shared<PictureFacts>(Everything());
    const auto file = FloatTiff(image);
    ExpectSame(FactsOf(file), Everything());
    // The pixels stand behind whatever the header holds.
    const auto plain = FloatTiff(Picture());
    const std::size_t pixels = 7UL * 5 * 16;
    EXPECT_TRUE(std::ranges::equal(std::span(file).last(pixels), std::span(plain).last(pixels)));
}

TEST(FactsInAFile, OfAPngNeverSayTwiceWhatTheColoursAre)
{
    PictureFacts facts = Everything();
    facts.srgbIntent = 1;
    EXPECT_EQ(FactsOf(WithFacts(FileKind::Png, Plain(FileKind::Png), facts, "picture")).srgbIntent,
              std::nullopt);
}

TEST(FactsInAFile, AreTheResolutionAloneInABmp)
{
    PictureFacts facts;
    facts.resolution = Resolution{300.0, 72.0, LengthUnit::Inch};
    const auto file = WithFacts(FileKind::Bmp, Plain(FileKind::Bmp), facts, "picture");
    EXPECT_EQ(FactsOf(file).resolution, facts.resolution);
    Image image = Picture();
    image.facts = std::make_shared<PictureFacts>(facts);
    EXPECT_EQ(AlphaBmp(image), file);
}

TEST(FactsInAFile, ThatItsKindDoesNotHoldAreNamed)
{
    PictureFacts facts = Everything();
    EXPECT_EQ(
        LeftOut(FileKind::Bmp, facts),
        (std::vector<std::string>{"its colour profile, which a BMP does not hold",
                                  "its gamma and chromaticities, which a BMP does not hold"}));
    facts.codePoints = {std::byte{9}, std::byte{16}, std::byte{0}, std::byte{1}};
    facts.unusable = {"its transfer function"};
    EXPECT_EQ(LeftOut(FileKind::Jpeg, facts),
              (std::vector<std::string>{"its transfer function",
                                        "its cICP colour statement, which a JPEG does not hold"}));
    EXPECT_EQ(LeftOut(FileKind::Png, facts), facts.unusable);
    PictureFacts shape;
    shape.resolution = Resolution{4.0, 3.0, LengthUnit::None};
    EXPECT_EQ(LeftOut(FileKind::Bmp, shape),
              (std::vector<std::string>{"the shape of its pixels, which a BMP does not hold"}));
}

TEST(FactsInAFile, ThatIsNoPictureOfItsKindAreAnError)
{
    for (const FileKind kind : kRichKinds)
    {
        EXPECT_THROW(WithFacts(kind, BytesOfText("something else entirely"), {}, "picture"),
                     HostError);
    }
    EXPECT_THROW(WithFacts(FileKind::Bmp, BytesOfText("BM"), {}, "picture"), HostError);
}

} // namespace GlazelHost
