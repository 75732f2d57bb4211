// What a file holds, by its first bytes and by its extension.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/file_kind_test.cpp.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace GlazelHost
{

enum class FileKind
{
    Png,
    Jpeg,
    Tiff,
    Bmp,
    Raw, // 8-bit BGRA, unless somebody says otherwise
};

constexpr bool IsPicture(FileKind kind) noexcept
{
    return kind < FileKind::Raw;
}

// So many first bytes are enough for KindFromContent.
inline constexpr std::size_t kKindBytes = 16;

// None for bytes that say nothing; raw pixels never say anything.
std::optional<FileKind> KindFromContent(std::span<const std::byte> firstBytes) noexcept;
// By the extension, in any case: png, jpg, jpeg, tif, tiff, bmp, bgra, raw.
std::optional<FileKind> KindFromName(std::string_view path) noexcept;
// "PNG", "raw pixels"
std::string_view DescribeKind(FileKind kind) noexcept;

// All kinds, for messages.
inline constexpr char kKnownKinds[] = ".png, .jpg, .tif, .bmp or .bgra";

} // namespace GlazelHost
