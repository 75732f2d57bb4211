#include "tools/glazelhost/media/picture_light.h"

#include "tests/tools/glazelhost/media/tiff_sample.h"

#include <gtest/gtest.h>

#include <vector>

namespace GlazelHost
{

namespace
{

std::string Big(std::uint32_t value, int bytes)
{
    return NumberBytes(value, bytes, true);
}

std::string Table(const std::vector<std::uint32_t>& points)
{
    std::string curve = "curv" + Big(0, 4) + Big(static_cast<std::uint32_t>(points.size()), 4);
    for (const std::uint32_t point : points)
    {
        curve += Big(point, 2);
    }
    return curve;
}

std::string Power(std::uint32_t kind, std::uint32_t exponent)
{
    return "para" + Big(0, 4) + Big(kind, 2) + Big(0, 2) + Big(exponent, 4) + std::string(16, 'x');
}

// Of the curves of red, green and blue.
std::string Profile(const std::vector<std::string>& curves)
{
    const char* const names[]{"rTRC", "gTRC", "bTRC"};
    std::string tags = Big(static_cast<std::uint32_t>(curves.size()), 4);
    std::string values;
    for (std::size_t i = 0; i < curves.size(); ++i)
    {
        tags += names[i] +
                Big(static_cast<std::uint32_t>(132 + 12 * curves.size() + values.size()), 4) +
                Big(static_cast<std::uint32_t>(curves[i].size()), 4);
        values += curves[i];
    }
    return std::string(128, '\0') + tags + values;
}

std::optional<bool> IsLinear(const std::string& profile)
{
    const std::vector<char> exact(profile.begin(), profile.end());
    return ProfileIsLinear(std::as_bytes(std::span(exact)));
}

Light LightOfFile(const std::string& file, bool isFloat)
{
    return LightOf(std::as_bytes(std::span(file)), isFloat);
}

const std::string kStraight = Table({});

} // namespace

TEST(PictureLight, AProfileIsLinearWhenAllItsCurvesAreStraight)
{
    for (const std::string& curve : {kStraight, Table({0x100}), Power(0, 0x10000),
                                     Table({0, 65535}), Table({0, 16384, 32767, 49151, 65535})})
    {
        EXPECT_EQ(IsLinear(Profile({curve, kStraight, kStraight})), true);
    }
    for (const std::string& curve :
         {Table({0x1CD}), Power(0, 0x23333), Power(3, 0x10000), Table({0, 10000, 65535}),
          Table({65535, 0}), std::string("mft2........"), std::string("curv")})
    {
        EXPECT_EQ(IsLinear(Profile({kStraight, kStraight, curve})), false) << curve;
    }
    EXPECT_EQ(IsLinear(Profile({})), std::nullopt);
    EXPECT_EQ(IsLinear(""), std::nullopt);
}

TEST(PictureLight, ACutProfileIsReadWithoutHarm)
{
    const std::string whole = Profile({Table({0, 16384, 65535}), kStraight, Table({0, 65535})});
    for (std::size_t size = 0; size < whole.size(); ++size)
    {
        EXPECT_NE(IsLinear(whole.substr(0, size)), true) << size;
    }
}

TEST(PictureLight, FloatsAreLinearUnlessTheFileSaysOtherwise)
{
    EXPECT_TRUE(LightOfFile(SampleTiff({}), true).isLinear);
    EXPECT_FALSE(LightOfFile(SampleTiff({{270, 2, std::string(kDisplayEncodedNote) + '\0'}}), true)
                     .isLinear);
    EXPECT_TRUE(LightOfFile(SampleTiff({{270, 2, "a sunset"}}), true).isLinear);
    const auto withProfile = [](const std::string& curve) {
        return SampleTiff({{34675, 7, Profile({curve, curve, curve})}});
    };
    EXPECT_TRUE(LightOfFile(withProfile(kStraight), true).isLinear);
    EXPECT_FALSE(LightOfFile(withProfile(Table({0x233})), true).isLinear);
    EXPECT_FALSE(LightOfFile(SampleTiff({{34675, 7, "no profile"}}), true).isLinear);
}

TEST(PictureLight, WholeNumbersNeverAre)
{
    EXPECT_EQ(
        LightOfFile(SampleTiff({{34675, 7, Profile({kStraight, kStraight, kStraight})}}), false),
        Light());
}

} // namespace GlazelHost
