// A DLL to read, for tests. Pure: no windows.h.
#pragma once

#include "tools/glazelhost/plugin/pe_image.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace GlazelHost
{

// The smallest 64-bit DLL that imports two functions of one library and one by number, one function
// of a library at its first call, and exports two functions. One section: address 0x1000, file
// offset 0x200.
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
        Put<std::uint32_t>(kOptional + 112, kAddress + 0x180);         // exports
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
        Put<std::uint32_t>(kFileOffset + 0x180 + 24, 2); // names
        Put<std::uint32_t>(kFileOffset + 0x180 + 32, kAddress + 0x1B0);
        Put<std::uint32_t>(kFileOffset + 0x1B0, kAddress + 0x1C0);
        Put<std::uint32_t>(kFileOffset + 0x1B4, kAddress + 0x1D0);
        Put("First", kFileOffset + 0x1C0);
        Put("Second", kFileOffset + 0x1D0);
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

} // namespace GlazelHost
