#include "reference_renderer/editor/export_format.h"

#include <algorithm>

namespace ReferenceRenderer
{

namespace
{

bool EndsWith(std::string_view path, std::string_view ending) noexcept
{
    const auto lower = [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    };
    return path.size() > ending.size() && std::equal(ending.rbegin(), ending.rend(), path.rbegin(),
                                                     [&](char a, char b) { return a == lower(b); });
}

} // namespace

const ExportFormat& ExportFormatOf(std::string_view path, std::size_t chosen) noexcept
{
    const ExportFormat& format = kExportFormats[std::min(chosen, kExportFormats.size() - 1)];
    const auto* const other =
        std::find_if(kExportFormats.begin(), kExportFormats.end(),
                     [&](const ExportFormat& known) { return EndsWith(path, known.ending); });
    return EndsWith(path, format.ending) || other == kExportFormats.end() ? format : *other;
}

std::string WithEnding(std::string_view path, const ExportFormat& format)
{
    return std::string(path) + (EndsWith(path, format.ending) ? "" : format.ending);
}

std::string WhyNotExported(const ExportFormat& format, const StoredLook& look)
{
    const bool isCorrection = format.ending == std::string_view(".cc");
    const std::string why = isCorrection ? WhyNoCorrection(look) : "";
    return why.empty() ? why : why + "; export a .cube file, or remove the LUT";
}

WrittenLook Exported(const ExportFormat& format, const PreparedLook& look,
                     std::span<const std::uint8_t> record, std::string_view title)
{
    if (format.points)
    {
        const GradeColours grade = [&look](std::span<Rgb> colours) {
            for (Rgb& colour : colours)
            {
                colour = look.Grade(colour);
            }
        };
        return WriteCubeFile(&look.Stored(), format.points, grade, title);
    }
    if (format.ending == std::string_view(".cc"))
    {
        return WriteCorrectionFile(look.Stored(), title);
    }
    return {{record.begin(), record.end()}, "the whole look", {}};
}

} // namespace ReferenceRenderer
