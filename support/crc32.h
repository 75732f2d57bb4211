// The cyclic redundancy check of PNG and ZIP files (polynomial 0x04C11DB7, reflected).
// Pure: no windows.h. Tests: tests/tools/glazelhost/project/project_text_test.cpp.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

constexpr std::array<std::uint32_t, 256> Crc32Table() noexcept
{
    constexpr std::uint32_t kReflectedPolynomial = 0xEDB88320;
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < table.size(); ++byte)
    {
        std::uint32_t remainder = byte;
        for (int bit = 0; bit < 8; ++bit)
        {
            remainder = (remainder >> 1U) ^ ((remainder & 1U) != 0 ? kReflectedPolynomial : 0U);
        }
        table[byte] = remainder;
    }
    return table;
}

constexpr std::uint32_t Crc32(std::span<const std::byte> bytes) noexcept
{
    constexpr auto kTable = Crc32Table();
    std::uint32_t remainder = 0xFFFFFFFF;
    for (const std::byte byte : bytes)
    {
        remainder =
            (remainder >> 8U) ^ kTable[(remainder ^ static_cast<std::uint32_t>(byte)) & 0xFFU];
    }
    return ~remainder;
}
