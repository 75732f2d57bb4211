#include "reference_renderer/core/look_writing.h"

#include "reference_renderer/core/cdl_writer.h"
#include "reference_renderer/core/cube_writer.h"

#include <utility>

namespace ReferenceRenderer
{

namespace
{

std::string ContentsOf(const Look& tables)
{
    std::string text;
    if (tables.curves)
    {
        text = "1D LUT of " + std::to_string(tables.curves->size) + " entries";
    }
    if (tables.cube)
    {
        text += text.empty() ? "" : ", ";
        text += "3D LUT of " + std::to_string(tables.cube->size) + " points a side";
    }
    return text;
}

} // namespace

WrittenLook WriteCubeFile(const StoredLook* look, std::optional<std::uint32_t> points,
                          const GradeColours& grade, std::string_view title)
{
    CubeExport exported = ExportTables(look, points, grade);
    exported.tables.title = title;
    return {CubeFileText(exported.tables), ContentsOf(exported.tables), std::move(exported.losses)};
}

std::string WhyNoCorrection(const StoredLook& look)
{
    if (IsCorrection(look))
    {
        return "";
    }
    const char* const tables = look.cubeSize == 0    ? "a 1D LUT"
                               : look.curveSize == 0 ? "a 3D LUT"
                                                     : "a 1D and a 3D LUT";
    return "the look has " + std::string(tables) + ", and a .cc file holds nothing but a CDL";
}

WrittenLook WriteCorrectionFile(const StoredLook& look, std::string_view title)
{
    WrittenLook file{CorrectionFileText(look.cdl, title), "CDL", {}};
    if (look.cdlMode == CdlMode::Unclamped)
    {
        file.losses.emplace_back("the look does not clamp between the steps of its CDL, which the "
                                 "file cannot say");
    }
    else if (look.cdlMode == CdlMode::None)
    {
        file.losses.emplace_back("the look leaves values beyond 0 and 1, which a CDL clamps");
    }
    return file;
}

} // namespace ReferenceRenderer
