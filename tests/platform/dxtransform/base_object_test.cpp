// What a transform is and says besides making images: identity, defaults, flags, quality, site.
#include "tests/platform/dxtransform/open_transform.h"

#include <cmath>
#include <limits>
#include <map>

namespace
{

using BaseObject = TransformTest;

TEST_F(BaseObject, AnswersTheInterfacesOfAnImageTransform)
{
    for (const IID* iid : {&IID_IUnknown, &IID_IDXTransform, &IID_IDXBaseObject,
                           &IID_IDXSurfacePick, &IID_IObjectWithSite})
    {
        CComPtr<IUnknown> found;
        EXPECT_EQ(m_transform->QueryInterface(*iid, reinterpret_cast<void**>(&found)), S_OK);
    }
    CComPtr<IUnknown> none;
    EXPECT_EQ(m_transform->QueryInterface(IID_IDXEffect, reinterpret_cast<void**>(&none)),
              E_NOINTERFACE);
}

TEST_F(BaseObject, StartsWithTheDefaultsOfOneImageToOneImage)
{
    EXPECT_FLOAT_EQ(m_transform->m_Duration, 1.0F);
    EXPECT_FLOAT_EQ(m_transform->m_Progress, 0.0F);
    EXPECT_FLOAT_EQ(m_transform->m_StepResolution, 0.0F);
    EXPECT_FLOAT_EQ(m_transform->m_fQuality, 0.5F);
    EXPECT_EQ(m_transform->m_dwMiscFlags, 0x06030000U);
    EXPECT_EQ(m_transform->m_dwOptionFlags, 0U);
    EXPECT_EQ(m_transform->m_dwGenerationId, 1U);
    EXPECT_EQ(m_transform->m_dwCleanGenId, 0U);
    EXPECT_EQ(m_transform->m_ulMaxInputs, 1U);
    EXPECT_EQ(m_transform->m_ulNumInRequired, 1U);
    EXPECT_EQ(m_transform->InputSurface(), nullptr);
    EXPECT_EQ(m_transform->OutputSurface(), nullptr);
    EXPECT_TRUE(m_transform->IsTransformDirty());
}

TEST_F(BaseObject, MarksItselfDirtyByItsGenerationId)
{
    m_transform->ClearDirty();
    EXPECT_FALSE(m_transform->IsTransformDirty());
    m_transform->SetDirty();
    EXPECT_TRUE(m_transform->IsTransformDirty());
    EXPECT_EQ(m_transform->m_dwGenerationId, 2U);
}

TEST_F(BaseObject, TakesOptionsAndIgnoresTheBitsThatDescribeIt)
{
    m_transform->ClearDirty();
    EXPECT_EQ(m_transform->SetMiscFlags(0xFFFF0003U), S_OK);
    DWORD flags = 0;
    EXPECT_EQ(m_transform->GetMiscFlags(&flags), S_OK);
    EXPECT_EQ(flags, 0x06030003U);
    EXPECT_TRUE(m_transform->IsTransformDirty());
    m_transform->ClearDirty();
    EXPECT_EQ(m_transform->SetMiscFlags(3), S_OK);
    EXPECT_FALSE(m_transform->IsTransformDirty());
    EXPECT_EQ(m_transform->GetMiscFlags(nullptr), E_POINTER);
}

TEST_F(BaseObject, RefusesUnknownOptionsAndThoseItDoesNotSupport)
{
    EXPECT_EQ(m_transform->SetMiscFlags(0x00000004U), E_INVALIDARG);
    m_transform->m_dwMiscFlags = DXTMF_BLEND_SUPPORTED;
    EXPECT_EQ(m_transform->SetMiscFlags(DXTMF_BLEND_WITH_OUTPUT | DXTMF_DITHER_OUTPUT),
              E_INVALIDARG);
    m_transform->m_dwMiscFlags = DXTMF_DITHER_SUPPORTED;
    EXPECT_EQ(m_transform->SetMiscFlags(DXTMF_BLEND_WITH_OUTPUT), E_INVALIDARG);
    EXPECT_EQ(m_transform->m_dwMiscFlags, DWORD{DXTMF_DITHER_SUPPORTED});
}

TEST_F(BaseObject, QualityNeedsSupportAndARangeFromZeroToOne)
{
    EXPECT_EQ(m_transform->SetQuality(0.7F), E_NOTIMPL);
    m_transform->m_dwMiscFlags |= DXTMF_QUALITY_SUPPORTED;
    EXPECT_EQ(m_transform->SetQuality(1.1F), E_INVALIDARG);
    EXPECT_EQ(m_transform->SetQuality(-0.1F), E_INVALIDARG);
    EXPECT_EQ(m_transform->SetQuality(std::numeric_limits<float>::quiet_NaN()), E_INVALIDARG);
    m_transform->ClearDirty();
    EXPECT_EQ(m_transform->SetQuality(0.5F), S_OK);
    EXPECT_FALSE(m_transform->IsTransformDirty());
    EXPECT_EQ(m_transform->SetQuality(1.0F), S_OK);
    EXPECT_TRUE(m_transform->IsTransformDirty());
    float quality = 0.0F;
    EXPECT_EQ(m_transform->GetQuality(&quality), S_OK);
    EXPECT_FLOAT_EQ(quality, 1.0F);
    EXPECT_EQ(m_transform->GetQuality(nullptr), E_POINTER);
}

TEST_F(BaseObject, TellsWhatGoesInAndOut)
{
    m_transform->m_ulMaxInputs = 2;
    ASSERT_EQ(SetupBoth(), S_OK);
    DWORD flags = 9;
    GUID ids[3] = {};
    ULONG count = 3;
    CComPtr<IUnknown> current;
    EXPECT_EQ(m_transform->GetInOutInfo(FALSE, 0, &flags, ids, &count, &current), S_OK);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(count, 1U);
    EXPECT_TRUE(::IsEqualGUID(ids[0], IID_IDXSurface));
    EXPECT_EQ(current.p, UnknownOf(m_input));
    current.Release();
    EXPECT_EQ(m_transform->GetInOutInfo(FALSE, 1, &flags, nullptr, nullptr, &current), S_OK);
    EXPECT_EQ(flags, DWORD{DXINOUTF_OPTIONAL});
    EXPECT_EQ(current, nullptr);
    EXPECT_EQ(m_transform->GetInOutInfo(TRUE, 0, &flags, nullptr, &count, &current), S_OK);
    EXPECT_EQ(flags, 0U);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(current.p, UnknownOf(m_output));
}

TEST_F(BaseObject, SaysFalseForAnInputOrOutputThatThereIsNot)
{
    for (const BOOL isOutput : {FALSE, TRUE})
    {
        DWORD flags = 9;
        GUID id{};
        ULONG count = 1;
        IUnknown* current = UnknownOf(m_input);
        EXPECT_EQ(m_transform->GetInOutInfo(isOutput, 1, &flags, &id, &count, &current), S_FALSE);
        EXPECT_EQ(flags, 0U);
        EXPECT_EQ(count, 0U);
        EXPECT_EQ(current, nullptr);
    }
}

TEST_F(BaseObject, ChecksThePlacesForInputsAndOutputs)
{
    DWORD flags = 0;
    GUID id{};
    ULONG count = 0;
    EXPECT_EQ(m_transform->GetInOutInfo(FALSE, 0, &flags, &id, &count, nullptr), E_INVALIDARG);
    EXPECT_EQ(m_transform->GetInOutInfo(FALSE, 0, &flags, &id, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(m_transform->GetInOutInfo(FALSE, 0, nullptr, nullptr, nullptr, nullptr), E_POINTER);
}

TEST_F(BaseObject, TellsItsSize)
{
    ULONG size = 0;
    EXPECT_EQ(m_transform->GetObjectSize(&size), S_OK);
    EXPECT_GE(size, sizeof(CDXBaseNTo1));
    EXPECT_EQ(m_transform->GetObjectSize(nullptr), E_POINTER);
}

// A site, with a surface factory or without; it is on the test's stack.
class FakeSite : public IServiceProvider
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override
    {
        *ppv = nullptr;
        if (!::IsEqualIID(riid, IID_IUnknown) &&
            !(isProvider && ::IsEqualIID(riid, IID_IServiceProvider)))
        {
            return E_NOINTERFACE;
        }
        *ppv = this;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID service, REFIID, void** ppv) override
    {
        *ppv = nullptr;
        if (!hasFactory || !::IsEqualGUID(service, IID_IDXSurfaceFactory))
        {
            return E_NOINTERFACE;
        }
        *ppv = this; // never called, only held
        AddRef();
        return S_OK;
    }

    bool isProvider = true;
    bool hasFactory = true;
    ULONG references = 1;
};

TEST_F(BaseObject, AsksItsSiteForASurfaceFactory)
{
    FakeSite site;
    EXPECT_EQ(m_transform->SetSite(&site), S_OK);
    EXPECT_NE(m_transform->m_cpSurfFact, nullptr);
    EXPECT_EQ(m_transform->SetSite(nullptr), S_OK);
    EXPECT_EQ(site.references, 1U);
}

TEST_F(BaseObject, DoesWithoutAFactoryThatTheSiteLacks)
{
    FakeSite site;
    site.hasFactory = false;
    EXPECT_EQ(m_transform->SetSite(&site), S_OK);
    EXPECT_EQ(m_transform->m_cpSurfFact, nullptr);
    FakeSite plain;
    plain.isProvider = false;
    EXPECT_EQ(m_transform->SetSite(&plain), S_OK);
    EXPECT_EQ(m_transform->m_cpSurfFact, nullptr);
    EXPECT_EQ(site.references, 1U);
    m_transform->SetSite(nullptr);
    EXPECT_EQ(plain.references, 1U);
}

TEST_F(BaseObject, GivesItsSiteBack)
{
    FakeSite site;
    void* place = this;
    EXPECT_EQ(m_transform->GetSite(IID_IUnknown, &place), E_FAIL);
    EXPECT_EQ(place, nullptr);
    EXPECT_EQ(m_transform->GetSite(IID_IUnknown, nullptr), E_POINTER);
    m_transform->SetSite(&site);
    CComPtr<IServiceProvider> back;
    EXPECT_EQ(m_transform->GetSite(IID_IServiceProvider, reinterpret_cast<void**>(&back)), S_OK);
    EXPECT_EQ(back.p, &site);
    EXPECT_EQ(m_transform->GetSite(IID_IDXEffect, &place), E_NOINTERFACE);
    back.Release();
    m_transform->SetSite(nullptr);
}

TEST_F(BaseObject, LosingItsSiteReleasesTheSurfaces)
{
    SetupQuietly();
    EXPECT_EQ(m_transform->SetSite(nullptr), S_OK);
    EXPECT_EQ(m_input->References(), 1);
    EXPECT_EQ(m_output->References(), 1);
    EXPECT_EQ(Execute(), DXTERR_UNINITIALIZED);
}

} // namespace
