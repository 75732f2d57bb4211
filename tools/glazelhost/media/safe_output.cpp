#include "tools/glazelhost/media/safe_output.h"

#include "support/win32/file_handle.h"
#include "support/win32/whole_transfer.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/windows_path.h"
#include "tools/glazelhost/windows_text.h"

#include <atomic>
#include <utility>
#include <vector>

namespace GlazelHost
{

namespace
{

// The temporary files that exist, for a handler on another thread.
class UnfinishedFiles
{
public:
    // False once everything was discarded.
    bool Add(const std::wstring& path)
    {
        const Lock lock(m_lock);
        if (!m_discarded)
        {
            m_paths.push_back(path);
        }
        return !m_discarded;
    }

    void Remove(const std::wstring& path) noexcept
    {
        const Lock lock(m_lock);
        std::erase(m_paths, path);
    }

    // Runs `operation` unless everything was discarded, and holds a discarding thread up until it
    // is through: a file is renamed before or not at all. False when it did not run.
    template <typename Operation>
    bool Unless(Operation&& operation)
    {
        const Lock lock(m_lock);
        if (!m_discarded)
        {
            operation();
        }
        return !m_discarded;
    }

    void Discard() noexcept
    {
        const Lock lock(m_lock);
        m_discarded = true;
        for (const std::wstring& path : m_paths)
        {
            ::DeleteFileW(path.c_str()); // takes effect when its writer's handle closes
        }
        m_paths.clear();
    }

private:
    class Lock
    {
    public:
        explicit Lock(SRWLOCK& lock) noexcept : m_lock(lock) { ::AcquireSRWLockExclusive(&m_lock); }
        ~Lock() { ::ReleaseSRWLockExclusive(&m_lock); }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

    private:
        SRWLOCK& m_lock;
    };

    SRWLOCK m_lock = SRWLOCK_INIT;
    std::vector<std::wstring> m_paths; // guarded by m_lock
    bool m_discarded = false;          // guarded by m_lock
};

UnfinishedFiles& Unfinished()
{
    // Never destroyed: a handler may run while the program ends.
    static auto* const files = new UnfinishedFiles;
    return *files;
}

[[noreturn]] void RefuseInterrupted(const std::string& path)
{
    throw HostError(path, "the run was interrupted", "start it again");
}

// Marks the file so that it goes when its handle closes, whoever closes it: this also covers a
// process that is killed. False where the file system does not know that.
bool MarkForDeletion(HANDLE file, bool mark) noexcept
{
    FILE_DISPOSITION_INFO disposition{};
    disposition.DeleteFile = static_cast<BOOLEAN>(mark);
    return ::SetFileInformationByHandle(file, FileDispositionInfo, &disposition,
                                        sizeof disposition) != 0;
}

class SafeOutput final : public ByteWriter
{
public:
    SafeOutput(const std::string& path, bool overwrite)
        : m_path(path), m_overwrite(overwrite), m_target(WindowsPath(path)),
          m_file(INVALID_HANDLE_VALUE)
    {
        CheckOutputTarget(path, overwrite);
        Create();
        if (!Unfinished().Add(m_temporary))
        {
            Discard();
            RefuseInterrupted(m_path);
        }
    }
    ~SafeOutput() override
    {
        if (m_file.get() != INVALID_HANDLE_VALUE)
        {
            Discard();
            Unfinished().Remove(m_temporary);
        }
    }

    void Write(const std::byte* source, std::size_t size) override
    {
        CheckWritten(WriteWhole(m_file.get(), source, size));
    }

    void Commit() override
    {
        CheckWritten(FlushWhole(m_file.get()));
        DWORD error = ERROR_SUCCESS;
        if (!Unfinished().Unless([&] { error = Rename(); }))
        {
            RefuseInterrupted(m_path);
        }
        Unfinished().Remove(m_temporary);
        if (error != ERROR_SUCCESS)
        {
            ::DeleteFileW(m_temporary.c_str());
            throw HostError(m_path, "it cannot get its name: " + WindowsErrorText(error),
                            "check that nobody else has the file open or made one meanwhile");
        }
    }

private:
    void CheckWritten(DWORD error) const
    {
        if (error != ERROR_SUCCESS)
        {
            throw HostError(m_path, "writing failed: " + WindowsErrorText(error),
                            "make room on the disk or choose another folder");
        }
    }

    void Create()
    {
        // The name owes nothing to the target's, which may be as long as the system allows.
        const auto separator = m_target.find_last_of(L"/\\:");
        const std::wstring folder =
            separator == std::wstring::npos ? L"" : m_target.substr(0, separator + 1);
        static std::atomic<unsigned> counter = 0;
        DWORD error = ERROR_FILE_EXISTS;
        while (error == ERROR_FILE_EXISTS) // left over from a process that had the same number
        {
            m_temporary = folder + L"~glazelhost-" + std::to_wstring(::GetCurrentProcessId()) +
                          L'-' + std::to_wstring(++counter) + L".tmp";
            m_file.reset(::CreateFileW(m_temporary.c_str(), GENERIC_WRITE | DELETE,
                                       FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, CREATE_NEW,
                                       FILE_ATTRIBUTE_NORMAL, nullptr));
            if (m_file.get() != INVALID_HANDLE_VALUE)
            {
                m_marked = MarkForDeletion(m_file.get(), true);
                return;
            }
            error = ::GetLastError();
        }
        throw HostError(m_path, "it cannot be created: " + WindowsErrorText(error),
                        "check the right to write to its folder and the room on its disk");
    }

    // The system's error, or ERROR_SUCCESS. The handle is closed either way.
    DWORD Rename() noexcept
    {
        if (m_marked && !MarkForDeletion(m_file.get(), false))
        {
            const DWORD error = ::GetLastError();
            m_file.reset(INVALID_HANDLE_VALUE);
            return error;
        }
        m_file.reset(INVALID_HANDLE_VALUE);
        const DWORD flags = m_overwrite ? MOVEFILE_REPLACE_EXISTING : 0U;
        return ::MoveFileExW(m_temporary.c_str(), m_target.c_str(), flags) != 0 ? ERROR_SUCCESS
                                                                                : ::GetLastError();
    }

    void Discard() noexcept
    {
        m_file.reset(INVALID_HANDLE_VALUE);
        if (!m_marked)
        {
            ::DeleteFileW(m_temporary.c_str());
        }
    }

    std::string m_path;
    bool m_overwrite;
    std::wstring m_target;
    std::wstring m_temporary;
    FileHandle m_file; // invalid once committed
    bool m_marked = false;
};

// Renaming over one of these would put a file in its place.
bool IsDeviceOrPipe(const std::wstring& path) noexcept
{
    const FileHandle opened(
        ::CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                      nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    return opened.get() != INVALID_HANDLE_VALUE && ::GetFileType(opened.get()) != FILE_TYPE_DISK;
}

} // namespace

void CheckOutputTarget(const std::string& path, bool overwrite)
{
    const std::string folder = FolderOf(path);
    const DWORD folderAttributes = ::GetFileAttributesW(WindowsPath(folder).c_str());
    if (folderAttributes == INVALID_FILE_ATTRIBUTES ||
        (folderAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
    {
        throw HostError(path, "the folder " + folder + " does not exist",
                        "create it or choose another");
    }
    if (IsDeviceOrPipe(WindowsPath(path)))
    {
        throw HostError(path, "this is a device or a pipe",
                        "write to standard output (-) and redirect it there");
    }
    const DWORD attributes = ::GetFileAttributesW(WindowsPath(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
    {
        return;
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    {
        throw HostError(path, "this is a folder", "name a file in it");
    }
    if (!overwrite)
    {
        throw HostError(path, "it exists already",
                        "give --overwrite to replace it, or choose another name");
    }
}

std::unique_ptr<ByteWriter> OpenSafeOutput(const std::string& path, bool overwrite)
{
    return std::make_unique<SafeOutput>(path, overwrite);
}

void DiscardUnfinishedOutputs() noexcept
{
    Unfinished().Discard();
}

} // namespace GlazelHost
