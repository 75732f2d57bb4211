#include "tools/glazelhost/media/zlib_block.h"

#include <gtest/gtest.h>

#include <random>

namespace GlazelHost
{

namespace
{

std::vector<std::byte> RandomBytes(std::size_t count)
{
    std::mt19937 random(9);
    std::vector<std::byte> bytes(count);
    for (std::byte& byte : bytes)
    {
        byte = static_cast<std::byte>(random() % 23);
    }
    return bytes;
}

} // namespace

TEST(ZlibBlocks, GiveBackWhatWasPacked)
{
    for (const std::size_t count : {1U, 3000U, 65536U, 65537U, 3000000U})
    {
        const std::vector<std::byte> bytes = RandomBytes(count);
        const std::vector<std::byte> packed = Packed(bytes);
        EXPECT_EQ(Unpacked(packed), bytes) << count;
        EXPECT_LT(packed.size(), count + 20);
    }
}

TEST(ZlibBlocks, ThatAreCutGiveNothing)
{
    const std::vector<std::byte> packed = Packed(RandomBytes(3000));
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, packed.size() / 2})
    {
        EXPECT_FALSE(Unpacked(std::span(packed).first(size))) << size;
    }
}

TEST(ZlibBlocks, ThatHoldTooMuchGiveNothing)
{
    EXPECT_FALSE(Unpacked(Packed(std::vector<std::byte>((std::size_t{1} << 24) + 1))));
}

} // namespace GlazelHost
