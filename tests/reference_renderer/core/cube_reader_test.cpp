#include "reference_renderer/core/cube_reader.h"

#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

namespace ReferenceRenderer
{

namespace
{

Look Read(const std::string& text)
{
    std::vector<std::string> warnings;
    return ReadCube(text, "test.cube", warnings);
}

std::string Failure(const std::string& text)
{
    try
    {
        Read(text);
        return {};
    }
    catch (const ImportError& error)
    {
        EXPECT_EQ(error.code, RendererAPI::kImportMalformed);
        return error.message;
    }
}

const std::string kEightNodes = "0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n";

} // namespace

TEST(CubeReader, RedIsTheFastestAxis)
{
    const Look look = Read("LUT_3D_SIZE 2\n" + kEightNodes);
    ASSERT_TRUE(look.cube);
    EXPECT_FALSE(look.curves);
    EXPECT_EQ(look.cube->size, 2U);
    const std::vector<float>& nodes = look.cube->nodes;
    EXPECT_EQ(nodes.size(), 24 + kNodePadding);
    EXPECT_EQ(nodes[3], 1.0F);  // node 1: red
    EXPECT_EQ(nodes[7], 1.0F);  // node 2: green
    EXPECT_EQ(nodes[14], 1.0F); // node 4: blue
}

TEST(CubeReader, TheFirstDialectHasADomainForEachChannel)
{
    const Look look = Read("DOMAIN_MIN -1 0 0.5\nDOMAIN_MAX 1 2 3\nLUT_1D_SIZE 2\n0 1 2\n3 4 5\n");
    ASSERT_TRUE(look.curves);
    EXPECT_EQ(look.curves->domain[0], (Interval{-1.0F, 1.0F}));
    EXPECT_EQ(look.curves->domain[2], (Interval{0.5F, 3.0F}));
    EXPECT_EQ(look.curves->values, (std::vector<float>{0, 3, 1, 4, 2, 5}));
}

TEST(CubeReader, TheSecondDialectPutsCurvesBeforeACube)
{
    const Look look = Read("LUT_1D_SIZE 3\nLUT_1D_INPUT_RANGE -0.5 2\nLUT_3D_SIZE 2\n"
                           "LUT_3D_INPUT_RANGE 0 4\n0 0 0\n1 1 1\n4 4 4\n" +
                           kEightNodes);
    ASSERT_TRUE(look.curves && look.cube);
    EXPECT_EQ(look.curves->size, 3U);
    EXPECT_EQ(look.curves->domain[1], (Interval{-0.5F, 2.0F}));
    EXPECT_EQ(look.cube->domain[1], (Interval{0.0F, 4.0F}));
    EXPECT_EQ(look.curves->values[2], 4.0F);
    EXPECT_EQ(look.cube->nodes[3], 1.0F);
}

TEST(CubeReader, CommentsBlankLinesAndTitlesMayStandAnywhereInTheHeader)
{
    const Look look =
        Read("# made by hand\n\nTITLE \"A # in quotes\"\n  # more\nLUT_1D_SIZE 2 # two\n"
             "\n0 0 0 # black\n\n# white\n1 1 1\n\n");
    EXPECT_EQ(look.title, "A # in quotes");
    EXPECT_EQ(look.curves->values[1], 1.0F);
}

TEST(CubeReader, IntegersExponentsTabsAndCarriageReturnsAreRead)
{
    const Look look = Read("LUT_1D_SIZE 2\r\n0\t1\t2\r\n1e-1 +2.5E0 .5\r\n");
    EXPECT_EQ(look.curves->values, (std::vector<float>{0.0F, 0.1F, 1.0F, 2.5F, 2.0F, 0.5F}));
}

TEST(CubeReader, UnknownKeywordsAreSkippedWithAWarning)
{
    std::vector<std::string> warnings;
    ReadCube("LUT_OF_TOMORROW\nLUT_1D_SIZE 2\n0 0 0\n1 1 1\n", "test.cube", warnings);
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_EQ(warnings[0], "line 1: 'LUT_OF_TOMORROW' is not a known keyword and was ignored");
}

TEST(CubeReader, TooFewEntriesNameTheCountsAndTheLastLine)
{
    EXPECT_EQ(Failure("LUT_3D_SIZE 2\n0 0 0\n1 1 1\n"),
              "test.cube: line 3: the file ends after 2 of the 8 entries that LUT_3D_SIZE 2 asks "
              "for; export the LUT again");
}

TEST(CubeReader, TooManyEntriesNameTheFirstOneTooMany)
{
    const std::string message = Failure("LUT_3D_SIZE 2\n" + kEightNodes + "0 0 0\n");
    EXPECT_NE(message.find("line 10: there are more entries than the 8"), std::string::npos)
        << message;
}

TEST(CubeReader, EntriesThatAreNoNumbersNameTheLineAndTheWord)
{
    EXPECT_NE(Failure("LUT_1D_SIZE 2\n0 0 0\n1 x 1\n").find("line 3: 'x'"), std::string::npos);
    EXPECT_NE(Failure("LUT_1D_SIZE 2\n0 0 0\nO.5 1 1\n").find("line 3: 'O.5'"), std::string::npos);
    EXPECT_NE(Failure("LUT_1D_SIZE 2\nnan 0 0\n1 1 1\n").find("line 2: 'nan'"), std::string::npos);
    EXPECT_NE(Failure("LUT_1D_SIZE 2\nINF 0 0\n1 1 1\n").find("line 2: 'INF'"), std::string::npos);
    EXPECT_NE(Failure("LUT_1D_SIZE 2\n0,5 0 0\n1 1 1\n").find("line 2: '0,5'"), std::string::npos);
}

TEST(CubeReader, EntriesNeedExactlyThreeNumbers)
{
    EXPECT_NE(Failure("LUT_1D_SIZE 2\n0 0\n1 1 1\n").find("line 2: an entry needs 3 numbers"),
              std::string::npos);
    EXPECT_NE(Failure("LUT_1D_SIZE 2\n0 0 0 0\n1 1 1\n").find("line 2: an entry has more than 3"),
              std::string::npos);
}

TEST(CubeReader, SizesOutsideTheirLimitsAreRefused)
{
    for (const char* size :
         {"LUT_3D_SIZE 1", "LUT_3D_SIZE 257", "LUT_1D_SIZE 1", "LUT_1D_SIZE 65537", "LUT_3D_SIZE 0",
          "LUT_3D_SIZE -3", "LUT_3D_SIZE 3 3", "LUT_3D_SIZE", "LUT_3D_SIZE 99999999999"})
    {
        const std::string message = Failure(std::string(size) + "\n0 0 0\n");
        EXPECT_NE(message.find("line 1: LUT_"), std::string::npos) << size << ": " << message;
    }
}

TEST(CubeReader, ASizeMayBeStatedOnlyOnce)
{
    EXPECT_NE(Failure("LUT_3D_SIZE 2\nLUT_3D_SIZE 2\n" + kEightNodes)
                  .find("line 2: states LUT_3D_SIZE a second time"),
              std::string::npos);
}

TEST(CubeReader, AFileWithoutASizeIsRefused)
{
    EXPECT_NE(Failure("TITLE \"x\"\n0 0 0\n").find("line 2: neither LUT_1D_SIZE"),
              std::string::npos);
    EXPECT_NE(Failure("").find("neither LUT_1D_SIZE"), std::string::npos);
}

TEST(CubeReader, DomainsMustRise)
{
    EXPECT_NE(Failure("LUT_1D_SIZE 2\nDOMAIN_MIN 0 1 0\nDOMAIN_MAX 1 1 1\n0 0 0\n1 1 1\n")
                  .find("does not rise"),
              std::string::npos);
    EXPECT_NE(Failure("LUT_1D_SIZE 2\nLUT_1D_INPUT_RANGE 1 0\n0 0 0\n1 1 1\n").find("line 2"),
              std::string::npos);
}

TEST(CubeReader, TheTwoDialectsDoNotMix)
{
    EXPECT_NE(
        Failure("LUT_1D_SIZE 2\nLUT_3D_SIZE 2\nDOMAIN_MIN 0 0 0\n0 0 0\n1 1 1\n" + kEightNodes)
            .find("keep the keywords of one dialect"),
        std::string::npos);
}

TEST(CubeReader, LongHeadersWithoutEntriesTakeNoMemoryForThem)
{
    EXPECT_NE(Failure("LUT_3D_SIZE 256\n").find("after 0 of the 16777216"), std::string::npos);
}

TEST(CubeReader, ATableForVideoRangeTakesAndGivesFullRange)
{
    // Codes of ten bits in video range: grey 502 becomes white 940 and black stays at 64.
    const double last = 64.0 / 1023.0 + 2.0 * (1023.0 - 64.0) / 1023.0;
    const Look look = Read("LUT_IN_VIDEO_RANGE\nLUT_OUT_VIDEO_RANGE\nLUT_1D_SIZE 2\n"
                           "LUT_1D_INPUT_RANGE 0.0625610948 1\n0.0625610948 0 0\n" +
                           std::to_string(last) + " 1 1\n");
    const auto prepared = Prepared(look);
    EXPECT_NEAR(prepared->Grade({0.0F, 0, 0}).r, 0.0, 2e-5);
    EXPECT_NEAR(prepared->Grade({0.5F, 0, 0}).r, 1.0, 2e-5);
    EXPECT_NEAR(look.curves->values[2], -64.0 / 876.0, 1e-6) << "code 0 is below black";
}

TEST(CubeReader, EachEndOfALutHasItsOwnRange)
{
    const std::string size = "LUT_3D_SIZE 2\n";
    const Look input = Read("LUT_IN_VIDEO_RANGE\n" + size + kEightNodes);
    EXPECT_NEAR(input.cube->domain[1].low, -64.0 / 876.0, 1e-6);
    EXPECT_NEAR(input.cube->domain[1].high, 959.0 / 876.0, 1e-6);
    EXPECT_EQ(input.cube->nodes[3], 1.0F);
    const Look output = Read("LUT_OUT_VIDEO_RANGE\n" + size + kEightNodes);
    EXPECT_EQ(output.cube->domain[1], Interval{});
    EXPECT_NEAR(output.cube->nodes[3], 959.0 / 876.0, 1e-6);
}

TEST(CubeReader, BetweenCurvesAndACubeTheRangeIsTheFilesOwn)
{
    const Look look = Read("LUT_IN_VIDEO_RANGE\nLUT_OUT_VIDEO_RANGE\nLUT_1D_SIZE 2\n"
                           "LUT_3D_SIZE 2\n0 0 0\n1 1 1\n" +
                           kEightNodes);
    EXPECT_EQ(look.curves->values[1], 1.0F);
    EXPECT_EQ(look.cube->domain[0], Interval{});
    EXPECT_NEAR(look.curves->domain[0].high, 959.0 / 876.0, 1e-6);
    EXPECT_NEAR(look.cube->nodes[0], -64.0 / 876.0, 1e-6);
}

TEST(CubeReader, ADomainThatVideoRangeLeavesNoWidthIsRefused)
{
    EXPECT_EQ(Failure("LUT_IN_VIDEO_RANGE\nLUT_1D_SIZE 2\nLUT_1D_INPUT_RANGE 0 1e-12\n0 0 0\n"
                      "1 1 1\n"),
              "test.cube: line 4: the domain in video range does not rise from its minimum to its "
              "maximum; correct the two");
}

} // namespace ReferenceRenderer
