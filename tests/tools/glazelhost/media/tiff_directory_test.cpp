#include "tools/glazelhost/media/tiff_directory.h"

#include "tests/tools/glazelhost/media/tiff_sample.h"

#include <gtest/gtest.h>

#include <vector>

namespace GlazelHost
{

namespace
{

// In a block of its own size, so that a look outside it is noticed.
std::vector<std::byte> BytesOf(const std::string& text)
{
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

std::string TextOf(std::span<const std::byte> bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::vector<SampleTag> Tags(bool bigEndian)
{
    return {{256, 4, NumberBytes(70000, 4, bigEndian)},
            {258, 3, NumberBytes(16, 2, bigEndian) + NumberBytes(17, 2, bigEndian)},
            {270, 2, "a description"},
            {274, 3, NumberBytes(6, 2, bigEndian)}};
}

} // namespace

TEST(TiffDirectories, AreReadInBothByteOrders)
{
    for (const bool bigEndian : {false, true})
    {
        const auto file = BytesOf(SampleTiff(Tags(bigEndian), bigEndian));
        const auto directory = TiffDirectory::Read(file);
        ASSERT_TRUE(directory);
        EXPECT_EQ(directory->Number(256), 70000U);
        EXPECT_EQ(directory->Number(258), 16U);
        EXPECT_EQ(directory->Bytes(258).size(), 4U);
        EXPECT_EQ(directory->Number(274), 6U);
        EXPECT_EQ(TextOf(directory->Bytes(270)), "a description");
        EXPECT_EQ(directory->Number(273), std::nullopt);
        EXPECT_TRUE(directory->Bytes(273).empty());
    }
}

TEST(TiffDirectories, AreCutAnywhereWithoutHarm)
{
    const std::string whole = SampleTiff(Tags(false));
    for (std::size_t size = 0; size < whole.size() - 4; ++size)
    {
        const auto file = BytesOf(whole.substr(0, size));
        const auto directory = TiffDirectory::Read(file);
        EXPECT_TRUE(!directory || !directory->Number(274)) << size;
    }
}

TEST(TiffDirectories, ValuesOutsideTheFileAreNone)
{
    for (const std::uint32_t place : {1000U, 0xFFFFFFFFU})
    {
        std::string file = SampleTiff({{270, 2, "a description"}});
        file.replace(file.size() - 8, 4, NumberBytes(place, 4, false));
        const auto bytes = BytesOf(file);
        const auto directory = TiffDirectory::Read(bytes);
        ASSERT_TRUE(directory);
        EXPECT_TRUE(directory->Bytes(270).empty()) << place;
    }
    std::string file = SampleTiff({{270, 4, "a description..."}});
    file.replace(file.size() - 12, 4, NumberBytes(0xFFFFFFFF, 4, false));
    const auto bytes = BytesOf(file);
    EXPECT_TRUE(TiffDirectory::Read(bytes)->Bytes(270).empty()) << "the count";
}

TEST(TiffDirectories, OtherFilesHaveNone)
{
    for (const std::string& file :
         {std::string(), std::string("II"), std::string("II+\0\x08\0\0\0\0\0", 10),
          std::string("IM*\0\x08\0\0\0\0\0", 10), std::string("II*\0\xFF\xFF\xFF\xFF\0\0", 10)})
    {
        EXPECT_FALSE(TiffDirectory::Read(BytesOf(file)));
    }
}

} // namespace GlazelHost
