#include "tools/glazelhost/io/ycbcr_encoding.h"

#include <gtest/gtest.h>

TEST(YCbCrEncoding, WordsOfTheCommandLineAreKnown)
{
    EXPECT_EQ(RangeFromName("limited"), YCbCrRange::Limited);
    EXPECT_EQ(RangeFromName("full"), YCbCrRange::Full);
    EXPECT_EQ(MatrixFromName("bt601"), YCbCrMatrix::Bt601);
    EXPECT_EQ(MatrixFromName("bt709"), YCbCrMatrix::Bt709);
    EXPECT_EQ(MatrixFromName("bt2020"), YCbCrMatrix::Bt2020);
    EXPECT_FALSE(RangeFromName("Full").has_value());
    EXPECT_FALSE(MatrixFromName("709").has_value());
    EXPECT_FALSE(SamplingFromName("").has_value());
}

TEST(YCbCrEncoding, EverySamplingComesBackFromItsName)
{
    for (int row = 0; row <= static_cast<int>(ChromaSampling::Mono); ++row)
    {
        const auto sampling = static_cast<ChromaSampling>(row);
        EXPECT_EQ(SamplingFromName(SamplingName(sampling)), sampling);
        EXPECT_FALSE(DescribeSampling(sampling).empty());
    }
}

TEST(YCbCrEncoding, HighDefinitionIsRec709AndSmallerIsRec601)
{
    EXPECT_EQ(DefaultMatrix(1280, 100), YCbCrMatrix::Bt709);
    EXPECT_EQ(DefaultMatrix(100, 720), YCbCrMatrix::Bt709);
    EXPECT_EQ(DefaultMatrix(1279, 719), YCbCrMatrix::Bt601);
}
