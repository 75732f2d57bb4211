// Lines, words and numbers of text files, independent of any locale.
// Pure: no windows.h. Tests: tests/reference_renderer/core/text_scanning_test.cpp.
#pragma once

#include "reference_renderer/core/look.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ReferenceRenderer
{

// Hands out the lines of a text one by one. Lines end with LF, CR LF or CR, the last one with the
// text. The text must outlive this.
class LineScanner
{
public:
    explicit LineScanner(std::string_view text) noexcept : m_rest(text) {}

    // False after the last line.
    bool Next(std::string_view& line) noexcept;
    // Number of the line last handed out, from 1.
    std::uint64_t Number() const noexcept { return m_number; }

private:
    std::string_view m_rest;
    std::uint64_t m_number = 0;
};

// Takes the next word off the front of `text`; empty when there is none. White space parts words.
std::string_view TakeWord(std::string_view& text) noexcept;

// The whole word as a decimal number with optional sign, fraction and exponent. Nothing when it is
// anything else, not finite or beyond kLargestNumber; numbers too small for a float become 0.
std::optional<float> ParseNumber(std::string_view word) noexcept;

// The whole word as an unsigned integer in decimal digits.
std::optional<std::uint32_t> ParseCount(std::string_view word) noexcept;

// `text` as valid UTF-8 on one line: bytes that are no UTF-8 and control characters become '?'.
// At most `limit` bytes, cut between characters.
std::string CleanText(std::string_view text, std::size_t limit = SIZE_MAX);

// The word in quotes for a message, shortened when it is long.
std::string Quoted(std::string_view word);

bool EqualIgnoringCase(std::string_view left, std::string_view right) noexcept;

} // namespace ReferenceRenderer
