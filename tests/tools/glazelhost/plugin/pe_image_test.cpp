#include "tools/glazelhost/plugin/pe_image.h"

#include "tests/tools/glazelhost/plugin/tiny_dll.h"

#include <gtest/gtest.h>

#include <random>

namespace GlazelHost
{

TEST(PeImage, AFileTellsItsMachineAndItsImports)
{
    const auto image = ReadPeImage(TinyDll().bytes, PeLayout::File);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->machine, kMachineX64);
    EXPECT_TRUE(image->isDll);
    ASSERT_EQ(image->imports.size(), 1u);
    EXPECT_EQ(image->imports[0].name, "user32.dll");
    ASSERT_EQ(image->imports[0].slots.size(), 3u);
    EXPECT_EQ(image->imports[0].slots[0].function, "MessageBoxA");
    EXPECT_EQ(image->imports[0].slots[0].slotOffset, 0x10E0u);
    EXPECT_EQ(image->imports[0].slots[1].function, ""); // by number
    EXPECT_EQ(image->imports[0].slots[2].function, "Beep");
    EXPECT_EQ(image->imports[0].slots[2].slotOffset, 0x10F0u);
}

TEST(PeImage, LibrariesThatAreLoadedAtTheFirstCallAreKeptApart)
{
    const auto image = ReadPeImage(TinyDll().bytes, PeLayout::File);
    ASSERT_TRUE(image);
    ASSERT_EQ(image->delayedImports.size(), 1u);
    EXPECT_EQ(image->delayedImports[0].name, "late.dll");
    ASSERT_EQ(image->delayedImports[0].slots.size(), 1u);
    EXPECT_EQ(image->delayedImports[0].slots[0].function, "Later");
}

TEST(PeImage, AFileTellsTheNamesOfItsExports)
{
    const auto image = ReadPeImage(TinyDll().bytes, PeLayout::File);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->exports, (std::vector<std::string>{"First", "Second"}));
}

TEST(PeImage, ExportsEndWhereTheirTableLeavesTheFile)
{
    TinyDll file;
    file.Put<std::uint32_t>(TinyDll::kFileOffset + 0x180 + 24, 0xFFFFFFFF); // names
    const auto image = ReadPeImage(file.bytes, PeLayout::File);
    ASSERT_TRUE(image);
    ASSERT_EQ(image->exports.size(), (0x200u - 0x1B0u) / 4u); // to the end of the section
    EXPECT_EQ(image->exports[1], "Second");
}

TEST(PeImage, ALoadedModuleIsReadByItsAddresses)
{
    const TinyDll file;
    std::vector<std::byte> memory(0x2000);
    std::memcpy(memory.data(), file.bytes.data(), TinyDll::kFileOffset);
    std::memcpy(memory.data() + TinyDll::kAddress, file.bytes.data() + TinyDll::kFileOffset, 0x200);
    const auto image = ReadPeImage(memory, PeLayout::Loaded);
    ASSERT_TRUE(image);
    ASSERT_EQ(image->imports.size(), 1u);
    EXPECT_EQ(image->imports[0].slots.at(0).function, "MessageBoxA");
}

TEST(PeImage, AThirtyTwoBitImageIsRecognised)
{
    TinyDll file;
    file.Put<std::uint16_t>(0x44, kMachineX86);
    file.Put<std::uint16_t>(0x58, 0x10B);
    const auto image = ReadPeImage(file.bytes, PeLayout::File);
    ASSERT_TRUE(image);
    EXPECT_EQ(MachineName(image->machine), "32-bit (x86)");
    EXPECT_TRUE(image->imports.empty());
}

TEST(PeImage, WhatIsNoExecutableImageIsRefused)
{
    EXPECT_FALSE(ReadPeImage({}, PeLayout::File));
    const std::vector<std::byte> zeros(512);
    EXPECT_FALSE(ReadPeImage(zeros, PeLayout::File));
    TinyDll file;
    file.Put<std::uint32_t>(0x40, 0);
    EXPECT_FALSE(ReadPeImage(file.bytes, PeLayout::File));
}

TEST(PeImage, EveryCutFileIsReadWithoutLeavingIt)
{
    const TinyDll file;
    for (std::size_t size = 0; size < file.bytes.size(); ++size)
    {
        // A copy of exactly that size: the sanitiser sees a read behind its end.
        const std::vector<std::byte> cut(file.bytes.begin(),
                                         file.bytes.begin() + static_cast<std::ptrdiff_t>(size));
        for (const PeLayout layout : {PeLayout::File, PeLayout::Loaded})
        {
            const auto image = ReadPeImage(cut, layout);
            EXPECT_EQ(image.has_value(), size >= 0x58) << size;
        }
    }
}

TEST(PeImage, DamagedFilesAreReadWithoutLeavingThem)
{
    constexpr unsigned kSeed = 20240611;
    std::mt19937 random(kSeed);
    SCOPED_TRACE(kSeed);
    for (int round = 0; round < 2000; ++round)
    {
        TinyDll file;
        for (int change = 0; change < 4; ++change)
        {
            file.bytes[random() % 0x370] = static_cast<std::byte>(random());
        }
        for (const PeLayout layout : {PeLayout::File, PeLayout::Loaded})
        {
            if (const auto image = ReadPeImage(file.bytes, layout))
            {
                EXPECT_LE(image->imports.size(), 4096u);
            }
        }
    }
}

} // namespace GlazelHost
