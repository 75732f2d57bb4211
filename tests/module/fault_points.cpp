#include "tests/module/fault_points.h"

#include "platform/atl/atlbase.h"
#include "tests/doubles/guard_pages.h"

#include <objbase.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <mutex>
#include <stdexcept>
#include <tuple>
#include <type_traits>
#include <utility>

namespace
{

struct Plan
{
    DWORD thread = 0; // 0: nothing fails
    std::size_t callsToGo = 0;
    FaultPoints::Which which{};
    std::vector<std::string> failed;
};

Plan g_plan; // of one thread at a time
POINT g_pointer{};
std::vector<std::string> g_boxes;

enum class Kind
{
    Nothing,
    Block,
    Task,   // memory of COM
    Window, // a device context of one
    Paint,  // likewise, while painting
    Drawn,  // a drawing object
};

struct Taken
{
    const void* place = nullptr; // null: the entry is free
    const char* from = nullptr;
    Kind kind{};
};

// Without memory of its own: it is changed inside allocations.
std::array<Taken, 4096> g_taken;
CComAutoCriticalSection g_takenLock;

void Take(const void* place, const char* from, Kind kind)
{
    const std::lock_guard guard(g_takenLock);
    const auto free = std::ranges::find(g_taken, nullptr, &Taken::place);
    if (place != nullptr && free != g_taken.end())
    {
        *free = {place, from, kind};
    }
}

// False for what was not taken here.
bool GiveBack(const void* place, Kind kind)
{
    const std::lock_guard guard(g_takenLock);
    for (Taken& taken : g_taken)
    {
        if (place != nullptr && taken.place == place && taken.kind == kind)
        {
            taken = {};
            return true;
        }
    }
    return false;
}

bool Guarded()
{
    return GuardedSideOfAll() != GuardedSide::None;
}

template <std::size_t kSize>
struct Name
{
    char text[kSize];
    consteval Name(const char (&name)[kSize]) { std::ranges::copy(name, text); }
};

// A call that may fail, and then answers 0 or that memory is short. What it gives is of that kind.
template <Name kName, typename Function, Kind kKind = Kind::Nothing>
struct Point;

template <Name kName, typename Result, typename... Arguments, Kind kKind>
struct Point<kName, Result(Arguments...), kKind>
{
    static inline Result (*real)(Arguments...) = nullptr;
    static Result Call(Arguments... arguments)
    {
        if (FaultPoints::IsDue(kName.text))
        {
            ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return Failure();
        }
        const Result result = real(arguments...);
        if constexpr (kKind != Kind::Nothing)
        {
            Take(result, kName.text, kKind);
        }
        return result;
    }

private:
    static constexpr Result Failure()
    {
        if constexpr (std::is_same_v<Result, HRESULT>)
        {
            return E_OUTOFMEMORY;
        }
        else if constexpr (std::is_same_v<Result, LSTATUS>)
        {
            return ERROR_NOT_ENOUGH_MEMORY;
        }
        else
        {
            return Result{};
        }
    }
};

// Gives its last argument back.
template <Name kName, typename Function, Kind kKind>
struct Return;

template <Name kName, typename Result, typename... Arguments, Kind kKind>
struct Return<kName, Result(Arguments...), kKind>
{
    static inline Result (*real)(Arguments...) = nullptr;
    static Result Call(Arguments... arguments)
    {
        const auto last = std::get<sizeof...(Arguments) - 1>(std::tuple(arguments...));
        if constexpr (kKind == Kind::Paint)
        {
            GiveBack(last->hdc, kKind);
        }
        else
        {
            GiveBack(last, kKind);
        }
        return real(arguments...);
    }
};

// The module's memory; guarded when the environment wants that.
template <Name kName, typename... Arguments>
struct Allocate
{
    static inline void* (*real)(Arguments...) = nullptr;
    static void* Call(Arguments... arguments)
    {
        if (FaultPoints::IsDue(kName.text))
        {
            return nullptr;
        }
        void* const block = Guarded() ? Guard((arguments * ...)) : real(arguments...);
        Take(block, kName.text, Kind::Block);
        return block;
    }

private:
    static void* Guard(std::size_t size)
    {
        void* const block = TakePages(size, GuardedSideOfAll() == GuardedSide::Behind).block;
        if (block != nullptr && sizeof...(Arguments) == 2)
        {
            std::memset(block, 0, size); // calloc
        }
        return block;
    }
};

template <int kTag>
struct Free
{
    static inline void (*real)(void*) = nullptr;
    static void Call(void* block)
    {
        if (GiveBack(block, Kind::Block) && Guarded())
        {
            LockAway(block);
        }
        else
        {
            real(block);
        }
    }
};

struct Pointer
{
    static inline BOOL (*real)(POINT*) = nullptr;
    static BOOL Call(POINT* place)
    {
        if (FaultPoints::IsDue("GetCursorPos"))
        {
            return FALSE;
        }
        *place = g_pointer;
        return TRUE;
    }
};

struct Box
{
    static inline decltype(&::MessageBoxA) real = nullptr;
    static int Call(HWND, LPCSTR text, LPCSTR, UINT)
    {
        g_boxes.emplace_back(text);
        return IDOK;
    }
};

template <typename Function>
StandIn Entry(const char* name)
{
    return {name, std::bit_cast<std::uintptr_t>(&Function::Call),
            reinterpret_cast<std::uintptr_t*>(&Function::real)};
}

template <Name kName, typename Function, Kind kKind = Kind::Nothing>
StandIn Row()
{
    return Entry<Point<kName, Function, kKind>>(kName.text);
}

template <Name kName, typename Function, Kind kKind>
StandIn Back()
{
    return Entry<Return<kName, Function, kKind>>(kName.text);
}

std::span<const StandIn> OfModule()
{
    // clang-format off
    static const std::array entries{
        Entry<Allocate<"malloc", std::size_t>>("malloc"),
        Entry<Allocate<"calloc", std::size_t, std::size_t>>("calloc"),
        Row<"CoTaskMemAlloc", decltype(::CoTaskMemAlloc), Kind::Task>(),
        Entry<Free<0>>("free"),
        Row<"TlsSetValue", decltype(::TlsSetValue)>(),
        Row<"CoCreateFreeThreadedMarshaler", decltype(::CoCreateFreeThreadedMarshaler)>(),
        Row<"CoCreateInstance", decltype(::CoCreateInstance)>(),
        Row<"LoadLibraryA", decltype(::LoadLibraryA)>(),
        Row<"LoadLibraryExW", decltype(::LoadLibraryExW)>(),
        Row<"GetModuleFileNameW", decltype(::GetModuleFileNameW)>(),
        Row<"LoadTypeLibEx", decltype(::LoadTypeLibEx)>(),
        Row<"RegOpenKeyExW", decltype(::RegOpenKeyExW)>(),
        Row<"RegCreateKeyExW", decltype(::RegCreateKeyExW)>(),
        Row<"RegGetValueW", decltype(::RegGetValueW)>(),
        Row<"RegCopyTreeW", decltype(::RegCopyTreeW)>(),
        Row<"RegDeleteTreeW", decltype(::RegDeleteTreeW)>(),
        Row<"LoadStringA", decltype(::LoadStringA)>(),
        Row<"LoadStringW", decltype(::LoadStringW)>(),
        Row<"FindResourceW", decltype(::FindResourceW)>(),
        Row<"LoadResource", decltype(::LoadResource)>(),
        Row<"LockResource", decltype(::LockResource)>(),
        Row<"PostMessageA", decltype(::PostMessageA)>(),
        Row<"CreateDialogParamW", decltype(::CreateDialogParamW)>(),
        Row<"MoveWindow", decltype(::MoveWindow)>(),
        Row<"GetClientRect", decltype(::GetClientRect)>(),
        Row<"ScreenToClient", decltype(::ScreenToClient)>(),
        Row<"InvalidateRect", decltype(::InvalidateRect)>(),
        Row<"BeginPaint", decltype(::BeginPaint), Kind::Paint>(),
        Back<"EndPaint", decltype(::EndPaint), Kind::Paint>(),
        Row<"GetDC", decltype(::GetDC), Kind::Window>(),
        Back<"ReleaseDC", decltype(::ReleaseDC), Kind::Window>(),
        Row<"CreateSolidBrush", decltype(::CreateSolidBrush), Kind::Drawn>(),
        Row<"CreateFontIndirectW", decltype(::CreateFontIndirectW), Kind::Drawn>(),
        Back<"DeleteObject", decltype(::DeleteObject), Kind::Drawn>(),
        Row<"SelectObject", decltype(::SelectObject)>(),
        Row<"GetTextExtentPointW", decltype(::GetTextExtentPointW)>(),
        Row<"GetTextMetricsW", decltype(::GetTextMetricsW)>(),
        Row<"FrameRect", decltype(::FrameRect)>(),
        Row<"ExtTextOutW", decltype(::ExtTextOutW)>(),
        Row<"SetDIBitsToDevice", decltype(::SetDIBitsToDevice)>(),
        Entry<Pointer>("GetCursorPos"),
        Entry<Box>("MessageBoxA"),
    };
    // clang-format on
    return entries;
}

std::span<const StandIn> OfProgram()
{
    static const std::array entries{
        Entry<Free<1>>("free"),
        Back<"CoTaskMemFree", decltype(::CoTaskMemFree), Kind::Task>(),
    };
    return entries;
}

} // namespace

FaultPoints::FaultPoints(HMODULE module)
    : m_module(module, OfModule()), m_program(::GetModuleHandleW(nullptr), OfProgram())
{
    if (m_module.Slots() != OfModule().size())
    {
        throw std::runtime_error("the module does not import all that is to fail");
    }
    const std::lock_guard guard(g_takenLock);
    g_taken = {};
}

void FaultPoints::Arm(std::size_t nth, Which which)
{
    g_plan = {::GetCurrentThreadId(), nth, which, {}};
}

std::vector<std::string> FaultPoints::Disarm()
{
    g_plan.thread = 0;
    return std::exchange(g_plan.failed, {});
}

std::map<std::string, int> FaultPoints::Held()
{
    std::vector<const char*> names;
    {
        const std::lock_guard guard(g_takenLock);
        for (const Taken& taken : g_taken)
        {
            if (taken.place != nullptr)
            {
                names.push_back(taken.from);
            }
        }
    }
    std::map<std::string, int> counts;
    for (const char* const name : names)
    {
        ++counts[name];
    }
    return counts;
}

void FaultPoints::PutPointer(POINT place)
{
    g_pointer = place;
}

std::vector<std::string> FaultPoints::TakeBoxes()
{
    return std::exchange(g_boxes, {});
}

bool FaultPoints::IsDue(const char* point)
{
    if (g_plan.thread != ::GetCurrentThreadId() || g_plan.callsToGo == 0)
    {
        return false;
    }
    if (g_plan.callsToGo > 1)
    {
        --g_plan.callsToGo;
        return false;
    }
    g_plan.failed.emplace_back(point);
    g_plan.callsToGo = g_plan.which == Which::One ? 0 : 1;
    return true;
}
