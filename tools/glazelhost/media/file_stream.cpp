#include "tools/glazelhost/media/file_stream.h"

#include "support/win32/file_handle.h"
#include "support/win32/whole_transfer.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/windows_path.h"
#include "tools/glazelhost/windows_text.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace GlazelHost
{

namespace
{

// Does not own the handle.
class HandleReader : public ByteReader
{
public:
    HandleReader(HANDLE handle, std::string name) : m_handle(handle), m_name(std::move(name))
    {
        LARGE_INTEGER size{};
        if (::GetFileType(m_handle) == FILE_TYPE_DISK)
        {
            if (::GetFileSizeEx(m_handle, &size) == 0)
            {
                ThrowReadingFailed(::GetLastError());
            }
            m_size = static_cast<std::uint64_t>(size.QuadPart);
        }
    }

    std::size_t Read(std::byte* target, std::size_t size) override
    {
        DWORD count = 0;
        if (::ReadFile(m_handle, target, TransferSize(size), &count, nullptr) == 0)
        {
            const DWORD error = ::GetLastError();
            if (error == ERROR_BROKEN_PIPE || error == ERROR_HANDLE_EOF)
            {
                return 0;
            }
            ThrowReadingFailed(error);
        }
        return count;
    }

    std::uint64_t Skip(std::uint64_t size) override
    {
        return m_size ? SkipInFile(size) : SkipByReading(size);
    }

    std::optional<std::uint64_t> Size() const override { return m_size; }

private:
    [[noreturn]] void ThrowReadingFailed(DWORD error) const
    {
        throw HostError(m_name, "reading failed: " + WindowsErrorText(error),
                        "check the medium that holds it and try again");
    }

    std::uint64_t SkipInFile(std::uint64_t size)
    {
        LARGE_INTEGER place{};
        if (::SetFilePointerEx(m_handle, {}, &place, FILE_CURRENT) == 0)
        {
            return SkipByReading(size);
        }
        const auto position = static_cast<std::uint64_t>(place.QuadPart);
        const std::uint64_t count = std::min(size, *m_size - std::min(position, *m_size));
        place.QuadPart = static_cast<LONGLONG>(count);
        return ::SetFilePointerEx(m_handle, place, nullptr, FILE_CURRENT) != 0
                   ? count
                   : SkipByReading(size);
    }

    std::uint64_t SkipByReading(std::uint64_t size)
    {
        std::vector<std::byte> discarded(std::size_t{1} << 16);
        std::uint64_t done = 0;
        while (done < size)
        {
            const std::size_t count = Read(
                discarded.data(),
                static_cast<std::size_t>(std::min<std::uint64_t>(size - done, discarded.size())));
            if (count == 0)
            {
                break;
            }
            done += count;
        }
        return done;
    }

    HANDLE m_handle;
    std::string m_name;
    std::optional<std::uint64_t> m_size;
};

FileHandle OpenToRead(const std::string& path)
{
    const std::wstring windowsPath = WindowsPath(path);
    FileHandle file(::CreateFileW(windowsPath.c_str(), GENERIC_READ,
                                  FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                  FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (file.get() != INVALID_HANDLE_VALUE)
    {
        return file;
    }
    const DWORD error = ::GetLastError();
    const DWORD attributes = ::GetFileAttributesW(windowsPath.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    {
        throw HostError(path, "this is a folder", "name a file, or a sequence like shot_%04d.png");
    }
    throw HostError(path, "it cannot be opened: " + WindowsErrorText(error),
                    "check the path and the right to read it");
}

// Owns its handle: the base class only borrows it, so the handle's own base goes first.
struct OwnedFile
{
    FileHandle file;
};
class FileReader final : OwnedFile, public HandleReader
{
public:
    FileReader(FileHandle opened, const std::string& path)
        : OwnedFile{std::move(opened)}, HandleReader(file.get(), path)
    {
    }
};

class StandardOutput final : public ByteWriter
{
public:
    explicit StandardOutput(HANDLE handle) : m_handle(handle) {}

    void Write(const std::byte* source, std::size_t size) override
    {
        Check(WriteWhole(m_handle, source, size));
    }
    // What went out is out; nothing has to be renamed.
    void Commit() override
    {
        if (::GetFileType(m_handle) == FILE_TYPE_DISK) // a pipe's reader need not be waited for
        {
            Check(FlushWhole(m_handle));
        }
    }

private:
    static void Check(DWORD error)
    {
        if (error == ERROR_SUCCESS)
        {
            return;
        }
        if (error == ERROR_BROKEN_PIPE || error == ERROR_NO_DATA ||
            error == ERROR_PIPE_NOT_CONNECTED)
        {
            throw HostError("standard output", "the program that reads it closed the pipe",
                            "look at that program's own message");
        }
        throw HostError("standard output", "writing failed: " + WindowsErrorText(error),
                        "check where it leads");
    }

    HANDLE m_handle;
};

HANDLE StandardHandle(DWORD which, const char* name)
{
    HANDLE handle = ::GetStdHandle(which);
    DWORD mode = 0;
    if (handle == nullptr || handle == INVALID_HANDLE_VALUE)
    {
        throw HostError(name, "there is none", "name a file, or start the program with a pipe");
    }
    if (::GetConsoleMode(handle, &mode) != 0)
    {
        throw HostError(name, "it is a terminal, which cannot carry pictures",
                        "name a file, or connect a pipe");
    }
    return handle;
}

std::vector<std::byte> ReadAtMost(ByteReader& reader, std::size_t longest)
{
    std::vector<std::byte> bytes(static_cast<std::size_t>(
        std::min<std::uint64_t>(longest, reader.Size().value_or(longest))));
    bytes.resize(ReadFully(reader, bytes.data(), bytes.size()));
    return bytes;
}

} // namespace

std::unique_ptr<ByteReader> OpenFileReader(const std::string& path)
{
    return std::make_unique<FileReader>(OpenToRead(path), path);
}

std::unique_ptr<ByteReader> OpenStandardInput()
{
    return std::make_unique<HandleReader>(StandardHandle(STD_INPUT_HANDLE, "standard input"),
                                          "standard input");
}

std::unique_ptr<ByteWriter> OpenStandardOutput()
{
    return std::make_unique<StandardOutput>(StandardHandle(STD_OUTPUT_HANDLE, "standard output"));
}

std::vector<std::byte> ReadFirstBytes(const std::string& path, std::size_t longest)
{
    return ReadAtMost(*OpenFileReader(path), longest);
}

std::vector<std::byte> ReadWholeFile(const std::string& path)
{
    const auto reader = OpenFileReader(path);
    const std::uint64_t size = reader->Size().value_or(0);
    if (size > std::numeric_limits<DWORD>::max())
    {
        throw HostError(path, "it is larger than 4 GB", "give a smaller picture");
    }
    std::vector<std::byte> bytes = ReadAtMost(*reader, static_cast<std::size_t>(size));
    if (bytes.size() != size)
    {
        throw HostError(path, "it became shorter while it was read", "try again");
    }
    return bytes;
}

} // namespace GlazelHost
