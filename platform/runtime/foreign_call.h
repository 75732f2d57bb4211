// Calls into code of other modules: the renderer, and the host's objects. What such code throws
// becomes an exception that this compiler's frames see. Tests:
// tests/platform/runtime/foreign_call_test.cpp.
//
// An exception of another compiler (code 0xE06D7363) passes the frames of this one: no handler
// catches it and no destructor runs, so that locks stay held. The guard around a call turns it into
// ForeignException. It stops nothing else: this compiler's exceptions go on as they are, and access
// violations and other faults go unchanged to whoever debugs or handles them.
//
// Keep a guard directly around one call: frames between it and the foreign code are not unwound by
// this compiler either. The foreign exception object itself is not destroyed; it is its thrower's.
#pragma once

#include "platform/runtime/hook_guard.h"

#include <windows.h>

#include <type_traits>
#include <utility>

// Stands for an exception of another compiler.
struct ForeignException
{
};

// Runs call(context) and answers false when an exception of another compiler ended it.
extern "C" bool GuardForeignCall(void (*call)(void*), void* context);

// Runs `call`, which does nothing but one call into another module. Throws ForeignException, or
// whatever of this compiler's comes out.
template <typename Call>
std::invoke_result_t<Call&> CallForeign(Call&& call)
{
    using Result = std::invoke_result_t<Call&>;
    using Callee = std::remove_reference_t<Call>;
    if constexpr (std::is_void_v<Result>)
    {
        if (!GuardForeignCall([](void* callee) { (*static_cast<Callee*>(callee))(); }, &call))
        {
            throw ForeignException{};
        }
    }
    else
    {
        static_assert(std::is_trivially_copyable_v<Result>);
        Result result{};
        auto keep = [&result, &call] { result = call(); };
        CallForeign(keep);
        return result;
    }
}

// The same of a call with a HRESULT where nothing may come out: E_OUTOFMEMORY or E_UNEXPECTED stand
// for an exception.
template <typename Call>
HRESULT ForeignResult(Call&& call) noexcept
{
    return CallHook([&call] { return CallForeign(call); });
}

// And of a call whose answer does not matter: true when it came back.
template <typename Call>
bool TryForeign(Call&& call) noexcept
{
    return SUCCEEDED(ForeignResult([&call]() -> HRESULT {
        static_cast<void>(call());
        return S_OK;
    }));
}
