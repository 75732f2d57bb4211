#include "tools/glazelhost/surface/host_surface.h"

#include "platform/atl/atlcomcli.h"
#include "tests/doubles/deadline.h"
#include "tools/glazelhost/surface/lock_bounds.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace GlazelHost
{

namespace
{

constexpr ULONG kAtOnce = 0;

CComPtr<CHostSurface> Surface(SurfaceFormat format = SurfaceFormat::Straight8)
{
    return new CHostSurface({8, 6, format, false});
}

DXBNDS Rows(LONG top, LONG bottom)
{
    DXBNDS bounds = BoundsOfSurface(8, 6);
    bounds.u.D[DXB_Y] = {top, bottom};
    return bounds;
}

HRESULT LockForReading(CHostSurface& surface, CComPtr<IDXARGBReadPtr>& lock,
                       const DXBNDS* bounds = nullptr, ULONG timeOutMs = kAtOnce)
{
    return surface.LockSurface(bounds, timeOutMs, DXLOCKF_READ, IID_IDXARGBReadPtr,
                               reinterpret_cast<void**>(&lock), nullptr);
}

HRESULT LockForWriting(CHostSurface& surface, CComPtr<IDXARGBReadWritePtr>& lock,
                       const DXBNDS* bounds = nullptr, ULONG timeOutMs = kAtOnce)
{
    return surface.LockSurface(bounds, timeOutMs, DXLOCKF_READWRITE, IID_IDXARGBReadWritePtr,
                               reinterpret_cast<void**>(&lock), nullptr);
}

ULONG GenerationOf(CHostSurface& surface)
{
    ULONG id = 0;
    EXPECT_EQ(surface.GetGenerationId(&id), S_OK);
    return id;
}

// Runs `work` on a thread of its own, which ends before this does.
class Worker
{
public:
    explicit Worker(std::function<void()> work)
        : m_work(std::move(work)), m_thread(::CreateThread(nullptr, 0, Run, this, 0, nullptr))
    {
    }
    ~Worker() { Join(); }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    void Join()
    {
        if (m_thread != nullptr)
        {
            EXPECT_EQ(::WaitForSingleObject(m_thread, kDeadlineMs), WAIT_OBJECT_0);
            ::CloseHandle(m_thread);
            m_thread = nullptr;
        }
    }

private:
    static DWORD WINAPI Run(void* self) noexcept
    {
        static_cast<Worker*>(self)->m_work();
        return 0;
    }

    std::function<void()> m_work;
    HANDLE m_thread;
};

} // namespace

TEST(HostSurface, WithoutPixelsThereIsNothingToLock)
{
    const SurfaceLayout layout{8, 6, SurfaceFormat::Straight8, false};
    const CComPtr<CHostSurface> surface(new CHostSurface(PixelGrid(layout, nullptr)));
    const auto lock = [&] {
        CComPtr<IDXARGBReadPtr> pointer;
        return surface->LockSurface(nullptr, 0, 0, IID_IDXARGBReadPtr,
                                    reinterpret_cast<void**>(&pointer), nullptr);
    };
    EXPECT_EQ(lock(), DXTERR_UNINITIALIZED);
    PixelBuffer pixels;
    pixels.resize(std::size_t{8} * 6 * 4);
    surface->Show(PixelGrid(layout, pixels.data()));
    EXPECT_EQ(lock(), S_OK);
}

TEST(HostSurface, AnswersItsInterfacesWithOneIdentity)
{
    const CComPtr<CHostSurface> surface = Surface();
    CComPtr<IUnknown> first;
    CComPtr<IUnknown> second;
    CComPtr<ISfFrameInformation> information;
    ASSERT_EQ(surface->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&first)), S_OK);
    ASSERT_EQ(
        surface->QueryInterface(IID_ISfFrameInformation, reinterpret_cast<void**>(&information)),
        S_OK);
    ASSERT_EQ(information->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&second)), S_OK);
    EXPECT_EQ(first.p, second.p);
}

TEST(HostSurface, RefusesOtherInterfacesAndNullPlaces)
{
    const CComPtr<CHostSurface> surface = Surface();
    void* object = &object;
    EXPECT_EQ(surface->QueryInterface(IID_IDXTransform, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(surface->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(surface->GetBounds(nullptr), E_POINTER);
    EXPECT_EQ(surface->GetGenerationId(nullptr), E_POINTER);
    EXPECT_EQ(surface->GetObjectSize(nullptr), E_POINTER);
    EXPECT_EQ(surface->GetStatusFlags(nullptr), E_POINTER);
    EXPECT_EQ(surface->GetAppData(nullptr), E_POINTER);
    EXPECT_EQ(surface->GetColorKey(nullptr), E_POINTER);
    EXPECT_EQ(surface->LockSurface(nullptr, 0, 0, IID_IDXARGBReadPtr, nullptr, nullptr), E_POINTER);
}

TEST(HostSurface, TellsItsBoundsFormatAndSize)
{
    const CComPtr<CHostSurface> surface = Surface(SurfaceFormat::StraightFloat);
    DXBNDS bounds{};
    ASSERT_EQ(surface->GetBounds(&bounds), S_OK);
    EXPECT_EQ(bounds.u.D[DXB_X].Max, 8);
    EXPECT_EQ(bounds.u.D[DXB_Y].Max, 6);
    ULONG size = 0;
    ASSERT_EQ(surface->GetObjectSize(&size), S_OK);
    EXPECT_GE(size, 8u * 6u * 16u);
    EXPECT_EQ(surface->GetPixelFormat(nullptr, nullptr), S_OK);
}

TEST(HostSurface, EachFormatHasItsNumberAndAnIdentifierOfItsOwn)
{
    DXSAMPLEFORMATENUM number{};
    GUID straight{};
    GUID premultiplied{};
    ASSERT_EQ(Surface(SurfaceFormat::Straight8)->GetPixelFormat(&straight, &number), S_OK);
    EXPECT_EQ(number, DXPF_ARGB32);
    ASSERT_EQ(Surface(SurfaceFormat::Premultiplied8)->GetPixelFormat(&premultiplied, &number),
              S_OK);
    EXPECT_EQ(number, DXPF_PMARGB32);
    EXPECT_NE(straight, premultiplied);
    ASSERT_EQ(Surface(SurfaceFormat::StraightFloat)->GetPixelFormat(nullptr, &number), S_OK);
    EXPECT_EQ(number, DXPF_NONSTANDARD);
}

TEST(HostSurface, UnknownLockFlagsAreRefused)
{
    const CComPtr<CHostSurface> surface = Surface();
    void* lock = &lock;
    EXPECT_EQ(surface->LockSurface(nullptr, kAtOnce, 0x8, IID_IDXARGBReadPtr, &lock, nullptr),
              DXTERR_INVALID_FLAGS);
    EXPECT_EQ(lock, nullptr);
}

TEST(HostSurface, AdvisoryLockFlagsAreAccepted)
{
    const CComPtr<CHostSurface> surface = Surface();
    CComPtr<IDXARGBReadPtr> lock;
    EXPECT_EQ(
        surface->LockSurface(nullptr, kAtOnce,
                             DXLOCKF_EXISTINGINFOONLY | DXLOCKF_WANTRUNINFO | DXLOCKF_NONPREMULT,
                             IID_IDXARGBReadPtr, reinterpret_cast<void**>(&lock), nullptr),
        S_OK);
}

TEST(HostSurface, ALockGivesTheInterfaceThatItsKindAllows)
{
    const CComPtr<CHostSurface> surface = Surface();
    void* lock = &lock;
    EXPECT_EQ(surface->LockSurface(nullptr, kAtOnce, DXLOCKF_READ, IID_IDXSurface, &lock, nullptr),
              E_NOINTERFACE);
    EXPECT_EQ(lock, nullptr);
    EXPECT_EQ(surface->LockSurface(nullptr, kAtOnce, DXLOCKF_READ, IID_IDXARGBReadWritePtr, &lock,
                                   nullptr),
              E_INVALIDARG);
    CComPtr<IDXARGBReadPtr> reading;
    EXPECT_EQ(surface->LockSurface(nullptr, kAtOnce, DXLOCKF_READWRITE, IID_IDXARGBReadPtr,
                                   reinterpret_cast<void**>(&reading), nullptr),
              S_OK);
}

TEST(HostSurface, BoundsOutsideTheSurfaceAreRefused)
{
    const CComPtr<CHostSurface> surface = Surface();
    CComPtr<IDXARGBReadPtr> lock;
    const DXBNDS outside = Rows(3, 7);
    EXPECT_EQ(LockForReading(*surface, lock, &outside), DXTERR_INVALID_BOUNDS);
    EXPECT_EQ(lock.p, nullptr);
    const DXBNDS empty = Rows(3, 3);
    EXPECT_EQ(LockForReading(*surface, lock, &empty), DXTERR_INVALID_BOUNDS);
}

TEST(HostSurface, AReadOnlySurfaceCanBeReadButNotWritten)
{
    const CComPtr<CHostSurface> surface = Surface();
    ASSERT_EQ(surface->SetStatusFlags(DXSURF_READONLY), S_OK);
    CComPtr<IDXARGBReadWritePtr> writing;
    EXPECT_EQ(LockForWriting(*surface, writing), E_ACCESSDENIED);
    EXPECT_EQ(writing.p, nullptr);
    CComPtr<IDXARGBReadPtr> reading;
    EXPECT_EQ(LockForReading(*surface, reading), S_OK);
}

TEST(HostSurface, UnknownStatusFlagsAreRefusedAndChangeNothing)
{
    const CComPtr<CHostSurface> surface = Surface();
    ASSERT_EQ(surface->SetStatusFlags(DXSURF_TRANSIENT), S_OK);
    EXPECT_EQ(surface->SetStatusFlags(4), DXTERR_INVALID_FLAGS);
    DWORD flags = 0;
    ASSERT_EQ(surface->GetStatusFlags(&flags), S_OK);
    EXPECT_EQ(flags, DWORD{DXSURF_TRANSIENT});
}

TEST(HostSurface, ReadersShareAndAWriterIsAlone)
{
    const CComPtr<CHostSurface> surface = Surface();
    CComPtr<IDXARGBReadPtr> first;
    CComPtr<IDXARGBReadPtr> second;
    CComPtr<IDXARGBReadWritePtr> writer;
    ASSERT_EQ(LockForReading(*surface, first), S_OK);
    EXPECT_EQ(LockForReading(*surface, second), S_OK);
    EXPECT_EQ(LockForWriting(*surface, writer), E_ABORT);
    EXPECT_EQ(writer.p, nullptr);
    first.Release();
    second.Release();
    ASSERT_EQ(LockForWriting(*surface, writer), S_OK);
    EXPECT_EQ(LockForReading(*surface, first), E_ABORT);
}

TEST(HostSurface, WriteLocksOfDifferentBandsCoexist)
{
    const CComPtr<CHostSurface> surface = Surface();
    const DXBNDS upper = Rows(0, 3);
    const DXBNDS lower = Rows(3, 6);
    CComPtr<IDXARGBReadWritePtr> first;
    CComPtr<IDXARGBReadWritePtr> second;
    ASSERT_EQ(LockForWriting(*surface, first, &upper), S_OK);
    EXPECT_EQ(LockForWriting(*surface, second, &lower), S_OK);
}

TEST(HostSurface, ALockThatIsNotGivenInTimeAborts)
{
    const CComPtr<CHostSurface> surface = Surface();
    CComPtr<IDXARGBReadWritePtr> held;
    ASSERT_EQ(LockForWriting(*surface, held), S_OK);
    CComPtr<IDXARGBReadPtr> waiting;
    const ULONGLONG start = ::GetTickCount64();
    constexpr ULONG kWaitMs = 60;
    EXPECT_EQ(LockForReading(*surface, waiting, nullptr, kWaitMs), E_ABORT);
    // The tick counter moves in steps of up to 16 ms.
    EXPECT_GE(::GetTickCount64() - start + 16, kWaitMs);
}

TEST(HostSurface, AWaitingLockIsGivenWhenTheOtherEnds)
{
    for (const ULONG timeOutMs : {ULONG{INFINITE}, kDeadlineMs})
    {
        const CComPtr<CHostSurface> surface = Surface();
        CComPtr<IDXARGBReadWritePtr> held;
        ASSERT_EQ(LockForWriting(*surface, held), S_OK);
        HRESULT result = E_PENDING;
        Worker worker([&] {
            CComPtr<IDXARGBReadPtr> waiting;
            result = LockForReading(*surface, waiting, nullptr, timeOutMs);
        });
        held.Release();
        worker.Join();
        EXPECT_EQ(result, S_OK);
    }
}

TEST(HostSurface, ManyThreadsOnOverlappingAreasNeverMeetAWriter)
{
    const CComPtr<CHostSurface> surface = Surface();
    std::atomic<int> writers{0};
    std::atomic<int> readers{0};
    std::atomic<int> collisions{0};
    const auto write = [&] {
        for (int round = 0; round < 300; ++round)
        {
            CComPtr<IDXARGBReadWritePtr> lock;
            ASSERT_EQ(LockForWriting(*surface, lock, nullptr, INFINITE), S_OK);
            collisions += writers.fetch_add(1) != 0 || readers.load() != 0 ? 1 : 0;
            --writers;
        }
    };
    const auto read = [&] {
        for (int round = 0; round < 300; ++round)
        {
            CComPtr<IDXARGBReadPtr> lock;
            ASSERT_EQ(LockForReading(*surface, lock, nullptr, INFINITE), S_OK);
            ++readers;
            collisions += writers.load() != 0 ? 1 : 0;
            --readers;
        }
    };
    {
        const Worker a(write);
        const Worker b(write);
        const Worker c(read);
        const Worker d(read);
    }
    EXPECT_EQ(collisions, 0);
    surface->CheckAfterUse();
    EXPECT_EQ(surface->Log().Summary(), "");
}

TEST(HostSurface, OnlyAWriteLockRaisesTheGenerationId)
{
    const CComPtr<CHostSurface> surface = Surface();
    const ULONG start = GenerationOf(*surface);
    {
        CComPtr<IDXARGBReadPtr> reading;
        ULONG told = 0;
        ASSERT_EQ(surface->LockSurface(nullptr, kAtOnce, DXLOCKF_READ, IID_IDXARGBReadPtr,
                                       reinterpret_cast<void**>(&reading), &told),
                  S_OK);
        EXPECT_EQ(told, start);
    }
    EXPECT_EQ(GenerationOf(*surface), start);
    CComPtr<IDXARGBReadWritePtr> writing;
    ULONG told = 0;
    ASSERT_EQ(surface->LockSurface(nullptr, kAtOnce, DXLOCKF_READWRITE, IID_IDXARGBReadWritePtr,
                                   reinterpret_cast<void**>(&writing), &told),
              S_OK);
    EXPECT_EQ(told, start + 1);
    writing.Release();
    EXPECT_EQ(GenerationOf(*surface), start + 1);
}

TEST(HostSurface, PixelsOfTheOwnerAndARefreshRaiseTheGenerationId)
{
    const CComPtr<CHostSurface> surface = Surface();
    const ULONG start = GenerationOf(*surface);
    surface->PixelsChanged();
    EXPECT_EQ(surface->IncrementGenerationId(FALSE), S_OK);
    EXPECT_EQ(surface->IncrementGenerationId(TRUE), S_OK);
    EXPECT_EQ(GenerationOf(*surface), start + 3);
}

TEST(HostSurface, ALockKeepsTheSurfaceAlive)
{
    CComPtr<CHostSurface> surface = Surface();
    CComPtr<IDXARGBReadWritePtr> lock;
    ASSERT_EQ(LockForWriting(*surface, lock), S_OK);
    surface.Release();
    const DXSAMPLE sample(255, 1, 2, 3);
    lock->PackAndMove(&sample, 1);
    CComPtr<IDXSurface> parent;
    EXPECT_EQ(lock->GetSurface(IID_IDXSurface, reinterpret_cast<void**>(&parent)), S_OK);
}

TEST(HostSurface, ALockThatIsNeverReleasedIsReported)
{
    const CComPtr<CHostSurface> surface = Surface();
    CComPtr<IDXARGBReadPtr> lock;
    ASSERT_EQ(LockForReading(*surface, lock), S_OK);
    surface->CheckAfterUse();
    EXPECT_EQ(surface->Log().CountOf(Violation::LockLeftOpen), 1u);
}

TEST(HostSurface, AWriteBehindTheMemoryIsReportedOnce)
{
    const CComPtr<CHostSurface> surface = Surface();
    surface->Pixels().Row(5)[8 * 4] = std::byte{1};
    surface->CheckAfterUse();
    surface->CheckAfterUse();
    EXPECT_EQ(surface->Log().CountOf(Violation::GuardOverwritten), 1u);
}

TEST(HostSurface, FrameInformationIsTheOwnersInAnyLength)
{
    const CComPtr<CHostSurface> surface = Surface();
    FrameInformation information{7.0, 7.0, 7};
    ASSERT_EQ(surface->GetFrameInformation(&information, sizeof(information)), S_OK);
    EXPECT_EQ(information.pixelAspect, 1.0);
    EXPECT_EQ(information.framesPerSecond, 0.0);
    EXPECT_EQ(information.frameTime, 0);

    surface->SetFrameInformation({1.5, 24.0, 416'667});
    information = {7.0, 7.0, 7};
    ASSERT_EQ(surface->GetFrameInformation(&information, 8), S_OK);
    EXPECT_EQ(information.pixelAspect, 1.5);
    EXPECT_EQ(information.framesPerSecond, 7.0);
    ASSERT_EQ(surface->GetFrameInformation(&information, 24), S_OK);
    EXPECT_EQ(information.frameTime, 416'667);
    EXPECT_EQ(surface->GetFrameInformation(&information, 25), E_INVALIDARG);
    EXPECT_EQ(surface->GetFrameInformation(nullptr, 24), E_POINTER);
}

TEST(HostSurface, WhatItHasNotItSaysSo)
{
    const CComPtr<CHostSurface> surface = Surface();
    void* object = &object;
    EXPECT_EQ(surface->GetDirectDrawSurface(IID_IUnknown, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    IDXDCLock* lock = reinterpret_cast<IDXDCLock*>(&object);
    EXPECT_EQ(surface->LockSurfaceDC(nullptr, 0, 0, &lock), E_NOTIMPL);
    EXPECT_EQ(lock, nullptr);
}

TEST(HostSurface, AppDataAndColourKeyAreKept)
{
    const CComPtr<CHostSurface> surface = Surface();
    DWORD_PTR data = 1;
    ASSERT_EQ(surface->GetAppData(&data), S_OK);
    EXPECT_EQ(data, 0u);
    ASSERT_EQ(surface->SetAppData(~DWORD_PTR{0}), S_OK);
    ASSERT_EQ(surface->GetAppData(&data), S_OK);
    EXPECT_EQ(data, ~DWORD_PTR{0});

    DXSAMPLE key;
    ASSERT_EQ(surface->SetColorKey(DXSAMPLE(0x11223344)), S_OK);
    ASSERT_EQ(surface->GetColorKey(&key), S_OK);
    EXPECT_EQ(static_cast<DWORD>(key), 0x11223344u);
}

} // namespace GlazelHost
