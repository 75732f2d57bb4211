#include "tools/glazelhost/ui/progress_text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace GlazelHost
{

namespace
{

std::string OneDecimal(double value)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f", value);
    return text.data();
}

// Rounded down: 100 per cent is said when all is done and not before. A job that turns out longer
// than was thought stays at 100.
int PerCent(std::int64_t done, std::int64_t total) noexcept
{
    return total > 0 ? static_cast<int>(std::min<std::int64_t>(done * 100 / total, 100)) : 100;
}

std::string CountText(const Progress& progress)
{
    if (!progress.total)
    {
        return FrameCountText(progress.done);
    }
    return std::to_string(progress.done) + " of " + FrameCountText(*progress.total);
}

std::string SpeedText(const Progress& progress)
{
    std::string text;
    if (const auto speed = FramesPerSecond(progress))
    {
        text += ", " + OneDecimal(*speed) + " frames/s";
    }
    if (const auto left = SecondsLeft(progress))
    {
        text += ", " + DurationText(*left) + " left";
    }
    return text;
}

// Three decimals are enough for a reader and keep the lines short.
nlohmann::json Rounded(const std::optional<double>& value)
{
    return value ? nlohmann::json(std::round(*value * 1000.0) / 1000.0) : nlohmann::json(nullptr);
}

} // namespace

std::optional<double> FramesPerSecond(const Progress& progress) noexcept
{
    if (progress.done <= 0 || !(progress.seconds > 0.0))
    {
        return std::nullopt;
    }
    return static_cast<double>(progress.done) / progress.seconds;
}

std::optional<double> SecondsLeft(const Progress& progress) noexcept
{
    const auto speed = FramesPerSecond(progress);
    if (!speed || !progress.total)
    {
        return std::nullopt;
    }
    const std::int64_t rest = std::max<std::int64_t>(*progress.total - progress.done, 0);
    return static_cast<double>(rest) / *speed;
}

std::string DurationText(double seconds)
{
    constexpr double kLongest = 999.0 * 3600.0; // nobody waits longer for an exact figure
    const auto whole = static_cast<long>(std::ceil(std::clamp(seconds, 0.0, kLongest)));
    std::array<char, 32> text{};
    if (whole < 3600)
    {
        std::snprintf(text.data(), text.size(), "%ld:%02ld", whole / 60, whole % 60);
    }
    else
    {
        std::snprintf(text.data(), text.size(), "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60,
                      whole % 60);
    }
    return text.data();
}

std::string FrameCountText(std::int64_t count)
{
    return std::to_string(count) + (count == 1 ? " frame" : " frames");
}

std::string BarLine(const Progress& progress, int columns)
{
    const std::string words = CountText(progress) + SpeedText(progress);
    const auto width = static_cast<std::size_t>(std::max(columns, 0));
    if (!progress.total)
    {
        return words.substr(0, width);
    }
    std::array<char, 8> perCent{};
    const int share = PerCent(progress.done, *progress.total);
    std::snprintf(perCent.data(), perCent.size(), "%3d%% ", share);

    constexpr std::size_t kShortestBar = 5;
    constexpr std::size_t kLongestBar = 40;
    const std::size_t taken = std::string_view(perCent.data()).size() + words.size() + 3; // "[] "
    if (taken + kShortestBar > width)
    {
        return (perCent.data() + words).substr(0, width);
    }
    const std::size_t length = std::min(width - taken, kLongestBar);
    const std::size_t filled = length * static_cast<std::size_t>(share) / 100;
    std::string bar(filled, '=');
    if (filled < length)
    {
        bar += '>';
        bar.resize(length, ' ');
    }
    return perCent.data() + ("[" + bar + "] ") + words;
}

std::string PlainLine(const Progress& progress)
{
    std::string line = CountText(progress);
    if (progress.total)
    {
        line += " (" + std::to_string(PerCent(progress.done, *progress.total)) + "%)";
    }
    return line + SpeedText(progress);
}

std::string JsonLine(const Progress& progress)
{
    const nlohmann::ordered_json line{
        {"event", "progress"},
        {"frame", progress.done},
        {"frames", progress.total ? nlohmann::json(*progress.total) : nlohmann::json(nullptr)},
        {"framesPerSecond", Rounded(FramesPerSecond(progress))},
        {"secondsLeft", Rounded(SecondsLeft(progress))},
    };
    return line.dump();
}

} // namespace GlazelHost
