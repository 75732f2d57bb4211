// The kinds of files that a look is written as, by the ending of their names.
// Pure: no windows.h. Tests: tests/tools/glazelhost/host/look_formats_test.cpp.
#pragma once

#include "tools/glazelhost/io/byte_stream.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

struct LookFormat
{
    std::string_view ending; // with its dot, in small letters
    void (*write)(std::span<const std::byte> record, ByteWriter& target);
};

// By the ending of `path`, in any case. Throws HostError (WrongUsage) for one that is not written:
// a file must not hold something else than its name says.
const LookFormat& LookFormatOf(const std::string& path);
