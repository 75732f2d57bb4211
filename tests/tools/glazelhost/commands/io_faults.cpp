#include "tests/tools/glazelhost/commands/io_faults.h"

#include "support/win32/slim_lock.h"
#include "support/win32/utf8.h"

#include <algorithm>
#include <array>
#include <bit>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace
{

struct Plan
{
    bool isArmed = false;
    std::string point;
    std::size_t nth = 0;
    IoFaults::Kind kind{};
    std::vector<IoFaults::Point> reached;
};

SlimLock g_lock; // guards these three
Plan g_plan;
std::map<HANDLE, std::string> g_names;
std::map<HANDLE, std::string> g_held;

enum class Course
{
    AsEver,
    Fails,
    Part,
    Nothing,
};

Course CourseOf(const std::string& point)
{
    const std::lock_guard guard(g_lock);
    if (!g_plan.isArmed)
    {
        return Course::AsEver;
    }
    auto found = std::ranges::find(g_plan.reached, point, &IoFaults::Point::name);
    if (found == g_plan.reached.end())
    {
        found = g_plan.reached.insert(found, {point, 0});
    }
    const std::size_t call = ++found->calls;
    if (point != g_plan.point || call < g_plan.nth)
    {
        return Course::AsEver;
    }
    switch (g_plan.kind)
    {
    case IoFaults::Kind::Fails:
        return call == g_plan.nth ? Course::Fails : Course::AsEver;
    case IoFaults::Kind::Stays:
        return Course::Fails;
    case IoFaults::Kind::Part:
        return call == g_plan.nth ? Course::Part : Course::AsEver;
    case IoFaults::Kind::Nothing:
        return Course::Nothing;
    }
    return Course::AsEver;
}

// The last part of a path, without what differs from run to run.
std::string NameOf(const wchar_t* path)
{
    std::string name = Utf8(path);
    name.erase(name.find_last_not_of("\\/") + 1);
    name.erase(0, name.find_last_of("\\/") + 1);
    const auto isNamedLike = [&name](std::string_view begin, std::string_view end) {
        return name.starts_with(begin) && name.ends_with(end);
    };
    return isNamedLike("~glazelhost-", ".tmp")   ? "~"
           : isNamedLike("glz", ".tmp")          ? "scratch"
           : isNamedLike("glazelhost-test-", "") ? "folder"
                                                 : name;
}

// Empty for what nobody has opened or named.
std::string NameOf(HANDLE handle)
{
    const std::lock_guard guard(g_lock);
    const auto found = g_names.find(handle);
    return found != g_names.end() ? found->second : "";
}

std::string Subject(const wchar_t* path)
{
    return NameOf(path);
}

std::string Subject(HANDLE handle)
{
    return NameOf(handle);
}

void Opened(HANDLE handle, const std::string& name)
{
    const std::lock_guard guard(g_lock);
    if (g_plan.isArmed)
    {
        g_names[handle] = name;
        g_held[handle] = name;
    }
}

void Closed(HANDLE handle)
{
    const std::lock_guard guard(g_lock);
    g_names.erase(handle);
    g_held.erase(handle);
}

template <std::size_t kSize>
struct Text
{
    char text[kSize];
    consteval Text(const char (&words)[kSize]) { std::ranges::copy(words, text); }
};

// What a function does with a handle.
enum class Deed
{
    Uses,
    Opens,  // answers it, INVALID_HANDLE_VALUE for none
    Starts, // answers it, null for none
    Closes, // its first argument
};

template <Text kName, DWORD kError, typename Function, Deed kDeed>
struct Hook;

template <Text kName, DWORD kError, typename Result, typename... Arguments, Deed kDeed>
struct Hook<kName, kError, Result(Arguments...), kDeed>
{
    static inline Result (*real)(Arguments...) = nullptr;
    static Result Call(Arguments... arguments)
    {
        const auto first = std::get<0>(std::tuple(arguments...));
        if constexpr (kDeed == Deed::Closes)
        {
            Closed(first);
            return real(arguments...);
        }
        else
        {
            const std::string subject = SubjectOf(first);
            if (!subject.empty() &&
                CourseOf(std::string(kName.text) + ' ' + subject) == Course::Fails)
            {
                ::SetLastError(kError);
                return Failure();
            }
            const Result result = real(arguments...);
            if constexpr (kDeed == Deed::Opens || kDeed == Deed::Starts)
            {
                const DWORD error = ::GetLastError();
                if (result != Failure())
                {
                    Opened(result, subject);
                }
                ::SetLastError(error);
            }
            return result;
        }
    }

private:
    template <typename First>
    static std::string SubjectOf(First first)
    {
        if constexpr (std::is_convertible_v<First, const wchar_t*> || std::is_same_v<First, HANDLE>)
        {
            return first != nullptr ? Subject(first) : "none";
        }
        else
        {
            return "any";
        }
    }
    static Result Failure()
    {
        if constexpr (std::is_same_v<Result, HANDLE>)
        {
            return kDeed == Deed::Opens ? INVALID_HANDLE_VALUE : nullptr;
        }
        else
        {
            return Result{};
        }
    }
};

// ReadFile and WriteFile.
template <Text kName, DWORD kError, typename Bytes>
struct Transfer
{
    static inline BOOL (*real)(HANDLE, Bytes*, DWORD, DWORD*, OVERLAPPED*) = nullptr;
    static BOOL Call(HANDLE handle, Bytes* bytes, DWORD size, DWORD* done, OVERLAPPED* overlapped)
    {
        const std::string subject = NameOf(handle);
        switch (subject.empty() ? Course::AsEver
                                : CourseOf(std::string(kName.text) + ' ' + subject))
        {
        case Course::Fails:
            ::SetLastError(std::is_const_v<Bytes> && subject == "standard output" ? ERROR_NO_DATA
                                                                                  : kError);
            return FALSE;
        case Course::Part:
            return real(handle, bytes, std::min<DWORD>(size, 1), done, overlapped);
        case Course::Nothing:
            *done = 0;
            return TRUE;
        case Course::AsEver:
            break;
        }
        return real(handle, bytes, size, done, overlapped);
    }
};

template <typename Function>
StandIn Entry(const char* name)
{
    return {name, std::bit_cast<std::uintptr_t>(&Function::Call),
            reinterpret_cast<std::uintptr_t*>(&Function::real)};
}

template <Text kName, DWORD kError, typename Function, Deed kDeed = Deed::Uses>
StandIn Row()
{
    return Entry<Hook<kName, kError, Function, kDeed>>(kName.text);
}

std::span<const StandIn> Calls()
{
    // clang-format off
    static const std::array entries{
        Row<"CreateFileW",      ERROR_ACCESS_DENIED,  decltype(::CreateFileW), Deed::Opens>(),
        Row<"FindFirstFileW",   ERROR_ACCESS_DENIED,  decltype(::FindFirstFileW), Deed::Opens>(),
        Row<"FindNextFileW",    ERROR_READ_FAULT,     decltype(::FindNextFileW)>(),
        Row<"GetFileSizeEx",    ERROR_READ_FAULT,     decltype(::GetFileSizeEx)>(),
        Row<"SetFilePointerEx", ERROR_SEEK,           decltype(::SetFilePointerEx)>(),
        Row<"FlushFileBuffers", ERROR_DISK_FULL,      decltype(::FlushFileBuffers)>(),
        Row<"SetFileInformationByHandle", ERROR_NOT_SUPPORTED,
            decltype(::SetFileInformationByHandle)>(),
        Row<"MoveFileExW",      ERROR_ACCESS_DENIED,  decltype(::MoveFileExW)>(),
        Row<"GetTempFileNameW", ERROR_DISK_FULL,      decltype(::GetTempFileNameW)>(),
        Row<"CreateProcessW",   ERROR_NOT_ENOUGH_MEMORY, decltype(::CreateProcessW)>(),
        Row<"CloseHandle",      0,                    decltype(::CloseHandle), Deed::Closes>(),
        Row<"FindClose",        0,                    decltype(::FindClose), Deed::Closes>(),
        Entry<Transfer<"ReadFile", ERROR_CRC, void>>("ReadFile"),
        Entry<Transfer<"WriteFile", ERROR_DISK_FULL, const void>>("WriteFile"),
        Row<"CreateThread",     ERROR_NOT_ENOUGH_MEMORY, decltype(::CreateThread), Deed::Starts>(),
    };
    // clang-format on
    return entries;
}

} // namespace

IoFaults::IoFaults(HMODULE library)
    : m_program(::GetModuleHandleW(nullptr), Calls()),
      m_library(library, Calls().first(Calls().size() - 1)) // its threads may stay with it
{
    if (m_program.Slots() != Calls().size())
    {
        throw std::runtime_error("the program does not import all that is to fail");
    }
}

void IoFaults::Name(HANDLE handle, const std::string& name)
{
    const std::lock_guard guard(g_lock);
    g_names[handle] = name;
}

void IoFaults::Arm(const std::string& point, std::size_t nth, Kind kind)
{
    const std::lock_guard guard(g_lock);
    g_plan = {true, point, nth, kind, {}};
}

std::vector<IoFaults::Point> IoFaults::Disarm()
{
    const std::lock_guard guard(g_lock);
    g_names.clear();
    return std::exchange(g_plan, {}).reached;
}

std::vector<std::string> IoFaults::Held()
{
    const std::lock_guard guard(g_lock);
    std::vector<std::string> names;
    for (const auto& [handle, name] : std::exchange(g_held, {}))
    {
        names.push_back(name);
    }
    return names;
}
