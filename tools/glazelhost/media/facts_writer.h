// Writes what a picture says of its colours and its size on paper into a picture file.
// Pure: no windows.h. Tests: tests/tools/glazelhost/media/facts_writer_test.cpp.
#pragma once

#include "tools/glazelhost/media/file_kind.h"
#include "tools/glazelhost/media/picture_facts.h"
#include "tools/glazelhost/media/tiff_fields.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace GlazelHost
{

// `file` is a whole PNG, JPEG or little-endian TIFF, or a BMP; what it said before of the same is
// replaced. The facts that its kind cannot hold are left out. Throws HostError, which names `name`,
// for a file that does not look as its kind does, or grows past what its kind can hold.
std::vector<std::byte> WithFacts(FileKind kind, std::vector<std::byte> file,
                                 const PictureFacts& facts, const std::string& name);

// The tags of a TIFF that state them.
void SetFacts(TiffFields& fields, const PictureFacts& facts);

// Pixels for each metre, as BMP and PNG count them; none where only the shape of a pixel is known.
struct PixelsPerMetre
{
    std::uint32_t across = 0;
    std::uint32_t down = 0;
};
PixelsPerMetre ByMetre(const PictureFacts& facts);

// What a picture of this kind cannot say of the facts, as clauses: "its colour profile, which a BMP
// does not hold".
std::vector<std::string> LeftOut(FileKind kind, const PictureFacts& facts);

} // namespace GlazelHost
