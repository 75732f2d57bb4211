// Reading and writing that is done only when all of it is.
#pragma once

#include <algorithm>
#include <cstddef>

#include <windows.h>

// What one call of the system moves at most: large ones fail on some devices and pipes, and Wine
// touches each page of all the room that is given at each reading, however little there is to read.
inline DWORD TransferSize(std::size_t size) noexcept
{
    return static_cast<DWORD>(std::min(size, std::size_t{1} << 18));
}

// The system's error, or ERROR_SUCCESS. `size` becomes how many bytes there were: fewer only at the
// end.
inline DWORD ReadWhole(HANDLE file, void* bytes, std::size_t& size) noexcept
{
    auto* target = static_cast<std::byte*>(bytes);
    std::size_t left = size;
    DWORD count = 0;
    do
    {
        if (::ReadFile(file, target, TransferSize(left), &count, nullptr) == 0)
        {
            return ::GetLastError();
        }
        target += count;
        left -= count;
    } while (left != 0 && count != 0);
    size -= left;
    return ERROR_SUCCESS;
}

// The system's error, or ERROR_SUCCESS when all bytes are written.
inline DWORD WriteWhole(HANDLE file, const void* bytes, std::size_t size) noexcept
{
    const auto* source = static_cast<const std::byte*>(bytes);
    while (size != 0)
    {
        DWORD count = 0;
        if (::WriteFile(file, source, TransferSize(size), &count, nullptr) == 0)
        {
            return ::GetLastError();
        }
        if (count == 0)
        {
            return ERROR_WRITE_FAULT; // instead of asking for ever
        }
        source += count;
        size -= count;
    }
    return ERROR_SUCCESS;
}

// Likewise, once what was written has left for the disk: a system that writes behind says only here
// that there is no room for it, or that the network is gone.
inline DWORD FlushWhole(HANDLE file) noexcept
{
    const DWORD error = ::FlushFileBuffers(file) != 0 ? ERROR_SUCCESS : ::GetLastError();
    const bool isUnknown = error == ERROR_INVALID_FUNCTION || error == ERROR_NOT_SUPPORTED;
    return isUnknown ? ERROR_SUCCESS : error;
}
