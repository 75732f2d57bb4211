// A look as one line of text, for the clipboard, a message or a note.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/look_text_test.cpp.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ReferenceRenderer
{

// "glazel-look:" and the record in base64, without the zeros at its end: a look without a LUT takes
// a few hundred characters.
std::string LookText(std::span<const std::uint8_t> record);

// The record of such a text, which may have been broken into lines or indented on its way. None
// when it holds no look that can be used.
std::optional<std::vector<std::uint8_t>> RecordOfText(std::string_view text);

} // namespace ReferenceRenderer
