// The host's objects may come back into the effect from inside a call: on the same thread the locks
// let them in.
#include "tests/doubles/allocation_count.h"
#include "tests/effect/frame_fixture.h"

#include <string>
#include <utility>

namespace
{

constexpr std::uint32_t kBlock = 8192; // of the records: large enough to lie in guarded memory

class Reentry : public FrameTest
{
protected:
    // Every block's end is guarded, and a freed one cannot be touched.
    GuardedMemory guarded{kBlock, GuardedMemory::Side::Behind};

    void SetOther()
    {
        SessionData other;
        Fill(other, RecordBytes(99, 0, kBlock + 4096));
        EXPECT_EQ(effect->SetProps(&other), S_OK);
    }
};

} // namespace

TEST_F(Reentry, AStreamThatSetsARecordWhileItIsReadDoesNotHaveItsBlockFreed)
{
    const Bytes content = RecordBytes(5, 0, kBlock);
    FakeStream stream(content);
    stream.onRead = [this] { SetOther(); };
    EXPECT_EQ(effect->Persistence().Load(&stream), S_OK);
    EXPECT_EQ(BytesOf(effect->m_current), content) << "what is loaded last stays";
    EXPECT_EQ(effect->m_current.flag, 0U);
}

TEST_F(Reentry, AStreamThatLoadsAnotherWhileItIsReadIsStillReadWhole)
{
    const Bytes content = RecordBytes(5, 0, kBlock);
    FakeStream inner(RecordBytes(6, 1, kBlock));
    FakeStream stream(content);
    stream.onRead = [&] { EXPECT_EQ(effect->Persistence().Load(&inner), S_OK); };
    EXPECT_EQ(effect->Persistence().Load(&stream), S_OK);
    EXPECT_EQ(BytesOf(effect->m_current), content);
}

TEST_F(Reentry, AStreamThatSetsARecordWhileItIsWrittenStillGetsTheOldOne)
{
    const Bytes content = RecordBytes(5, 0, kBlock);
    FakeStream source(content);
    ASSERT_EQ(effect->Persistence().Load(&source), S_OK);
    FakeStream stream;
    stream.onWrite = [this] { SetOther(); };
    EXPECT_EQ(effect->Persistence().Save(&stream, TRUE), S_OK);
    EXPECT_EQ(stream.bytes, content);
    EXPECT_EQ(effect->m_current.size, kBlock + 4096) << "and the effect keeps the new one";
}

TEST_F(Reentry, ARecordIsWrittenFromItselfWhenThereIsNoMemoryForACopy)
{
    const Bytes content = RecordBytes(5, 0, kBlock);
    Fill(effect->m_current, content);
    effect->m_current.GetFlag();
    FakeStream stream;
    stream.bytes.reserve(kBlock);
    const ShortMemory shortage(kBlock);
    EXPECT_EQ(effect->Persistence().Save(&stream, TRUE), S_OK);
    EXPECT_EQ(stream.bytes, content);
}

TEST_F(Reentry, SurfacesThatAreReplacedWhileTheyAreLockedLastForTheFrame)
{
    for (const DXSAMPLEFORMATENUM format : {DXPF_ARGB32, DXPF_NONSTANDARD})
    {
        SetUp(format, format);
        input->Fill(DXSAMPLE(0xFF102030));
        const auto freshInput = FakeSurface::Make(Surface("fresh input", format));
        const auto freshOutput = FakeSurface::Make(Surface("fresh output", format));
        const LONG alive = FakeSurface::LiveSurfaces();
        bool replaced = false;
        input->onCall = [&](const std::string& method) {
            if (method != "LockSurface" || std::exchange(replaced, true))
            {
                return;
            }
            IUnknown* const inputs[] = {static_cast<IDXSurface*>(freshInput.p)};
            IUnknown* const outputs[] = {static_cast<IDXSurface*>(freshOutput.p)};
            EXPECT_EQ(effect->Setup(inputs, 1, outputs, 1, 0), S_OK);
            input.Release(); // the effect's own reference is what keeps it
        };
        EXPECT_EQ(Execute(), S_OK);
        EXPECT_EQ(FakeSurface::LiveSurfaces(), alive - 1) << "the old input has gone by now";
        EXPECT_EQ(output->Sample(0, 0).Red, 255 - 0x10) << "the frame that was under way";
        freshInput->Fill(DXSAMPLE(0xFF405060));
        EXPECT_EQ(Execute(), S_OK);
        EXPECT_EQ(freshOutput->Sample(0, 0).Red, 255 - 0x40);
    }
}

TEST_F(Reentry, ATransformThatIsClearedWhileASurfaceIsLockedEndsItsFrame)
{
    for (const DXSAMPLEFORMATENUM format : {DXPF_ARGB32, DXPF_NONSTANDARD})
    {
        SetUp(format, format);
        output->onCall = [this](const std::string& method) {
            if (method == "LockSurface")
            {
                EXPECT_EQ(effect->Setup(nullptr, 0, nullptr, 0, 0), S_OK);
            }
        };
        EXPECT_EQ(Execute(), S_OK);
        output->onCall = nullptr;
        EXPECT_EQ(output->References(), 1);
        EXPECT_EQ(Execute(), DXTERR_UNINITIALIZED);
    }
}

TEST_F(Reentry, ATransformThatIsClearedWhileItsBoundsAreAskedForRendersNothing)
{
    SetUp(DXPF_ARGB32, DXPF_ARGB32);
    input->onCall = [this](const std::string& method) {
        if (method == "GetBounds")
        {
            EXPECT_EQ(effect->Setup(nullptr, 0, nullptr, 0, 0), S_OK);
        }
    };
    EXPECT_EQ(Execute(), DXTERR_UNINITIALIZED);
    EXPECT_EQ(output->References(), 1);
}
