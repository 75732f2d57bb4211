// The files of this machine, by UTF-8 paths of any length.
#pragma once

#include "reference_renderer/core/look_import.h"

namespace ReferenceRenderer
{

class WindowsFiles final : public FileSource
{
public:
    bool Exists(const std::string& path) const override;
    std::string Read(const std::string& path) const override;
};

// Writes a whole file: either all of it is there afterwards, or what was there before. "" or, when
// it cannot be written, why and what to do.
std::string WriteWholeFile(const std::string& path, const std::string& bytes);

} // namespace ReferenceRenderer
