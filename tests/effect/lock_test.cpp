// Which lock an operation holds while it works. Told from the state of the locks and not from who
// is faster, so that a lock that is missing shows every time.
#include "tests/doubles/deadline.h"
#include "tests/doubles/held_lock.h"
#include "tests/effect/effect_fixture.h"

#include <functional>
#include <vector>

namespace
{

// Locks that nobody outside is given.
template <auto kMember>
struct SinkLockOf
{
    friend auto& SinkLock(CSFVideoPlugin<SessionData>& plugin) { return plugin.*kMember; }
};
template struct SinkLockOf<&CSFVideoPlugin<SessionData>::m_sinkLock>;
auto& SinkLock(CSFVideoPlugin<SessionData>& plugin);

template <auto kMember>
struct ObjectLockOf
{
    friend auto& ObjectLock(CComObjectRootEx<CComMultiThreadModel>& object)
    {
        return object.*kMember;
    }
};
template struct ObjectLockOf<&CComObjectRootEx<CComMultiThreadModel>::m_critsec>;
auto& ObjectLock(CComObjectRootEx<CComMultiThreadModel>& object);

// Whether `operation` comes to wait for the lock before it ends. Told from the lock's count, which
// changes when somebody waits.
bool WaitsFor(CComCriticalSection& lock, const std::function<void()>& operation)
{
    lock.lock();
    const volatile LONG& count = lock.m_sec.LockCount;
    const LONG heldAlone = count;
    TestThread other(operation); // at the end waits for the operation, which goes on by then
    const ULONGLONG start = ::GetTickCount64();
    bool ended = false;
    while (!ended && count == heldAlone && ::GetTickCount64() - start < kDeadlineMs)
    {
        ended = other.Join(1);
    }
    const bool waits = count != heldAlone;
    lock.unlock();
    return waits;
}

// Looks at the record lock whenever a record is worked on.
class ProbedPlugin : public OpenPlugin
{
public:
    HRESULT STDMETHODCALLTYPE LoadPreset(LONG index) noexcept override
    {
        Probe();
        return OpenPlugin::LoadPreset(index);
    }
    HRESULT STDMETHODCALLTYPE ReadProps(IStream* stream, SessionData* record) noexcept override
    {
        Probe();
        return OpenPlugin::ReadProps(stream, record);
    }
    HRESULT STDMETHODCALLTYPE WriteProps(IStream* stream, SessionData* record) noexcept override
    {
        Probe();
        return OpenPlugin::WriteProps(stream, record);
    }
    HRESULT STDMETHODCALLTYPE CopyProps(SessionData* destination,
                                        const SessionData* source) noexcept override
    {
        Probe();
        return OpenPlugin::CopyProps(destination, source);
    }
    HRESULT STDMETHODCALLTYPE InterpolateProps(SessionData* output, SessionData* from,
                                               SessionData* to, double fraction) noexcept override
    {
        Probe();
        return OpenPlugin::InterpolateProps(output, from, to, fraction);
    }

    int underTheLock = 0; // how often a record was worked on so
    int withoutTheLock = 0;

private:
    void Probe() { ++(IsHeld(m_lock) ? underTheLock : withoutTheLock); }
};

// Looks at the lock of the sink when the sink is referenced and when it is called.
class ProbedSink : public CountingSink
{
public:
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        if (lock != nullptr)
        {
            ++(IsHeld(*lock) ? referencedUnderTheLock : referencedWithoutTheLock);
        }
        return CountingSink::AddRef();
    }

    CComCriticalSection* lock = nullptr; // null: does not look
    int referencedUnderTheLock = 0;
    int referencedWithoutTheLock = 0;
};

class Lock : public EffectTest
{
protected:
    Lock()
    {
        CComObject<ProbedPlugin>* object = nullptr;
        EXPECT_EQ(CComObject<ProbedPlugin>::CreateInstance(&object), S_OK);
        probed = object;
        Fill(probed->m_current, RecordBytes(7));
    }
    ~Lock() override { probed->SetChangeSink(nullptr); }

    void ExpectUnderTheLock(const char* name, const std::function<void()>& operation)
    {
        Run(operation);
        EXPECT_GT(probed->underTheLock, 0) << name;
        EXPECT_EQ(probed->withoutTheLock, 0) << name;
    }
    void ExpectWithoutTheLock(const char* name, const std::function<void()>& operation)
    {
        Run(operation);
        EXPECT_EQ(probed->underTheLock, 0) << name;
        EXPECT_GT(probed->withoutTheLock, 0) << name;
    }

    IPersistStreamInit& Persist() { return *probed; }

    CComPtr<ProbedPlugin> probed;

private:
    void Run(const std::function<void()>& operation)
    {
        probed->underTheLock = 0;
        probed->withoutTheLock = 0;
        operation();
    }
};

} // namespace

TEST_F(Lock, RecordsAreReadWrittenAndCopiedUnderTheRecordLock)
{
    SessionData page;
    Fill(page, RecordBytes(3));
    FakeStream in(RecordBytes(9));
    FakeStream other(RecordBytes(8));
    FakeStream out;
    ExpectUnderTheLock("GetProps", [&] { probed->GetProps(&page); });
    ExpectUnderTheLock("SetProps", [&] { probed->SetProps(&page); });
    ExpectUnderTheLock("Load", [&] { Persist().Load(&in); });
    ExpectUnderTheLock("Save", [&] { Persist().Save(&out, TRUE); });
    ExpectUnderTheLock("LoadProps", [&] { probed->LoadProps(&in); });
    ExpectUnderTheLock("SaveProps", [&] { probed->SaveProps(&out); });
    ExpectUnderTheLock("SetKeyframeProps", [&] { probed->SetKeyframeProps(&in, &other); });
    ExpectUnderTheLock("RefreshFrameProps", [&] { probed->RefreshFrameProps(); });
    probed->SetAutomationActive(1);
    probed->SetKeyframeFraction(0.5);
    ExpectUnderTheLock("RefreshFrameProps, automated", [&] { probed->RefreshFrameProps(); });
}

TEST_F(Lock, AFailedReadFallsBackToThePresetUnderTheRecordLock)
{
    FakeStream good(RecordBytes(9));
    FakeStream broken(RecordBytes(9));
    broken.statResult = STG_E_ACCESSDENIED;
    ExpectUnderTheLock("LoadProps", [&] { probed->LoadProps(&broken); });
    EXPECT_GE(probed->underTheLock, 2) << "the read and the preset";
    ExpectUnderTheLock("SetKeyframeProps", [&] { probed->SetKeyframeProps(&good, &broken); });
    EXPECT_GE(probed->underTheLock, 5) << "two reads, the preset and two copies";
}

TEST_F(Lock, PresetsAndBlendsOfStreamsGoWithoutTheRecordLock)
{
    FakeStream earlier(RecordBytes(9));
    FakeStream later(RecordBytes(8));
    FakeStream out;
    ExpectWithoutTheLock("ApplyPreset", [&] { probed->ApplyPreset(0); });
    ExpectWithoutTheLock("InitNew", [&] { Persist().InitNew(); });
    ExpectWithoutTheLock("InterpolateStreams",
                         [&] { probed->InterpolateStreams(&out, &earlier, &later, 0.5); });
}

TEST_F(Lock, OperationsWithoutTheRecordLockDoNotWaitForSomebodyWhoHoldsIt)
{
    Listen();
    FakeStream earlier(RecordBytes(9));
    FakeStream later(RecordBytes(8));
    FakeStream out;
    BYTE info[32];
    WCHAR name[32];
    ULONG count = 0;
    const std::vector<std::pair<const char*, std::function<HRESULT()>>> operations{
        {"InitNew", [&] { return static_cast<IPersistStreamInit*>(effect.p)->InitNew(); }},
        {"InterpolateStreams",
         [&] { return effect->InterpolateStreams(&out, &earlier, &later, 0.5); }},
        {"ApplyPreset", [&] { return effect->ApplyPreset(0); }},
        {"SetAutomationActive", [&] { return effect->SetAutomationActive(0); }},
        {"SetKeyframeFraction", [&] { return effect->SetKeyframeFraction(0.5); }},
        {"SetChangeSink", [&] { return effect->SetChangeSink(nullptr); }},
        {"SetNotifyWindow", [&] { return effect->SetNotifyWindow(nullptr, 0); }},
        {"GetPresetCount", [&] { return effect->GetPresetCount(&count); }},
        {"GetPresetName", [&] { return effect->GetPresetName(0, name, 32); }},
        {"GetExtensionInfo", [&] { return effect->GetExtensionInfo(info, sizeof info); }},
        {"SetExtensionValue", [&] { return effect->SetExtensionValue(0.5); }},
        {"IsDirty", [&] { return effect->IsDirty(); }},
        {"GetPreviewFrame",
         [&] { return effect->GetPreviewFrame() != nullptr ? S_OK : E_POINTER; }},
    };
    std::atomic<const char*> running = "none";
    effect->m_lock.lock();
    TestThread other([&] {
        for (const auto& [operation, run] : operations)
        {
            running = operation;
            EXPECT_EQ(run(), S_OK) << operation;
        }
    });
    EXPECT_TRUE(other.Join(kDeadlineMs)) << running << " waits";
    effect->m_lock.unlock();
}

TEST_F(Lock, TheSinkIsReferencedUnderItsLockAndCalledWithoutAnyLock)
{
    ProbedSink listener;
    int calledUnderALock = 0;
    listener.onCall = [&] {
        calledUnderALock += IsHeld(SinkLock(*probed)) || IsHeld(probed->m_lock) ? 1 : 0;
    };
    probed->SetChangeSink(&listener);
    listener.lock = &SinkLock(*probed);
    SessionData page;
    Fill(page, RecordBytes(3));
    FakeStream in(RecordBytes(9));
    probed->ApplyPreset(0);
    Persist().InitNew();
    Persist().Load(&in);
    probed->SetProps(&page);
    listener.lock = nullptr;
    EXPECT_EQ(listener.calls, 4);
    EXPECT_EQ(calledUnderALock, 0);
    EXPECT_GE(listener.referencedUnderTheLock, 4);
    EXPECT_EQ(listener.referencedWithoutTheLock, 0);
    probed->SetChangeSink(nullptr);
    EXPECT_EQ(listener.references, 0U);
}

TEST_F(Lock, TheSinkIsReplacedUnderItsLockAndReleasedOutsideIt)
{
    class ReleaseProbe : public CountingSink
    {
    public:
        ULONG STDMETHODCALLTYPE Release() override
        {
            heldAtRelease = heldAtRelease || IsHeld(*lock);
            return CountingSink::Release();
        }
        CComCriticalSection* lock = nullptr;
        bool heldAtRelease = false;
    };
    ReleaseProbe listener;
    listener.lock = &SinkLock(*effect);
    effect->SetChangeSink(&listener);
    EXPECT_TRUE(WaitsFor(SinkLock(*effect), [&] { effect->SetChangeSink(nullptr); }));
    EXPECT_EQ(listener.references, 0U);
    EXPECT_FALSE(listener.heldAtRelease) << "a last release runs the host's code";
}

TEST_F(Lock, ProgressAndDurationAreSetUnderTheObjectLock)
{
    EXPECT_TRUE(WaitsFor(ObjectLock(*effect), [&] { effect->put_Progress(0.5F); }));
    EXPECT_TRUE(WaitsFor(ObjectLock(*effect), [&] { effect->put_Duration(2.0F); }));
    float value = 0.0F;
    EXPECT_EQ(effect->get_Progress(&value), S_OK);
    EXPECT_EQ(value, 0.5F);
    EXPECT_EQ(effect->get_Duration(&value), S_OK);
    EXPECT_EQ(value, 2.0F);
}

TEST_F(Lock, TheTransformsCallsTakeTheObjectLock)
{
    CComPtr<IUnknown> site;
    DXBNDS bounds{};
    DXVEC point{};
    ULONG id = 0;
    DWORD flags = 0;
    float quality = 0.0F;
    for (const std::function<void()>& call : std::vector<std::function<void()>>{
             [&] { effect->SetSite(nullptr); },
             [&] { effect->GetSite(IID_IUnknown, reinterpret_cast<void**>(&site)); },
             [&] { effect->SetMiscFlags(0); },
             [&] { effect->GetMiscFlags(&flags); },
             [&] { effect->SetQuality(0.5F); },
             [&] { effect->GetQuality(&quality); },
             [&] { effect->GetGenerationId(&id); },
             [&] { effect->IncrementGenerationId(FALSE); },
             [&] { effect->Setup(nullptr, 0, nullptr, 0, 0); },
             [&] { effect->Execute(nullptr, nullptr, nullptr); },
             [&] { effect->MapBoundsIn2Out(nullptr, 0, 0, &bounds); },
             [&] { effect->GetInOutInfo(FALSE, 0, &flags, nullptr, nullptr, nullptr); },
             [&] { effect->PointPick(&point, &id, &point); },
         })
    {
        EXPECT_TRUE(WaitsFor(ObjectLock(*effect), call));
    }
}

TEST_F(Lock, ProgressAndDurationAreReadWithoutWaitingForAFrame)
{
    float progress = -1.0F;
    float duration = -1.0F;
    effect->Lock(); // as a frame does while it is rendered
    TestThread page([&] {
        effect->get_Progress(&progress);
        effect->get_Duration(&duration);
    });
    EXPECT_TRUE(page.Join(kDeadlineMs));
    effect->Unlock();
    page.Join(INFINITE);
    EXPECT_EQ(progress, 0.0F);
    EXPECT_EQ(duration, 0.5F);
}

TEST_F(Lock, AFrameWaitsForNobodyOnceItHasItsRecord)
{
    EXPECT_TRUE(WaitsFor(effect->m_lock, [&] { effect->RefreshFrameProps(); }));
    EXPECT_FALSE(IsHeld(effect->m_lock)) << "given back at once";
}
