#include "tools/glazelhost/commands/commands.h"

#include "tools/glazelhost/commands/picture_difference.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/open_frames.h"
#include "tools/glazelhost/ui/console.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cmath>
#include <cstdio>
#include <memory>

namespace GlazelHost
{

namespace
{

constexpr std::array<const char*, 4> kChannelNames{"blue", "green", "red", "alpha"};

constexpr int kFloatDigits = 8; // tell floats apart

std::string Number(double value, int digits)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.*g", digits, value);
    return text.data();
}

// As it is, and in 8-bit codes.
std::string DifferenceText(double difference)
{
    return Number(difference, kFloatDigits) + " (" + Number(difference * 255.0, 3) + " of 255)";
}

std::string PlaceText(const PictureDifference::Place& place)
{
    return "frame " + std::to_string(place.frame) + ", pixel " + std::to_string(place.x) + "," +
           std::to_string(place.y) + ", " + kChannelNames[static_cast<std::size_t>(place.channel)] +
           ": " + Number(place.first, kFloatDigits) + " and " + Number(place.second, kFloatDigits);
}

std::string SizeText(const Image& image)
{
    return std::to_string(image.width) + " x " + std::to_string(image.height);
}

void CheckSameSize(const FrameSource& first, const Image& firstImage, const FrameSource& second,
                   const Image& secondImage)
{
    if (firstImage.width != secondImage.width || firstImage.height != secondImage.height)
    {
        throw HostError(second.FrameName(),
                        "it has " + SizeText(secondImage) + " pixels, and " + first.FrameName() +
                            " has " + SizeText(firstImage),
                        "compare pictures of one size");
    }
}

[[noreturn]] void ThrowShorter(const std::string& shorter, const std::string& longer,
                               std::int64_t frames)
{
    throw HostError(shorter,
                    "it ends after " + std::to_string(frames) +
                        (frames == 1 ? " frame, and " : " frames, and ") + longer + " goes on",
                    "compare clips of one length");
}

// The picture of the differences; does nothing when none is wanted.
class DifferenceSink
{
public:
    DifferenceSink(const CompareCommand& command, const StreamInfo& info)
        : m_amplify(command.amplify)
    {
        if (command.picture)
        {
            SinkOptions options;
            options.path = *command.picture;
            options.overwrite = command.overwrite;
            m_sink = OpenSink(options, info);
        }
    }
    void Write(const Image& first, const Image& second)
    {
        if (m_sink)
        {
            DrawDifference(first, second, m_amplify, m_image);
            m_sink->Write(m_image);
        }
    }
    void Finish()
    {
        if (m_sink)
        {
            m_sink->Finish();
        }
    }

private:
    double m_amplify;
    std::unique_ptr<FrameSink> m_sink;
    Image m_image;
};

PictureDifference Compare(const CompareCommand& command)
{
    const auto first = OpenSource(command.first);
    const auto second = OpenSource(command.second);
    StreamInfo info = first->Info();
    const std::vector<std::string>& others = second->Info().files;
    info.files.insert(info.files.end(), others.begin(), others.end());
    DifferenceSink sink(command, info);
    PictureDifference difference(command.threshold);
    Image firstImage;
    Image secondImage;
    for (std::int64_t number = first->Info().firstNumber.value_or(1);; ++number)
    {
        const bool hasFirst = first->Read(firstImage, SampleType::Float);
        const bool hasSecond = second->Read(secondImage, SampleType::Float);
        if (hasFirst != hasSecond)
        {
            const std::string& shorter = hasFirst ? command.second.path : command.first.path;
            ThrowShorter(shorter, hasFirst ? command.first.path : command.second.path,
                         difference.Frames());
        }
        if (!hasFirst)
        {
            break;
        }
        CheckSameSize(*first, firstImage, *second, secondImage);
        difference.Add(number, firstImage, secondImage);
        sink.Write(firstImage, secondImage);
    }
    if (difference.Frames() == 0)
    {
        throw HostError(command.first.path, "there is no frame to compare", "check the input");
    }
    sink.Finish();
    return difference;
}

std::string JsonOf(const CompareCommand& command, const PictureDifference& difference)
{
    using Json = nlohmann::ordered_json;
    // JSON has no infinity.
    const auto number = [](double value) { return std::isfinite(value) ? Json(value) : Json(); };
    const auto psnr = difference.Psnr();
    Json json{{"frames", difference.Frames()},
              {"identical", !difference.Worst().has_value()},
              {"largest", number(difference.Largest())},
              {"mean", number(difference.Mean())},
              {"psnr", psnr ? number(*psnr) : Json()},
              {"threshold", command.threshold},
              {"shareOverThreshold", difference.ShareOverThreshold()},
              {"worst", nullptr}};
    if (const auto& worst = difference.Worst())
    {
        json["worst"] = {{"frame", worst->frame},
                         {"x", worst->x},
                         {"y", worst->y},
                         {"channel", kChannelNames[static_cast<std::size_t>(worst->channel)]},
                         {"a", number(worst->first)},
                         {"b", number(worst->second)}};
    }
    return json.dump(2) + "\n";
}

std::string TextOf(const CompareCommand& command, const PictureDifference& difference)
{
    const auto psnr = difference.Psnr();
    std::string text = "frames          " + std::to_string(difference.Frames()) + "\n";
    text += "largest         " + DifferenceText(difference.Largest()) + "\n";
    if (const auto& worst = difference.Worst())
    {
        text += "at              " + PlaceText(*worst) + "\n";
    }
    text += "mean            " + DifferenceText(difference.Mean()) + "\n";
    text += "PSNR            " + (psnr ? Number(*psnr, 4) + " dB" : "none, they are equal") + "\n";
    text += "over threshold  " + Number(difference.ShareOverThreshold() * 100.0, 4) +
            " % of the pixels by more than " + DifferenceText(command.threshold) + "\n";
    return text;
}

void CheckLimit(const CompareCommand& command, const PictureDifference& difference,
                const std::optional<double>& limit, const char* option, ExitCode code)
{
    if (limit && IsOver(difference.Largest(), *limit))
    {
        throw HostError(command.second.path,
                        "it differs from " + command.first.path + " by up to " +
                            DifferenceText(difference.Largest()) + " at " +
                            PlaceText(difference.Worst().value()) + ", and " + option + " is " +
                            Number(*limit, kFloatDigits),
                        "look at it with --picture", code);
    }
}

} // namespace

void RunCommand(const CompareCommand& command, Reporter& /*reporter*/)
{
    const PictureDifference difference = Compare(command);
    WriteStandardOutput(command.json ? JsonOf(command, difference) : TextOf(command, difference));
    CheckLimit(command, difference, command.failOver, "--fail-over", ExitCode::OverLimit);
    CheckLimit(command, difference, command.warnOver, "--warn-over", ExitCode::OverWarning);
}

} // namespace GlazelHost
