// A look as the renderer gave it out, and the two things that the host reads of it: the option
// "assume linear gamma" in the record, and the renderer's description.
// Pure: no windows.h. Tests: tests/tools/glazelhost/plugin/look_test.cpp.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace GlazelHost
{

// All texts are UTF-8; those that the renderer did not give are empty.
struct LookDescription
{
    std::string kind;     // "cube", "cdl", ...
    std::string title;    // as the file names itself
    std::string contents; // what it holds, in words
    std::vector<std::string> warnings;
    std::optional<double>
        largestError; // of storing it in a record; none when it is exact or not said
};

struct RendererLook
{
    std::vector<std::byte> record; // opaque but for its option chunk
    LookDescription description;
};

// Value of the record's option, or none when the record has no option chunk.
std::optional<bool> LinearOption(std::span<const std::byte> record) noexcept;

// False when the record has no option chunk; the record is then unchanged.
bool SetLinearOption(std::span<std::byte> record, bool on) noexcept;

// What a renderer's description text says: a look, or why there is none. Parts with a wrong type
// are left out. None when the text is not the JSON object that is expected.
struct DescriptionText
{
    LookDescription description;
    std::string error; // empty on success
};
std::optional<DescriptionText> ParseDescription(std::string_view json);

} // namespace GlazelHost
