// Reads ASC CDL corrections from .cc, .ccc and .cdl files, which their root element tells apart.
// Namespace prefixes are ignored; a missing step has its neutral values.
// Pure: no windows.h. Tests: tests/reference_renderer/core/cdl_reader_test.cpp.
#pragma once

#include "reference_renderer/core/look.h"
#include "reference_renderer/core/xml_document.h"

#include <string>
#include <string_view>
#include <vector>

namespace ReferenceRenderer
{

struct CdlFile
{
    Cdl cdl;
    std::string id;                    // of the correction that was taken; may be empty
    std::string description;           // its own words; may be empty
    std::vector<std::string> warnings; // such as: more corrections than the one taken
};

// The correction with the given id, or the first one when `id` is empty. `text` is consumed: the
// parser works in it. `path` is for messages. Throws ImportError.
CdlFile ReadCdl(std::string text, std::string_view path, std::string_view id);

// The correction in one element, which messages call `name`. Throws ImportError.
CdlFile ReadCorrection(const XmlNode& element, const std::string& name, std::string_view path);

} // namespace ReferenceRenderer
