// Turns what somebody else's code throws into a result.
#pragma once

#include <windows.h>

#include <new>
#include <utility>

// The hook's result; E_OUTOFMEMORY when memory ran out, E_UNEXPECTED for any other exception.
template <typename Hook>
HRESULT CallHook(Hook&& hook) noexcept
{
    try
    {
        return std::forward<Hook>(hook)();
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
    catch (...)
    {
        return E_UNEXPECTED;
    }
}
