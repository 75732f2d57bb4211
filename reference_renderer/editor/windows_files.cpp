#include "reference_renderer/editor/windows_files.h"

#include "contract/entry_points.h"
#include "support/win32/file_handle.h"
#include "support/win32/long_path.h"
#include "support/win32/system_text.h"
#include "support/win32/utf8.h"
#include "support/win32/whole_transfer.h"

#include <array>
#include <memory>
#include <type_traits>

#include <windows.h>

namespace ReferenceRenderer
{

namespace
{

// A cube of 256 nodes a side with long numbers stays below this.
constexpr LONGLONG kLargestFile = LONGLONG{1} << 30;

ImportError Unreadable(const std::string& path, const std::string& cause)
{
    return {RendererAPI::kImportUnreadable, path + ": " + cause};
}

std::string WordsOf(DWORD error)
{
    const std::string words = SystemText(error);
    const std::string number = "error " + std::to_string(error);
    return words.empty() ? number : words + " (" + number + ")";
}

std::wstring SystemPath(const std::string& path)
{
    return LongPath(Wide(path));
}

FileHandle Open(const std::string& path)
{
    const std::wstring wide = SystemPath(path);
    const DWORD attributes = ::GetFileAttributesW(wide.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
    {
        throw Unreadable(path, "is a folder; give the path of a look");
    }
    const HANDLE handle = ::CreateFileW(wide.c_str(), GENERIC_READ,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
    {
        throw Unreadable(path, "cannot be opened: " + WordsOf(::GetLastError()) +
                                   "; check the path and the permissions");
    }
    return FileHandle(handle);
}

} // namespace

bool WindowsFiles::Exists(const std::string& path) const
{
    return ::GetFileAttributesW(SystemPath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string WindowsFiles::Read(const std::string& path) const
{
    const FileHandle file = Open(path);
    LARGE_INTEGER size{};
    const auto check = [&path](DWORD error) {
        if (error != ERROR_SUCCESS)
        {
            throw Unreadable(path, "cannot be read: " + WordsOf(error) + "; try again");
        }
    };
    check(::GetFileSizeEx(file.get(), &size) != 0 ? ERROR_SUCCESS : ::GetLastError());
    if (size.QuadPart > kLargestFile)
    {
        throw Unreadable(path, "is larger than 1 GB; export a smaller LUT");
    }
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    std::size_t read = bytes.size();
    check(ReadWhole(file.get(), bytes.data(), read));
    bytes.resize(read); // fewer when somebody has shortened the file meanwhile
    return bytes;
}

std::string WriteWholeFile(const std::string& path, const std::string& bytes)
{
    const std::wstring target = SystemPath(path);
    const std::wstring part = target + L"." + std::to_wstring(::GetCurrentThreadId()) + L".part";
    const auto failed = [&] {
        const std::string words = WordsOf(::GetLastError());
        ::DeleteFileW(part.c_str());
        return path + ": cannot be written: " + words +
               "; check the folder, its permissions and "
               "the room on the disk";
    };
    FileHandle file(::CreateFileW(part.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD error = ::GetLastError();
    if (file.get() != INVALID_HANDLE_VALUE)
    {
        error = WriteWhole(file.get(), bytes.data(), bytes.size());
        error = error == ERROR_SUCCESS ? FlushWhole(file.get()) : error;
    }
    if (error != ERROR_SUCCESS)
    {
        file.reset(); // an open file is not deleted
        ::SetLastError(error);
        return failed();
    }
    file.reset();
    return ::MoveFileExW(part.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING) ? "" : failed();
}

} // namespace ReferenceRenderer
