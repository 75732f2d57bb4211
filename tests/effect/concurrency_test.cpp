#include "tests/doubles/deadline.h"
#include "tests/doubles/fake_surface.h"
#include "tests/doubles/test_thread.h"
#include "tests/effect/effect_fixture.h"

#include <array>
#include <deque>

namespace
{

constexpr std::size_t kSizes[] = {4096, 8192};

// Every record that is ever written has one value, not 0, in all bytes behind its option chunk, so
// that a record put together from two, or not filled yet, shows at once.
bool IsWhole(const SessionData& record)
{
    if (record.size == 0)
    {
        return true;
    }
    return (record.size == kSizes[0] || record.size == kSizes[1]) && record.data[20] != 0 &&
           BytesOf(record) == RecordBytes(record.data[20], record.data[16], record.size);
}

class Concurrency : public EffectTest
{
protected:
    static constexpr int kRounds = 3000;

    // Runs all of them at once, each kRounds times, and fails when one does not end in time.
    void RunTogether(const std::vector<std::function<void(int round)>>& operations)
    {
        std::deque<TestThread> threads;
        for (const auto& operation : operations)
        {
            threads.emplace_back([&operation] {
                for (int round = 0; round < kRounds; ++round)
                {
                    operation(round);
                }
            });
        }
        for (TestThread& thread : threads)
        {
            if (!thread.Join(kDeadlineMs))
            {
                ADD_FAILURE() << "deadlock";
                std::abort(); // the threads use what would be destroyed next
            }
        }
    }
};

std::uint8_t Value(int round)
{
    return static_cast<std::uint8_t>(1 + round % 250);
}

} // namespace

TEST_F(Concurrency, EveryRenderedRecordIsOneThatSomebodyWroteWhole)
{
    // Two sizes, so that blocks are replaced all the time.
    const auto record = [](int round) {
        return RecordBytes(Value(round), 1, round % 2 == 0 ? 4096 : 8192);
    };
    CountingSink sinks[2];
    int torn = 0;
    const CComPtr<FakeSurface> input = FakeSurface::Make();
    const CComPtr<FakeSurface> output = FakeSurface::Make();
    IUnknown* const inputs[] = {static_cast<IDXSurface*>(input.p)};
    IUnknown* const outputs[] = {static_cast<IDXSurface*>(output.p)};
    ASSERT_EQ(effect->Setup(inputs, 1, outputs, 1, 0), S_OK);
    RunTogether({
        [&](int) {
            EXPECT_EQ(effect->Execute(nullptr, nullptr, nullptr), S_OK);
            torn += IsWhole(effect->m_frame) ? 0 : 1; // what the renderer was given
        },
        [&](int round) {
            SessionData page;
            Fill(page, record(round));
            effect->SetProps(&page);
        },
        [&](int round) {
            FakeStream stream(record(round + 1));
            effect->LoadProps(&stream);
            FakeStream saved;
            effect->SaveProps(&saved);
            SessionData copy;
            effect->GetProps(&copy);
            ASSERT_TRUE(IsWhole(copy));
        },
        [&](int round) {
            FakeStream stream(record(round));
            static_cast<IPersistStreamInit*>(effect.p)->Load(&stream);
            FakeStream saved;
            static_cast<IPersistStreamInit*>(effect.p)->Save(&saved, TRUE);
        },
        [&](int round) {
            FakeStream earlier(record(round));
            FakeStream later(record(round * 7));
            effect->SetKeyframeProps(&earlier, &later);
            effect->SetKeyframeFraction(round % 11 / 10.0);
            effect->SetAutomationActive(round % 3 == 0 ? 0 : 1);
        },
        [&](int round) {
            FakeStream earlier(record(round));
            FakeStream later(record(round + 2));
            FakeStream blended;
            effect->InterpolateStreams(&blended, &earlier, &later, 0.5);
            effect->ApplyPreset(0);
            effect->SetExtensionValue(round);
        },
        [&](int round) {
            effect->SetChangeSink(&sinks[round % 2]);
            effect->SetNotifyWindow(round % 2 == 0 ? postBox.Window() : nullptr, kCommand);
            static_cast<IPersistStreamInit*>(effect.p)->InitNew();
        },
    });
    EXPECT_EQ(torn, 0);
    EXPECT_GE(recording.count, std::size_t{kRounds}) << "every frame was rendered";
    EXPECT_GT(sinks[0].calls + sinks[1].calls, 0);
    effect->SetChangeSink(nullptr);
    EXPECT_EQ(sinks[0].references + sinks[1].references, 0U);
    postBox.Take();
}

TEST_F(Concurrency, ASlowStreamHoldsTheRecordLockAndNothingElse)
{
    const HANDLE reading = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE goOn = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    FakeStream slow(RecordBytes(9));
    slow.onRead = [&] {
        ::SetEvent(reading);
        ::WaitForSingleObject(goOn, INFINITE);
    };
    TestThread loader([&] { effect->LoadProps(&slow); });
    ASSERT_EQ(::WaitForSingleObject(reading, kDeadlineMs), WAIT_OBJECT_0);
    // These do not wait for the stream.
    EXPECT_EQ(effect->SetAutomationActive(0), S_OK);
    EXPECT_EQ(effect->SetKeyframeFraction(0.5), S_OK);
    EXPECT_EQ(effect->SetChangeSink(&sink), S_OK);
    EXPECT_EQ(effect->ApplyPreset(0), S_OK);
    // A frame does: it must not see half a record.
    TestThread render([&] { effect->RefreshFrameProps(); });
    EXPECT_FALSE(render.Join(100));
    ::SetEvent(goOn);
    EXPECT_TRUE(render.Join(kDeadlineMs));
    EXPECT_TRUE(loader.Join(kDeadlineMs));
    EXPECT_EQ(BytesOf(effect->m_frame), RecordBytes(9));
    effect->SetChangeSink(nullptr);
    ::CloseHandle(reading);
    ::CloseHandle(goOn);
}

TEST_F(Concurrency, ASinkThatWaitsForAnotherThreadsCallDoesNotDeadlock)
{
    Listen();
    FakeStream stream(RecordBytes(9));
    bool ended = false;
    sink.onCall = [&] {
        TestThread other([&] {
            SessionData copy;
            effect->GetProps(&copy);
        });
        ended = other.Join(kDeadlineMs);
    };
    EXPECT_EQ(static_cast<IPersistStreamInit*>(effect.p)->Load(&stream), S_OK);
    EXPECT_TRUE(ended);
    ended = false;
    SessionData page;
    Fill(page, RecordBytes(3));
    EXPECT_EQ(effect->SetProps(&page), S_OK);
    EXPECT_TRUE(ended);
    effect->SetChangeSink(nullptr);
}
