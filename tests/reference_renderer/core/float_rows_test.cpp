#include "reference_renderer/core/float_rows.h"

#include "reference_renderer/core/row_functions.h"
#include "tests/doubles/under_sanitizers.h"
#include "tests/reference_renderer/core/look_fixtures.h"
#include "tests/reference_renderer/core/row_kernels.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace ReferenceRenderer
{

namespace
{

std::size_t PixelBytes(PixelKind kind)
{
    return kind == PixelKind::Codes ? 4 : 16;
}

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
    Bytes bytes(PixelBytes(PixelKind::Floats) * pixels);
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

void RenderPlainly(const PreparedLook& look, PixelKind kind, std::byte* pixels, std::size_t width)
{
    if (kind == PixelKind::Codes)
    {
        RenderPlainRow8(look, pixels, pixels, width);
    }
    else
    {
        RenderPlainRowFloat(look, kind == PixelKind::LinearFloats, pixels, pixels, width);
    }
}

Bytes RenderedPlainly(const PreparedLook& look, PixelKind kind, Bytes pixels)
{
    RenderPlainly(look, kind, pixels.data(), pixels.size() / PixelBytes(kind));
    return pixels;
}

Bytes RenderedBy(InstructionSet set, const PreparedLook& look, PixelKind kind, Bytes pixels)
{
    const std::size_t width = pixels.size() / PixelBytes(kind);
    const std::size_t done = RenderGroups(set, look, kind, pixels.data(), pixels.data(), width);
    EXPECT_LT(width - done, 8U);
    RenderPlainly(look, kind, pixels.data() + done * PixelBytes(kind), width - done);
    return pixels;
}

constexpr std::array kKinds{PixelKind::Codes, PixelKind::Floats, PixelKind::LinearFloats};

Bytes PixelsOfKind(PixelKind kind, std::size_t count, unsigned seed)
{
    return kind == PixelKind::Codes ? RandomPixels(count, seed) : Floats(count, seed);
}

} // namespace

TEST(FloatRows, EveryInstructionSetGivesTheBitsOfOnePixelAfterTheOther)
{
    unsigned seed = 0;
    for (const Look& described : LooksOfEveryKind())
    {
        const auto look = Prepared(described);
        for (const PixelKind kind : kKinds)
        {
            const Bytes pixels = PixelsOfKind(kind, 401, ++seed);
            const Bytes plain = RenderedPlainly(*look, kind, pixels);
            for (const InstructionSet set : AvailableSets())
            {
                ASSERT_EQ(RenderedBy(set, *look, kind, pixels), plain)
                    << "look " << seed << ", kind " << static_cast<int>(kind) << ", set "
                    << static_cast<int>(set);
            }
        }
    }
}

TEST(FloatRows, EveryInstructionSetGivesTheBytesOfOnePixelAfterTheOtherForEveryColour)
{
    Look described = CubeLook(CubeOf(17, Swirled));
    described.cdlMode = CdlMode::Clamped;
    described.cdl = {{1.2F, 0.9F, 1.0F}, {-0.1F, 0.02F, 0.0F}, {1.1F, 1.0F, 0.8F}, 1.4F};
    const auto look = Prepared(described);
    for (unsigned red = 0; red < 256; red += UnderSanitizers(15U, 1U))
    {
        const Bytes pixels = EveryColourOf(red);
        const Bytes plain = RenderedPlainly(*look, PixelKind::Codes, pixels);
        for (const InstructionSet set : AvailableSets())
        {
            ASSERT_EQ(RenderedBy(set, *look, PixelKind::Codes, pixels), plain) << red;
        }
    }
}

TEST(FloatRows, RowsOfEveryWidthAndPlaceAreRenderedWhole)
{
    Look described = CubeLook(CubeOf(9, Swirled));
    described.cdlMode = CdlMode::Clamped;
    described.cdl.saturation = 1.4F;
    described.curves =
        CurvesOf(7, [](double v) { return v * v; }); // codes come here with them alone
    const auto look = Prepared(described);
    for (const PixelKind kind : kKinds)
    {
        RowFunction* const row = kind == PixelKind::Codes
                                     ? look->Row8()
                                     : look->RowFloat(kind == PixelKind::LinearFloats);
        for (std::size_t width = 0; width < 40; ++width)
        {
            const Bytes pixels = PixelsOfKind(kind, width, static_cast<unsigned>(width));
            const Bytes plain = RenderedPlainly(*look, kind, pixels);
            Bytes target(pixels.size() + 1);
            row(*look, pixels.data(), target.data() + 1, width);
            ASSERT_EQ(Bytes(target.begin() + 1, target.end()), plain) << width;
        }
    }
}

TEST(FloatRows, RowsAreRenderedFromStacksOfEveryAlignment)
{
    const auto look = Prepared(CubeLook(CubeOf(9, Swirled)));
    for (const PixelKind kind : kKinds)
    {
        const Bytes pixels = PixelsOfKind(kind, 32, 7);
        const Bytes plain = RenderedPlainly(*look, kind, pixels);
        for (const InstructionSet set : AvailableSets())
        {
            FromEveryStackAlignment<0>(
                [&] { EXPECT_EQ(RenderedBy(set, *look, kind, pixels), plain); });
        }
    }
}

} // namespace ReferenceRenderer
