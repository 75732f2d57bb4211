// Which operation tells whom of a change, and in which order.
#include "tests/effect/effect_fixture.h"

namespace
{

class Notification : public EffectTest
{
protected:
    Notification()
    {
        Fill(effect->m_current, RecordBytes(7, 0));
        effect->m_current.GetFlag();
        Listen();
    }
    ~Notification() override { effect->SetChangeSink(nullptr); }

    // Runs it on an effect that is clean and on one that is dirty: each stays so, and neither the
    // window nor the sink hears of it.
    void ExpectSilence(HRESULT expected, const std::function<HRESULT()>& operation)
    {
        for (const std::uint32_t dirty : {0U, 1U})
        {
            effect->m_dirty = dirty;
            EXPECT_EQ(operation(), expected);
            EXPECT_EQ(effect->m_dirty, dirty);
            EXPECT_TRUE(postBox.Take().empty());
            EXPECT_EQ(sink.calls, 0);
        }
    }

    // Runs it: the message must be in the window's queue when the sink is called.
    void ExpectPostBeforeSink(const std::function<HRESULT()>& operation)
    {
        std::vector<MSG> posted;
        sink.calls = 0;
        sink.onCall = [&] { posted = postBox.Take(); };
        EXPECT_EQ(operation(), S_OK);
        EXPECT_EQ(sink.calls, 1);
        ASSERT_EQ(posted.size(), 1U) << "when the sink was called";
        EXPECT_EQ(posted[0].message, UINT{WM_COMMAND});
        EXPECT_EQ(posted[0].wParam, kCommand);
        EXPECT_EQ(posted[0].lParam, 0);
        EXPECT_TRUE(postBox.Take().empty()) << "once";
        sink.onCall = nullptr;
    }
};

} // namespace

TEST_F(Notification, SavePropsTellsNobodyAndLeavesTheDirtyMark)
{
    ExpectSilence(S_OK, [&] {
        FakeStream stream;
        return effect->SaveProps(&stream);
    });
    ExpectSilence(STG_E_MEDIUMFULL, [&] {
        FakeStream full;
        full.writeResult = STG_E_MEDIUMFULL;
        return effect->SaveProps(&full);
    });
    Fill(effect->m_current, RecordBytes(7, 0, 131073));
    ExpectSilence(S_OK, [&] {
        FakeStream stream;
        return effect->SaveProps(&stream);
    });
}

TEST_F(Notification, SetKeyframePropsTellsNobodyAndLeavesTheDirtyMark)
{
    const auto set = [&](HRESULT earlierResult, HRESULT laterResult) {
        return [this, earlierResult, laterResult] {
            FakeStream earlier(RecordBytes(1));
            FakeStream later(RecordBytes(2));
            earlier.statResult = earlierResult;
            later.statResult = laterResult;
            return effect->SetKeyframeProps(&earlier, &later);
        };
    };
    ExpectSilence(S_OK, set(S_OK, S_OK));
    ExpectSilence(E_ACCESSDENIED, set(E_ACCESSDENIED, S_OK));
    ExpectSilence(STG_E_READFAULT, set(S_OK, STG_E_READFAULT));
}

TEST_F(Notification, AutomationAndExchangeReadersTellNobodyAndLeaveTheDirtyMark)
{
    ExpectSilence(S_OK, [&] { return effect->SetAutomationActive(1); });
    ExpectSilence(S_OK, [&] { return effect->SetKeyframeFraction(0.5); });
    ExpectSilence(S_OK, [&] {
        SessionData page;
        return effect->GetProps(&page);
    });
    ExpectSilence(S_OK, [&] {
        FakeStream earlier(RecordBytes(1));
        FakeStream later(RecordBytes(2));
        FakeStream output;
        return effect->InterpolateStreams(&output, &earlier, &later, 0.5);
    });
    ExpectSilence(S_OK, [&] {
        effect->RefreshFrameProps();
        return S_OK;
    });
}

TEST_F(Notification, InitNewOfAPropertyBagLeavesTheLookTheDirtyMarkAndEverybodyAlone)
{
    IPersistPropertyBag& bag = *effect;
    ExpectSilence(S_OK, [&] { return bag.InitNew(); });
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7, 0));
    EXPECT_EQ(effect->m_current.flag, 0U) << "no preset was applied";
    EXPECT_EQ(effect->m_bRequiresSave, 1U);
}

TEST_F(Notification, ApplyingAPresetLeavesTheDirtyMark)
{
    for (const std::uint32_t dirty : {0U, 1U})
    {
        effect->m_dirty = dirty;
        EXPECT_EQ(effect->ApplyPreset(0), S_OK);
        EXPECT_EQ(effect->m_dirty, dirty);
    }
}

TEST_F(Notification, LoadPostsBeforeItCallsTheSink)
{
    ExpectPostBeforeSink([&] {
        FakeStream stream(RecordBytes(9));
        return static_cast<IPersistStreamInit*>(effect.p)->Load(&stream);
    });
}

TEST_F(Notification, InitNewPostsBeforeItCallsTheSink)
{
    ExpectPostBeforeSink([&] { return static_cast<IPersistStreamInit*>(effect.p)->InitNew(); });
}

TEST_F(Notification, InitNewOfAStorageTellsEverybodyToo)
{
    effect->m_dirty = 0;
    ExpectPostBeforeSink([&] { return static_cast<IPersistStorage*>(effect.p)->InitNew(nullptr); });
    EXPECT_EQ(effect->m_dirty, 1U);
    EXPECT_EQ(effect->m_current.flag, 1U) << "the preset was applied";
}

TEST_F(Notification, ApplyPresetPostsBeforeItCallsTheSink)
{
    ExpectPostBeforeSink([&] { return effect->ApplyPreset(0); });
}

TEST_F(Notification, TheNewRecordIsThereWhenTheSinkIsCalled)
{
    Bytes seen;
    std::uint32_t dirty = 0;
    sink.onCall = [&] {
        seen = BytesOf(effect->m_current);
        dirty = effect->m_dirty;
    };
    FakeStream stream(RecordBytes(9));
    EXPECT_EQ(static_cast<IPersistStreamInit*>(effect.p)->Load(&stream), S_OK);
    EXPECT_EQ(seen, RecordBytes(9));
    EXPECT_EQ(dirty, 1U);
    effect->m_dirty = 0;
    dirty = 0;
    SessionData page;
    Fill(page, RecordBytes(3));
    EXPECT_EQ(effect->SetProps(&page), S_OK);
    EXPECT_EQ(seen, RecordBytes(3));
    EXPECT_EQ(dirty, 1U);
}

TEST_F(Notification, WithoutAWindowTheSinkIsCalledAndWithoutASinkTheWindowIsPosted)
{
    effect->SetNotifyWindow(nullptr, kCommand);
    EXPECT_EQ(effect->ApplyPreset(0), S_OK);
    EXPECT_EQ(sink.calls, 1);
    EXPECT_TRUE(postBox.Take().empty());
    Listen();
    effect->SetChangeSink(nullptr);
    EXPECT_EQ(effect->ApplyPreset(0), S_OK);
    EXPECT_EQ(sink.calls, 1);
    EXPECT_EQ(postBox.Take().size(), 1U);
}
