#include "tools/glazelhost/validate/run_groups.h"

#include "support/win32/file_handle.h"
#include "support/win32/utf8.h"
#include "support/win32/whole_transfer.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/plugin/library_file.h"
#include "tools/glazelhost/windows_text.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <utility>

namespace GlazelHost
{

namespace
{

[[noreturn]] void ThrowSystemError(const char* what)
{
    throw HostError(what, WindowsErrorText(::GetLastError()),
                    "free memory and room for temporary files");
}

// Ends its processes when the last handle to it goes, however this process ends.
FileHandle MakeJob()
{
    FileHandle job(::CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (!job || !::SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits,
                                           sizeof limits))
    {
        ThrowSystemError("a job of processes");
    }
    return job;
}

// A pipe would have to be read while the process runs.
FileHandle MakeOutput()
{
    std::array<wchar_t, MAX_PATH + 1> folder{};
    std::array<wchar_t, MAX_PATH + 1> path{};
    ::GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    if (::GetTempFileNameW(folder.data(), L"glz", 0, path.data()) == 0)
    {
        ThrowSystemError("a temporary file");
    }
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    FileHandle file(::CreateFileW(path.data(), GENERIC_READ | GENERIC_WRITE,
                                  FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                  &inherited, CREATE_ALWAYS,
                                  FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (file.get() == INVALID_HANDLE_VALUE)
    {
        ThrowSystemError("a temporary file");
    }
    return file;
}

std::string Written(HANDLE file)
{
    LARGE_INTEGER size{};
    if (!::GetFileSizeEx(file, &size) || !::SetFilePointerEx(file, {}, nullptr, FILE_BEGIN))
    {
        ThrowSystemError("a temporary file");
    }
    std::string text(static_cast<std::size_t>(size.QuadPart), '\0');
    std::size_t count = text.size();
    const DWORD error = ReadWhole(file, text.data(), count);
    if (error != ERROR_SUCCESS ||
        count != text.size()) // what it lacks would be held against a group
    {
        ::SetLastError(error != ERROR_SUCCESS ? error : ERROR_HANDLE_EOF);
        ThrowSystemError("a temporary file");
    }
    return text;
}

// A path holds no quotation marks, but a backslash at its end would quote ours.
std::string Quoted(std::string word)
{
    const auto last = word.find_last_not_of('\\');
    word.append(word.size() - (last == std::string::npos ? 0 : last + 1), '\\');
    return "\"" + word + "\"";
}

struct TitleSearch
{
    DWORD process;
    std::vector<std::string> titles;
};

BOOL CALLBACK NoteTitle(HWND window, LPARAM parameter) noexcept
{
    try
    {
        auto& search = *reinterpret_cast<TitleSearch*>(parameter);
        DWORD owner = 0;
        ::GetWindowThreadProcessId(window, &owner);
        if (owner == search.process && ::IsWindowVisible(window))
        {
            std::array<wchar_t, 256> title{};
            ::InternalGetWindowText(window, title.data(), static_cast<int>(title.size()));
            search.titles.push_back(Utf8(title.data()));
        }
        return TRUE;
    }
    catch (...)
    {
        return FALSE; // there is no memory for more titles
    }
}

std::vector<std::string> OpenWindowsOf(DWORD process)
{
    TitleSearch search{process, {}};
    ::EnumWindows(NoteTitle, reinterpret_cast<LPARAM>(&search));
    return search.titles;
}

// Wine 8 loses one process in some 1,500: it says "internal error", or the process tells of it.
constexpr int kMostStarts = 5;

// One group at work.
class GroupRun
{
public:
    GroupRun(const CheckGroup& group, std::size_t place, const std::string& file,
             const ValidateOptions& options, HANDLE job)
        : m_group(&group), m_place(place), m_timeLimit(options.timeLimit), m_job(job),
          m_output(MakeOutput())
    {
        std::string command = Quoted(PathOfModule(nullptr)) + " validate " + Quoted(file) +
                              " --run-group " + group.name + " --seed " +
                              std::to_string(options.seed);
        if (!options.rendererFolder.empty())
        {
            command += " --renderer " + Quoted(options.rendererFolder);
        }
        m_command = Wide(command);
        Start();
    }

    HANDLE Process() const noexcept { return m_process.get(); }
    std::size_t Place() const noexcept { return m_place; }

    // Whether the system had lost it, and it is at work once more.
    bool IsStartedAgain()
    {
        if (m_starts >= kMostStarts || ::WaitForSingleObject(Process(), 0) != WAIT_OBJECT_0 ||
            !IsLost(Written(m_output.get())))
        {
            return false;
        }
        if (!::SetFilePointerEx(m_output.get(), {}, nullptr, FILE_BEGIN) ||
            !::SetEndOfFile(m_output.get()))
        {
            ThrowSystemError("a temporary file");
        }
        Start();
        return true;
    }

    // Milliseconds; 0 when the time is over.
    DWORD TimeLeft() const noexcept
    {
        const ULONGLONG end = m_begin + ULONGLONG{m_timeLimit} * 1000;
        const ULONGLONG now = ::GetTickCount64();
        return end > now ? static_cast<DWORD>(end - now) : 0;
    }

    // The process has ended, or its time is over: then it is ended.
    GroupResult Result()
    {
        ProcessEnding ending;
        ending.timeLimit = m_timeLimit;
        ending.timedOut = ::WaitForSingleObject(Process(), 0) != WAIT_OBJECT_0;
        if (ending.timedOut)
        {
            ending.windows = OpenWindowsOf(m_processId);
            ::TerminateProcess(Process(), 1);
            ::WaitForSingleObject(Process(), INFINITE);
        }
        DWORD code = 0;
        ::GetExitCodeProcess(Process(), &code);
        ending.exitCode = code;
        GroupResult result{m_group->name, m_group->level, m_group->asks, {}, {}, 0.0};
        result.seconds = static_cast<double>(::GetTickCount64() - m_begin) / 1000.0;
        ReadFindings(Written(m_output.get()), ending, result);
        return result;
    }

private:
    void Start()
    {
        std::wstring words = m_command; // CreateProcessW writes into it
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = m_output.get();
        startup.hStdError = m_output.get();
        PROCESS_INFORMATION process{};
        m_begin = ::GetTickCount64();
        ++m_starts;
        while (!::CreateProcessW(nullptr, words.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED,
                                 nullptr, nullptr, &startup, &process))
        {
            if (::GetLastError() != ERROR_INTERNAL_ERROR || ++m_starts > kMostStarts)
            {
                ThrowSystemError("a process for a group of checks");
            }
        }
        m_process.reset(process.hProcess);
        m_processId = process.dwProcessId;
        const FileHandle thread(process.hThread);
        ::AssignProcessToJobObject(m_job, process.hProcess);
        ::ResumeThread(thread.get());
    }

    const CheckGroup* m_group;
    std::size_t m_place;
    unsigned m_timeLimit; // seconds
    HANDLE m_job;
    std::wstring m_command;
    int m_starts = 0;
    ULONGLONG m_begin = 0;
    FileHandle m_output;
    FileHandle m_process;
    DWORD m_processId = 0;
};

// Until one of them has ended or has no time left; that one.
std::size_t WaitForOne(const std::vector<GroupRun>& runs)
{
    std::vector<HANDLE> processes;
    DWORD wait = INFINITE;
    for (const GroupRun& run : runs)
    {
        processes.push_back(run.Process());
        wait = std::min(wait, run.TimeLeft());
    }
    for (;;)
    {
        const DWORD signalled = ::WaitForMultipleObjects(static_cast<DWORD>(processes.size()),
                                                         processes.data(), FALSE, wait);
        if (signalled < WAIT_OBJECT_0 + processes.size())
        {
            return signalled - WAIT_OBJECT_0;
        }
        const auto late = std::ranges::find(runs, DWORD{0}, &GroupRun::TimeLeft);
        if (late != runs.end())
        {
            return static_cast<std::size_t>(late - runs.begin());
        }
        wait = 1; // the wait was a tick too short
    }
}

} // namespace

std::vector<GroupResult> RunGroups(const std::string& file,
                                   std::span<const CheckGroup* const> groups,
                                   const ValidateOptions& options,
                                   const std::function<void(const GroupResult&)>& done)
{
    const FileHandle job = MakeJob();
    std::vector<GroupResult> results(groups.size());
    std::vector<bool> isThere(groups.size());
    std::vector<GroupRun> runs;
    std::size_t next = 0;
    std::size_t told = 0;
    while (told < groups.size())
    {
        while (next < groups.size() && runs.size() < options.jobs)
        {
            runs.emplace_back(*groups[next], next, file, options, job.get());
            ++next;
        }
        const auto ended = runs.begin() + static_cast<std::ptrdiff_t>(WaitForOne(runs));
        if (ended->IsStartedAgain())
        {
            continue;
        }
        results[ended->Place()] = ended->Result();
        isThere[ended->Place()] = true;
        std::swap(*ended, runs.back());
        runs.pop_back();
        for (; told < groups.size() && isThere[told]; ++told)
        {
            done(results[told]);
        }
    }
    return results;
}

} // namespace GlazelHost
