#include "tools/glazelhost/media/picture_facts.h"

#include "tests/tools/glazelhost/media/picture_sample.h"
#include "tests/tools/glazelhost/media/tiff_sample.h"
#include "tools/glazelhost/media/picture_tags.h"
#include "tools/glazelhost/media/zlib_block.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

namespace
{

PictureFacts FactsOfText(const std::string& file)
{
    return FactsOf(BytesOfText(file));
}

std::string Profile(const std::string& space, std::size_t bytes = 300)
{
    return std::string(16, '\1') + space + std::string(bytes - 20, '\2');
}

std::string PngProfile(const std::string& profile)
{
    std::string contents = std::string("name\0\0", 6);
    for (const std::byte byte : Packed(std::as_bytes(std::span(profile))))
    {
        contents += static_cast<char>(byte);
    }
    return contents;
}

std::string PngResolution(std::uint32_t across, std::uint32_t down, bool isByMetre)
{
    return BigEndianText(across, 4) + BigEndianText(down, 4) + (isByMetre ? '\1' : '\0');
}

Resolution ResolutionOfPng(std::uint32_t across, std::uint32_t down, bool isByMetre = true)
{
    return FactsOfText(SamplePng({{"pHYs", PngResolution(across, down, isByMetre)}}))
        .resolution.value_or(Resolution());
}

std::string Jfif(char unit, std::uint32_t across, std::uint32_t down)
{
    return std::string("JFIF\0\1\1", 7) + unit + BigEndianText(across, 2) + BigEndianText(down, 2) +
           std::string(2, '\0');
}

// Piece `number` of `count` of a profile.
SampleBlock ProfilePiece(int number, int count, const std::string& bytes)
{
    return {"\xE2", std::string(kJpegProfileMark) + static_cast<char>(number) +
                        static_cast<char>(count) + bytes};
}

std::string Fraction(std::uint32_t numerator, std::uint32_t denominator)
{
    return NumberBytes(numerator, 4, false) + NumberBytes(denominator, 4, false);
}

std::string Short(std::uint32_t value)
{
    return NumberBytes(value, 2, false);
}

std::string TextOf(const std::vector<std::byte>& bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

} // namespace

TEST(FactsOfAPicture, AreNoneWhereNothingIsSaid)
{
    for (const std::string& file :
         {SamplePng({}), SampleJpeg({{"\xE0", Jfif(0, 1, 1)}}), SampleTiff({{256, 3, Short(7)}}),
          "BM" + std::string(100, '\0'), std::string("what is this")})
    {
        EXPECT_EQ(FactsOfText(file), PictureFacts());
    }
}

TEST(FactsOfAPicture, AreWhatTheChunksOfAPngSay)
{
    std::string chromaticities;
    for (std::uint32_t number = 1; number <= 8; ++number)
    {
        chromaticities += BigEndianText(10000 * number, 4);
    }
    const PictureFacts facts = FactsOfText(SamplePng({{"iCCP", PngProfile(Profile("RGB "))},
                                                      {"sRGB", "\2"},
                                                      {"gAMA", BigEndianText(50000, 4)},
                                                      {"cHRM", chromaticities},
                                                      {"cICP", std::string("\x09\x10\0\1", 4)}}));
    EXPECT_EQ(TextOf(facts.profile), Profile("RGB "));
    EXPECT_EQ(facts.srgbIntent, 2);
    EXPECT_EQ(facts.gamma, 2.0);
    ASSERT_TRUE(facts.chromaticities);
    EXPECT_NEAR(facts.chromaticities->front(), 0.1, 1e-9);
    EXPECT_NEAR(facts.chromaticities->back(), 0.8, 1e-9);
    ASSERT_TRUE(facts.codePoints);
    EXPECT_EQ(facts.codePoints->at(1), std::byte{16});
    EXPECT_TRUE(facts.unusable.empty());
}

TEST(FactsOfAPicture, CountAResolutionAsItWasMeant)
{
    EXPECT_EQ(ResolutionOfPng(11811, 11811), (Resolution{300, 300, LengthUnit::Inch}));
    EXPECT_EQ(ResolutionOfPng(2835, 5669), (Resolution{72, 144, LengthUnit::Inch}));
    EXPECT_EQ(ResolutionOfPng(11800, 5900), (Resolution{118, 59, LengthUnit::Centimetre}));
    EXPECT_NEAR(ResolutionOfPng(12345, 1).across, 12345 * 0.0254, 1e-9);
    EXPECT_EQ(ResolutionOfPng(4, 3, false), (Resolution{4, 3, LengthUnit::None}));
    EXPECT_EQ(ResolutionOfPng(3, 3, false), Resolution()) << "square pixels of no size say nothing";
    EXPECT_EQ(ResolutionOfPng(0, 300), Resolution());
}

TEST(FactsOfAPicture, AreWhatTheSegmentsOfAJpegSay)
{
    const std::string profile = Profile("RGB ", 100000);
    const PictureFacts facts =
        FactsOfText(SampleJpeg({{"\xE0", Jfif(1, 240, 241)},
                                ProfilePiece(2, 2, profile.substr(60000)), // in any order
                                ProfilePiece(1, 2, profile.substr(0, 60000))}));
    EXPECT_EQ(facts.resolution, (Resolution{240, 241, LengthUnit::Inch}));
    EXPECT_EQ(TextOf(facts.profile), profile);
}

TEST(FactsOfAPicture, TakeNoPartOfAProfileForAllOfIt)
{
    const PictureFacts facts = FactsOfText(SampleJpeg({ProfilePiece(1, 2, Profile("RGB "))}));
    EXPECT_TRUE(facts.profile.empty());
    ASSERT_EQ(facts.unusable.size(), 1U);
    EXPECT_EQ(facts.unusable[0], "its colour profile, which is damaged");
}

TEST(FactsOfAPicture, AreWhatTheTagsOfATiffSay)
{
    const PictureFacts facts = FactsOfText(SampleTiff({{kTagAcross, 5, Fraction(145, 2)},
                                                       {kTagDown, 5, Fraction(100, 1)},
                                                       {kTagUnit, 3, Short(3)},
                                                       {kTagProfile, 7, Profile("RGB ")}}));
    EXPECT_EQ(facts.resolution, (Resolution{72.5, 100, LengthUnit::Centimetre}));
    EXPECT_EQ(TextOf(facts.profile), Profile("RGB "));
}

TEST(FactsOfAPicture, TakeTheExifBlockForWhatAJpegItselfDoesNotSay)
{
    const std::string exif =
        std::string(kJpegExifMark) + SampleTiff({{kTagAcross, 5, Fraction(300, 1)},
                                                 {kTagDown, 5, Fraction(300, 1)},
                                                 {kTagUnit, 3, Short(2)}});
    EXPECT_EQ(FactsOfText(SampleJpeg({{"\xE0", Jfif(0, 1, 1)}, {"\xE1", exif}})).resolution,
              (Resolution{300, 300, LengthUnit::Inch}));
    EXPECT_EQ(FactsOfText(SampleJpeg({{"\xE0", Jfif(2, 50, 50)}, {"\xE1", exif}})).resolution,
              (Resolution{50, 50, LengthUnit::Centimetre}));
}

TEST(FactsOfAPicture, LeaveOutAProfileOfOtherColoursByName)
{
    for (const auto& [space, said] : {std::pair{"CMYK", "CMYK"}, {"GRAY", "GRAY"}, {"Lab ", "Lab"}})
    {
        const PictureFacts facts = FactsOfText(SamplePng({{"iCCP", PngProfile(Profile(space))}}));
        EXPECT_TRUE(facts.profile.empty());
        ASSERT_EQ(facts.unusable.size(), 1U);
        EXPECT_EQ(facts.unusable[0],
                  std::string("its colour profile, which is of ") + said + " and not of RGB");
    }
}

TEST(FactsOfAPicture, AreTheResolutionAndTheProfileOfABmp)
{
    const auto number = [](std::uint32_t value) { return NumberBytes(value, 4, false); };
    const std::string file = "BM" + std::string(12, '\0') + number(124) + std::string(20, '\0') +
                             number(2835) + number(2835) + std::string(24, '\0') +
                             number(0x4D424544) + std::string(52, '\0') + number(124) +
                             number(300) + number(0) + Profile("RGB ");
    const PictureFacts facts = FactsOfText(file);
    EXPECT_EQ(facts.resolution, (Resolution{72, 72, LengthUnit::Inch}));
    EXPECT_EQ(TextOf(facts.profile), Profile("RGB "));
    EXPECT_EQ(FactsOfText(file.substr(0, file.size() - 1)).unusable.size(), 1U) << "it is cut";
}

TEST(FactsOfAPicture, AreReadFromFilesThatAreCutAnywhereWithoutHarm)
{
    for (const std::string& whole :
         {SamplePng({{"iCCP", PngProfile(Profile("RGB "))}, {"pHYs", PngResolution(1, 2, true)}}),
          SampleJpeg({{"\xE0", Jfif(1, 240, 241)}, ProfilePiece(1, 1, Profile("RGB "))}),
          SampleTiff({{kTagAcross, 5, Fraction(145, 2)}, {kTagProfile, 7, Profile("RGB ")}})})
    {
        for (std::size_t size = 0; size < whole.size(); ++size)
        {
            FactsOfText(whole.substr(0, size));
        }
    }
}

} // namespace GlazelHost
