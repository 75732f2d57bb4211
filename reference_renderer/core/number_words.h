// Numbers as the words of text files. Pure: no windows.h.
// Tests: tests/reference_renderer/core/cube_writer_test.cpp.
#pragma once

#include <array>
#include <charconv>
#include <cstddef>
#include <string>

namespace ReferenceRenderer
{

// Appends the shortest decimal number, without an exponent, that reads back as the same float: some
// programs know no exponents. `number` is finite.
inline void AppendFloat(std::string& text, float number)
{
    std::array<char, 192> digits{}; // the smallest float has 149 places
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                      std::chars_format::fixed);
    text.append(digits.data(), result.ptr);
}

// `count` numbers with blanks between them.
inline void AppendFloats(std::string& text, const float* numbers, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
    {
        text += i == 0 ? "" : " ";
        AppendFloat(text, numbers[i]);
    }
}

// With `digits` significant digits, independent of any locale.
inline std::string NumberText(double number, int digits)
{
    std::array<char, 32> text{};
    const auto result = std::to_chars(text.data(), text.data() + text.size(), number,
                                      std::chars_format::general, digits);
    return {text.data(), result.ptr};
}

} // namespace ReferenceRenderer
