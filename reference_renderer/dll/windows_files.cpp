#include "reference_renderer/dll/windows_files.h"

#include "contract/entry_points.h"
#include "reference_renderer/dll/wide_text.h"

#include <array>
#include <memory>
#include <type_traits>

#include <windows.h>

namespace
{

// A cube of 256 nodes a side with long numbers stays below this.
constexpr LONGLONG kLargestFile = LONGLONG{1} << 30;
constexpr DWORD kLargestRead = 1U << 24;
constexpr std::size_t kSafeLength = 240; // paths below this need no prefix, with room for a folder

struct HandleCloser
{
    void operator()(HANDLE handle) const noexcept { ::CloseHandle(handle); }
};

using FileHandle = std::unique_ptr<std::remove_pointer_t<HANDLE>, HandleCloser>;

ImportError Unreadable(const std::string& path, const std::string& cause)
{
    return {RendererAPI::kImportUnreadable, path + ": " + cause};
}

std::string WordsOf(DWORD error)
{
    std::array<wchar_t, 512> text{};
    DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
        nullptr, error, 0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    while (length > 0 && (text[length - 1] == L' ' || text[length - 1] == L'.'))
    {
        --length;
    }
    const std::string number = "error " + std::to_string(error);
    return length == 0 ? number : Narrow({text.data(), length}) + " (" + number + ")";
}

// The form of a path that the system takes at any length.
std::wstring SystemPath(const std::string& path)
{
    std::wstring wide = Widen(path);
    if (wide.size() < kSafeLength || wide.compare(0, 4, L"\\\\?\\") == 0)
    {
        return wide;
    }
    std::wstring full(::GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(
        ::GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full.compare(0, 2, L"\\\\") == 0 ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
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
    if (!::GetFileSizeEx(file.get(), &size) || size.QuadPart > kLargestFile)
    {
        throw Unreadable(path, "is larger than 1 GB, or no plain file; export a smaller LUT");
    }
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    std::size_t done = 0;
    while (done < bytes.size())
    {
        const auto wanted =
            static_cast<DWORD>(std::min<std::size_t>(bytes.size() - done, kLargestRead));
        DWORD got = 0;
        if (!::ReadFile(file.get(), bytes.data() + done, wanted, &got, nullptr))
        {
            throw Unreadable(path, "cannot be read: " + WordsOf(::GetLastError()) + "; try again");
        }
        if (got == 0)
        {
            bytes.resize(done); // somebody shortened the file meanwhile
        }
        done += got;
    }
    return bytes;
}
