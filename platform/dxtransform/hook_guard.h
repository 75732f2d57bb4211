// Turns what a transform's own code throws into a result. Private to CDXBaseNTo1.
#pragma once

#include <windows.h>

#include <new>
#include <utility>

// E_OUTOFMEMORY when memory ran out, E_UNEXPECTED for any other exception.
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
