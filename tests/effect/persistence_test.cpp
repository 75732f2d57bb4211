#include "tests/effect/effect_fixture.h"

namespace
{

class Persistence : public EffectTest
{
};

} // namespace

TEST_F(Persistence, EveryInterfaceGivesTheEffectsClass)
{
    CLSID classId{};
    EXPECT_EQ(static_cast<IPersistStreamInit*>(effect.p)->GetClassID(&classId), S_OK);
    EXPECT_EQ(classId, CLSID_Plugin);
    EXPECT_EQ(static_cast<IPersistStreamInit*>(effect.p)->GetClassID(nullptr), E_POINTER);
    classId = {};
    EXPECT_EQ(static_cast<IPersistStorage*>(effect.p)->GetClassID(&classId), S_OK);
    EXPECT_EQ(classId, CLSID_Plugin);
    classId = {};
    EXPECT_EQ(static_cast<IPersistPropertyBag*>(effect.p)->GetClassID(&classId), S_OK);
    EXPECT_EQ(classId, CLSID_Plugin);
}

TEST_F(Persistence, SavingAnEmptyEffectWritesZeroBytesAndSucceeds)
{
    IPersistStreamInit& persist = *effect;
    FakeStream stream;
    EXPECT_EQ(persist.Save(&stream, TRUE), S_OK);
    EXPECT_EQ(stream.writes, 0);
}

TEST_F(Persistence, LoadingAZeroLengthStreamSucceedsAndKeepsTheRecord)
{
    IPersistStreamInit& persist = *effect;
    Fill(effect->m_current, RecordBytes(7));
    FakeStream empty;
    EXPECT_EQ(persist.Load(&empty), S_OK);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7));
}

TEST_F(Persistence, ASavedRecordIsItsBytesAndNothingElse)
{
    IPersistStreamInit& persist = *effect;
    Fill(effect->m_current, RecordBytes(7, 0));
    effect->m_current.GetFlag();
    FakeStream stream;
    EXPECT_EQ(persist.Save(&stream, TRUE), S_OK);
    EXPECT_EQ(stream.bytes, RecordBytes(7, 0));
}

TEST_F(Persistence, ARecordOfTheLimitIsSavedAndOneByteMoreSavesNothingAndSucceeds)
{
    IPersistStreamInit& persist = *effect;
    Fill(effect->m_current, RecordBytes(7, 1, 131072));
    FakeStream full;
    EXPECT_EQ(persist.Save(&full, TRUE), S_OK);
    EXPECT_EQ(full.bytes, RecordBytes(7, 1, 131072));
    Fill(effect->m_current, RecordBytes(7, 1, 131073));
    FakeStream none;
    EXPECT_EQ(persist.Save(&none, TRUE), S_OK);
    EXPECT_TRUE(none.bytes.empty());
}

TEST_F(Persistence, TheLargestSizeIsTheLimit)
{
    IPersistStreamInit& persist = *effect;
    ULARGE_INTEGER size;
    size.QuadPart = ~0ULL;
    EXPECT_EQ(persist.GetSizeMax(&size), S_OK);
    EXPECT_EQ(size.QuadPart, 131072U);
    EXPECT_EQ(persist.GetSizeMax(nullptr), E_INVALIDARG);
}

TEST_F(Persistence, LoadSetsDirtyEvenWhenReadingFailsButTellsNobody)
{
    IPersistStreamInit& persist = *effect;
    Listen();
    FakeStream broken(RecordBytes(9));
    broken.statResult = STG_E_ACCESSDENIED;
    EXPECT_EQ(persist.IsDirty(), S_FALSE);
    EXPECT_EQ(persist.Load(&broken), STG_E_ACCESSDENIED);
    EXPECT_EQ(persist.IsDirty(), S_OK);
    EXPECT_TRUE(postBox.Take().empty());
    EXPECT_EQ(sink.calls, 0);
}

TEST_F(Persistence, LoadPostsAndCallsTheSink)
{
    IPersistStreamInit& persist = *effect;
    Listen();
    FakeStream stream(RecordBytes(9));
    EXPECT_EQ(persist.Load(&stream), S_OK);
    EXPECT_EQ(persist.IsDirty(), S_OK);
    const std::vector<MSG> posts = postBox.Take();
    ASSERT_EQ(posts.size(), 1U);
    EXPECT_EQ(posts[0].wParam, kCommand);
    EXPECT_EQ(posts[0].lParam, 0);
    EXPECT_EQ(sink.calls, 1);
}

TEST_F(Persistence, AfterLoadOfABlockWhoseChunkHoldsZeroTheOptionIsZero)
{
    IPersistStreamInit& persist = *effect;
    FakeStream stream(RecordBytes(9, 0));
    EXPECT_EQ(persist.Load(&stream), S_OK);
    EXPECT_EQ(effect->m_current.flag, 0U);
}

TEST_F(Persistence, SaveClearsOrSetsTheDirtyMarkAsAskedAndPosts)
{
    IPersistStreamInit& persist = *effect;
    Fill(effect->m_current, RecordBytes(7));
    Listen();
    FakeStream stream;
    EXPECT_EQ(persist.Save(&stream, FALSE), S_OK);
    EXPECT_EQ(persist.IsDirty(), S_OK);
    EXPECT_EQ(persist.Save(&stream, TRUE), S_OK);
    EXPECT_EQ(persist.IsDirty(), S_FALSE);
    EXPECT_EQ(postBox.Take().size(), 2U);
    EXPECT_EQ(sink.calls, 0);
}

TEST_F(Persistence, AFailedSaveLeavesTheDirtyMarkAndPostsNothing)
{
    IPersistStreamInit& persist = *effect;
    FakeStream record(RecordBytes(7));
    persist.Load(&record);
    Listen();
    FakeStream broken;
    broken.writeResult = STG_E_MEDIUMFULL;
    EXPECT_EQ(persist.Save(&broken, TRUE), STG_E_MEDIUMFULL);
    EXPECT_EQ(persist.IsDirty(), S_OK);
    EXPECT_TRUE(postBox.Take().empty());
}

TEST_F(Persistence, InitNewKeepsTheBlockSetsTheOptionAndTellsEverybody)
{
    IPersistStreamInit& persist = *effect;
    Fill(effect->m_current, RecordBytes(7, 0));
    effect->m_current.GetFlag();
    Listen();
    EXPECT_EQ(persist.InitNew(), S_OK);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7, 0));
    EXPECT_EQ(effect->m_current.flag, 1U);
    EXPECT_EQ(persist.IsDirty(), S_OK);
    EXPECT_EQ(postBox.Take().size(), 1U);
    EXPECT_EQ(sink.calls, 1);
}

TEST_F(Persistence, APropertyBagHoldsNoPropertiesAndInitNewMarksTheEffect)
{
    IPersistPropertyBag& bag = *effect;
    EXPECT_EQ(effect->m_bRequiresSave, 0U);
    EXPECT_EQ(bag.InitNew(), S_OK);
    EXPECT_EQ(effect->m_bRequiresSave, 1U);
}

TEST_F(Persistence, APropertyBagIsNeitherReadNorWritten)
{
    // Any property that the effect asked for or wrote would be counted.
    class CountingBag : public IPropertyBag
    {
    public:
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
        ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
        ULONG STDMETHODCALLTYPE Release() override { return 1; }
        HRESULT STDMETHODCALLTYPE Read(LPCOLESTR, VARIANT*, IErrorLog*) override
        {
            ++calls;
            return E_INVALIDARG;
        }
        HRESULT STDMETHODCALLTYPE Write(LPCOLESTR, VARIANT*) override
        {
            ++calls;
            return S_OK;
        }
        int calls = 0;
    };
    Fill(effect->m_current, RecordBytes(7));
    IPersistPropertyBag& persist = *effect;
    CountingBag bag;
    EXPECT_EQ(persist.Load(&bag, nullptr), S_OK);
    EXPECT_EQ(persist.Save(&bag, TRUE, TRUE), S_OK);
    EXPECT_EQ(bag.calls, 0);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7));
}

TEST_F(Persistence, ExchangeCopiesTheRecordBothWays)
{
    Fill(effect->m_current, RecordBytes(7, 0));
    effect->m_current.GetFlag();
    SessionData page;
    EXPECT_EQ(effect->GetProps(&page), S_OK);
    EXPECT_EQ(BytesOf(page), RecordBytes(7, 0));
    EXPECT_EQ(page.flag, 0U);
    EXPECT_NE(page.data, effect->m_current.data);

    Fill(page, RecordBytes(8, 1));
    page.GetFlag();
    EXPECT_EQ(effect->SetProps(&page), S_OK);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(8, 1));
    EXPECT_EQ(effect->IsDirty(), S_OK);
}

TEST_F(Persistence, ExchangeOfANullRecordFails)
{
    EXPECT_EQ(effect->GetProps(nullptr), E_FAIL);
    EXPECT_EQ(effect->SetProps(nullptr), E_FAIL);
    EXPECT_EQ(effect->IsDirty(), S_FALSE);
}

TEST_F(Persistence, SetPropsCallsTheSinkButDoesNotPost)
{
    Listen();
    SessionData page;
    Fill(page, RecordBytes(8));
    EXPECT_EQ(effect->SetProps(&page), S_OK);
    EXPECT_EQ(sink.calls, 1);
    EXPECT_TRUE(postBox.Take().empty());
}

TEST_F(Persistence, ASinkMayCallBackIntoTheEffectAndReplaceItself)
{
    Listen();
    CountingSink second;
    SessionData page;
    Fill(page, RecordBytes(8));
    sink.onCall = [&] {
        SessionData copy;
        EXPECT_EQ(effect->GetProps(&copy), S_OK);
        EXPECT_EQ(BytesOf(copy), RecordBytes(8));
        effect->SetChangeSink(&second);
    };
    EXPECT_EQ(effect->SetProps(&page), S_OK);
    EXPECT_EQ(sink.references, 0U);
    EXPECT_EQ(effect->SetProps(&page), S_OK);
    EXPECT_EQ(second.calls, 1);
    effect->SetChangeSink(nullptr);
}
