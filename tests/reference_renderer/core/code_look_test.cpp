#include "reference_renderer/core/code_look.h"

#include "tests/doubles/under_sanitizers.h"
#include "tests/reference_renderer/core/look_fixtures.h"
#include "tests/reference_renderer/core/row_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace ReferenceRenderer
{

namespace
{

struct NamedLook
{
    std::string name;
    Look look;
};

Cdl Colourful(float saturation)
{
    return {{1.2F, 0.9F, 1.0F}, {-0.05F, 0.02F, 0.1F}, {1.0F, 0.8F, 1.3F}, saturation};
}

// Each makes ready for codes in another way.
std::vector<NamedLook> LooksOfCubes()
{
    const Cdl moved{{1.2F, 0.9F, 1.0F}, {-0.05F, 0.02F, 0.1F}, {1.0F, 0.8F, 1.3F}, 1.0F};
    std::vector<NamedLook> looks;
    looks.push_back({"33 points", CubeLook(CubeOf(33, Inverted))});
    looks.push_back({"65 points, values outside 0 to 1", CubeLook(CubeOf(65, Swirled))});
    looks.push_back({"2 points", CubeLook(CubeOf(2, Inverted))});
    looks.push_back({"values up to 6", CubeLook(CubeOf(9, [](const Rgb& value) {
                         return Rgb{6.0F * value.r - 1.0F, value.g * value.b, -4.0F * value.b};
                     }))});
    Domain domain;
    domain[0] = {-0.5F, 0.75F};
    domain[2] = {0.1F, 3.0F};
    looks.push_back({"a domain of its own", CubeLook(CubeOf(17, Swirled, domain))});
    looks.push_back({"a correction before it", CubeLook(CubeOf(33, Swirled))});
    looks.back().look.cdlMode = CdlMode::Clamped;
    looks.back().look.cdl = moved;
    looks.push_back({"curves before it", CubeLook(CubeOf(33, Swirled))});
    looks.back().look.curves = CurvesOf(11, [](double value) { return std::sqrt(value); });
    looks.push_back({"shown in part", CubeLook(CubeOf(33, Inverted))});
    looks.back().look.strength = 0.3F;
    looks.push_back({"a saturation before it", CubeLook(CubeOf(33, Swirled))});
    looks.back().look.cdlMode = CdlMode::Clamped;
    looks.back().look.cdl = Colourful(1.4F);
    looks.push_back({"a saturation before it, shown in part", looks.back().look});
    looks.back().look.strength = 0.3F;
    looks.push_back(
        {"one without clamps, a domain of its own", CubeLook(CubeOf(65, Swirled, domain))});
    looks.back().look.cdlMode = CdlMode::Unclamped;
    looks.back().look.cdl = Colourful(0.0F);
    return looks;
}

// What the look gives in floats, in codes.
std::array<double, 3> ExactCodes(const PreparedLook& look, const std::byte* pixel)
{
    const auto value = [&](std::size_t channel) {
        return static_cast<float>(std::to_integer<int>(pixel[2 - channel])) / 255.0F;
    };
    const Rgb graded = look.Grade({value(0), value(1), value(2)});
    const auto code = [](float v) { return 255.0 * std::clamp(double{v}, 0.0, 1.0); };
    return {code(graded.r), code(graded.g), code(graded.b)};
}

Bytes Rendered(InstructionSet set, const CodeCube& cube, const Bytes& source)
{
    Bytes target(source.size());
    RenderCodes(set, cube, source.data(), target.data(), source.size() / 4);
    return target;
}

} // namespace

TEST(CodeLook, EveryInstructionSetGivesTheBytesOfThePlainArithmeticAtEveryWidth)
{
    for (const NamedLook& named : LooksOfCubes())
    {
        SCOPED_TRACE(named.name);
        const auto look = Prepared(named.look);
        const CodeCube& cube = look->Codes().Cube();
        for (std::size_t width = 1; width < 40; ++width)
        {
            const Bytes source = RandomPixels(width, static_cast<unsigned>(width));
            Bytes plain(source.size());
            RenderCodesPlainly(cube, source.data(), plain.data(), width);
            for (const InstructionSet set : AvailableSets())
            {
                ASSERT_EQ(Rendered(set, cube, source), plain) << width;
            }
        }
    }
}

TEST(CodeLook, EveryInstructionSetGivesTheBytesOfThePlainArithmeticForEveryColour)
{
    Look described = CubeLook(CubeOf(33, Swirled));
    for (const CdlMode mode : {CdlMode::None, CdlMode::Clamped})
    {
        described.cdlMode = mode;
        described.cdl = Colourful(1.4F);
        const auto look = Prepared(described);
        const CodeCube& cube = look->Codes().Cube();
        for (unsigned red = 0; red < 256; red += UnderSanitizers(15U, 1U))
        {
            const Bytes source = EveryColourOf(red);
            Bytes plain(source.size());
            RenderCodesPlainly(cube, source.data(), plain.data(), 65536);
            for (const InstructionSet set : AvailableSets())
            {
                ASSERT_EQ(Rendered(set, cube, source), plain) << red;
            }
        }
    }
}

TEST(CodeLook, EveryInstructionSetGivesTheBytesOfThePlainSumsForEveryColourAndWidth)
{
    for (const CdlMode mode : {CdlMode::Clamped, CdlMode::Unclamped})
    {
        const auto look = Prepared(CdlLook(Colourful(1.4F), mode));
        const CodeMixture& mixture = look->Codes().Cube().mixture;
        for (unsigned red = 0; red < 256; red += UnderSanitizers(15U, 1U))
        {
            const Bytes source = EveryColourOf(red);
            const std::size_t width = 65536 - red % 40;
            Bytes plain(source.size());
            RenderMixturePlainly(mixture, source.data(), plain.data(), width);
            for (const InstructionSet set : AvailableSets())
            {
                Bytes target(source.size());
                RenderMixture(set, mixture, source.data(), target.data(), width);
                ASSERT_EQ(target, plain) << red;
            }
        }
    }
}

TEST(CodeLook, AgreesWithTheLookInFloatsWithinHalfACodeAndLittleMore)
{
    for (const NamedLook& named : LooksOfCubes())
    {
        SCOPED_TRACE(named.name);
        const auto look = Prepared(named.look);
        const Bytes source = RandomPixels(5000, 3);
        Bytes target(source.size());
        look->Row8()(*look, source.data(), target.data(), source.size() / 4);
        for (std::size_t i = 0; i < source.size(); i += 4)
        {
            const auto exact = ExactCodes(*look, source.data() + i);
            for (std::size_t channel = 0; channel < 3; ++channel)
            {
                ASSERT_NEAR(std::to_integer<int>(target[i + 2 - channel]), exact[channel], 0.52);
            }
            ASSERT_EQ(target[i + 3], source[i + 3]) << "alpha";
        }
    }
}

TEST(CodeLook, ALookWithoutACubeIsLookedUpCodeByCode)
{
    std::vector<Look> looks{CdlLook(Colourful(1.0F)), CdlLook(Colourful(1.0F)),
                            CdlLook(Colourful(1.4F)), CdlLook(Colourful(3.5F), CdlMode::Unclamped)};
    looks[1].curves = CurvesOf(9, [](double value) { return 1.0 - value * value; });
    looks[1].strength = 0.75F;
    for (const Look& look : looks)
    {
        const auto prepared = Prepared(look);
        const Bytes source = RandomPixels(2000, 5);
        Bytes target(source.size());
        prepared->Row8()(*prepared, source.data(), target.data(), source.size() / 4);
        for (std::size_t i = 0; i < source.size(); i += 4)
        {
            const auto exact = ExactCodes(*prepared, source.data() + i);
            for (std::size_t channel = 0; channel < 3; ++channel)
            {
                ASSERT_NEAR(std::to_integer<int>(target[i + 2 - channel]), exact[channel], 0.501);
            }
            ASSERT_EQ(target[i + 3], source[i + 3]) << "alpha";
        }
    }
}

TEST(CodeLook, LooksThatItCannotHoldAreRefused)
{
    const auto isTaken = [](const Look& look) {
        StoredLook stored;
        StoreLook(look, stored);
        const auto prepared = Prepared(look);
        CodeLook codes;
        return codes.Prepare(stored, {}, prepared->CurvesView(), prepared->CubesView());
    };
    Look look = CubeLook(CubeOf(5, Inverted));
    EXPECT_TRUE(isTaken(look));
    look.strength = 0.5F;
    EXPECT_TRUE(isTaken(look));
    look.curves = CurvesOf(3, [](double value) { return value; });
    EXPECT_FALSE(isTaken(look)) << "a mixture of the cube and what came before the curves";
    look.strength = 1.0F;
    EXPECT_TRUE(isTaken(look));
    look.cdlMode = CdlMode::Unclamped;
    look.cdl.saturation = 1.5F;
    EXPECT_FALSE(isTaken(look));
    look.cdlMode = CdlMode::None;
    EXPECT_TRUE(isTaken(look)) << "a correction that is off";
    look.cube = CubeOf(5, [](const Rgb& value) { return Rgb{9.0F * value.r, 0.0F, 0.0F}; });
    EXPECT_FALSE(isTaken(look));
    Domain narrow;
    narrow[1] = {0.25F, 0.75F};
    Look part = CubeLook(CubeOf(5, Inverted, narrow));
    part.strength = 0.5F;
    EXPECT_FALSE(isTaken(part)) << "codes outside the domain";
}

TEST(CodeLook, RowsMayLieAnywhereAndBeRenderedInPlace)
{
    const auto look = Prepared(CubeLook(CubeOf(33, Swirled)));
    const CodeCube& cube = look->Codes().Cube();
    const Bytes source = RandomPixels(21, 9);
    Bytes plain(source.size());
    RenderCodesPlainly(cube, source.data(), plain.data(), 21);
    for (const InstructionSet set : AvailableSets())
    {
        for (std::size_t shift = 0; shift < 8; ++shift)
        {
            Bytes memory(shift + source.size());
            std::memcpy(memory.data() + shift, source.data(), source.size());
            RenderCodes(set, cube, memory.data() + shift, memory.data() + shift, 21);
            EXPECT_EQ(std::memcmp(memory.data() + shift, plain.data(), plain.size()), 0);
        }
    }
}

TEST(CodeLook, RowsAreRenderedFromStacksOfEveryAlignment)
{
    const Bytes source = RandomPixels(32, 10);
    for (const NamedLook& named : LooksOfCubes())
    {
        const auto look = Prepared(named.look);
        const CodeCube& cube = look->Codes().Cube();
        Bytes plain(source.size());
        RenderCodesPlainly(cube, source.data(), plain.data(), 32);
        for (const InstructionSet set : AvailableSets())
        {
            FromEveryStackAlignment<0>([&] { EXPECT_EQ(Rendered(set, cube, source), plain); });
        }
    }
}

} // namespace ReferenceRenderer
