#include "tools/glazelhost/surface/sample_pointer.h"

#include "platform/atl/atlcomcli.h"
#include "tests/doubles/allocation_count.h"
#include "tools/glazelhost/surface/lock_bounds.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

namespace GlazelHost
{

namespace
{

using Samples = std::vector<DWORD>;

// A 6 x 5 surface whose samples name their place: red the column, green the row.
CComPtr<CHostSurface> Surface(SurfaceFormat format = SurfaceFormat::Straight8,
                              bool bottomUp = false)
{
    CComPtr<CHostSurface> surface(new CHostSurface({6, 5, format, bottomUp}));
    for (int y = 0; y < 5; ++y)
    {
        for (int x = 0; x < 6; ++x)
        {
            const Sample sample{7, static_cast<std::uint8_t>(y), static_cast<std::uint8_t>(x), 255};
            StoreSamples(surface->Pixels().At(x, y), format, false, {&sample, 1});
        }
    }
    return surface;
}

constexpr DWORD At(DWORD x, DWORD y)
{
    return 0xFF000007U | x << 16 | y << 8;
}

DXBNDS Bounds(LONG left, LONG top, LONG right, LONG bottom)
{
    DXBNDS bounds = BoundsOfSurface(1, 1);
    bounds.u.D[DXB_X] = {left, right};
    bounds.u.D[DXB_Y] = {top, bottom};
    return bounds;
}

CComPtr<IDXARGBReadPtr> Read(CHostSurface& surface, const DXBNDS& bounds)
{
    CComPtr<IDXARGBReadPtr> lock;
    EXPECT_EQ(surface.LockSurface(&bounds, 0, DXLOCKF_READ, IID_IDXARGBReadPtr,
                                  reinterpret_cast<void**>(&lock), nullptr),
              S_OK);
    return lock;
}

CComPtr<IDXARGBReadWritePtr> Write(CHostSurface& surface, const DXBNDS& bounds)
{
    CComPtr<IDXARGBReadWritePtr> lock;
    EXPECT_EQ(surface.LockSurface(&bounds, 0, DXLOCKF_READWRITE, IID_IDXARGBReadWritePtr,
                                  reinterpret_cast<void**>(&lock), nullptr),
              S_OK);
    return lock;
}

DWORD Pixel(const CHostSurface& surface, int x, int y)
{
    DXBASESAMPLE sample;
    LoadSamples(surface.Pixels().At(x, y), surface.Pixels().Layout().format, false,
                {reinterpret_cast<Sample*>(&sample), 1});
    return sample;
}

Samples Unpacked(IDXARGBReadPtr& lock, ULONG count, bool move)
{
    std::vector<DXSAMPLE> samples(count);
    EXPECT_EQ(lock.Unpack(samples.data(), count, move), samples.data());
    return {samples.begin(), samples.end()};
}

} // namespace

TEST(SamplePointer, LocksAfterTheFirstOfInputAndOutputAllocateNothing)
{
    const CComPtr<CHostSurface> input = Surface();
    const CComPtr<CHostSurface> output = Surface();
    const auto frame = [&] {
        const auto read = Read(*input, BoundsOfSurface(6, 5));
        const auto write = Write(*output, BoundsOfSurface(6, 5));
    };
    frame();
    const long before = AllocationCount();
    for (int i = 0; i < 10; ++i)
    {
        frame();
    }
    EXPECT_EQ(AllocationCount(), before);
}

TEST(SamplePointer, AnswersTheWritingInterfaceOnlyUnderAWriteLock)
{
    const auto surface = Surface();
    const DXBNDS bounds = Bounds(0, 0, 6, 5);
    IUnknown* found = nullptr;
    {
        const auto lock = Read(*surface, bounds);
        EXPECT_EQ(lock->QueryInterface(IID_IDXARGBReadWritePtr, reinterpret_cast<void**>(&found)),
                  E_NOINTERFACE);
        EXPECT_EQ(found, nullptr);
        EXPECT_EQ(lock->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    }
    const auto lock = Write(*surface, bounds);
    ASSERT_EQ(lock->QueryInterface(IID_IDXARGBReadPtr, reinterpret_cast<void**>(&found)), S_OK);
    found->Release();
}

TEST(SamplePointer, UnpackReadsOneRowAndMovesOnlyWhenAsked)
{
    const auto surface = Surface();
    const auto lock = Read(*surface, Bounds(1, 2, 5, 5));
    EXPECT_EQ(Unpacked(*lock, 2, false), (Samples{At(1, 2), At(2, 2)}));
    EXPECT_EQ(Unpacked(*lock, 2, true), (Samples{At(1, 2), At(2, 2)}));
    EXPECT_EQ(Unpacked(*lock, 2, true), (Samples{At(3, 2), At(4, 2)}));
    lock->Move(-3);
    EXPECT_EQ(Unpacked(*lock, 1, false), (Samples{At(2, 2)}));
    lock->MoveToRow(2);
    EXPECT_EQ(Unpacked(*lock, 1, false), (Samples{At(1, 4)}));
    lock->MoveToXY(3, 1);
    EXPECT_EQ(Unpacked(*lock, 1, false), (Samples{At(4, 3)}));
    EXPECT_EQ(surface->Log().Summary(), "");
}

TEST(SamplePointer, UnpackWithoutABufferGivesTheSurfacesMemoryOfTheSameFormat)
{
    const auto surface = Surface();
    const auto lock = Read(*surface, Bounds(1, 1, 5, 4));
    EXPECT_EQ(reinterpret_cast<std::byte*>(lock->Unpack(nullptr, 4, FALSE)),
              surface->Pixels().At(1, 1));
    EXPECT_EQ(lock->UnpackPremult(nullptr, 4, FALSE), nullptr);
    EXPECT_EQ(surface->Log().CountOf(Violation::NullBuffer), 1u);

    const auto premultiplied = Surface(SurfaceFormat::Premultiplied8);
    const auto other = Read(*premultiplied, Bounds(1, 1, 5, 4));
    EXPECT_EQ(reinterpret_cast<std::byte*>(other->UnpackPremult(nullptr, 4, FALSE)),
              premultiplied->Pixels().At(1, 1));
    EXPECT_EQ(other->Unpack(nullptr, 5, FALSE), nullptr);
}

TEST(SamplePointer, NativeTypeGivesAddressesAndASignedPitch)
{
    for (const bool bottomUp : {false, true})
    {
        const auto surface = Surface(SurfaceFormat::StraightFloat, bottomUp);
        const auto lock = Read(*surface, Bounds(2, 1, 6, 5));
        DXNATIVETYPEINFO info{};
        EXPECT_EQ(lock->GetNativeType(&info), DXPF_NONSTANDARD);
        EXPECT_EQ(info.lPitch, bottomUp ? -96 : 96);
        EXPECT_EQ(reinterpret_cast<std::byte*>(info.pFirstByte), surface->Pixels().Row(0));
        EXPECT_EQ(reinterpret_cast<std::byte*>(info.pCurrentData), surface->Pixels().At(2, 1));
        EXPECT_EQ(info.pFirstByte + info.lPitch, reinterpret_cast<BYTE*>(surface->Pixels().Row(1)));
        EXPECT_EQ(lock->GetNativeType(nullptr), DXPF_NONSTANDARD);
    }
}

TEST(SamplePointer, ARowIsOneRunOfUnknownSamples)
{
    const auto surface = Surface();
    const auto lock = Read(*surface, Bounds(1, 1, 5, 4));
    const DXRUNINFO* info = nullptr;
    ASSERT_EQ(lock->MoveAndGetRunInfo(2, &info), 1u);
    EXPECT_EQ(info->Type, ULONG{DXRUNTYPE_UNKNOWN});
    EXPECT_EQ(info->Count, 4u);
    EXPECT_EQ(Unpacked(*lock, 1, false), (Samples{At(1, 3)}));
    EXPECT_EQ(lock->MoveAndGetRunInfo(0, nullptr), 1u);
}

TEST(SamplePointer, UnpackRectKeepsThePaddingSamplesOfTheBuffer)
{
    const auto surface = Surface();
    const auto lock = Read(*surface, Bounds(1, 1, 6, 5));
    std::vector<DXSAMPLE> buffer(5, DXSAMPLE(1));
    const DXPACKEDRECTDESC rect{buffer.data(), FALSE, {1, 1, 3, 3}, 1};
    lock->UnpackRect(&rect);
    EXPECT_EQ(Samples(buffer.begin(), buffer.end()),
              (Samples{At(2, 2), At(3, 2), 1, At(2, 3), At(3, 3)}));
    lock->UnpackRect(nullptr);
    EXPECT_EQ(surface->Log().CountOf(Violation::NullBuffer), 1u);
}

TEST(SamplePointer, PackAndMoveWritesStraightAndPremultipliedSamples)
{
    const auto surface = Surface();
    const auto lock = Write(*surface, Bounds(1, 1, 6, 5));
    const std::array straight{DXSAMPLE(0x80402010), DXSAMPLE(0xFF000001)};
    const std::array premultiplied{DXPMSAMPLE(0x80800000)};
    lock->PackAndMove(straight.data(), 2);
    lock->PackPremultAndMove(premultiplied.data(), 1);
    EXPECT_EQ(Pixel(*surface, 1, 1), 0x80402010u);
    EXPECT_EQ(Pixel(*surface, 2, 1), 0xFF000001u);
    EXPECT_EQ(Pixel(*surface, 3, 1), 0x80FF0000u);
    lock->PackAndMove(nullptr, 1);
    EXPECT_EQ(surface->Log().CountOf(Violation::NullBuffer), 1u);
}

TEST(SamplePointer, PackRectHonoursThePaddingAndThePremultipliedMark)
{
    const auto surface = Surface();
    const auto lock = Write(*surface, Bounds(1, 1, 6, 5));
    std::vector<DXPMSAMPLE> buffer{DXPMSAMPLE(0x80800000), DXPMSAMPLE(1), DXPMSAMPLE(0xFF010203)};
    const DXPACKEDRECTDESC rect{buffer.data(), TRUE, {0, 2, 1, 4}, 1};
    lock->PackRect(&rect);
    EXPECT_EQ(Pixel(*surface, 1, 3), 0x80FF0000u);
    EXPECT_EQ(Pixel(*surface, 1, 4), 0xFF010203u);
    EXPECT_EQ(Pixel(*surface, 2, 3), At(2, 3));
}

TEST(SamplePointer, CopyAndMoveBothAdvancesBothPointers)
{
    const auto source = Surface();
    const auto target = Surface(SurfaceFormat::Premultiplied8);
    const auto from = Read(*source, Bounds(0, 4, 6, 5));
    const auto to = Write(*target, Bounds(0, 0, 6, 5));
    std::array<DXBASESAMPLE, 2> scratch;
    to->CopyAndMoveBoth(scratch.data(), from, 2, FALSE);
    to->CopyAndMoveBoth(nullptr, from, 2, TRUE);
    EXPECT_EQ(Pixel(*target, 3, 0), At(3, 4));
    EXPECT_EQ(Pixel(*target, 4, 0), At(4, 0));
    EXPECT_EQ(Unpacked(*from, 1, false), (Samples{At(4, 4)}));
    to->CopyAndMoveBoth(nullptr, nullptr, 2, TRUE);
    EXPECT_EQ(target->Log().CountOf(Violation::NullBuffer), 1u);
}

TEST(SamplePointer, CopyRectTakesTheWholeAreaFromTheOriginUnlessToldOtherwise)
{
    for (const bool bottomUp : {false, true})
    {
        const auto source = Surface(SurfaceFormat::Straight8, bottomUp);
        const auto target = Surface(SurfaceFormat::StraightFloat);
        const auto from = Read(*source, Bounds(0, 0, 6, 5));
        const auto to = Write(*target, Bounds(3, 3, 6, 5));
        to->CopyRect(nullptr, nullptr, from, nullptr, FALSE);
        EXPECT_EQ(Pixel(*target, 3, 3), At(0, 0));
        EXPECT_EQ(Pixel(*target, 5, 4), At(2, 1));
        EXPECT_EQ(Pixel(*target, 2, 3), At(2, 3));

        const RECT rect{1, 0, 3, 1};
        const POINT origin{4, 4};
        to->CopyRect(nullptr, &rect, from, &origin, FALSE);
        EXPECT_EQ(Pixel(*target, 3, 3), At(0, 0));
        EXPECT_EQ(Pixel(*target, 4, 3), At(4, 4));
        EXPECT_EQ(Pixel(*target, 5, 3), At(5, 4));
        EXPECT_EQ(target->Log().Summary(), "");
    }
}

TEST(SamplePointer, CopyRectLongerThanAnyInnerBufferCopiesEverySample)
{
    const CComPtr<CHostSurface> source(
        new CHostSurface({1000, 2, SurfaceFormat::Straight8, false}));
    const CComPtr<CHostSurface> target(
        new CHostSurface({1000, 2, SurfaceFormat::Straight8, false}));
    const DXBNDS all = Bounds(0, 0, 1000, 2);
    std::vector<DXSAMPLE> row;
    for (DWORD x = 0; x < 1000; ++x)
    {
        row.emplace_back(0xFF000000U | x * 31);
    }
    {
        const auto lock = Write(*source, all);
        lock->MoveToRow(1);
        lock->PackAndMove(row.data(), 1000);
    }
    const auto from = Read(*source, all);
    const auto to = Write(*target, all);
    to->CopyRect(nullptr, nullptr, from, nullptr, TRUE);
    to->MoveToRow(1);
    EXPECT_EQ(Unpacked(*to, 1000, false), Samples(row.begin(), row.end()));
}

TEST(SamplePointer, CopyRectOutsideTheAreaCopiesNothing)
{
    const auto source = Surface();
    const auto target = Surface();
    const auto from = Read(*source, Bounds(0, 0, 6, 5));
    const auto to = Write(*target, Bounds(0, 0, 3, 3));
    const RECT outside{0, 0, 4, 1};
    const POINT origin{3, 3};
    to->CopyRect(nullptr, &outside, from, &origin, FALSE);
    EXPECT_EQ(Pixel(*target, 0, 0), At(0, 0));
    EXPECT_EQ(target->Log().CountOf(Violation::BadDescriptor), 1u);
}

TEST(SamplePointer, FillingReplacesOrBlendsAndAdvances)
{
    const auto surface = Surface();
    const auto lock = Write(*surface, Bounds(1, 1, 6, 5));
    lock->FillAndMove(nullptr, DXPMSAMPLE(0xFF0000FF), 2, FALSE);
    lock->FillAndMove(nullptr, DXPMSAMPLE(0x80800000), 1, TRUE);
    EXPECT_EQ(Pixel(*surface, 1, 1), 0xFF0000FFu);
    EXPECT_EQ(Pixel(*surface, 2, 1), 0xFF0000FFu);
    EXPECT_EQ(Pixel(*surface, 3, 1), 0xFF810003u); // half of (3, 1, 7) is left
    EXPECT_EQ(Unpacked(*lock, 1, false), (Samples{At(4, 1)}));
}

TEST(SamplePointer, FillRectWithoutARectangleFillsTheLockedAreaOnly)
{
    const auto surface = Surface();
    const auto lock = Write(*surface, Bounds(1, 1, 5, 4));
    lock->FillRect(nullptr, DXPMSAMPLE(0xFF0000FF), FALSE);
    EXPECT_EQ(Pixel(*surface, 1, 1), 0xFF0000FFu);
    EXPECT_EQ(Pixel(*surface, 4, 3), 0xFF0000FFu);
    EXPECT_EQ(Pixel(*surface, 5, 3), At(5, 3));
    EXPECT_EQ(Pixel(*surface, 4, 4), At(4, 4));
    const RECT rect{0, 0, 1, 1};
    lock->FillRect(&rect, DXPMSAMPLE(0xFF00FF00), FALSE);
    EXPECT_EQ(Pixel(*surface, 1, 1), 0xFF00FF00u);
    EXPECT_EQ(Pixel(*surface, 2, 1), 0xFF0000FFu);
}

TEST(SamplePointer, OverSampleBlendsOnePoint)
{
    const auto surface = Surface();
    const auto lock = Write(*surface, Bounds(1, 1, 5, 4));
    const DXOVERSAMPLEDESC over{{1, 2}, DXPMSAMPLE(0x80800000)};
    lock->OverSample(&over);
    EXPECT_EQ(Pixel(*surface, 2, 3), 0xFF810103u); // 128 + 2/2, 3/2, 7/2, all by 127/255
    lock->OverSample(nullptr);
    const DXOVERSAMPLEDESC outside{{-1, 0}, DXPMSAMPLE(0xFF000000)};
    lock->OverSample(&outside);
    EXPECT_EQ(Pixel(*surface, 0, 1), At(0, 1));
    EXPECT_EQ(surface->Log().CountOf(Violation::NullBuffer), 1u);
    EXPECT_EQ(surface->Log().CountOf(Violation::OutsideLock), 1u);
}

TEST(SamplePointer, OverArrayAndMoveBlendsAndAdvances)
{
    const auto surface = Surface();
    const auto lock = Write(*surface, Bounds(0, 0, 6, 5));
    const std::array tops{DXPMSAMPLE(0), DXPMSAMPLE(0xFF000001)};
    lock->OverArrayAndMove(nullptr, tops.data(), 2);
    EXPECT_EQ(Pixel(*surface, 0, 0), At(0, 0));
    EXPECT_EQ(Pixel(*surface, 1, 0), 0xFF000001u);
    EXPECT_EQ(Unpacked(*lock, 1, false), (Samples{At(2, 0)}));
    lock->OverArrayAndMove(nullptr, nullptr, 2);
    EXPECT_EQ(surface->Log().CountOf(Violation::NullBuffer), 1u);
}

} // namespace GlazelHost
