#include "tests/reference_renderer/dll/debugger_watch.h"

#include <algorithm>
#include <vector>

namespace ReferenceRenderer
{

namespace
{

// The system tells a debugger by raising these; [0] is the length with the final 0, [1] the text.
constexpr DWORD kNarrowMessage = 0x40010006;
constexpr DWORD kWideMessage = 0x4001000A;

SRWLOCK g_lock = SRWLOCK_INIT;
std::vector<std::string> g_messages;

LONG CALLBACK OnException(EXCEPTION_POINTERS* pointers)
{
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    if (record.ExceptionCode != kNarrowMessage && record.ExceptionCode != kWideMessage)
    {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    std::string text;
    for (ULONG_PTR i = 0; i + 1 < record.ExceptionInformation[0]; ++i)
    {
        // Enough for the English words that tests look for.
        text += record.ExceptionCode == kWideMessage
                    ? static_cast<char>(
                          reinterpret_cast<const wchar_t*>(record.ExceptionInformation[1])[i])
                    : reinterpret_cast<const char*>(record.ExceptionInformation[1])[i];
    }
    ::AcquireSRWLockExclusive(&g_lock);
    g_messages.push_back(std::move(text));
    ::ReleaseSRWLockExclusive(&g_lock);
    return EXCEPTION_CONTINUE_EXECUTION; // handled: the system says it nowhere else
}

} // namespace

DebuggerWatch::DebuggerWatch() : m_handler(::AddVectoredExceptionHandler(1, OnException))
{
    g_messages.clear();
}

DebuggerWatch::~DebuggerWatch()
{
    ::RemoveVectoredExceptionHandler(m_handler);
}

std::size_t DebuggerWatch::CountOf(const std::string& words) const
{
    ::AcquireSRWLockShared(&g_lock);
    const auto count =
        std::count_if(g_messages.begin(), g_messages.end(),
                      [&](const std::string& m) { return m.find(words) != std::string::npos; });
    ::ReleaseSRWLockShared(&g_lock);
    return static_cast<std::size_t>(count);
}

} // namespace ReferenceRenderer
