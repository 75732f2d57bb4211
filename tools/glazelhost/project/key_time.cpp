#include "tools/glazelhost/project/key_time.h"

#include <charconv>
#include <cmath>

namespace GlazelHost
{

namespace
{

constexpr std::int64_t kLargestFrame = 1'000'000'000;
constexpr std::int64_t kLargestSeconds = 1'000'000;
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
constexpr std::size_t kMostDecimals = 9;

bool IsDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

// A number of digits alone that is at most `largest`.
std::optional<std::int64_t> WholeNumber(std::string_view digits, std::int64_t largest)
{
    std::int64_t number = 0;
    const char* const end = digits.data() + digits.size();
    if (digits.empty() || !IsDigit(digits.front()))
    {
        return std::nullopt; // from_chars would take a sign
    }
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    const bool isNumber = error == std::errc() && stop == end && number <= largest;
    return isNumber ? std::optional(number) : std::nullopt;
}

// "25" after the point is 250 000 000.
std::optional<std::int64_t> Nanoseconds(std::string_view decimals)
{
    if (decimals.size() > kMostDecimals)
    {
        return std::nullopt;
    }
    std::string padded(decimals);
    padded.resize(kMostDecimals, '0');
    return decimals.empty() ? std::nullopt : WholeNumber(padded, kNanosecondsPerSecond);
}

// [[HH:]MM:]SS; what stands behind a colon is below 60.
std::optional<std::int64_t> WholeSeconds(std::string_view text)
{
    constexpr int kMostColons = 2;
    std::int64_t seconds = 0;
    for (int colons = 0;; ++colons)
    {
        const auto colon = text.find(':');
        const auto part =
            WholeNumber(text.substr(0, colon), colons == 0 ? kLargestSeconds : std::int64_t{59});
        if (!part || colons > kMostColons)
        {
            return std::nullopt;
        }
        seconds = seconds * 60 + *part;
        if (colon == std::string_view::npos)
        {
            return seconds <= kLargestSeconds ? std::optional(seconds) : std::nullopt;
        }
        text.remove_prefix(colon + 1);
    }
}

} // namespace

std::optional<KeyTime> ParseKeyTime(std::string_view text)
{
    if (text.ends_with('f'))
    {
        const auto frame = WholeNumber(text.substr(0, text.size() - 1), kLargestFrame);
        return frame ? std::optional(KeyTime{KeyTime::Unit::Frames, *frame}) : std::nullopt;
    }
    const auto point = text.find('.');
    const auto seconds = WholeSeconds(text.substr(0, point));
    const auto rest = point == std::string_view::npos ? std::optional<std::int64_t>(0)
                                                      : Nanoseconds(text.substr(point + 1));
    if (!seconds || !rest)
    {
        return std::nullopt;
    }
    return KeyTime{KeyTime::Unit::Nanoseconds, *seconds * kNanosecondsPerSecond + *rest};
}

std::string TextOf(const KeyTime& time)
{
    if (time.unit == KeyTime::Unit::Frames)
    {
        return std::to_string(time.count) + 'f';
    }
    std::string text = std::to_string(time.count / kNanosecondsPerSecond);
    const std::string rest = std::to_string(time.count % kNanosecondsPerSecond);
    text += '.' + std::string(kMostDecimals - rest.size(), '0') + rest;
    text.erase(text.find_last_not_of('0') + 1);
    return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

double FramePosition(const KeyTime& time, double framesPerSecond) noexcept
{
    if (time.unit == KeyTime::Unit::Frames)
    {
        return static_cast<double>(time.count);
    }
    constexpr double kHalfMillisecond = 0.0005 + 1e-9; // and what doubles lose
    const double position = static_cast<double>(time.count) * 1e-9 * framesPerSecond;
    const double frame = std::round(position);
    return std::abs(position - frame) <= kHalfMillisecond * framesPerSecond ? frame : position;
}

} // namespace GlazelHost
