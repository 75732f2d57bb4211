#include "tools/glazelhost/media/sequence_files.h"

#include "support/win32/file_handle.h"
#include "support/win32/utf8.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/windows_path.h"
#include "tools/glazelhost/windows_text.h"

#include <algorithm>

namespace GlazelHost
{

std::vector<std::int64_t> NumbersOfFiles(const SequencePattern& pattern)
{
    const auto fail = [&pattern](DWORD error) {
        throw HostError(pattern.Path(), "its folder cannot be listed: " + WindowsErrorText(error),
                        "check the path and the right to read it");
    };
    std::vector<std::int64_t> numbers;
    WIN32_FIND_DATAW found{};
    const FindHandle search(::FindFirstFileW(WindowsPath(pattern.Folder() + '*').c_str(), &found));
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
        const auto number = pattern.NumberOf(Utf8(found.cFileName));
        if (number && (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
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
