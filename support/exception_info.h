// The error value that travels inside the product, the checks that throw it and the functions that
// end it. Pure: no windows.h; effect/plugin_records.cpp pins the codes to the system's.
// Tests: tests/support/exception_info_test.cpp.
#pragma once

#include "support/trace.h"

#include <cstdint>
#include <utility>

inline constexpr std::int32_t kResultOk = 0;
inline constexpr std::int32_t kResultOutOfMemory = static_cast<std::int32_t>(0x8007000EU);

struct ExceptionInfo
{
    std::int32_t result; // a failed HRESULT
    const char* message; // a literal, for the trace only: reporting a failure must not allocate
};

inline void CheckThat(bool condition, std::int32_t result, const char* message)
{
    if (!condition)
    {
        throw ExceptionInfo{result, message};
    }
}

// Success codes above zero pass.
inline void CheckHr(std::int32_t result, const char* message)
{
    CheckThat(result >= 0, result, message);
}

inline void CheckPtr(const void* pointer, const char* message)
{
    CheckThat(pointer != nullptr, kResultOutOfMemory, message);
}

// Runs the steps of an operation up to the first failed check, which is traced, and answers whether
// all of them ran. For operations whose result is what their last call gave them, not the check's
// code.
template <typename Steps>
bool RunSteps(Steps&& steps) noexcept
{
    try
    {
        std::forward<Steps>(steps)();
        return true;
    }
    catch (const ExceptionInfo& error)
    {
        Trace(0, "%s", error.message);
    }
    catch (...)
    {
        Trace(0, "unexpected exception\n");
    }
    return false;
}

// Runs an operation that keeps its result in `current`. A failed check is traced and its code
// returned; after anything else, success included, the answer is `current` as the operation left
// it. Of any type of result: another one would not be the operation's variable but a copy of it.
template <typename Result, typename Operation>
Result ResultOf(const Result& current, Operation&& operation) noexcept
{
    try
    {
        std::forward<Operation>(operation)();
    }
    catch (const ExceptionInfo& error)
    {
        Trace(0, "%s", error.message);
        return static_cast<Result>(error.result);
    }
    catch (...)
    {
        Trace(0, "unexpected exception\n");
    }
    return current;
}
