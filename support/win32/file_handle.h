// Owns an open file, pipe or search of the system.
#pragma once

#include <windows.h>

#include <memory>

struct FileHandleCloser
{
    using pointer = HANDLE;
    void operator()(HANDLE handle) const noexcept
    {
        // Not null alone: the calls that open files answer INVALID_HANDLE_VALUE.
        if (handle != INVALID_HANDLE_VALUE)
        {
            ::CloseHandle(handle);
        }
    }
};
using FileHandle = std::unique_ptr<void, FileHandleCloser>;

struct FindHandleCloser
{
    using pointer = HANDLE;
    void operator()(HANDLE handle) const noexcept
    {
        if (handle != INVALID_HANDLE_VALUE)
        {
            ::FindClose(handle);
        }
    }
};
using FindHandle = std::unique_ptr<void, FindHandleCloser>;
