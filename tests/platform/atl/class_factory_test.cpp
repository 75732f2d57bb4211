// The standard class factory over creators of all kinds.
#include "tests/platform/atl/sample_objects.h"

namespace
{

class ClassFactoryTest : public AtlTest
{
protected:
    template <typename Sample>
    CComPtr<IClassFactory> FactoryOf()
    {
        CComPtr<IClassFactory> factory;
        Sample::_ClassFactoryCreatorClass::CreateInstance(
            reinterpret_cast<void*>(&Sample::_CreatorClass::CreateInstance), IID_IClassFactory,
            reinterpret_cast<void**>(&factory));
        return factory;
    }
};

TEST_F(ClassFactoryTest, RefusesANullPlace)
{
    EXPECT_EQ(FactoryOf<CSample>()->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(ClassFactoryTest, GivesAnOuterNothingButTheInnerUnknown)
{
    Outer outer;
    void* place = this;
    EXPECT_EQ(FactoryOf<CSample>()->CreateInstance(&outer, IID_IFirst, &place),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(place, nullptr);
    EXPECT_EQ(FactoryOf<CPolySample>()->CreateInstance(&outer, IID_IUnknown,
                                                       reinterpret_cast<void**>(&outer.inner)),
              S_OK);
}

TEST_F(ClassFactoryTest, AnInterfaceThatTheClassLacksLeavesNoObject)
{
    void* place = this;
    EXPECT_EQ(FactoryOf<CSample>()->CreateInstance(nullptr, IID_INobody, &place), E_NOINTERFACE);
    EXPECT_EQ(place, nullptr);
    EXPECT_EQ(g_script.alive, 0);
}

TEST_F(ClassFactoryTest, PassesOnTheResultOfAFailedFinalConstruct)
{
    g_script.finalConstruct = E_INVALIDARG;
    void* place = this;
    EXPECT_EQ(FactoryOf<CPolySample>()->CreateInstance(nullptr, IID_IUnknown, &place),
              E_INVALIDARG);
    EXPECT_EQ(place, nullptr);
    EXPECT_EQ(m_module.GetLockCount(), 0);
}

TEST_F(ClassFactoryTest, LockServerMovesTheModulesLockCount)
{
    const auto factory = FactoryOf<CSample>();
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(m_module.GetLockCount(), 2);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(m_module.GetLockCount(), 0);
}

} // namespace
