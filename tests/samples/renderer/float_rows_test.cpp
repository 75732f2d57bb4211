#include "samples/renderer/float_rows.h"

#include "samples/renderer/row_functions.h"
#include "tests/samples/renderer/look_fixtures.h"
#include "tests/samples/renderer/row_kernels.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace
{

constexpr std::size_t kPixelBytes = 16;

// Pixels of values around 0 to 1, of any size, special ones, and bits at random.
Bytes Floats(std::size_t pixels, unsigned seed)
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr std::array kSpecial{0.0F,
                                  -0.0F,
                                  1.0F,
                                  0.5F,
                                  kInfinity,
                                  -kInfinity,
                                  std::numeric_limits<float>::quiet_NaN(),
                                  std::numeric_limits<float>::denorm_min(),
                                  std::numeric_limits<float>::max(),
                                  0.0031308F,
                                  0.04045F};
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> usual(-0.25F, 1.25F);
    Bytes bytes(kPixelBytes * pixels);
    for (std::size_t i = 0; i < bytes.size(); i += sizeof(float))
    {
        float value = usual(random);
        switch (random() % 8)
        {
        case 0:
            value = kSpecial[random() % kSpecial.size()];
            break;
        case 1:
            value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
            break;
        case 2:
            value *= 1000.0F;
            break;
        default:
            break;
        }
        std::memcpy(bytes.data() + i, &value, sizeof value);
    }
    return bytes;
}

std::vector<Look> LooksOfEveryKind()
{
    std::vector<Look> looks;
    for (const CdlMode mode : {CdlMode::None, CdlMode::Clamped, CdlMode::Unclamped})
    {
        for (const float power : {1.0F, 1.3F})
        {
            for (const std::uint32_t cube : {0U, 2U, 17U})
            {
                for (const bool hasCurves : {false, true})
                {
                    for (const float strength : {1.0F, 0.4F})
                    {
                        Look look = CdlLook(
                            {{1.2F, 0.9F, 1.0F}, {-0.1F, 0.02F, 0.0F}, {power, 1.0F, 0.8F}, 1.4F},
                            mode);
                        if (hasCurves)
                        {
                            look.curves = CurvesOf(7, [](double v) { return v * v - 0.1; });
                        }
                        if (cube != 0)
                        {
                            Domain domain;
                            domain[1] = {-0.5F, 1.5F};
                            look.cube = CubeOf(cube, Swirled, domain);
                        }
                        look.strength = strength;
                        looks.push_back(look);
                    }
                }
            }
        }
    }
    return looks;
}

Bytes RenderedBy(InstructionSet set, const PreparedLook& look, bool linear, Bytes pixels)
{
    const std::size_t width = pixels.size() / kPixelBytes;
    const std::size_t done =
        RenderFloatGroups(set, look, linear, pixels.data(), pixels.data(), width);
    std::byte* const rest = pixels.data() + done * kPixelBytes;
    EXPECT_LT(width - done, 8U);
    RenderPlainRowFloat(look, linear, rest, rest, width - done);
    return pixels;
}

Bytes RenderedPlainly(const PreparedLook& look, bool linear, Bytes pixels)
{
    RenderPlainRowFloat(look, linear, pixels.data(), pixels.data(), pixels.size() / kPixelBytes);
    return pixels;
}

} // namespace

TEST(FloatRows, EveryInstructionSetGivesTheBitsOfOnePixelAfterTheOther)
{
    unsigned seed = 0;
    for (const Look& kind : LooksOfEveryKind())
    {
        const auto look = Prepared(kind);
        for (const bool linear : {false, true})
        {
            const Bytes pixels = Floats(401, ++seed);
            const Bytes plain = RenderedPlainly(*look, linear, pixels);
            for (const InstructionSet set : AvailableSets())
            {
                ASSERT_EQ(RenderedBy(set, *look, linear, pixels), plain)
                    << "look " << seed << ", linear " << linear << ", set "
                    << static_cast<int>(set);
            }
        }
    }
}

TEST(FloatRows, RowsOfEveryWidthAndPlaceAreRenderedWhole)
{
    const auto look = Prepared(CubeLook(CubeOf(9, Swirled)));
    for (std::size_t width = 0; width < 40; ++width)
    {
        const Bytes pixels = Floats(width, static_cast<unsigned>(width));
        const Bytes plain = RenderedPlainly(*look, false, pixels);
        Bytes target(pixels.size() + 1);
        look->RowFloat(false)(*look, pixels.data(), target.data() + 1, width);
        ASSERT_EQ(Bytes(target.begin() + 1, target.end()), plain) << width;
    }
}

TEST(FloatRows, RowsAreRenderedFromStacksOfEveryAlignment)
{
    const auto look = Prepared(CubeLook(CubeOf(9, Swirled)));
    const Bytes pixels = Floats(32, 7);
    const Bytes plain = RenderedPlainly(*look, true, pixels);
    for (const InstructionSet set : AvailableSets())
    {
        FromEveryStackAlignment<0>([&] { EXPECT_EQ(RenderedBy(set, *look, true, pixels), plain); });
    }
}
