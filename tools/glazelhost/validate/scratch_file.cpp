#include "tools/glazelhost/validate/scratch_file.h"

#include "support/win32/utf8.h"
#include "tools/glazelhost/media/safe_output.h"

#include <windows.h>

#include <array>
#include <tuple>

namespace GlazelHost
{

ScratchFile::ScratchFile(std::string_view ending, std::span<const std::byte> contents)
{
    std::array<wchar_t, MAX_PATH + 1> folder{};
    ::GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    m_path = Utf8(folder.data()) + "glazelhost-" + std::to_string(::GetCurrentProcessId()) +
             std::string(ending);
    const auto output = OpenSafeOutput(m_path, true);
    output->Write(contents.data(), contents.size());
    output->Commit();
}

ScratchFile::ScratchFile(std::string_view ending, std::string_view contents)
    : ScratchFile(ending, std::as_bytes(std::span(contents)))
{
}

ScratchFile::~ScratchFile()
{
    std::ignore = ::DeleteFileW(Wide(m_path).c_str()); // nobody is left to tell
}

} // namespace GlazelHost
