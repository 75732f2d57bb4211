// The kinds of files that are imported, one row each: what recognises and reads them, what messages
// and the editor's dialog offer. Pure: no windows.h.
// Tests: tests/reference_renderer/core/import_formats_test.cpp.
#pragma once

#include "reference_renderer/core/read_look.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace ReferenceRenderer
{

// The text of a file, behind any byte order mark.
struct LookText
{
    std::string bytes;
    std::string path;          // UTF-8, for messages
    std::string id;            // of a correction in it; empty = none asked for
    std::uint32_t options = 0; // bits of LoadSessionFile
};

enum class FormatGroup
{
    Lut,
    Cdl,
    Record, // is no text: recognised and taken as it is before any of the others
};

struct ImportFormat
{
    std::string_view ending; // with its dot, in small letters
    FormatGroup group;
    bool (*looksLike)(std::string_view text) noexcept; // null for a record
    ReadLook (*read)(LookText&& file);                 // null for a record; throws ImportError
};

// In the order in which they are shown. They are tried from the last to the first: a .cube file is
// known by a line anywhere in it, the others by their beginning.
std::span<const ImportFormat> ImportFormats() noexcept;

// The format of a text: by its contents, else by the ending of its path. Null when it has none.
const ImportFormat* ImportFormatOf(std::string_view text, std::string_view path) noexcept;

bool EndsWith(std::string_view path, std::string_view ending) noexcept;

// ".cc, .ccc, .cdl", one row after the other.
std::string EndingsOf(FormatGroup group);
// The endings of all groups, as choices: ".cube, .cc or .look".
std::string AllEndings();

} // namespace ReferenceRenderer
