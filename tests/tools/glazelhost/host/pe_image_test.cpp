#include "tools/glazelhost/host/pe_image.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string_view>

namespace
{

// The smallest 64-bit DLL that imports two functions of one library and one by number, and one
// function of a library at its first call. One section: address 0x1000, file offset 0x200.
class TinyDll
{
public:
    static constexpr std::uint32_t kAddress = 0x1000;
    static constexpr std::uint32_t kFileOffset = 0x200;

    TinyDll() : bytes(0x400)
    {
        Put<std::uint16_t>(0, 0x5A4D);
        Put<std::uint32_t>(0x3C, 0x40);
        Put<std::uint32_t>(0x40, 0x4550);
        Put<std::uint16_t>(0x44, kMachineX64);
        Put<std::uint16_t>(0x46, 1);      // sections
        Put<std::uint16_t>(0x54, 240);    // optional header's bytes
        Put<std::uint16_t>(0x56, 0x2022); // DLL
        constexpr std::size_t kOptional = 0x58;
        Put<std::uint16_t>(kOptional, 0x20B);
        Put<std::uint32_t>(kOptional + 108, 16);
        Put<std::uint32_t>(kOptional + 112 + 8 * 1, kAddress);         // imports
        Put<std::uint32_t>(kOptional + 112 + 8 * 13, kAddress + 0x40); // delayed imports
        constexpr std::size_t kSection = kOptional + 240;
        Put<std::uint32_t>(kSection + 12, kAddress);
        Put<std::uint32_t>(kSection + 16, 0x200);
        Put<std::uint32_t>(kSection + 20, kFileOffset);

        Put<std::uint32_t>(kFileOffset + 0, kAddress + 0xC0);  // names
        Put<std::uint32_t>(kFileOffset + 12, kAddress + 0x80); // library
        Put<std::uint32_t>(kFileOffset + 16, kAddress + 0xE0); // addresses
        Put<std::uint32_t>(kFileOffset + 0x40 + 4, kAddress + 0x90);
        Put<std::uint32_t>(kFileOffset + 0x40 + 12, kAddress + 0x140);
        Put<std::uint32_t>(kFileOffset + 0x40 + 16, kAddress + 0x150);
        Put("user32.dll", kFileOffset + 0x80);
        Put("late.dll", kFileOffset + 0x90);
        Put<std::uint64_t>(kFileOffset + 0xC0, kAddress + 0x100);
        Put<std::uint64_t>(kFileOffset + 0xC8, (1ULL << 63) | 7);
        Put<std::uint64_t>(kFileOffset + 0xD0, kAddress + 0x110);
        Put("MessageBoxA", kFileOffset + 0x102);
        Put("Beep", kFileOffset + 0x112);
        Put<std::uint64_t>(kFileOffset + 0x150, kAddress + 0x160);
        Put("Later", kFileOffset + 0x162);
    }

    template <typename Number>
    void Put(std::size_t offset, Number value)
    {
        std::memcpy(bytes.data() + offset, &value, sizeof(value));
    }
    void Put(std::string_view text, std::size_t offset)
    {
        std::memcpy(bytes.data() + offset, text.data(), text.size());
    }

    std::vector<std::byte> bytes;
};

} // namespace

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
