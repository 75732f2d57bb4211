// The plug-in comes and goes: it stays while it is needed, and leaves nothing behind.
#include "contract/entry_points.h"
#include "contract/host_interfaces.h"
#include "effect/iplugin.h"
#include "tests/doubles/deadline.h"
#include "tests/doubles/renderers/renderer_variant.h"
#include "tests/doubles/test_thread.h"
#include "tests/module/plugin_module.h"
#include "tools/glazelhost/validate/process_census.h"

#include <gtest/gtest.h>

#include <objidl.h>
#include <ocidl.h>

#include <array>
#include <atomic>
#include <bit>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace
{

using GlazelHost::ProcessCensus;
using GlazelHost::TakeCensus;

constexpr wchar_t kRenderer[] = L"GZ3Renderer_x64.dll";

CComPtr<IUnknown> Create(const PluginModule& module, REFCLSID classId)
{
    CComPtr<IClassFactory> factory;
    EXPECT_EQ(module.GetClassObject(classId, IID_IClassFactory, reinterpret_cast<void**>(&factory)),
              S_OK);
    CComPtr<IUnknown> object;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&object)),
              S_OK);
    return object;
}

// The effect leaves the reading of an empty stream by an exception that it catches itself.
void ThrowInside(const CComPtr<IUnknown>& effect)
{
    CComPtr<IPersistStreamInit> persist;
    ASSERT_EQ(effect->QueryInterface(IID_IPersistStreamInit, reinterpret_cast<void**>(&persist)),
              S_OK);
    CComPtr<IStream> empty;
    ASSERT_EQ(::CreateStreamOnHGlobal(nullptr, TRUE, &empty), S_OK);
    std::ignore = persist->Load(empty); // whatever it answers
}

// So does the reference renderer with the import of a file that is not there.
void ThrowInsideTheRenderer()
{
    const auto import = std::bit_cast<RendererAPI::LoadSessionFileFunction*>(
        ::GetProcAddress(::GetModuleHandleW(kRenderer), "LoadSessionFile"));
    ASSERT_NE(import, nullptr);
    ASSERT_NE(import("C:\\no such look.cube", 0), 0);
}

// Only where the caller knows that nobody uses the renderer any more.
void UnloadRenderer()
{
    while (const HMODULE renderer = ::GetModuleHandleW(kRenderer))
    {
        ::FreeLibrary(renderer);
    }
}

} // namespace

namespace
{

// What one creating thread is doing. A question to the module has a certain answer only while
// no stage changes: Idle and Alive are the stages in which the thread certainly has no object, or
// one. Counts up for ever, so that a stage seen twice is the same stage.
class Stage
{
public:
    enum : unsigned
    {
        Idle,
        Creating,
        Alive,
        Releasing,
        Count
    };
    void Next() { ++m_step; }
    unsigned Step() const { return m_step; }

private:
    std::atomic<unsigned> m_step = 0;
};

constexpr std::size_t kCreators = 4;

struct Stages
{
    std::array<Stage, kCreators> of;

    std::array<unsigned, kCreators> Steps() const
    {
        std::array<unsigned, kCreators> steps{};
        for (std::size_t index = 0; index < kCreators; ++index)
        {
            steps[index] = of[index].Step();
        }
        return steps;
    }
};

// Creates and releases objects of both classes until told to stop. `gate` is held while there are.
void CreateAndRelease(const PluginModule& module, Stage& stage, SRWLOCK& gate,
                      const std::atomic<bool>& stop)
{
    for (unsigned round = 0; !stop; ++round)
    {
        ::AcquireSRWLockShared(&gate);
        stage.Next();
        CComPtr<IUnknown> object = Create(module, round % 2 == 0 ? CLSID_Plugin : CLSID_PluginPP);
        stage.Next();
        ::SwitchToThread();
        stage.Next();
        object.Release();
        stage.Next();
        ::ReleaseSRWLockShared(&gate);
    }
}

} // namespace

TEST(Unload, TheModuleSaysWhetherItIsNeededWhileFourThreadsCreateAndRelease)
{
    constexpr int kCertainAnswers = 500;
    UseRenderer(L"complete");
    const PluginModule module;
    Stages stages;
    SRWLOCK gate = SRWLOCK_INIT;
    std::atomic<bool> stop = false;
    int neededAnswers = 0;
    int freeAnswers = 0;
    {
        std::array<std::unique_ptr<TestThread>, kCreators> threads;
        for (std::size_t index = 0; index < kCreators; ++index)
        {
            threads[index] = std::make_unique<TestThread>(
                [&, index] { CreateAndRelease(module, stages.of[index], gate, stop); });
        }
        const ULONGLONG deadline = ::GetTickCount64() + kDeadlineMs;
        while (neededAnswers < kCertainAnswers && ::GetTickCount64() < deadline)
        {
            const auto before = stages.Steps();
            const HRESULT answer = module.CanUnloadNow();
            const auto after = stages.Steps();
            bool needed = false;
            for (std::size_t index = 0; index < kCreators; ++index)
            {
                needed = needed || (before[index] == after[index] &&
                                    before[index] % Stage::Count == Stage::Alive);
            }
            if (needed)
            {
                EXPECT_EQ(answer, S_FALSE) << "an object was alive all the time";
                ++neededAnswers;
            }
            ::AcquireSRWLockExclusive(&gate); // waits until nobody has an object
            EXPECT_EQ(module.CanUnloadNow(), S_OK) << "no object was alive";
            ++freeAnswers;
            ::ReleaseSRWLockExclusive(&gate);
        }
        stop = true;
    }
    EXPECT_EQ(neededAnswers, kCertainAnswers) << "within the time";
    EXPECT_GE(freeAnswers, kCertainAnswers);
    EXPECT_EQ(module.CanUnloadNow(), S_OK);
}

TEST(Unload, APageKeepsTheModuleUntilItsLastRelease)
{
    const PluginModule module;
    CComPtr<IUnknown> page = Create(module, CLSID_PluginPP);
    EXPECT_EQ(module.CanUnloadNow(), S_FALSE);
    page.Release();
    EXPECT_EQ(module.CanUnloadNow(), S_OK);
}

namespace
{

enum class Use
{
    None,                // loaded and freed
    Objects,             // an object of each class
    ObjectsAndException, // and an exception inside the effect
    FreshRenderer,       // and one inside the reference renderer, which is loaded anew each time
};

struct NamedUse
{
    const char* name;
    Use use;
    const wchar_t* renderer; // its folder below bin
    int loads;
};

std::ostream& operator<<(std::ostream& stream, const NamedUse& use)
{
    return stream << use.name;
}

// The address of the module, which is gone by then.
HMODULE LoadUseAndFree(Use use)
{
    HMODULE address = nullptr;
    {
        const PluginModule module;
        address = module.Handle();
        if (use != Use::None)
        {
            const CComPtr<IUnknown> effect = Create(module, CLSID_Plugin);
            const CComPtr<IUnknown> page = Create(module, CLSID_PluginPP);
            if (use != Use::Objects)
            {
                ThrowInside(effect);
            }
        }
    }
    if (use == Use::FreshRenderer)
    {
        ThrowInsideTheRenderer();
        UnloadRenderer();
    }
    return address;
}

class Leak : public testing::TestWithParam<NamedUse>
{
};

} // namespace

// A process has 1,088 thread-local slots, so that a module that lost one at each load would not
// come to the end.
TEST_P(Leak, ThousandsOfLoadsAndUnloadsLeaveNothing)
{
    constexpr int kWarmUp = 20;
    // Heaps keep what they once had, in pages, more of them on a busy machine. Blocks are counted
    // to the last one.
    constexpr std::size_t kHeapSlack = 128 * 1024;
    constexpr std::size_t kAtomSlack = 500; // all programs of the desktop share that table
    // Loading the system's own libraries again each time would take most of the time.
    for (const wchar_t* library : {L"gdi32", L"oleaut32", L"comdlg32", L"shell32"})
    {
        ASSERT_NE(::LoadLibraryW(library), nullptr);
    }
    ::SetDllDirectoryW((BinFolder() + GetParam().renderer).c_str());
    for (int load = 0; load < kWarmUp; ++load)
    {
        LoadUseAndFree(GetParam().use);
    }
    if (GetParam().use == Use::Objects || GetParam().use == Use::ObjectsAndException)
    {
        // It stays loaded and keeps the first few thousand calls, in memory that it touches for
        // that.
        UseRenderer(L"complete").count = Recording::kCapacity;
    }
    const ProcessCensus before = TakeCensus(LoadUseAndFree(GetParam().use));
    for (int load = 1; load < GetParam().loads; ++load)
    {
        LoadUseAndFree(GetParam().use);
    }
    const ProcessCensus after = TakeCensus(LoadUseAndFree(GetParam().use));
    SCOPED_TRACE(testing::Message() << "before: " << before << "; after: " << after);
    EXPECT_EQ(after.handles, before.handles);
    EXPECT_EQ(after.freeTlsSlots, before.freeTlsSlots);
    EXPECT_EQ(after.freeFlsSlots, before.freeFlsSlots);
    EXPECT_LT(after.atoms, before.atoms + kAtomSlack);
    EXPECT_EQ(after.classes, before.classes);
    EXPECT_EQ(after.modules, before.modules);
    EXPECT_EQ(after.heapBlocks, before.heapBlocks);
    EXPECT_LE(after.privateBytes, before.privateBytes + kHeapSlack);
}

// The first and the last are the promise; those between tell what is at fault when the last fails.
INSTANTIATE_TEST_SUITE_P(
    With, Leak,
    testing::Values(NamedUse{"NoUse", Use::None, L"\\renderers\\complete", 10000},
                    NamedUse{"Objects", Use::Objects, L"\\renderers\\complete", 2000},
                    NamedUse{"AnException", Use::ObjectsAndException, L"\\renderers\\complete",
                             2000},
                    NamedUse{"AFreshRenderer", Use::FreshRenderer, L"", 3000}),
    [](const auto& use) { return std::string(use.param.name); });

TEST(Unload, ThreadsThatThrewInsideAndEndLeaveNothingThoughTheModuleStays)
{
    constexpr std::size_t kThreads = 300;
    UseRenderer(L"complete");
    const PluginModule module;
    const auto run = [&](std::size_t threads) {
        for (std::size_t count = 0; count < threads; ++count)
        {
            const TestThread thread([&] { ThrowInside(Create(module, CLSID_Plugin)); });
        }
    };
    run(20);
    const ProcessCensus before = TakeCensus(module.Handle());
    run(kThreads);
    const ProcessCensus after = TakeCensus(module.Handle());
    SCOPED_TRACE(testing::Message() << "before: " << before << "; after: " << after);
    // One state lost a thread would be 300 blocks; the system's own pools move by a few.
    EXPECT_LT(after.heapBlocks, before.heapBlocks + kThreads / 10);
}

// Without a place for the state of an exception the first one thrown would end the process.
TEST(Unload, TheModuleIsNotLoadedWhenTheProcessHasNoThreadLocalSlotLeft)
{
    for (const wchar_t* library : {L"gdi32", L"ole32", L"oleaut32", L"user32"})
    {
        ASSERT_NE(::LoadLibraryW(library), nullptr);
    }
    const std::wstring file = BinFolder() + L"\\GlazelDX_x64.dll";
    std::vector<DWORD> slots;
    for (DWORD slot = ::TlsAlloc(); slot != TLS_OUT_OF_INDEXES; slot = ::TlsAlloc())
    {
        slots.push_back(slot);
    }
    const HMODULE refused = ::LoadLibraryW(file.c_str());
    const DWORD error = ::GetLastError();
    for (const DWORD slot : slots)
    {
        ::TlsFree(slot);
    }
    EXPECT_EQ(refused, nullptr);
    EXPECT_EQ(error, static_cast<DWORD>(ERROR_DLL_INIT_FAILED));
    EXPECT_NE(::LoadLibraryW(file.c_str()), nullptr) << "with slots again";
}

TEST(Unload, ThreadsThatThrewInsideAndLiveOnLeaveNothing)
{
    constexpr int kRounds = 30;
    constexpr std::size_t kThreads = 8;
    UseRenderer(L"complete");
    const auto round = [] {
        auto module = std::make_unique<PluginModule>();
        const HMODULE address = module->Handle();
        std::atomic<std::size_t> thrown = 0;
        const HANDLE allThrew = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
        const HANDLE mayEnd = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
        {
            std::array<std::unique_ptr<TestThread>, kThreads> threads;
            for (auto& thread : threads)
            {
                thread = std::make_unique<TestThread>([&] {
                    ThrowInside(Create(*module, CLSID_Plugin));
                    if (++thrown == kThreads)
                    {
                        ::SetEvent(allThrew);
                    }
                    ::WaitForSingleObject(mayEnd, INFINITE);
                });
            }
            EXPECT_EQ(::WaitForSingleObject(allThrew, kDeadlineMs), WAIT_OBJECT_0);
            module.reset();
            ::SetEvent(mayEnd);
        }
        ::CloseHandle(allThrew);
        ::CloseHandle(mayEnd);
        return address;
    };
    for (int warmUp = 0; warmUp < 5; ++warmUp)
    {
        round();
    }
    const ProcessCensus before = TakeCensus(round());
    for (int count = 1; count < kRounds; ++count)
    {
        round();
    }
    const ProcessCensus after = TakeCensus(round());
    SCOPED_TRACE(testing::Message() << "before: " << before << "; after: " << after);
    // One state lost a thread would be 240 blocks; the system's own pools move by a few.
    EXPECT_LT(after.heapBlocks, before.heapBlocks + kRounds);
    EXPECT_EQ(after.freeTlsSlots, before.freeTlsSlots);
    EXPECT_EQ(after.handles, before.handles);
}
