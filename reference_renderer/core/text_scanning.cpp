#include "reference_renderer/core/text_scanning.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace ReferenceRenderer
{

namespace
{

constexpr bool IsSpace(char c) noexcept
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

constexpr char Lower(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Bytes of the character at the front of `text`, 0 when these are no shortest-form UTF-8.
std::size_t CharacterLength(std::string_view text) noexcept
{
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const auto follows = [&](std::size_t i, unsigned low = 0x80, unsigned high = 0xBF) {
        return i < text.size() && byteAt(i) >= low && byteAt(i) <= high;
    };
    const unsigned lead = byteAt(0);
    if (lead < 0x80)
    {
        return 1;
    }
    if (lead >= 0xC2 && lead <= 0xDF)
    {
        return follows(1) ? 2 : 0;
    }
    if (lead >= 0xE0 && lead <= 0xEF)
    {
        const unsigned low = lead == 0xE0 ? 0xA0 : 0x80;  // no overlong forms
        const unsigned high = lead == 0xED ? 0x9F : 0xBF; // no surrogates
        return follows(1, low, high) && follows(2) ? 3 : 0;
    }
    if (lead >= 0xF0 && lead <= 0xF4)
    {
        const unsigned low = lead == 0xF0 ? 0x90 : 0x80;
        const unsigned high = lead == 0xF4 ? 0x8F : 0xBF; // no more than U+10FFFF
        return follows(1, low, high) && follows(2) && follows(3) ? 4 : 0;
    }
    return 0;
}

} // namespace

bool LineScanner::Next(std::string_view& line) noexcept
{
    if (m_rest.empty())
    {
        return false;
    }
    const std::size_t end = std::min(m_rest.find_first_of("\r\n"), m_rest.size());
    line = m_rest.substr(0, end);
    const std::size_t ending = m_rest.substr(end, 2) == "\r\n" ? 2 : 1;
    m_rest.remove_prefix(std::min(end + ending, m_rest.size()));
    ++m_number;
    return true;
}

std::string_view TakeWord(std::string_view& text) noexcept
{
    const auto* const start = std::find_if_not(text.begin(), text.end(), IsSpace);
    const auto* const end = std::find_if(start, text.end(), IsSpace);
    const std::string_view word(start, end);
    text = std::string_view(end, text.end());
    return word;
}

std::optional<float> ParseNumber(std::string_view word) noexcept
{
    // from_chars knows no plus sign.
    if (word.size() > 1 && word[0] == '+' && word[1] != '-')
    {
        word.remove_prefix(1);
    }
    double value = 0.0;
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value);
    if (stop != end || error == std::errc::invalid_argument)
    {
        return {};
    }
    if (error == std::errc::result_out_of_range)
    {
        // Too small or too large: the sign of the exponent tells.
        const std::size_t exponent = word.find_first_of("eE");
        const bool small = exponent != std::string_view::npos && exponent + 1 < word.size() &&
                           word[exponent + 1] == '-';
        return small ? std::optional(0.0F) : std::nullopt;
    }
    const bool usable = std::abs(value) <= double{kLargestNumber};
    return usable ? std::optional(static_cast<float>(value)) : std::nullopt;
}

std::optional<std::uint32_t> ParseCount(std::string_view word) noexcept
{
    std::uint32_t value = 0;
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value);
    return stop == end && error == std::errc() ? std::optional(value) : std::nullopt;
}

std::string CleanText(std::string_view text, std::size_t limit)
{
    std::string clean;
    while (!text.empty())
    {
        const std::size_t length = CharacterLength(text);
        const bool control = length == 1 && (text[0] < ' ' || text[0] == '\x7F');
        const bool keep = length != 0 && !control;
        if (clean.size() + (keep ? length : 1) > limit)
        {
            break;
        }
        clean += keep ? text.substr(0, length) : "?";
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return clean;
}

std::string Quoted(std::string_view word)
{
    constexpr std::size_t kLongest = 40;
    const std::string shown = CleanText(word, kLongest);
    return "'" + shown + (shown.size() < word.size() && shown.size() > kLongest - 4 ? "...'" : "'");
}

bool EqualIgnoringCase(std::string_view left, std::string_view right) noexcept
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return Lower(a) == Lower(b); });
}

} // namespace ReferenceRenderer
