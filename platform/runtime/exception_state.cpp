// The C++ run time's per-thread exception state, kept by the DLL itself.
// The linked-in run time takes a thread-local slot for it at every load of the DLL and never gives
// the slot back: after about a thousand loads the process runs out of them. These two functions
// replace the run time's; the slot is freed with the module, a state with its thread or with the
// module, whichever ends first.
// May go when loads and unloads with an exception in each leave the slots alone without it.
#include "platform/runtime/exception_state.h"

#include <windows.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <exception>

// Gives back the memory that the run time sets aside at load for exceptions thrown when there is
// none left. Its own, but declared in no header: it was made for leak checkers.
namespace __gnu_cxx
{
void __freeres();
}

namespace
{

// Layout as the C++ ABI fixes it.
struct ExceptionGlobals
{
    void* caughtExceptions;
    unsigned int uncaughtExceptions;
};

// One a thread that has thrown here, linked so that those of threads that outlive the module can be
// found. The run time sees the first member only.
struct ThreadState
{
    ExceptionGlobals globals;
    ThreadState* next;
    ThreadState** link; // what points to this one
};

// For a thread that throws here for the first time when memory is short, as it does to say so: it
// keeps one until it ends.
struct ReserveState
{
    ExceptionGlobals globals;
    std::atomic<DWORD> thread; // its id; 0: free
};

constinit std::array<ReserveState, 64> g_reserve{};
constinit std::atomic<bool> g_reserveUsed = false; // since the load

DWORD g_slot = TLS_OUT_OF_INDEXES;
SRWLOCK g_lock = SRWLOCK_INIT;
ThreadState* g_states = nullptr; // guarded by g_lock

void Link(ThreadState& state) noexcept
{
    ::AcquireSRWLockExclusive(&g_lock);
    state.next = g_states;
    state.link = &g_states;
    if (g_states != nullptr)
    {
        g_states->link = &state.next;
    }
    g_states = &state;
    ::ReleaseSRWLockExclusive(&g_lock);
}

void Unlink(ThreadState& state) noexcept
{
    ::AcquireSRWLockExclusive(&g_lock);
    *state.link = state.next;
    if (state.next != nullptr)
    {
        state.next->link = state.link;
    }
    ::ReleaseSRWLockExclusive(&g_lock);
}

// Null when that thread has none.
ReserveState* FindReserve(DWORD thread) noexcept
{
    for (ReserveState& state : g_reserve)
    {
        if (state.thread == thread)
        {
            return &state;
        }
    }
    return nullptr;
}

// Null when others have all of them.
ReserveState* TakeReserve() noexcept
{
    g_reserveUsed = true;
    for (ReserveState& state : g_reserve)
    {
        DWORD nobody = 0;
        if (state.thread.compare_exchange_strong(nobody, ::GetCurrentThreadId()))
        {
            return &state;
        }
    }
    return nullptr;
}

// Null when memory is short.
ThreadState* MakeState() noexcept
{
    auto* const fresh = static_cast<ThreadState*>(std::calloc(1, sizeof(ThreadState)));
    if (fresh == nullptr || ::TlsSetValue(g_slot, fresh) == FALSE) // a high slot takes memory too
    {
        std::free(fresh);
        return nullptr;
    }
    Link(*fresh);
    return fresh;
}

// Lives from before the module's other global objects until after them.
class StateOwner
{
public:
    StateOwner() noexcept { g_slot = ::TlsAlloc(); }
    ~StateOwner();
    StateOwner(const StateOwner&) = delete;
    StateOwner& operator=(const StateOwner&) = delete;
};

StateOwner::~StateOwner()
{
    // Nobody else runs code of a module that is being unloaded: no lock.
    while (g_states != nullptr)
    {
        ThreadState* const state = g_states;
        g_states = state->next;
        std::free(state);
    }
    ::TlsFree(g_slot);
    g_slot = TLS_OUT_OF_INDEXES;
    __gnu_cxx::__freeres();
}

[[gnu::init_priority(102)]] StateOwner g_owner;

} // namespace

bool HasExceptionState() noexcept
{
    return g_slot != TLS_OUT_OF_INDEXES;
}

void EndThreadExceptionState() noexcept
{
    auto* const state = static_cast<ThreadState*>(::TlsGetValue(g_slot));
    if (state != nullptr)
    {
        Unlink(*state);
        std::free(state);
        ::TlsSetValue(g_slot, nullptr);
    }
    ReserveState* const reserve = g_reserveUsed ? FindReserve(::GetCurrentThreadId()) : nullptr;
    if (reserve != nullptr)
    {
        reserve->globals = {};
        reserve->thread = 0;
    }
}

namespace __cxxabiv1 // NOLINT(readability-identifier-naming): the compiler's name for it
{

extern "C" void* __cxa_get_globals_fast() noexcept
{
    const DWORD lastError = ::GetLastError(); // TlsGetValue clears it
    void* state = ::TlsGetValue(g_slot);
    if (state == nullptr && g_reserveUsed)
    {
        ReserveState* const reserve = FindReserve(::GetCurrentThreadId());
        state = reserve != nullptr ? &reserve->globals : nullptr;
    }
    ::SetLastError(lastError);
    return state;
}

extern "C" void* __cxa_get_globals() noexcept
{
    void* const known = __cxa_get_globals_fast();
    if (known != nullptr)
    {
        return known;
    }
    const DWORD lastError = ::GetLastError();
    ThreadState* const fresh = MakeState();
    ReserveState* const reserve = fresh == nullptr ? TakeReserve() : nullptr;
    if (fresh == nullptr && reserve == nullptr)
    {
        std::abort(); // an exception is in flight and there is nowhere to note it
    }
    ::SetLastError(lastError);
    return fresh != nullptr ? &fresh->globals : &reserve->globals;
}

} // namespace __cxxabiv1

// What std::terminate calls, in place of the run time's own. That one writes the exception's name
// to a console, which hosts do not have, and brings 65 KiB along that take names and numbers apart.
void __gnu_cxx::__verbose_terminate_handler()
{
    std::abort();
}
