#include "platform/runtime/foreign_call.h"
#include "tests/doubles/child_test.h"
#include "tests/doubles/deadline.h"
#include "tests/doubles/foreign_exception.h"
#include "tests/doubles/test_thread.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <stdexcept>
#include <tuple>

namespace
{

class CountsItsEnd
{
public:
    explicit CountsItsEnd(int& ends) noexcept : m_ends(ends) {}
    ~CountsItsEnd() { ++m_ends; }
    CountsItsEnd(const CountsItsEnd&) = delete;
    CountsItsEnd& operator=(const CountsItsEnd&) = delete;

private:
    int& m_ends;
};

} // namespace

TEST(ForeignCall, GivesWhatTheCallGives)
{
    int calls = 0;
    EXPECT_EQ(CallForeign([&] { return ++calls; }), 1);
    CallForeign([&] { ++calls; });
    EXPECT_EQ(calls, 2);
    EXPECT_TRUE(TryForeign([&] { return ++calls; }));
    EXPECT_EQ(calls, 3);
}

TEST(ForeignCall, AnExceptionOfAnotherCompilerBecomesOneOfThisOne)
{
    int ends = 0;
    bool caught = false;
    try
    {
        const CountsItsEnd outside(ends);
        CallForeign([] { RaiseOtherCompilersException(); });
    }
    catch (const ForeignException&)
    {
        caught = true;
        EXPECT_EQ(ends, 1) << "the frames outside the guard are unwound";
    }
    EXPECT_TRUE(caught);
}

TEST(ForeignCall, KeepsTheRegistersOfItsCaller)
{
    // More values than there are registers to keep them in, all alive across the call.
    volatile long long source = 1;
    const long long a = source + 1, b = source + 2, c = source + 3, d = source + 4;
    const long long e = source + 5, f = source + 6, g = source + 7, h = source + 8;
    const double x = static_cast<double>(source) + 0.5, y = x + 1, z = x + 2, w = x + 3;
    EXPECT_FALSE(TryForeign([] { RaiseOtherCompilersException(); }));
    EXPECT_EQ(a + b + c + d + e + f + g + h, 44);
    EXPECT_EQ(x + y + z + w, 12.0);
}

TEST(ForeignCall, AnExceptionOfThisCompilerPassesAsItIs)
{
    int ends = 0;
    EXPECT_THROW(CallForeign([&] {
                     const CountsItsEnd inside(ends);
                     throw std::out_of_range("mine");
                 }),
                 std::out_of_range);
    EXPECT_EQ(ends, 1);
    EXPECT_FALSE(TryForeign([] { throw 5; }));
}

TEST(ForeignCall, TheInnermostGuardEndsTheCall)
{
    bool reached = false;
    EXPECT_TRUE(TryForeign([&] {
        EXPECT_FALSE(TryForeign([] { RaiseOtherCompilersException(); }));
        reached = true;
    }));
    EXPECT_TRUE(reached);
}

TEST(ForeignCall, AThousandEndedCallsLeaveTheStackAsItWas)
{
    // A megabyte of stack would not hold them.
    TestThread thread([] {
        for (int call = 0; call < 1000; ++call)
        {
            ASSERT_FALSE(TryForeign([call] {
                volatile char large[4096];
                large[0] = static_cast<char>(call);
                RaiseOtherCompilersException();
                std::ignore = large[0];
            }));
        }
    });
    EXPECT_TRUE(thread.Join(kDeadlineMs));
}

namespace
{

constexpr DWORD kSeenAsItWas = 77;

// Ends the process: with kSeenAsItWas when the fault arrives as it was raised.
LONG WINAPI ReportFault(EXCEPTION_POINTERS* fault) noexcept
{
    const EXCEPTION_RECORD& record = *fault->ExceptionRecord;
    const bool asItWas = record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION &&
                         record.NumberParameters == 2 && record.ExceptionInformation[1] == 16;
    ::TerminateProcess(::GetCurrentProcess(), asItWas ? kSeenAsItWas : 1);
    return EXCEPTION_CONTINUE_SEARCH;
}

} // namespace

TEST(ForeignCall, AFaultGoesOnUnchangedToWhoeverHandlesIt)
{
    if (IsChild())
    {
        ::SetUnhandledExceptionFilter(ReportFault);
        std::ignore = TryForeign([] {
            auto* volatile nowhere = reinterpret_cast<volatile int*>(16);
            *nowhere = 1;
        });
        ::TerminateProcess(::GetCurrentProcess(), 2); // it was swallowed
    }
    EXPECT_EQ(ExitCodeOf(L"ForeignCall.AFault*"), kSeenAsItWas);
}
