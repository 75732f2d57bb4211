// Why a file could not be imported. Thrown by the readers, ended by the export. Pure: no windows.h.
#pragma once

#include "contract/entry_points.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace ReferenceRenderer
{

struct ImportError
{
    std::int32_t code;   // one of RendererAPI::kImport..., negative
    std::string message; // one line: file, cause with the line number, what to do
};

// The contents of `path` are wrong. Line numbers start at 1; line 0 names none.
inline ImportError Malformed(std::string_view path, std::uint64_t line, std::string_view cause)
{
    std::string message(path);
    message += ": ";
    if (line != 0)
    {
        message += "line " + std::to_string(line) + ": ";
    }
    message += cause;
    return {RendererAPI::kImportMalformed, std::move(message)};
}

} // namespace ReferenceRenderer
