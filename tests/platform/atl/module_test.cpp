// The module's lock count and the class objects that it keeps.
#include "tests/platform/atl/sample_objects.h"

#include "tests/doubles/deadline.h"
#include "tests/doubles/test_thread.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace
{

std::string g_termOrder;
std::atomic<int> g_factoriesMade = 0;

std::atomic<int> g_askers = 0; // threads that are about to ask for the class object
std::atomic<int> g_askersToAwait = 0;

// Counts how often it is made; takes until the other threads ask too, so that without a lock they
// would make more than one.
class CCountedFactory : public CComClassFactory
{
public:
    CCountedFactory()
    {
        ++g_factoriesMade;
        const ULONGLONG deadline = ::GetTickCount64() + kDeadlineMs;
        while (g_askers < g_askersToAwait && ::GetTickCount64() < deadline)
        {
            ::SwitchToThread();
        }
    }
};

class CCountedSample : public CSample
{
public:
    DECLARE_CLASSFACTORY_EX(CCountedFactory)
};

BEGIN_OBJECT_MAP(g_objectMap)
OBJECT_ENTRY(CLSID_Sample, CCountedSample)
OBJECT_ENTRY(CLSID_Other, COther)
END_OBJECT_MAP()

class ModuleTest : public AtlTest
{
protected:
    ModuleTest()
    {
        g_factoriesMade = 0;
        g_askers = 0;
        g_askersToAwait = 0;
        EXPECT_EQ(m_module.Init(g_objectMap, ::GetModuleHandleW(nullptr), &CLSID_Other), S_OK);
    }

    CComPtr<IClassFactory> Factory(REFCLSID clsid)
    {
        CComPtr<IClassFactory> factory;
        EXPECT_EQ(
            m_module.GetClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory)),
            S_OK);
        return factory;
    }
};

TEST_F(ModuleTest, KnowsWhatItWasGiven)
{
    EXPECT_EQ(m_module.GetModuleInstance(), ::GetModuleHandleW(nullptr));
    EXPECT_EQ(m_module.GetResourceInstance(), ::GetModuleHandleW(nullptr));
    EXPECT_EQ(m_module.m_plibid, &CLSID_Other);
    EXPECT_EQ(_pModule, &m_module);
}

TEST_F(ModuleTest, RefusesANullPlaceBeforeItLooksForTheClass)
{
    EXPECT_EQ(m_module.GetClassObject(CLSID_Sample, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(m_module.GetClassObject(IID_INobody, IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(ModuleTest, HasNoClassThatIsNotInItsMap)
{
    void* place = this;
    EXPECT_EQ(m_module.GetClassObject(IID_INobody, IID_IUnknown, &place),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(place, nullptr);
}

TEST_F(ModuleTest, AnInterfaceThatTheClassObjectLacksNullsThePlace)
{
    void* place = this;
    EXPECT_EQ(m_module.GetClassObject(CLSID_Sample, IID_INobody, &place), E_NOINTERFACE);
    EXPECT_EQ(place, nullptr);
}

TEST_F(ModuleTest, KeepsOneClassObjectForEachClass)
{
    EXPECT_EQ(Factory(CLSID_Sample).p, Factory(CLSID_Sample).p);
    EXPECT_NE(Factory(CLSID_Sample).p, Factory(CLSID_Other).p);
    EXPECT_EQ(g_factoriesMade, 1);
}

TEST_F(ModuleTest, ThreadsThatAskAtOnceGetTheSameClassObject)
{
    constexpr int kThreads = 8;
    std::vector<CComPtr<IClassFactory>> factories(kThreads);
    g_askersToAwait = kThreads;
    {
        std::vector<std::unique_ptr<TestThread>> threads;
        for (auto& place : factories)
        {
            threads.push_back(std::make_unique<TestThread>([&] {
                ++g_askers;
                place = Factory(CLSID_Sample);
            }));
        }
    }
    for (const auto& factory : factories)
    {
        EXPECT_EQ(factory.p, factories.front().p);
    }
    EXPECT_EQ(g_factoriesMade, 1);
}

TEST_F(ModuleTest, AKeptClassObjectDoesNotLockTheModule)
{
    auto factory = Factory(CLSID_Sample);
    EXPECT_EQ(m_module.GetLockCount(), 1); // somebody holds it
    factory.Release();
    EXPECT_EQ(m_module.GetLockCount(), 0);
}

TEST_F(ModuleTest, IsFreeAgainAfterTheLastObject)
{
    CComPtr<IFirst> first;
    Factory(CLSID_Sample)->CreateInstance(nullptr, IID_IFirst, reinterpret_cast<void**>(&first));
    EXPECT_EQ(m_module.GetLockCount(), 1);
    first.Release();
    EXPECT_EQ(m_module.GetLockCount(), 0);
}

TEST_F(ModuleTest, HasNoClassesAfterTerm)
{
    Factory(CLSID_Sample);
    m_module.Term();
    void* place = this;
    EXPECT_EQ(m_module.GetClassObject(CLSID_Sample, IID_IUnknown, &place),
              CLASS_E_CLASSNOTAVAILABLE);
}

TEST_F(ModuleTest, ReleasesItsClassObjectsOnTermAndMakesNewOnesAfterTheNextInit)
{
    Factory(CLSID_Sample);
    m_module.Term();
    m_module.Init(g_objectMap, nullptr);
    Factory(CLSID_Sample);
    EXPECT_EQ(g_factoriesMade, 2);
}

// Asks the module on another thread, and takes until that is answered.
class CAskingFactory : public CComClassFactory
{
public:
    void FinalRelease() noexcept
    {
        thread = std::make_unique<TestThread>([] {
            void* none = nullptr;
            _pModule->GetClassObject(CLSID_Sample, IID_IUnknown, &none);
        });
        answered = thread->Join(kDeadlineMs);
    }
    static inline std::unique_ptr<TestThread> thread;
    static inline bool answered = false;
};

class CAskingSample : public CSample
{
public:
    DECLARE_CLASSFACTORY_EX(CAskingFactory)
};

BEGIN_OBJECT_MAP(g_askingMap)
OBJECT_ENTRY(CLSID_Sample, CAskingSample)
END_OBJECT_MAP()

TEST_F(ModuleTest, AnswersOtherThreadsWhileItReleasesItsClassObjects)
{
    m_module.Init(g_askingMap, nullptr);
    Factory(CLSID_Sample);
    m_module.Term();
    CAskingFactory::thread.reset();
    EXPECT_TRUE(CAskingFactory::answered);
}

TEST_F(ModuleTest, RunsTermFunctionsOnceInReverseOrder)
{
    g_termOrder.clear();
    const auto note = [](DWORD_PTR which) { g_termOrder += static_cast<char>(which); };
    EXPECT_EQ(m_module.AddTermFunc(note, 'a'), S_OK);
    EXPECT_EQ(m_module.AddTermFunc(note, 'b'), S_OK);
    m_module.Term();
    m_module.Term();
    EXPECT_EQ(g_termOrder, "ba");
}

} // namespace
