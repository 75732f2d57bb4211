#include "tools/glazelhost/io/y4m_header.h"

#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace
{

std::string RefusalOf(const std::string& line)
{
    try
    {
        ParseY4mHeader(line, "clip.y4m");
    }
    catch (const HostError& error)
    {
        return error.what();
    }
    return "accepted";
}

bool Says(const std::string& message, const std::string& part)
{
    return message.find(part) != std::string::npos;
}

} // namespace

TEST(Y4mHeader, AllParametersAreRead)
{
    const Y4mHeader header = ParseY4mHeader(
        "YUV4MPEG2 W1920 H1080 F30000:1001 Ip A4:3 C422 XYSCSS=422 XCOLORRANGE=FULL", "clip.y4m");
    EXPECT_EQ(header.width, 1920);
    EXPECT_EQ(header.height, 1080);
    EXPECT_EQ(header.rate, (Ratio{30000, 1001}));
    EXPECT_EQ(header.pixelAspect, (Ratio{4, 3}));
    EXPECT_EQ(header.sampling, ChromaSampling::Half422);
    EXPECT_EQ(header.range, YCbCrRange::Full);
}

TEST(Y4mHeader, WithoutAChromaParameterTheSamplingIs420Jpeg)
{
    const Y4mHeader header = ParseY4mHeader("YUV4MPEG2 W2 H3", "clip.y4m");
    EXPECT_EQ(header.sampling, ChromaSampling::Half420Jpeg);
    EXPECT_EQ(header.rate, Ratio{});
    EXPECT_EQ(header.pixelAspect, Ratio{});
    EXPECT_FALSE(header.range.has_value());
}

TEST(Y4mHeader, EverySupportedChromaNameIsKnown)
{
    const std::pair<const char*, ChromaSampling> names[] = {
        {"420", ChromaSampling::Half420Jpeg},
        {"420jpeg", ChromaSampling::Half420Jpeg},
        {"420mpeg2", ChromaSampling::Half420Mpeg2},
        {"420paldv", ChromaSampling::Half420Paldv},
        {"422", ChromaSampling::Half422},
        {"444", ChromaSampling::Full444},
        {"mono", ChromaSampling::Mono}};
    for (const auto& [name, sampling] : names)
    {
        EXPECT_EQ(ParseY4mHeader("YUV4MPEG2 W2 H2 C" + std::string(name), "x").sampling, sampling);
    }
}

TEST(Y4mHeader, UnsupportedChromaIsNamedInTheError)
{
    for (const std::string chroma : {"420p10", "411", "444alpha", "mono16", "422p12", ""})
    {
        const std::string refusal = RefusalOf("YUV4MPEG2 W2 H2 C" + chroma);
        EXPECT_TRUE(Says(refusal, "clip.y4m: the chroma format \"" + chroma + '"')) << refusal;
    }
}

TEST(Y4mHeader, InterlacedVideoIsRefusedAndUnknownInterlacingIsTakenForProgressive)
{
    for (const std::string kind : {"t", "b", "m"})
    {
        EXPECT_TRUE(Says(RefusalOf("YUV4MPEG2 W2 H2 I" + kind), "interlaced (I" + kind + ")"));
    }
    EXPECT_EQ(RefusalOf("YUV4MPEG2 W2 H2 I?"), "accepted");
    EXPECT_EQ(RefusalOf("YUV4MPEG2 W2 H2 Ip"), "accepted");
}

TEST(Y4mHeader, SizesOfZeroAndAboveTheLargestAreRefused)
{
    EXPECT_EQ(RefusalOf("YUV4MPEG2 W16384 H16384"), "accepted");
    EXPECT_TRUE(Says(RefusalOf("YUV4MPEG2 W0 H5"), "0 x 5"));
    EXPECT_TRUE(Says(RefusalOf("YUV4MPEG2 W5 H16385"), "5 x 16385"));
    EXPECT_TRUE(Says(RefusalOf("YUV4MPEG2 W4294967295 H1"), "its size is"));
    EXPECT_TRUE(Says(RefusalOf("YUV4MPEG2 H5"), "0 x 5"));
    EXPECT_TRUE(Says(RefusalOf("YUV4MPEG2"), "0 x 0"));
}

TEST(Y4mHeader, BadNumbersAreQuoted)
{
    for (const std::string parameter :
         {"Wx", "W-5", "W", "W99999999999", "F25", "F25:x", "A:", "F:1"})
    {
        const std::string refusal = RefusalOf("YUV4MPEG2 W2 H2 " + parameter);
        EXPECT_TRUE(Says(refusal, "bad parameter \"" + parameter + '"')) << refusal;
    }
}

TEST(Y4mHeader, RatiosWithAZeroAreNotSaid)
{
    const Y4mHeader header = ParseY4mHeader("YUV4MPEG2 W2 H2 F0:0 A0:0", "x");
    EXPECT_EQ(header.rate.Value(), 0.0);
    EXPECT_EQ(header.pixelAspect.Value(), 0.0);
}

TEST(Y4mHeader, UnknownParametersAndExtraSpacesArePassedOver)
{
    EXPECT_EQ(RefusalOf("YUV4MPEG2  W2  H2 Zfoo XANYTHING=1 XCOLORRANGE=OTHER "), "accepted");
}

TEST(Y4mHeader, ForeignDataIsRefusedInOneReadableLine)
{
    for (const std::string& line :
         {std::string("\x89PNG\r\x1a"), std::string(), std::string("YUV4MPEG3 W2 H2"),
          std::string("YUV4MPEG2W2 H2"), std::string(4096, '\0')})
    {
        const std::string refusal = RefusalOf(line);
        EXPECT_TRUE(Says(refusal, "not a Y4M stream"));
        EXPECT_EQ(refusal.find_first_of(std::string("\r\n\0\x1a\x89", 5)), std::string::npos);
    }
}

TEST(Y4mHeader, AWrittenHeaderReadsTheSameAgain)
{
    for (const auto range : {YCbCrRange::Limited, YCbCrRange::Full})
    {
        const Y4mHeader header{720, 576, {25, 1}, {16, 15}, ChromaSampling::Half420Paldv, range};
        std::string line = FormatY4mHeader(header);
        ASSERT_EQ(line.back(), '\n');
        line.pop_back();
        const Y4mHeader again = ParseY4mHeader(line, "x");
        EXPECT_EQ(again.width, 720);
        EXPECT_EQ(again.height, 576);
        EXPECT_EQ(again.rate, header.rate);
        EXPECT_EQ(again.pixelAspect, header.pixelAspect);
        EXPECT_EQ(again.sampling, header.sampling);
        EXPECT_EQ(again.range, range);
    }
}

TEST(Y4mHeader, AFrameLineMayHaveParameters)
{
    EXPECT_TRUE(IsY4mFrameLine("FRAME"));
    EXPECT_TRUE(IsY4mFrameLine("FRAME Ip XSOMETHING"));
    EXPECT_FALSE(IsY4mFrameLine("FRAMES"));
    EXPECT_FALSE(IsY4mFrameLine("FRAM"));
    EXPECT_FALSE(IsY4mFrameLine(""));
}

TEST(Y4mHeader, DamagedHeadersAreReadOrRefusedAndNothingElse)
{
    constexpr unsigned kSeed = 7;
    std::mt19937 random(kSeed);
    const std::string good = "YUV4MPEG2 W1920 H1080 F30000:1001 Ip A1:1 C420mpeg2 XCOLORRANGE=FULL";
    for (int round = 0; round < 20000; ++round)
    {
        std::string line = good;
        for (auto changes = random() % 4; changes > 0; --changes)
        {
            line[random() % line.size()] = static_cast<char>(random());
        }
        line.resize(random() % (line.size() + 1));
        RefusalOf(line); // the sanitisers and the exception's type are the verdict
    }
}
