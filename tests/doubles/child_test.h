// A test that runs itself again in a process of its own, for what ends a process.
#pragma once

#include "tests/doubles/deadline.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

inline constexpr wchar_t kChildTestRole[] = L"GLAZEL_CHILD_TEST";

// Whether this process is such a one.
inline bool IsChild()
{
    return ::GetEnvironmentVariableW(kChildTestRole, nullptr, 0) != 0;
}

// Runs this program's test `name` (it may hold wildcards) once more, where IsChild answers true.
inline DWORD ExitCodeOf(const std::wstring& name)
{
    std::wstring path(MAX_PATH, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    std::wstring command = L"\"" + path + L"\" --gtest_filter=" + name;
    ::SetEnvironmentVariableW(kChildTestRole, L"child");
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    const BOOL started = ::CreateProcessW(path.c_str(), command.data(), nullptr, nullptr, FALSE, 0,
                                          nullptr, nullptr, &startup, &process);
    ::SetEnvironmentVariableW(kChildTestRole, nullptr);
    EXPECT_TRUE(started);
    DWORD exitCode = 0;
    EXPECT_EQ(::WaitForSingleObject(process.hProcess, kDeadlineMs), WAIT_OBJECT_0);
    ::GetExitCodeProcess(process.hProcess, &exitCode);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return exitCode;
}
