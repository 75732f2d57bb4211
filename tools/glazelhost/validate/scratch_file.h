// A file in the folder of temporary files for as long as this lives.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace GlazelHost
{

class ScratchFile
{
public:
    // Of this process alone, with that ending. Throws HostError.
    ScratchFile(std::string_view ending, std::span<const std::byte> contents);
    ScratchFile(std::string_view ending, std::string_view contents);
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::string& Path() const noexcept { return m_path; } // UTF-8

private:
    std::string m_path;
};

} // namespace GlazelHost
