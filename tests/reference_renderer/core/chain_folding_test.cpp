#include "reference_renderer/core/chain_folding.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace ReferenceRenderer
{

namespace
{

AffineStep Scaled(const Triple& scale, const Triple& offset)
{
    return {{{{scale[0], 0, 0}, {0, scale[1], 0}, {0, 0, scale[2]}}}, offset};
}

const AffineStep kMixing{{{{0.9, 0.1, 0.0}, {0.2, 0.7, 0.1}, {0.0, 0.3, 0.7}}}, {0.0, 0.01, 0.02}};

CurveStep Between(const CurvePoint& low, const CurvePoint& high)
{
    const std::vector<CurvePoint> points{low, high};
    return {{points, points, points}};
}

CurveStep Bent()
{
    const std::vector<CurvePoint> points{{0, 0.1}, {0.3, 0.6}, {1, 0.9}};
    return {{points, points, points}};
}

CubeStep SwirledCube()
{
    return {CubeOf(5, Swirled), false};
}

// Compares the chain and what is made of it, inside and outside of 0..1.
void ExpectSame(const ColourChain& chain, const ColourChain& folded)
{
    std::mt19937 random(5);
    std::uniform_real_distribution<double> value(-0.5, 1.5);
    for (int i = 0; i < 500; ++i)
    {
        const Triple input{value(random), value(random), value(random)};
        const Triple exact = Applied(chain, input);
        const Triple made = Applied(folded, input);
        for (std::size_t channel = 0; channel < 3; ++channel)
        {
            ASSERT_NEAR(made[channel], exact[channel], 1e-5) << "input " << i;
        }
    }
}

std::size_t StepsOf(const ColourChain& chain)
{
    const ColourChain folded = Folded(chain);
    ExpectSame(chain, folded);
    return folded.size();
}

} // namespace

TEST(ChainFolding, NeutralMatricesGo)
{
    EXPECT_EQ(StepsOf({AffineStep{}, Bent(), AffineStep{}}), 1U);
    EXPECT_EQ(StepsOf({Scaled({2, 2, 2}, {}), Scaled({0.5, 0.5, 0.5}, {})}), 0U);
}

TEST(ChainFolding, MatricesBecomeOne)
{
    EXPECT_EQ(StepsOf({kMixing, Scaled({2, 3, 4}, {0.5, 0, 0}), kMixing}), 1U);
}

TEST(ChainFolding, AScaleMovesTheInputsBehindIt)
{
    const AffineStep scale = Scaled({2, 0.5, 1.5}, {-0.2, 0.1, 0});
    EXPECT_EQ(StepsOf({scale, Bent()}), 1U);
    EXPECT_EQ(StepsOf({scale, SwirledCube()}), 1U);
    EXPECT_EQ(StepsOf({scale, CdlStep{{{1.1F, 0.9F, 1}, {0.1F, 0, 0}, {2, 1, 1}, 0.5F}}}), 1U);
    EXPECT_EQ(StepsOf({Scaled({-1, 1, 1}, {1, 0, 0}), SwirledCube()}), 2U) << "it would turn round";
    EXPECT_EQ(StepsOf({kMixing, SwirledCube()}), 2U);
    EXPECT_EQ(StepsOf({scale, CdlStep{{}, CdlMode::Clamped, true}}), 2U);
}

TEST(ChainFolding, AMatrixMovesTheOutputsBeforeIt)
{
    EXPECT_EQ(StepsOf({SwirledCube(), kMixing}), 1U);
    EXPECT_EQ(StepsOf({Bent(), Scaled({2, -3, 4}, {0, 0, 1})}), 1U);
    EXPECT_EQ(StepsOf({Bent(), kMixing}), 2U);
}

TEST(ChainFolding, ALimitThatCutsNothingOffGoes)
{
    EXPECT_EQ(StepsOf({Between({0, 0}, {1, 1}), SwirledCube()}), 1U);
    EXPECT_EQ(StepsOf({Between({0, 0}, {kLargestNumber, kLargestNumber}), SwirledCube()}), 1U);
    EXPECT_EQ(StepsOf({Bent(), Between({0, 0}, {1, 1})}), 1U);
    EXPECT_EQ(StepsOf({CdlStep{}, Between({0, 0}, {1, 1})}), 1U);
    EXPECT_EQ(StepsOf({Between({0, -1}, {1, 2}), SwirledCube()}), 1U) << "it scales as well";
}

TEST(ChainFolding, ALimitThatCutsOffStays)
{
    EXPECT_EQ(StepsOf({Between({0.1, 0.1}, {1, 1}), SwirledCube()}), 2U);
    EXPECT_EQ(StepsOf({Bent(), Between({0.2, 0}, {1, 1})}), 2U);
    EXPECT_EQ(StepsOf({SwirledCube(), Between({0.1, 0.1}, {0.5, 0.5})}), 2U);
    EXPECT_EQ(StepsOf({CdlStep{{}, CdlMode::Unclamped}, Between({0, 0}, {1, 1})}), 2U);
}

TEST(ChainFolding, ChainsOfAllKindsDoTheSameAfterwards)
{
    const FunctionStep root{{[](double x) { return std::cbrt(x); }, [](double x) { return x; },
                             [](double x) { return 1 - x; }}};
    const std::vector<ChainStep> kinds{
        AffineStep{},
        kMixing,
        Scaled({0.5, 1.5, 1}, {0.1, -0.1, 0}),
        Bent(),
        Between({0, 0}, {1, 1}),
        Between({-1, 0}, {2, 1}),
        Between({0, 0}, {kLargestNumber, kLargestNumber}),
        root,
        CdlStep{{{1.1F, 0.9F, 1}, {0.1F, 0, 0}, {2, 1, 1}, 0.5F}},
        CdlStep{{{1.1F, 0.9F, 1}, {0.1F, 0, 0}, {2, 1, 1}, 0.5F}, CdlMode::Unclamped, true},
        SwirledCube(),
        CubeStep{CubeOf(3, Inverted), true},
    };
    std::mt19937 random(11);
    for (int i = 0; i < 200; ++i)
    {
        ColourChain chain;
        for (std::size_t length = 1 + random() % 6; length > 0; --length)
        {
            chain.push_back(kinds[random() % kinds.size()]);
        }
        const ColourChain folded = Folded(chain);
        ASSERT_LE(folded.size(), chain.size());
        ExpectSame(chain, folded);
    }
}

} // namespace ReferenceRenderer
