#include "tools/glazelhost/media/picture_check.h"

#include "tests/tools/glazelhost/media/picture_sample.h"
#include "tests/tools/glazelhost/media/tiff_sample.h"
#include "tools/glazelhost/host_error.h"

#include <gtest/gtest.h>

#include <map>

namespace GlazelHost
{

namespace
{

std::string ErrorOfCheck(const std::string& file)
{
    try
    {
        CheckPixelKind(BytesOfText(file), "picture");
    }
    catch (const HostError& error)
    {
        return error.what();
    }
    return {};
}

bool IsRefused(const std::string& file, const std::string& saying)
{
    const std::string error = ErrorOfCheck(file);
    return error.starts_with("picture: its ") && error.find(saying) != std::string::npos &&
           error.find(" not supported; ") != std::string::npos;
}

// The header of a frame: bits, size and channels.
std::string Jpeg(char marker, char bits, char channels)
{
    return SampleJpeg({{"\xC4", "tables"},
                       {std::string(1, marker), bits + std::string("\0\5\0\7", 4) + channels}});
}

// A TIFF of RGB with 8 bits, but for what `changes` gives other numbers.
std::string Tiff(const std::map<std::uint32_t, std::uint32_t>& changes, bool bigEndian = false)
{
    std::map<std::uint32_t, std::uint32_t> numbers{{258, 8}, {259, 1}, {262, 2}, {277, 3}};
    for (const auto& [tag, number] : changes)
    {
        numbers[tag] = number;
    }
    std::vector<SampleTag> tags;
    for (const auto& [tag, number] : numbers)
    {
        tags.push_back({tag, 3, NumberBytes(number, 2, bigEndian)});
    }
    return SampleTiff(tags, bigEndian);
}

constexpr std::uint32_t kBits = 258;
constexpr std::uint32_t kCompression = 259;
constexpr std::uint32_t kColours = 262;
constexpr std::uint32_t kChannels = 277;
constexpr std::uint32_t kPlanes = 284;
constexpr std::uint32_t kNumbers = 339;

} // namespace

TEST(PixelKinds, OfAJpegThatWouldComeOutWrongAreRefusedByName)
{
    EXPECT_TRUE(IsRefused(Jpeg('\xC0', 8, 4), "colours are CMYK"));
    EXPECT_TRUE(IsRefused(Jpeg('\xC2', 8, 4), "colours are CMYK"));
    EXPECT_TRUE(IsRefused(Jpeg('\xC1', 12, 3), "12-bit channels are"));
    EXPECT_TRUE(IsRefused(Jpeg('\xC3', 8, 3), "lossless"));
    EXPECT_TRUE(IsRefused(Jpeg('\xC9', 8, 3), "arithmetic coding"));
    for (const char channels : {'\1', '\3'})
    {
        for (const char marker : {'\xC0', '\xC1', '\xC2'})
        {
            EXPECT_EQ(ErrorOfCheck(Jpeg(marker, 8, channels)), "");
        }
    }
}

TEST(PixelKinds, OfATiffThatWouldComeOutWrongAreRefusedByName)
{
    EXPECT_TRUE(IsRefused(Tiff({{kColours, 5}, {kChannels, 4}}), "colours are CMYK"));
    EXPECT_TRUE(IsRefused(Tiff({{kColours, 6}}), "colours are YCbCr"));
    EXPECT_TRUE(IsRefused(Tiff({{kColours, 8}}), "colours are CIE L*a*b*"));
    EXPECT_TRUE(IsRefused(Tiff({{kCompression, 7}}), "JPEG compression within TIFF"));
    EXPECT_TRUE(IsRefused(Tiff({{kCompression, 50000}}), "Zstandard compression"));
    EXPECT_TRUE(IsRefused(Tiff({{kPlanes, 2}}), "planar"));
    EXPECT_TRUE(IsRefused(Tiff({{kBits, 12}}), "12-bit whole numbers"));
    EXPECT_TRUE(IsRefused(Tiff({{kBits, 32}}), "32-bit whole numbers"));
    EXPECT_TRUE(IsRefused(Tiff({{kBits, 2}, {kColours, 1}}), "2-bit whole numbers"));
    EXPECT_TRUE(IsRefused(Tiff({{kBits, 16}, {kColours, 3}}), "16-bit whole numbers"));
    EXPECT_TRUE(IsRefused(Tiff({{kNumbers, 2}}), "8-bit numbers with a sign"));
    EXPECT_TRUE(IsRefused(Tiff({{kBits, 64}, {kNumbers, 3}}), "64-bit floats"));
    EXPECT_TRUE(IsRefused(Tiff({{kBits, 32}, {kNumbers, 3}, {kColours, 0}}), "0 is white"));
    EXPECT_TRUE(IsRefused(Tiff({{kBits, 32}, {kNumbers, 3}}, true), "big-endian"));
    EXPECT_TRUE(IsRefused(Tiff({{kBits, 16}, {kColours, 1}, {kChannels, 2}}), "grey with alpha"));
    EXPECT_TRUE(IsRefused("II" + NumberBytes(43, 2, false) + std::string(20, '\0'), "BigTIFF"));
    EXPECT_TRUE(IsRefused("MM" + NumberBytes(43, 2, true) + std::string(20, '\0'), "BigTIFF"));
}

TEST(PixelKinds, ThatComeOutRightPass)
{
    const std::map<std::uint32_t, std::uint32_t> kinds[] = {
        {},
        {{kBits, 16}},
        {{kBits, 32}, {kNumbers, 3}},
        {{kBits, 16}, {kNumbers, 3}},
        {{kBits, 1}, {kColours, 0}, {kChannels, 1}},
        {{kBits, 4}, {kColours, 3}, {kChannels, 1}},
        {{kBits, 2}, {kColours, 3}, {kChannels, 1}},
        {{kColours, 1}, {kChannels, 2}},
        {{kColours, 1}, {kChannels, 1}, {kPlanes, 2}},
        {{kCompression, 5}},
        {{kCompression, 8}},
        {{kCompression, 32773}}};
    for (const auto& kind : kinds)
    {
        EXPECT_EQ(ErrorOfCheck(Tiff(kind)), "");
    }
    EXPECT_EQ(ErrorOfCheck(Tiff({{kBits, 16}}, true)), "");
}

TEST(PixelKinds, OfOtherAndOfDamagedFilesAreNotJudged)
{
    for (const std::string& whole : {SamplePng({}), Tiff({}), Jpeg('\xC0', 8, 3)})
    {
        for (std::size_t size = 0; size <= whole.size(); ++size)
        {
            EXPECT_NO_FATAL_FAILURE(ErrorOfCheck(whole.substr(0, size)));
        }
    }
    EXPECT_EQ(ErrorOfCheck(SamplePng({})), "");
    EXPECT_EQ(ErrorOfCheck("II*"), "");
}

} // namespace GlazelHost
