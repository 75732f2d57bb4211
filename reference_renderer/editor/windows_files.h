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

} // namespace ReferenceRenderer
