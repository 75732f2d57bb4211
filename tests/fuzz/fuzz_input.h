// What the fuzz targets share. Each is a program of libFuzzer's; CONTRIBUTING.md tells how to run
// one for long.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>

// Ends the program when something does not hold that must; the fuzzer then keeps the input.
inline void Require(bool holds)
{
    if (!holds)
    {
        std::abort();
    }
}

inline std::string StringOf(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

// Changes single bytes of a sound sample, as long as there is input: most of it stays sound, so
// that the reader gets beyond its first checks.
inline void Damage(std::span<std::byte> sample, FuzzedDataProvider& input)
{
    while (!sample.empty() && input.remaining_bytes() > 0)
    {
        const auto place = input.ConsumeIntegralInRange<std::size_t>(0, sample.size() - 1);
        sample[place] = static_cast<std::byte>(input.ConsumeIntegral<std::uint8_t>());
    }
}
