#include "tools/glazelhost/io/buffered_reader.h"

#include "tests/tools/glazelhost/io/memory_streams.h"

#include <gtest/gtest.h>

namespace
{

std::string Take(BufferedReader& reader, std::size_t size)
{
    std::string text(size, '\0');
    text.resize(reader.ReadFully(reinterpret_cast<std::byte*>(text.data()), size));
    return text;
}

} // namespace

TEST(BufferedReader, LinesAndBlocksFollowEachOtherInPiecesOfAnySize)
{
    const std::string block(10000, 'x');
    for (const std::size_t piece : {1U, 2U, 3U, 7U, 4096U, 100000U})
    {
        BufferedReader reader(ReaderOf("one\n" + block + "two\n\nend", piece));
        std::string line;
        EXPECT_EQ(reader.ReadLine(line, 100), BufferedReader::Line::Whole);
        EXPECT_EQ(line, "one");
        EXPECT_EQ(Take(reader, block.size()), block);
        EXPECT_EQ(reader.ReadLine(line, 100), BufferedReader::Line::Whole);
        EXPECT_EQ(line, "two");
        EXPECT_EQ(reader.ReadLine(line, 100), BufferedReader::Line::Whole);
        EXPECT_EQ(line, "");
        EXPECT_EQ(reader.ReadLine(line, 100), BufferedReader::Line::Cut);
        EXPECT_EQ(line, "end");
        EXPECT_EQ(reader.ReadLine(line, 100), BufferedReader::Line::End);
    }
}

TEST(BufferedReader, ALineOfTheLongestLengthIsTakenAndOneMoreIsNot)
{
    std::string line;
    BufferedReader fits(ReaderOf(std::string(50, 'a') + '\n', 7));
    EXPECT_EQ(fits.ReadLine(line, 50), BufferedReader::Line::Whole);
    EXPECT_EQ(line.size(), 50U);
    BufferedReader tooLong(ReaderOf(std::string(51, 'a') + '\n', 7));
    EXPECT_EQ(tooLong.ReadLine(line, 50), BufferedReader::Line::TooLong);
    BufferedReader endless(ReaderOf(std::string(1000000, 'a')));
    EXPECT_EQ(endless.ReadLine(line, 50), BufferedReader::Line::TooLong);
    EXPECT_LT(line.size(), 10000U); // memory stays bounded
}

TEST(BufferedReader, ABlockThatIsCutGivesWhatThereIs)
{
    BufferedReader reader(ReaderOf("abc", 2));
    EXPECT_EQ(Take(reader, 5), "abc");
    EXPECT_EQ(Take(reader, 5), "");
}

TEST(BufferedReader, SkippingCountsWhatWasBufferedAndWhatWasNot)
{
    BufferedReader reader(ReaderOf("l\n" + std::string(5000, 'x') + "tail", 10));
    std::string line;
    ASSERT_EQ(reader.ReadLine(line, 10), BufferedReader::Line::Whole);
    EXPECT_EQ(reader.Skip(5000), 5000U);
    EXPECT_EQ(Take(reader, 4), "tail");
    EXPECT_EQ(reader.Skip(1), 0U);
}
