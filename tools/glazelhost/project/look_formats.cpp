#include "tools/glazelhost/project/look_formats.h"

#include "tools/glazelhost/host_error.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

namespace GlazelHost
{

namespace
{

using namespace ReferenceRenderer;

// What a record of the reference renderer says, null for that of another one.
std::unique_ptr<const StoredLook> StoredIn(std::span<const std::byte> record)
{
    auto stored = std::make_unique<StoredLook>();
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(record.data());
    return ReadRecord({bytes, record.size()}, *stored) == RecordState::Usable ? std::move(stored)
                                                                              : nullptr;
}

WrittenLook MakeRecord(const LookToWrite& look)
{
    return {{reinterpret_cast<const char*>(look.record.data()), look.record.size()}, "record", {}};
}

WrittenLook MakeCube(const LookToWrite& look)
{
    return WriteCubeFile(StoredIn(look.record).get(), look.points, look.grade, look.title);
}

[[noreturn]] void ThrowNoCorrection(const LookToWrite& look, const std::string& why)
{
    throw HostError(look.path, why, "write a .cube or a .look file");
}

WrittenLook MakeCorrection(const LookToWrite& look)
{
    const auto stored = StoredIn(look.record);
    if (!stored)
    {
        ThrowNoCorrection(look, "only " + look.renderer +
                                    " can read the record of this look, and does not say whether "
                                    "it is a CDL");
    }
    if (const std::string why = WhyNoCorrection(*stored); !why.empty())
    {
        ThrowNoCorrection(look, why);
    }
    WrittenLook file = WriteCorrectionFile(*stored, look.title);
    for (std::string& loss : file.losses)
    {
        loss += "; read it with --unclamped";
    }
    return file;
}

// clang-format off
constexpr std::array kFormats{ // ending, is a record, is a cube, make
    LookFormat{".look", true,  false, MakeRecord}, // as the renderer made it
    LookFormat{".cube", false, true,  MakeCube},
    LookFormat{".cc",   false, false, MakeCorrection},
};
// clang-format on

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

const LookFormat& FormatOf(const std::string& path, bool recordsOnly)
{
    const std::string_view ending = EndingOf(path);
    const auto fits = [&](const LookFormat& format) { return format.isRecord || !recordsOnly; };
    const auto found = std::ranges::find_if(kFormats, [&](const LookFormat& format) {
        return fits(format) && std::ranges::equal(ending, format.ending, SameLetter);
    });
    if (found != kFormats.end())
    {
        return *found;
    }
    std::string known;
    for (const LookFormat& format : kFormats)
    {
        if (fits(format))
        {
            known.append(known.empty() ? "" : " or ").append(format.ending);
        }
    }
    throw HostError(path,
                    ending.empty() ? "its name does not say what kind of look to write"
                                   : "looks are not written as " + std::string(ending) +
                                         (recordsOnly ? " here" : ""),
                    "name a file that ends in " + known, ExitCode::WrongUsage);
}

} // namespace

const LookFormat& LookFormatOf(const std::string& path)
{
    return FormatOf(path, false);
}

void CheckIsRecordName(const std::string& path)
{
    FormatOf(path, true);
}

} // namespace GlazelHost
