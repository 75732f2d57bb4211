#include "tools/glazelhost/media/file_kind.h"

#include <algorithm>
#include <array>

namespace GlazelHost
{

namespace
{

using namespace std::string_view_literals;

struct Signature
{
    FileKind kind;
    std::string_view bytes;
};
struct Extension
{
    FileKind kind;
    std::string_view name;
};
// clang-format off
constexpr std::array kSignatures{
    Signature{FileKind::Png,  "\x89PNG\r\n\x1A\n"sv},
    Signature{FileKind::Jpeg, "\xFF\xD8\xFF"sv},
    Signature{FileKind::Tiff, "II*\0"sv},
    Signature{FileKind::Tiff, "MM\0*"sv},
    Signature{FileKind::Tiff, "II+\0"sv}, // BigTIFF
    Signature{FileKind::Tiff, "MM\0+"sv},
    Signature{FileKind::Bmp,  "BM"sv},
};
constexpr std::array kExtensions{
    Extension{FileKind::Png,  "png"},
    Extension{FileKind::Jpeg, "jpg"},
    Extension{FileKind::Jpeg, "jpeg"},
    Extension{FileKind::Tiff, "tif"},
    Extension{FileKind::Tiff, "tiff"},
    Extension{FileKind::Bmp,  "bmp"},
    Extension{FileKind::Raw,  "bgra"},
    Extension{FileKind::Raw,  "raw"},
};
constexpr std::array kDescriptions{"PNG"sv, "JPEG"sv, "TIFF"sv, "BMP"sv, "raw pixels"sv};
// clang-format on

bool SameLetter(char letter, char lower) noexcept
{
    return letter == lower || (letter >= 'A' && letter <= 'Z' && letter - 'A' + 'a' == lower);
}

} // namespace

std::optional<FileKind> KindFromContent(std::span<const std::byte> firstBytes) noexcept
{
    const std::string_view text(reinterpret_cast<const char*>(firstBytes.data()),
                                firstBytes.size());
    for (const Signature& signature : kSignatures)
    {
        if (text.starts_with(signature.bytes))
        {
            return signature.kind;
        }
    }
    return std::nullopt;
}

std::optional<FileKind> KindFromName(std::string_view path) noexcept
{
    const auto dot = path.find_last_of("./\\");
    if (dot == std::string_view::npos || path[dot] != '.')
    {
        return std::nullopt;
    }
    const std::string_view name = path.substr(dot + 1);
    for (const Extension& extension : kExtensions)
    {
        if (std::ranges::equal(name, extension.name, SameLetter))
        {
            return extension.kind;
        }
    }
    return std::nullopt;
}

std::string_view DescribeKind(FileKind kind) noexcept
{
    return kDescriptions[static_cast<std::size_t>(kind)];
}

} // namespace GlazelHost
