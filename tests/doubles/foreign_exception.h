// What foreign code lets out, in each of the two kinds that tests try everywhere.
#pragma once

#include <windows.h>

#include <stdexcept>

enum class Throws
{
    Nothing,
    CppException,   // of this compiler
    OtherCompilers, // of Microsoft's: a structured exception that passes this compiler's frames
};

inline constexpr Throws kAllThrows[]{Throws::CppException, Throws::OtherCompilers};

inline const char* NameOf(Throws what)
{
    return what == Throws::CppException ? "C++" : "other compiler's";
}

inline void RaiseOtherCompilersException()
{
    ::RaiseException(0xE06D7363, EXCEPTION_NONCONTINUABLE, 0, nullptr);
}

inline void Throw(Throws what)
{
    switch (what)
    {
    case Throws::Nothing:
        return;
    case Throws::CppException:
        throw std::runtime_error("thrown on purpose");
    case Throws::OtherCompilers:
        RaiseOtherCompilersException();
    }
}
