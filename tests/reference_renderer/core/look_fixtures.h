// Small looks and files for the tests of the reference renderer.
#pragma once

#include "reference_renderer/core/look.h"
#include "reference_renderer/core/look_import.h"
#include "reference_renderer/core/prepared_look.h"

#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ReferenceRenderer
{

// Files in memory.
class MemoryFiles final : public FileSource
{
public:
    std::map<std::string, std::string> files;

    bool Exists(const std::string& path) const override;
    std::string Read(const std::string& path) const override;
};

using Grading = std::function<Rgb(const Rgb&)>;

// A cube over `domain` that holds what `grading` gives at its nodes.
Cube CubeOf(std::uint32_t size, const Grading& grading, const Domain& domain = {});
// Curves over `domain` of one function for all channels.
Curves CurvesOf(std::uint32_t size, const std::function<double(double)>& function,
                const Domain& domain = {});

// The same as the text of a .cube file.
std::string CubeText(std::uint32_t size, const Grading& grading);

// The record of a look whose tables fit.
std::vector<std::uint8_t> RecordOf(const Look& look);
// The same as earlier versions wrote it: tables of plain 16-bit steps. A cube of at most 27.
std::vector<std::uint8_t> PlainRecordOf(const Look& look);
// The look made ready for pixels by way of its record.
std::unique_ptr<PreparedLook> Prepared(const Look& look);

Look CubeLook(Cube cube);
Look CurveLook(Curves curves);
Look CdlLook(const Cdl& cdl, CdlMode mode = CdlMode::Clamped);

// Gradings to tell apart.
Rgb Same(const Rgb& value);
Rgb Inverted(const Rgb& value);
Rgb Swirled(const Rgb& value); // smooth, mixes all channels, leaves 0..1

// What importing `text` under the name `path` throws, or "" when it succeeds.
std::string ImportMessage(const std::string& text, const std::string& path = "look.cube");

// The largest difference between two colours in any channel.
double Distance(const Rgb& left, const Rgb& right);

} // namespace ReferenceRenderer
