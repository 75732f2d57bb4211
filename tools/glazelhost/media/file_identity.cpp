#include "tools/glazelhost/media/file_identity.h"

#include "support/win32/file_handle.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/windows_path.h"

#include <array>
#include <optional>
#include <set>

namespace GlazelHost
{

namespace
{

// The number that a volume gives the file, and what tells files of two volumes apart where these
// have no numbers of their own.
using FileIdentity = std::array<DWORD, 7>;

std::optional<FileIdentity> IdentityOf(const std::string& path)
{
    const FileHandle file(::CreateFileW(
        WindowsPath(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION facts{};
    if (file.get() == INVALID_HANDLE_VALUE || ::GetFileInformationByHandle(file.get(), &facts) == 0)
    {
        return std::nullopt;
    }
    return FileIdentity{facts.dwVolumeSerialNumber,
                        facts.nFileIndexHigh,
                        facts.nFileIndexLow,
                        facts.nFileSizeHigh,
                        facts.nFileSizeLow,
                        facts.ftLastWriteTime.dwHighDateTime,
                        facts.ftLastWriteTime.dwLowDateTime};
}

} // namespace

bool IsThere(const std::string& path)
{
    return ::GetFileAttributesW(WindowsPath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

void CheckApart(const std::vector<std::string>& outputs, const std::vector<std::string>& inputs)
{
    if (outputs.empty())
    {
        return; // thousands of inputs need not be looked at
    }
    std::set<FileIdentity> taken;
    for (const std::string& path : inputs)
    {
        if (const auto identity = IdentityOf(path))
        {
            taken.insert(*identity);
        }
    }
    for (const std::string& path : outputs)
    {
        const auto identity = IdentityOf(path);
        if (identity && taken.contains(*identity))
        {
            throw HostError(path, "it is the input too", "name another output",
                            ExitCode::WrongUsage);
        }
    }
}

} // namespace GlazelHost
