#include "reference_renderer/core/import_formats.h"

#include "contract/entry_points.h"
#include "reference_renderer/core/cdl_reader.h"
#include "reference_renderer/core/clf_reader.h"
#include "reference_renderer/core/csp_reader.h"
#include "reference_renderer/core/cube_reader.h"
#include "reference_renderer/core/import_error.h"
#include "reference_renderer/core/spi_reader.h"
#include "reference_renderer/core/text_scanning.h"
#include "reference_renderer/core/three_dl_reader.h"

#include <algorithm>
#include <array>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

using namespace RendererAPI;

// Far above any collection of corrections; the parser takes several times as much memory.
constexpr std::size_t kLargestCdlFile = std::size_t{16} << 20;

void CheckHasNoId(const LookText& file)
{
    if (!file.id.empty())
    {
        throw ImportError{kImportNotFound, file.path +
                                               ": a LUT holds no corrections to choose by "
                                               "id; leave out '#" +
                                               CleanText(file.id) + "'"};
    }
}

template <Look (*Read)(std::string_view text, std::string_view path,
                       std::vector<std::string>& warnings)>
ReadLook ReadTable(LookText&& file)
{
    CheckHasNoId(file);
    ReadLook read;
    read.look = Read(file.bytes, file.path, read.warnings);
    return read;
}

template <typename Text, ReadLook (*Read)(Text text, std::string_view path)>
ReadLook ReadSteps(LookText&& file)
{
    CheckHasNoId(file);
    return Read(std::move(file.bytes), file.path);
}

// Any other XML: its reader says what is missing.
bool LooksLikeCdl(std::string_view text) noexcept
{
    return LooksLikeXml(text) && !LooksLikeClf(text);
}

ReadLook ReadCdlFile(LookText&& file)
{
    if (file.bytes.size() > kLargestCdlFile)
    {
        throw Malformed(file.path, 0, "is larger than 16 MB; split the collection");
    }
    CdlFile cdl = ReadCdl(std::move(file.bytes), file.path, file.id);
    ReadLook read;
    read.look.cdlMode =
        (file.options & kImportUnclampedCdl) != 0 ? CdlMode::Unclamped : CdlMode::Clamped;
    read.look.cdl = cdl.cdl;
    read.look.title = cdl.id.empty() ? cdl.description : cdl.id;
    read.warnings = std::move(cdl.warnings);
    return read;
}

// clang-format off
constexpr std::array kFormats{
    ImportFormat{".cube",  FormatGroup::Lut,    LooksLikeCube,  ReadTable<ReadCube>},
    ImportFormat{".3dl",   FormatGroup::Lut,    LooksLike3dl,   ReadSteps<std::string_view, Read3dl>},
    ImportFormat{".csp",   FormatGroup::Lut,    LooksLikeCsp,   ReadSteps<std::string_view, ReadCsp>},
    ImportFormat{".clf",   FormatGroup::Lut,    LooksLikeClf,   ReadSteps<std::string, ReadClf>},
    ImportFormat{".spi1d", FormatGroup::Lut,    LooksLikeSpi1d, ReadTable<ReadSpi1d>},
    ImportFormat{".spi3d", FormatGroup::Lut,    LooksLikeSpi3d, ReadTable<ReadSpi3d>},
    ImportFormat{".cc",    FormatGroup::Cdl,    LooksLikeCdl,   ReadCdlFile},
    ImportFormat{".ccc",   FormatGroup::Cdl,    LooksLikeCdl,   ReadCdlFile},
    ImportFormat{".cdl",   FormatGroup::Cdl,    LooksLikeCdl,   ReadCdlFile},
    ImportFormat{".look",  FormatGroup::Record, nullptr,        nullptr},
};
// clang-format on

} // namespace

std::span<const ImportFormat> ImportFormats() noexcept
{
    return kFormats;
}

const ImportFormat* ImportFormatOf(std::string_view text, std::string_view path) noexcept
{
    const auto find = [](auto&& matches) {
        const auto found = std::find_if(kFormats.rbegin(), kFormats.rend(), matches);
        return found == kFormats.rend() ? nullptr : &*found;
    };
    const ImportFormat* const byContents = find([&](const ImportFormat& format) {
        return format.looksLike != nullptr && format.looksLike(text);
    });
    return byContents != nullptr ? byContents : find([&](const ImportFormat& format) {
        return format.group == FormatGroup::Lut && EndsWith(path, format.ending);
    });
}

bool EndsWith(std::string_view path, std::string_view ending) noexcept
{
    return path.size() >= ending.size() &&
           EqualIgnoringCase(path.substr(path.size() - ending.size()), ending);
}

std::string EndingsOf(FormatGroup group)
{
    std::string endings;
    for (const ImportFormat& format : kFormats)
    {
        if (format.group == group)
        {
            endings.append(endings.empty() ? "" : ", ").append(format.ending);
        }
    }
    return endings;
}

std::string AllEndings()
{
    std::string endings;
    for (const ImportFormat& format : kFormats)
    {
        endings.append(endings.empty() ? "" : &format == &kFormats.back() ? " or " : ", ");
        endings.append(format.ending);
    }
    return endings;
}

} // namespace ReferenceRenderer
