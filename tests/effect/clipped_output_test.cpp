// Parts of the output are packed as the contract has it, from memory that is the buffer's own.
#include "tests/doubles/allocation_count.h"
#include "tests/effect/frame_fixture.h"

namespace
{

class ClippedOutput : public FrameTest
{
protected:
    // A frame of 64 x 32 on an output of that size or more: buffers of 8192 bytes and more.
    void SetUpLarge(LONG outputWidth = 64, LONG outputHeight = 32)
    {
        FakeSurfaceSettings source = Surface("input", DXPF_ARGB32);
        source.width = 64;
        source.height = 32;
        FakeSurfaceSettings target = Surface("output", DXPF_ARGB32);
        target.width = outputWidth;
        target.height = outputHeight;
        FrameTest::SetUp(source, target);
        input->Fill(DXSAMPLE(0xFF102030));
        output->Fill(DXSAMPLE(0x12345678));
    }
    DXPACKEDRECTDESC LastPacked() const { return output->packed.back(); }
    std::ptrdiff_t LastOffset() const
    {
        return reinterpret_cast<std::byte*>(LastPacked().pSamples) -
               static_cast<std::byte*>(LastDestination().pixels);
    }
};

constexpr DWORD kGraded = 0xFFEFDFCF; // the input's colour, inverted
constexpr DWORD kBehind = 0;          // what the room around the buffer holds

} // namespace

TEST_F(ClippedOutput, EveryPartIsPackedWithinTheBuffersOwnMemory)
{
    for (const auto side : {GuardedMemory::Side::Behind, GuardedMemory::Side::Before})
    {
        const GuardedMemory guarded(4096, side);
        SetUpLarge(200, 100);
        for (const RECT& part :
             {RECT{0, 0, 32, 32}, RECT{32, 0, 64, 32}, RECT{63, 31, 64, 32}, RECT{1, 1, 63, 31},
              RECT{0, 0, 64, 1}, RECT{100, 50, 164, 82}, RECT{0, 0, 100, 32}, RECT{0, 0, 200, 100},
              RECT{199, 99, 200, 100}})
        {
            SCOPED_TRACE(part.left);
            EXPECT_EQ(Work(part), S_OK);
            const LONG width = part.right - part.left;
            EXPECT_EQ(LastOffset(), (part.top * 64 + part.left) * 4);
            EXPECT_EQ(LastPacked().lRowPadding, (64 - width) * 4);
            EXPECT_EQ(LastPacked().rect.right, width);
            EXPECT_EQ(LastPacked().rect.bottom, part.bottom - part.top);
            EXPECT_EQ(LastPacked().bPremult, FALSE);
        }
        FrameTest::SetUp(DXPF_NONSTANDARD, DXPF_NONSTANDARD);
        EXPECT_EQ(Work(), S_OK) << "which gives the buffer back while its blocks are guarded";
        effect->Setup(nullptr, 0, nullptr, 0, 0);
    }
}

TEST_F(ClippedOutput, RowsBeyondTheBufferAreEmptyNotSomebodysMemory)
{
    SetUpLarge();
    ASSERT_EQ(Work({0, 0, 32, 32}), S_OK);
    EXPECT_EQ(DWORD{output->Sample(0, 0)}, kGraded);
    // Row 1 starts 32 + 128 samples on: 2.5 rows further down.
    EXPECT_EQ(DWORD{output->Sample(0, 12)}, kGraded) << "sample 1920 of 2048";
    EXPECT_EQ(DWORD{output->Sample(0, 13)}, kBehind) << "sample 2080 of 2048";
    EXPECT_EQ(DWORD{output->Sample(31, 31)}, kBehind);
    EXPECT_EQ(DWORD{output->Sample(32, 0)}, 0x12345678U) << "outside the part";
}

TEST_F(ClippedOutput, APlacedFrameThatFitsIsPackedAlthoughItsPlaceIsOutsideTheInput)
{
    FakeSurfaceSettings wide = Surface("output", DXPF_ARGB32);
    wide.width = 16;
    FrameTest::SetUp(Surface("input", DXPF_ARGB32), wide);
    input->Fill(DXSAMPLE(0xFF102030));
    const CDXDBnds clip(RECT{0, 0, 8, 2});
    const CDXDVec placement(4, 0);
    EXPECT_EQ(effect->Execute(nullptr, &clip, &placement), S_OK);
    EXPECT_EQ(LastOffset(), 4 * 4);
    EXPECT_EQ(LastPacked().lRowPadding, 0);
    EXPECT_EQ(DWORD{output->Sample(4, 1)}, kGraded);
}

TEST_F(ClippedOutput, ABoundThatNoMemoryCanHoldIsRefusedBeforeAnythingIsRendered)
{
    SetUpLarge();
    constexpr LONG kLargest = 0x7FFFFFFF;
    EXPECT_EQ(Work({0, 0, kLargest, 1}), DXTERR_INVALID_BOUNDS) << "the padding does not fit";
    EXPECT_EQ(Work({0, 0, 500000000, 2000000000}), E_OUTOFMEMORY);
    EXPECT_EQ(Renders(), 0U);
    EXPECT_TRUE(output->packed.empty());
    EXPECT_EQ(Work({0, 0, 64, 32}), S_OK) << "and the next frame is whole again";
    EXPECT_EQ(DWORD{output->Sample(63, 31)}, kGraded);
}

TEST_F(ClippedOutput, TheRoomIsKeptFromFrameToFrameAsTheBufferIs)
{
    SetUpLarge();
    output->packed.reserve(64);
    log.Clear();
    ASSERT_EQ(Work({0, 0, 32, 32}), S_OK);
    const void* const buffer = LastDestination().pixels;
    for (const RECT& part : {RECT{0, 0, 64, 32}, RECT{0, 0, 32, 16}, RECT{0, 0, 32, 32}})
    {
        ASSERT_EQ(Work(part), S_OK);
        EXPECT_EQ(LastDestination().pixels, buffer);
    }
}
