#include "reference_renderer/core/tool_chain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace ReferenceRenderer
{

TEST(ToolChain, ANewChainIsANeutralCorrection)
{
    ToolChain chain;
    chain.Begin();
    const Look look = chain.Result();
    EXPECT_EQ(look.cdlMode, CdlMode::Clamped);
    EXPECT_EQ(look.cdl.slope, (std::array{1.0F, 1.0F, 1.0F}));
    EXPECT_EQ(look.cdl.saturation, 1.0F);
}

TEST(ToolChain, ToolsAreNumberedInTheOrderInWhichTheyAreAdded)
{
    ToolChain chain;
    EXPECT_EQ(chain.Add(kToolSaturation), 0);
    EXPECT_EQ(chain.Add(kToolSlope), 1);
    EXPECT_EQ(chain.Add(kToolSaturation), 0);
    EXPECT_EQ(chain.Add(0), kToolRefused);
    EXPECT_EQ(chain.Add(5), kToolRefused);
    EXPECT_EQ(chain.Add(0xFFFFFFFFU), kToolRefused);
}

TEST(ToolChain, ParametersGoToTheirChannel)
{
    ToolChain chain;
    chain.Add(kToolSlope);
    chain.Add(kToolOffset);
    chain.Add(kToolPower);
    chain.Add(kToolSaturation);
    EXPECT_TRUE(chain.Set(kToolSlope, kParameterGreen, 1.5));
    EXPECT_TRUE(chain.Set(kToolOffset, kParameterBlue, -0.25));
    EXPECT_TRUE(chain.Set(kToolPower, kParameterAll, 2.0));
    EXPECT_TRUE(chain.Set(kToolSaturation, kParameterRed, 0.5));
    const Cdl cdl = chain.Result().cdl;
    EXPECT_EQ(cdl.slope, (std::array{1.0F, 1.5F, 1.0F}));
    EXPECT_EQ(cdl.offset, (std::array{0.0F, 0.0F, -0.25F}));
    EXPECT_EQ(cdl.power, (std::array{2.0F, 2.0F, 2.0F}));
    EXPECT_EQ(cdl.saturation, 0.5F);
}

TEST(ToolChain, ToolsThatAreNotInTheChainTakeNoValues)
{
    ToolChain chain;
    EXPECT_FALSE(chain.Set(kToolSlope, kParameterRed, 2.0));
    EXPECT_FALSE(chain.Set(77, kParameterRed, 2.0));
    EXPECT_EQ(chain.Result().cdl.slope[0], 1.0F);
}

TEST(ToolChain, ValuesThatAToolDoesNotTakeChangeNothing)
{
    ToolChain chain;
    chain.Add(kToolSlope);
    chain.Add(kToolPower);
    EXPECT_FALSE(chain.Set(kToolSlope, kParameterRed, -0.1));
    EXPECT_FALSE(chain.Set(kToolSlope, kParameterRed, std::nan("")));
    EXPECT_FALSE(chain.Set(kToolSlope, kParameterRed, std::numeric_limits<double>::infinity()));
    EXPECT_FALSE(chain.Set(kToolSlope, kParameterRed, 1e300));
    EXPECT_FALSE(chain.Set(kToolSlope, 4, 2.0));
    EXPECT_FALSE(chain.Set(kToolPower, kParameterRed, 0.0));
    EXPECT_FALSE(chain.Set(kToolPower, kParameterRed, 1e-60)) << "no float above 0";
    EXPECT_EQ(chain.Result().cdl.slope[0], 1.0F);
    EXPECT_EQ(chain.Result().cdl.power[0], 1.0F);
}

} // namespace ReferenceRenderer
