// Bytes as text: base64 with its usual alphabet and padding (RFC 4648, section 4).
// Pure: no windows.h. Tests: tests/reference_renderer/core/base64_test.cpp.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ReferenceRenderer
{

std::string Base64Of(std::span<const std::byte> bytes);

// None for anything that Base64Of would not write.
std::optional<std::vector<std::byte>> ParseBase64(std::string_view text);

} // namespace ReferenceRenderer
