// The host program: words in, a command run, one error line and an exit code out.

#include "support/win32/utf8.h"
#include "tools/glazelhost/commands/commands.h"
#include "tools/glazelhost/media/safe_output.h"
#include "tools/glazelhost/page/page_window.h"
#include "tools/glazelhost/ui/console.h"
#include "tools/glazelhost/ui/error_line.h"
#include "tools/glazelhost/ui/reporter.h"

#include <windows.h>

#include <shellapi.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace GlazelHost
{

namespace
{

struct LocalMemoryDeleter
{
    void operator()(wchar_t** memory) const noexcept { ::LocalFree(memory); }
};

// The arguments as UTF-8: main's own are in the machine's code page and may have lost characters.
std::vector<std::string> Arguments()
{
    int count = 0;
    const std::unique_ptr<wchar_t*, LocalMemoryDeleter> words(
        ::CommandLineToArgvW(::GetCommandLineW(), &count));
    std::vector<std::string> arguments;
    for (int index = 1; words && index < count; ++index)
    {
        arguments.push_back(Utf8(words.get()[index]));
    }
    return arguments;
}

// How everything is told; plain until the command line has been read.
std::atomic<ReportStyle> currentStyle = ReportStyle::Plain;
static_assert(std::atomic<ReportStyle>::is_always_lock_free, "handlers read it at any time");

// Ends without running anybody's clean-up code, which may wait for what is going on right now.
[[noreturn]] void EndAtOnce(std::initializer_list<std::string_view> lineParts) noexcept
{
    ErrorLine line(currentStyle);
    for (const std::string_view part : lineParts)
    {
        line.Add(part);
    }
    WriteStandardError(line.End());
    ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(ExitCode::Failed));
    ::ExitProcess(static_cast<UINT>(ExitCode::Failed)); // not reached; says so to the compiler
}

BOOL WINAPI OnBreak(DWORD event) noexcept
{
    if (PageWindow::AskToClose())
    {
        if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        {
            ::Sleep(INFINITE); // the system ends the process when this returns
        }
        return TRUE;
    }
    DiscardUnfinishedOutputs();
    EndAtOnce({"interrupted: unfinished outputs were discarded; run it again"});
}

using ModulePath = std::array<char, std::size_t{3} * MAX_PATH>; // three bytes for a UTF-16 unit

// In UTF-8, cut when it is too long. Allocates nothing.
std::string_view FileOf(HMODULE module, ModulePath& buffer) noexcept
{
    std::array<wchar_t, MAX_PATH> path{};
    const DWORD length = ::GetModuleFileNameW(module, path.data(), MAX_PATH);
    const int bytes =
        ::WideCharToMultiByte(CP_UTF8, 0, path.data(), static_cast<int>(length), buffer.data(),
                              static_cast<int>(buffer.size()), nullptr, nullptr);
    return {buffer.data(), static_cast<std::size_t>(bytes)};
}

// A crash in the plug-in or the renderer ends a batch job with an error, not with a window.
LONG WINAPI OnCrash(EXCEPTION_POINTERS* pointers) noexcept
{
    DiscardUnfinishedOutputs();
    const EXCEPTION_RECORD* record = pointers->ExceptionRecord;
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                             GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         static_cast<const wchar_t*>(record->ExceptionAddress), &module);
    ModulePath path{};
    std::array<char, 128> words{};
    std::snprintf(
        words.data(), words.size(),
        ": it crashed (exception 0x%08lX at offset 0x%llX); report this to its makers",
        record->ExceptionCode,
        static_cast<unsigned long long>(static_cast<const char*>(record->ExceptionAddress) -
                                        reinterpret_cast<const char*>(module)));
    EndAtOnce({module != nullptr ? FileOf(module, path) : "unknown module", words.data()});
}

ReportStyle StyleOf(ProgressChoice choice)
{
    switch (choice)
    {
    case ProgressChoice::Bar:
        return ReportStyle::Bar;
    case ProgressChoice::Plain:
        return ReportStyle::Plain;
    case ProgressChoice::Json:
        return ReportStyle::Json;
    case ProgressChoice::None:
        return ReportStyle::Quiet;
    case ProgressChoice::Auto:
        break;
    }
    return StandardErrorIsConsole() ? ReportStyle::Bar : ReportStyle::Plain;
}

Reporter MakeReporter(ReportStyle style)
{
    return Reporter(style, {WriteStandardError, SecondsNow, StandardErrorColumns});
}

} // namespace

// All of the program behind main.
ExitCode RunProgram()
{
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    ::SetUnhandledExceptionFilter(OnCrash);
    ::SetConsoleCtrlHandler(OnBreak, TRUE);

    Command command;
    Reporter plain = MakeReporter(ReportStyle::Plain);
    const ExitCode parsed = ResultOf(plain, [&] { command = ParseCommandLine(Arguments()); });
    if (parsed != ExitCode::Done)
    {
        return parsed;
    }
    const auto* render = std::get_if<RenderCommand>(&command);
    if (render != nullptr)
    {
        currentStyle = StyleOf(render->progress);
    }
    Reporter reporter = MakeReporter(currentStyle);
    return RunToEnd(command, reporter);
}

} // namespace GlazelHost

int main()
{
    return static_cast<int>(GlazelHost::RunProgram());
}
