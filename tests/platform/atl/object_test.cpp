// The rules of COM that every object keeps, whichever shell it lives in.
#include "tests/platform/atl/sample_objects.h"

namespace
{

// How an object comes to be: on its own, or inside an outer one.
template <typename Sample>
struct Alone
{
    Alone()
    {
        hr = Sample::_CreatorClass::CreateInstance(nullptr, IID_IUnknown,
                                                   reinterpret_cast<void**>(&identity));
    }
    CComPtr<IUnknown> identity;
    HRESULT hr;
};

template <typename Sample>
struct Inside
{
    Inside()
    {
        hr = Sample::_CreatorClass::CreateInstance(&outer, IID_IUnknown,
                                                   reinterpret_cast<void**>(&outer.inner));
        identity = &outer;
    }
    Outer outer;
    CComPtr<IUnknown> identity;
    HRESULT hr;
};

template <typename Holder>
class EveryObject : public AtlTest
{
};
using Holders =
    ::testing::Types<Alone<CSample>, Alone<CPolySample>, Inside<CSample>, Inside<CPolySample>>;
TYPED_TEST_SUITE(EveryObject, Holders);

TYPED_TEST(EveryObject, HasOneIdentityWhicheverInterfaceIsAsked)
{
    TypeParam holder;
    ASSERT_EQ(holder.hr, S_OK);
    for (const IID* iid : {&IID_IFirst, &IID_ISecond, &IID_IMarshal})
    {
        CComPtr<IUnknown> interface_;
        ASSERT_EQ(holder.identity->QueryInterface(*iid, reinterpret_cast<void**>(&interface_)),
                  S_OK);
        EXPECT_EQ(Query<IUnknown>(interface_).p, holder.identity.p);
    }
}

TYPED_TEST(EveryObject, ReachesEachInterfaceFromEachOther)
{
    TypeParam holder;
    const IID* const all[] = {&IID_IUnknown, &IID_IFirst, &IID_ISecond, &IID_IMarshal};
    for (const IID* from : all)
    {
        CComPtr<IUnknown> start;
        ASSERT_EQ(holder.identity->QueryInterface(*from, reinterpret_cast<void**>(&start)), S_OK);
        for (const IID* to : all)
        {
            CComPtr<IUnknown> found;
            EXPECT_EQ(start->QueryInterface(*to, reinterpret_cast<void**>(&found)), S_OK);
        }
    }
}

TYPED_TEST(EveryObject, NullsThePlaceOfAFailingQuery)
{
    TypeParam holder;
    const auto first = Query<IFirst>(holder.identity);
    void* place = this;
    EXPECT_EQ(first->QueryInterface(IID_INobody, &place), E_NOINTERFACE);
    EXPECT_EQ(place, nullptr);
}

TYPED_TEST(EveryObject, AnswersThroughItsInterfaces)
{
    TypeParam holder;
    EXPECT_EQ(Query<IFirst>(holder.identity)->First(), 1);
    EXPECT_EQ(Query<ISecond>(holder.identity)->Second(), 2);
}

TYPED_TEST(EveryObject, CountsInItsModuleWhileItLives)
{
    {
        TypeParam holder;
        EXPECT_EQ(this->m_module.GetLockCount(), 1);
    }
    EXPECT_EQ(this->m_module.GetLockCount(), 0);
}

TYPED_TEST(EveryObject, SurvivesReferencesTakenInFinalConstructAndFinalRelease)
{
    g_script.queryInFinalConstruct = true;
    g_script.queryInFinalRelease = true;
    {
        TypeParam holder;
        ASSERT_EQ(holder.hr, S_OK);
        EXPECT_EQ(g_script.alive, 1);
    }
    EXPECT_EQ(g_script.finalReleases, 1);
}

TYPED_TEST(EveryObject, IsGoneWhenItsFinalConstructFails)
{
    g_script.finalConstruct = E_ACCESSDENIED;
    TypeParam holder;
    EXPECT_EQ(holder.hr, E_ACCESSDENIED);
    EXPECT_EQ(g_script.alive, 0);
}

TYPED_TEST(EveryObject, TurnsAnExceptionOfItsConstructorIntoAResult)
{
    g_script.constructorThrows = SampleScript::Throw::BadAlloc;
    EXPECT_EQ(TypeParam().hr, E_OUTOFMEMORY);
    g_script.constructorThrows = SampleScript::Throw::Other;
    EXPECT_EQ(TypeParam().hr, E_UNEXPECTED);
    EXPECT_EQ(this->m_module.GetLockCount(), 0);
}

using ObjectTest = AtlTest;

TEST_F(ObjectTest, ANullPlaceIsRefusedByEveryShell)
{
    Alone<CSample> plain;
    Alone<CPolySample> poly;
    Inside<CPolySample> aggregated;
    EXPECT_EQ(plain.identity->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(poly.identity->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(poly.identity->QueryInterface(IID_IFirst, nullptr), E_POINTER);
    EXPECT_EQ(aggregated.outer.inner->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(CSample::_CreatorClass::CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(CComObject<CSample>::CreateInstance(nullptr), E_POINTER);
}

TEST_F(ObjectTest, TheInnerUnknownIsNotTheOuters)
{
    Inside<CPolySample> holder;
    EXPECT_NE(holder.outer.inner.p, holder.identity.p);
    EXPECT_EQ(Query<IUnknown>(holder.outer.inner).p, holder.outer.inner.p);
}

TEST_F(ObjectTest, ReferencesToAnInnerInterfaceAreTheOuters)
{
    Inside<CPolySample> holder;
    const ULONG before = holder.outer.references;
    const auto first = Query<IFirst>(holder.outer.inner);
    EXPECT_EQ(holder.outer.references, before + 1);
}

TEST_F(ObjectTest, QueriesOfAnInnerInterfaceGoToTheOuter)
{
    Inside<CSample> holder;
    const auto first = Query<IFirst>(holder.outer.inner);
    const int before = holder.outer.queries;
    const auto second = Query<ISecond>(first);
    EXPECT_EQ(holder.outer.queries, before + 1);
    EXPECT_NE(second, nullptr);
}

TEST_F(ObjectTest, WhatTheOuterThrowsAtTheMarshalersReferenceIsAFailedQuery)
{
    Inside<CSample> holder;
    const auto first = Query<IFirst>(holder.outer.inner);
    for (const Throws what : kAllThrows)
    {
        SCOPED_TRACE(NameOf(what));
        holder.outer.throwsFromAddRef = what;
        void* place = this;
        EXPECT_EQ(holder.outer.inner->QueryInterface(IID_IMarshal, &place), E_UNEXPECTED);
        holder.outer.throwsFromAddRef = Throws::Nothing;
    }
    EXPECT_NE(Query<IMarshal>(holder.outer.inner), nullptr);
}

// Fails every query and leaves something in the place.
class Careless : public IUnknown
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** ppv) override
    {
        *ppv = this;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
};

TEST_F(ObjectTest, APlaceIsNullEvenWhenACarelessInnerObjectFailed)
{
    CComObject<CSample>* object = nullptr;
    ASSERT_EQ(CComObject<CSample>::CreateInstance(&object), S_OK);
    const CComPtr<IFirst> holder(object);
    Careless careless;
    object->m_marshaler = &careless;
    void* place = this;
    EXPECT_EQ(holder->QueryInterface(IID_IMarshal, &place), E_NOINTERFACE);
    EXPECT_EQ(place, nullptr);
    object->m_marshaler.Release();
    EXPECT_EQ(holder->QueryInterface(IID_IMarshal, &place), E_NOINTERFACE);
}

TEST_F(ObjectTest, AnObjectFromCreateInstanceHasNoReferenceYet)
{
    CComObject<CSample>* object = nullptr;
    ASSERT_EQ(CComObject<CSample>::CreateInstance(&object), S_OK);
    EXPECT_EQ(object->m_dwRef, 0);
    EXPECT_EQ(object->AddRef(), 1U);
    EXPECT_EQ(object->Release(), 0U);
}

TEST_F(ObjectTest, ObjectsWorkWithoutAnyModule)
{
    CComModule* const module = std::exchange(_pModule, nullptr);
    {
        Alone<CSample> holder;
        EXPECT_EQ(holder.hr, S_OK);
    }
    _pModule = module;
}

} // namespace
