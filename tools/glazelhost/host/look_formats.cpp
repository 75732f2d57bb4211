#include "tools/glazelhost/host/look_formats.h"

#include "tools/glazelhost/host_error.h"

#include <algorithm>
#include <array>

namespace
{

void WriteRecord(std::span<const std::byte> record, ByteWriter& target)
{
    target.Write(record.data(), record.size());
}

constexpr std::array kFormats{
    LookFormat{".look", WriteRecord}, // as the renderer made it
};

std::string_view EndingOf(std::string_view path) noexcept
{
    const auto dot = path.find_last_of("./\\:");
    return dot != std::string_view::npos && path[dot] == '.' ? path.substr(dot)
                                                             : std::string_view();
}

bool SameLetter(char letter, char lower) noexcept
{
    return letter == lower || (letter >= 'A' && letter <= 'Z' && letter - 'A' + 'a' == lower);
}

} // namespace

const LookFormat& LookFormatOf(const std::string& path)
{
    const std::string_view ending = EndingOf(path);
    const auto found = std::ranges::find_if(kFormats, [ending](const LookFormat& format) {
        return std::ranges::equal(ending, format.ending, SameLetter);
    });
    if (found != kFormats.end())
    {
        return *found;
    }
    std::string known;
    for (const LookFormat& format : kFormats)
    {
        known.append(known.empty() ? "" : " or ").append(format.ending);
    }
    throw HostError(path,
                    ending.empty() ? "its name does not say what kind of look to write"
                                   : "looks are not written as " + std::string(ending),
                    "name a file that ends in " + known, ExitCode::WrongUsage);
}
