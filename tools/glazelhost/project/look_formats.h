// The kinds of files that a look is written as, by the ending of their names.
// Pure: no windows.h. Tests: tests/tools/glazelhost/project/look_formats_test.cpp.
#pragma once

#include "reference_renderer/core/look_writing.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace GlazelHost
{

// What a file is made of.
struct LookToWrite
{
    std::string path; // of the file
    std::span<const std::byte> record;
    std::string title;
    std::optional<std::uint32_t> points;   // of a cube; none: as suits the look
    ReferenceRenderer::GradeColours grade; // by the renderer, with the record
    std::string renderer;                  // its path
};

using ReferenceRenderer::WrittenLook;

struct LookFormat
{
    std::string_view ending; // with its dot, in small letters
    bool isRecord;           // holds the whole record, its option "assume linear gamma" included
    bool isCube;             // has a number of points
    WrittenLook (*make)(const LookToWrite& look); // throws HostError when the file cannot hold it
};

// By the ending of `path`, in any case. Throws HostError (WrongUsage) for one that is not written:
// a file must not hold something else than its name says.
const LookFormat& LookFormatOf(const std::string& path);

// Throws HostError (WrongUsage) unless a file of that name holds a whole record.
void CheckIsRecordName(const std::string& path);

} // namespace GlazelHost
