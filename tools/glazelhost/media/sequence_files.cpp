#include "tools/glazelhost/media/sequence_files.h"

#include "support/win32/file_handle.h"
#include "support/win32/utf8.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/file_identity.h"
#include "tools/glazelhost/media/windows_path.h"
#include "tools/glazelhost/windows_text.h"

#include <algorithm>

namespace GlazelHost
{

namespace
{

// Whether the file stands under it for the system too: its name may have other capitals.
bool IsUnderNumber(const SequencePattern& pattern, std::int64_t number, const std::string& name)
{
    const std::string path = pattern.PathOf(number);
    return path == pattern.Folder() + name || IsThere(path);
}

} // namespace

std::vector<std::int64_t> NumbersOfFiles(const SequencePattern& pattern)
{
    const auto fail = [&pattern](DWORD error) {
        throw HostError(pattern.Path(), "its folder cannot be listed: " + WindowsErrorText(error),
                        "check the path and the right to read it");
    };
    std::vector<std::int64_t> numbers;
    WIN32_FIND_DATAW found{};
    const std::wstring all = WindowsPath(pattern.Folder() + '.') + L"\\*";
    const FindHandle search(::FindFirstFileW(all.c_str(), &found));
    if (search.get() == INVALID_HANDLE_VALUE)
    {
        const DWORD error = ::GetLastError();
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND)
        {
            return numbers;
        }
        fail(error);
    }
    do
    {
        const std::string name = Utf8(found.cFileName);
        const auto number = pattern.NumberOf(name);
        if (number && (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 &&
            IsUnderNumber(pattern, *number, name))
        {
            numbers.push_back(*number);
        }
    } while (::FindNextFileW(search.get(), &found) != 0);
    if (const DWORD error = ::GetLastError(); error != ERROR_NO_MORE_FILES)
    {
        fail(error); // a shorter sequence would look like a whole one
    }
    std::ranges::sort(numbers);
    return numbers;
}

} // namespace GlazelHost
