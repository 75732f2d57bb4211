// What animals of the zoo share: where one lives, and how one takes the process with it.
#pragma once

#include <windows.h>

#include <string>

// The name of the folder of the module that `inside` points into.
inline std::string OwnFolderName(const void* inside)
{
    HMODULE module = nullptr;
    ::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                             GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         static_cast<const char*>(inside), &module);
    std::string path(MAX_PATH, '\0');
    path.resize(::GetModuleFileNameA(module, path.data(), MAX_PATH));
    path.resize(path.find_last_of('\\'));
    return path.substr(path.find_last_of('\\') + 1);
}

// Of the running program, with a backslash behind it.
inline std::string ProgramFolderPath()
{
    std::string path(MAX_PATH, '\0');
    path.resize(::GetModuleFileNameA(nullptr, path.data(), MAX_PATH));
    return path.substr(0, path.find_last_of('\\') + 1);
}

// As a failed assertion does. A fault would not: in DllMain the loader catches it.
inline void EndTheProcess()
{
    ::TerminateProcess(::GetCurrentProcess(), 3);
}
