#include "tools/glazelhost/media/sequence_pattern.h"

#include "tools/glazelhost/host_error.h"

#include <algorithm>
#include <charconv>

namespace GlazelHost
{

namespace
{

constexpr std::size_t kMostDigits = 18; // of a number that fits 64 bits whatever its digits

bool IsDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

char Lower(char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EqualWithoutCase(std::string_view a, std::string_view b) noexcept
{
    return std::ranges::equal(a, b, {}, Lower, Lower);
}

// One conversion in a text: its place and, in digits, its least length.
struct Conversion
{
    std::size_t begin;
    std::size_t end;
    std::size_t digits;
};

[[noreturn]] void Refuse(const std::string& path, const std::string& why)
{
    throw HostError(path, why, "name a sequence like shot_%04d.png", ExitCode::WrongUsage);
}

// The first conversion at or behind `from`. "%d", "%0Nd" and a run of "#" are ones; "%5d" and
// "%00d" look like one and are refused; anything else behind a per cent sign is text.
std::optional<Conversion> FindConversion(std::string_view text, std::size_t from,
                                         const std::string& path)
{
    for (std::size_t begin = text.find_first_of("%#", from); begin != std::string_view::npos;
         begin = text.find_first_of("%#", begin))
    {
        std::size_t end = begin + 1;
        if (text[begin] == '#')
        {
            end = std::min(text.find_first_not_of('#', begin), text.size());
            if (end - begin > kMostDigits)
            {
                Refuse(path, "a number has at most " + std::to_string(kMostDigits) + " digits");
            }
            return Conversion{begin, end, end - begin};
        }
        if (end < text.size() && text[end] == '%')
        {
            begin += 2;
            continue;
        }
        while (end < text.size() && IsDigit(text[end]))
        {
            ++end;
        }
        if (end == text.size() || text[end] != 'd')
        {
            begin = end;
            continue;
        }
        const std::string_view digits = text.substr(begin + 1, end - begin - 1);
        std::size_t count = 1;
        if (!digits.empty())
        {
            std::from_chars(digits.data(), digits.data() + digits.size(), count);
            if (digits.front() != '0' || count < 1 || count > kMostDigits)
            {
                Refuse(path, "\"" + std::string(text.substr(begin, end + 1 - begin)) +
                                 "\" is not a number that is known here");
            }
        }
        return Conversion{begin, end + 1, count};
    }
    return std::nullopt;
}

// "%%" stands for one per cent sign.
std::string Unescaped(std::string_view text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        plain += text[i];
        i += text.substr(i).starts_with("%%") ? 1U : 0U;
    }
    return plain;
}

} // namespace

std::optional<SequencePattern> SequencePattern::Parse(const std::string& path)
{
    const auto separator = path.find_last_of("/\\");
    const std::size_t nameBegin = separator == std::string::npos ? 0 : separator + 1;
    const std::string_view name = std::string_view(path).substr(nameBegin);
    const auto number = FindConversion(name, 0, path);
    if (!number)
    {
        return std::nullopt;
    }
    if (FindConversion(name, number->end, path))
    {
        Refuse(path, "there are two numbers in the name");
    }
    SequencePattern pattern;
    pattern.m_path = path;
    pattern.m_folder = path.substr(0, nameBegin);
    pattern.m_before = Unescaped(name.substr(0, number->begin));
    pattern.m_after = Unescaped(name.substr(number->end));
    pattern.m_digits = number->digits;
    return pattern;
}

std::string SequencePattern::FileNameOf(std::int64_t number) const
{
    std::string digits = std::to_string(number);
    if (digits.size() < m_digits)
    {
        digits.insert(0, m_digits - digits.size(), '0');
    }
    return m_before + digits + m_after;
}

std::string SequencePattern::PathOf(std::int64_t number) const
{
    return m_folder + FileNameOf(number);
}

std::optional<std::int64_t> SequencePattern::NumberOf(std::string_view fileName) const
{
    if (fileName.size() <= m_before.size() + m_after.size())
    {
        return std::nullopt;
    }
    const std::string_view digits =
        fileName.substr(m_before.size(), fileName.size() - m_before.size() - m_after.size());
    std::int64_t number = 0;
    if (digits.size() > kMostDigits || !std::ranges::all_of(digits, IsDigit))
    {
        return std::nullopt;
    }
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    // Only the name that the number itself would get is one of the sequence: not shot_00012.png
    // for %04d.
    return EqualWithoutCase(FileNameOf(number), fileName) ? std::optional(number) : std::nullopt;
}

} // namespace GlazelHost
