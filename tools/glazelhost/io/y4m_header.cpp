#include "tools/glazelhost/io/y4m_header.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/io/pixel_convert.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>

namespace
{

std::string Quoted(std::string_view text)
{
    constexpr std::size_t kEnough = 40;
    std::string quoted = "\"";
    for (const char c : text.substr(0, kEnough))
    {
        quoted += c >= ' ' && c <= '~' ? c : '?'; // a damaged header stays one readable line
    }
    return quoted + (text.size() > kEnough ? "...\"" : "\"");
}

[[noreturn]] void RefuseParameter(const std::string& name, std::string_view parameter)
{
    throw HostError(name, "its Y4M header has the bad parameter " + Quoted(parameter),
                    "make the file again");
}

// A whole number and nothing else.
std::optional<std::uint32_t> NumberOf(std::string_view digits) noexcept
{
    std::uint32_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

// "30000:1001"; a zero on either side says that the ratio is not known.
std::optional<Ratio> RatioFrom(std::string_view text) noexcept
{
    const auto colon = text.find(':');
    if (colon == std::string_view::npos)
    {
        return std::nullopt;
    }
    const auto numerator = NumberOf(text.substr(0, colon));
    const auto denominator = NumberOf(text.substr(colon + 1));
    if (!numerator || !denominator)
    {
        return std::nullopt;
    }
    return *numerator == 0 || *denominator == 0 ? Ratio{} : Ratio{*numerator, *denominator};
}

void CheckProgressive(std::string_view interlacing, const std::string& name)
{
    if (interlacing != "p" && interlacing != "?")
    {
        throw HostError(name, "the video is interlaced (I" + std::string(interlacing) + ")",
                        "deinterlace it first, for example with ffmpeg -vf bwdif");
    }
}

ChromaSampling ChromaFrom(std::string_view chroma, const std::string& name)
{
    const auto sampling = SamplingFromName(chroma);
    if (!sampling)
    {
        throw HostError(name, "the chroma format " + Quoted(chroma) + " is not supported",
                        "convert it to 8-bit 4:2:0, 4:2:2 or 4:4:4, for example with ffmpeg "
                        "-pix_fmt yuv444p");
    }
    return *sampling;
}

std::optional<YCbCrRange> RangeFromExtension(std::string_view extension) noexcept
{
    if (extension == "COLORRANGE=FULL")
    {
        return YCbCrRange::Full;
    }
    return extension == "COLORRANGE=LIMITED" ? std::optional(YCbCrRange::Limited) : std::nullopt;
}

void ApplyParameter(Y4mHeader& header, std::string_view parameter, const std::string& name)
{
    const std::string_view value = parameter.substr(1);
    switch (parameter.front())
    {
    case 'W':
    case 'H':
    {
        const auto side = NumberOf(value);
        if (!side)
        {
            RefuseParameter(name, parameter);
        }
        // What no int holds is refused with every other size that is too large.
        constexpr auto kLargestInt = static_cast<std::uint32_t>(std::numeric_limits<int>::max());
        (parameter.front() == 'W' ? header.width : header.height) =
            static_cast<int>(std::min(*side, kLargestInt));
        break;
    }
    case 'F':
    case 'A':
    {
        const auto ratio = RatioFrom(value);
        if (!ratio)
        {
            RefuseParameter(name, parameter);
        }
        (parameter.front() == 'F' ? header.rate : header.pixelAspect) = *ratio;
        break;
    }
    case 'I':
        CheckProgressive(value, name);
        break;
    case 'C':
        header.sampling = ChromaFrom(value, name);
        break;
    case 'X':
        if (const auto range = RangeFromExtension(value))
        {
            header.range = range;
        }
        break;
    default:
        break;
    }
}

std::string RatioText(const Ratio& ratio)
{
    return std::to_string(ratio.numerator) + ':' + std::to_string(ratio.denominator);
}

} // namespace

Y4mHeader ParseY4mHeader(std::string_view line, const std::string& name)
{
    if (!line.starts_with(kY4mMagic) ||
        (line.size() > kY4mMagic.size() && line[kY4mMagic.size()] != ' '))
    {
        throw HostError(name, "this is not a Y4M stream (it begins with " + Quoted(line) + ")",
                        "give a Y4M stream, for example ffmpeg's -f yuv4mpegpipe");
    }
    Y4mHeader header;
    std::string_view rest = line.substr(kY4mMagic.size());
    while (!rest.empty())
    {
        rest.remove_prefix(1); // the space
        const std::string_view parameter = rest.substr(0, rest.find(' '));
        if (!parameter.empty())
        {
            ApplyParameter(header, parameter, name);
        }
        rest.remove_prefix(parameter.size());
    }
    CheckSize(name, header.width, header.height);
    return header;
}

std::string FormatY4mHeader(const Y4mHeader& header)
{
    std::string line(kY4mMagic);
    line += " W" + std::to_string(header.width) + " H" + std::to_string(header.height);
    line += " F" + RatioText(header.rate) + " Ip A" + RatioText(header.pixelAspect);
    line += " C" + std::string(SamplingName(header.sampling));
    if (header.range)
    {
        line += *header.range == YCbCrRange::Full ? " XCOLORRANGE=FULL" : " XCOLORRANGE=LIMITED";
    }
    return line + '\n';
}

bool IsY4mFrameLine(std::string_view line) noexcept
{
    return line.starts_with(kY4mFrameMagic) &&
           (line.size() == kY4mFrameMagic.size() || line[kY4mFrameMagic.size()] == ' ');
}
