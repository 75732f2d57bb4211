#include "reference_renderer/core/look_import.h"

#include "reference_renderer/core/import_formats.h"
#include "reference_renderer/core/lut_fitting.h"
#include "reference_renderer/core/text_scanning.h"

#include <memory>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

using namespace RendererAPI;

struct FileAndId
{
    std::string path;
    std::string id; // empty = none asked for
};

FileAndId SplitId(std::string_view part, const FileSource& files)
{
    const std::size_t mark = part.rfind('#');
    if (mark == std::string_view::npos || files.Exists(std::string(part)))
    {
        return {std::string(part), {}};
    }
    return {std::string(part.substr(0, mark)), std::string(part.substr(mark + 1))};
}

ImportError Unrecognised(const std::string& path, const std::string& cause)
{
    return {kImportUnrecognised, path + ": " + cause};
}

// Refuses what no reader of text should see.
void CheckIsText(const std::string& path, std::string_view bytes)
{
    if (bytes.empty())
    {
        throw Unrecognised(path, "the file is empty; export the look again");
    }
    if (bytes.substr(0, 2) == "\xFF\xFE" || bytes.substr(0, 2) == "\xFE\xFF")
    {
        throw Unrecognised(path, "the file is UTF-16 text; save it as UTF-8");
    }
    if (bytes.find('\0') != std::string_view::npos)
    {
        throw Unrecognised(path, "the file is binary and no look record; choose a " + AllEndings() +
                                     " file");
    }
}

// A CDL or a LUT, by the contents of the file.
ReadLook ReadTextFile(std::string bytes, const FileAndId& file, std::uint32_t options)
{
    CheckIsText(file.path, bytes);
    if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0)
    {
        bytes.erase(0, 3);
    }
    const ImportFormat* const format = ImportFormatOf(bytes, file.path);
    if (format == nullptr)
    {
        throw Unrecognised(file.path, "the contents are neither a LUT (" +
                                          EndingsOf(FormatGroup::Lut) + "), a CDL (" +
                                          EndingsOf(FormatGroup::Cdl) +
                                          ") nor a look record; choose a file of these kinds");
    }
    return format->read({std::move(bytes), file.path, file.id, options});
}

std::string KindOf(const StoredLook& look)
{
    std::string kind = look.cdlMode == CdlMode::None ? "" : "CDL";
    const auto add = [&](const char* part) {
        kind += (kind.empty() ? "" : " and ") + std::string(part);
    };
    if (look.curveSize != 0)
    {
        add("1D LUT");
    }
    if (look.cubeSize != 0)
    {
        add("3D LUT");
    }
    return kind.empty() ? "neutral" : kind;
}

ImportedLook Finished(ReadLook read)
{
    ImportedLook imported;
    imported.title = read.look.title;
    imported.warnings = std::move(read.warnings);
    read.look.title = CleanText(read.look.title, kRecordTitleSize - 1);

    const auto stored = std::make_unique<StoredLook>();
    imported.largestError =
        read.largestError + StoreFitted(read.look, *stored, imported.warnings).size;
    imported.record.resize(kRecordSize);
    WriteRecord(*stored, RecordBytes(imported.record.data(), kRecordSize));
    imported.kind = KindOf(*stored);
    imported.contents = ContentsOf(*stored);
    return imported;
}

// A look record as it stands, or nothing when `bytes` are something else.
bool ImportRecord(const std::string& bytes, const FileAndId& file, ImportedLook& imported)
{
    const auto* const data = reinterpret_cast<const std::uint8_t*>(bytes.data());
    const auto stored = std::make_unique<StoredLook>();
    const RecordState state = ReadRecord({data, bytes.size()}, *stored);
    if (state == RecordState::Damaged)
    {
        throw Malformed(file.path, 0, "the look record is damaged; save the look again");
    }
    if (state != RecordState::Usable)
    {
        if (EndsWith(file.path, ".look"))
        {
            throw Unrecognised(file.path, "no look record, or one of a newer version; import the "
                                          "original LUT or CDL, or update the renderer");
        }
        return false;
    }
    if (!file.id.empty())
    {
        throw ImportError{kImportNotFound,
                          file.path +
                              ": a look record holds no corrections to choose by id; leave "
                              "out '#" +
                              CleanText(file.id) + "'"};
    }
    imported.record.assign(data, data + bytes.size());
    imported.kind = "look record";
    imported.title = CleanText(stored->title.data());
    imported.contents = ContentsOf(*stored);
    return true;
}

ReadLook Combined(ReadLook cdl, ReadLook lut, std::string_view path)
{
    const bool firstIsCdl = cdl.look.cdlMode != CdlMode::None && !cdl.look.curves && !cdl.look.cube;
    const bool secondIsLut = lut.look.cdlMode == CdlMode::None;
    if (!firstIsCdl || !secondIsLut)
    {
        throw ImportError{kImportBadArgument,
                          CleanText(path) + ": two files make a look only as CDL|LUT; put a CDL "
                                            "before the '|' and a LUT without one behind it"};
    }
    lut.look.cdlMode = cdl.look.cdlMode;
    lut.look.cdl = cdl.look.cdl;
    if (!cdl.look.title.empty())
    {
        lut.look.title = cdl.look.title + (lut.look.title.empty() ? "" : " + ") + lut.look.title;
    }
    lut.warnings.insert(lut.warnings.begin(), cdl.warnings.begin(), cdl.warnings.end());
    return lut;
}

void CheckArguments(std::string_view path, std::uint32_t options)
{
    if (path.empty())
    {
        throw ImportError{kImportBadArgument, "no file is named; give the path of a look"};
    }
    if ((options & ~(kImportUnclampedCdl | kImportDescribe)) != 0)
    {
        throw ImportError{kImportBadArgument,
                          CleanText(path) + ": the import options hold bits that are not known; "
                                            "update the renderer"};
    }
}

} // namespace

ImportedLook ImportLook(std::string_view path, std::uint32_t options, const FileSource& files)
{
    CheckArguments(path, options);
    const std::size_t bar = path.find('|');
    const FileAndId first = SplitId(path.substr(0, bar), files);
    std::string bytes = files.Read(first.path);
    if (bar != std::string_view::npos)
    {
        const FileAndId second = SplitId(path.substr(bar + 1), files);
        return Finished(Combined(ReadTextFile(std::move(bytes), first, options),
                                 ReadTextFile(files.Read(second.path), second, options), path));
    }
    ImportedLook imported;
    if (ImportRecord(bytes, first, imported))
    {
        return imported;
    }
    return Finished(ReadTextFile(std::move(bytes), first, options));
}

} // namespace ReferenceRenderer
