// Setup: which calls are accepted, what they leave behind, and when a transform gets ready again.
#include "tests/platform/dxtransform/open_transform.h"

#include <functional>
#include <new>

namespace
{

using SetupTest = TransformTest;

TEST_F(SetupTest, HoldsItsSurfacesAndIsCleanAfterwards)
{
    EXPECT_EQ(SetupBoth(), S_OK);
    EXPECT_EQ(m_transform->InputSurface(), m_input.p);
    EXPECT_EQ(m_transform->OutputSurface(), m_output.p);
    EXPECT_FALSE(m_transform->IsTransformDirty());
    EXPECT_EQ(m_transform->m_dwGenerationId, 2U);
    EXPECT_EQ(m_hooks.Calls(), Calls{"OnSetup"});
}

TEST_F(SetupTest, RefusesReservedFlags)
{
    IUnknown* const input = UnknownOf(m_input);
    IUnknown* const output = UnknownOf(m_output);
    EXPECT_EQ(m_transform->Setup(&input, 1, &output, 1, 1), E_INVALIDARG);
    EXPECT_EQ(m_transform->Setup(nullptr, 0, nullptr, 0, 1), E_INVALIDARG);
}

TEST_F(SetupTest, RefusesWrongCountsAndMissingObjects)
{
    IUnknown* const inputs[] = {UnknownOf(m_input), UnknownOf(m_input)};
    IUnknown* const outputs[] = {UnknownOf(m_output), UnknownOf(m_output)};
    IUnknown* const none = nullptr;
    EXPECT_EQ(m_transform->Setup(inputs, 1, outputs, 0, 0), E_INVALIDARG);
    EXPECT_EQ(m_transform->Setup(inputs, 1, outputs, 2, 0), E_INVALIDARG);
    EXPECT_EQ(m_transform->Setup(inputs, 1, nullptr, 1, 0), E_INVALIDARG);
    EXPECT_EQ(m_transform->Setup(inputs, 1, &none, 1, 0), E_INVALIDARG);
    EXPECT_EQ(m_transform->Setup(inputs, 0, outputs, 1, 0), E_INVALIDARG);
    EXPECT_EQ(m_transform->Setup(inputs, 2, outputs, 1, 0), E_INVALIDARG);
    EXPECT_EQ(m_transform->Setup(nullptr, 1, outputs, 1, 0), E_INVALIDARG);
    EXPECT_EQ(m_transform->Setup(&none, 1, outputs, 1, 0), E_INVALIDARG);
    EXPECT_TRUE(m_hooks.Calls().empty());
}

TEST_F(SetupTest, ARejectedCallKeepsThePreviousSetup)
{
    SetupQuietly();
    const auto other = FakeSurface::Make();
    EXPECT_EQ(SetupWith({other, other}, other), E_INVALIDARG);
    EXPECT_EQ(m_transform->InputSurface(), m_input.p);
    EXPECT_EQ(m_transform->OutputSurface(), m_output.p);
    EXPECT_EQ(other->References(), 1);
    EXPECT_FALSE(m_transform->IsTransformDirty());
    EXPECT_EQ(Execute(), S_OK);
}

TEST_F(SetupTest, WithNothingClearsTheTransform)
{
    SetupQuietly();
    EXPECT_EQ(m_transform->Setup(nullptr, 0, nullptr, 0, 0), S_OK);
    EXPECT_EQ(m_input->References(), 1);
    EXPECT_EQ(m_output->References(), 1);
    EXPECT_EQ(m_transform->InputSurface(), nullptr);
    EXPECT_EQ(Execute(), DXTERR_UNINITIALIZED);
}

TEST_F(SetupTest, AcceptsAnEmptySlotForAnOptionalInput)
{
    m_transform->m_ulMaxInputs = 3;
    EXPECT_EQ(SetupWith({m_input, nullptr, m_input}, m_output), S_OK);
    EXPECT_EQ(m_transform->InputSurface(1), nullptr);
    EXPECT_EQ(m_transform->InputSurface(2), m_input.p);
    EXPECT_EQ(m_transform->InputSurface(3), nullptr);
}

TEST_F(SetupTest, ATransformWithoutRequiredInputsNeedsAnOutputOnly)
{
    m_transform->m_ulNumInRequired = 0;
    EXPECT_EQ(SetupWith({}, m_output), S_OK);
    EXPECT_EQ(m_transform->InputSurface(), nullptr);
    EXPECT_EQ(Execute(), S_OK);
}

TEST_F(SetupTest, AFailingOnSetupLeavesNothingSetUp)
{
    SetupQuietly();
    m_transform->onSetup = [](DWORD) { return E_ACCESSDENIED; };
    EXPECT_EQ(SetupBoth(), E_ACCESSDENIED);
    EXPECT_EQ(m_input->References(), 1);
    EXPECT_EQ(m_output->References(), 1);
    EXPECT_TRUE(m_transform->IsTransformDirty());
    EXPECT_EQ(Execute(), DXTERR_UNINITIALIZED);
}

TEST_F(SetupTest, AnExceptionOfOnSetupBecomesAResult)
{
    m_transform->onSetup = [](DWORD) -> HRESULT { throw std::bad_alloc(); };
    EXPECT_EQ(SetupBoth(), E_OUTOFMEMORY);
    m_transform->onSetup = [](DWORD) -> HRESULT { throw 1; };
    EXPECT_EQ(SetupBoth(), E_UNEXPECTED);
    EXPECT_EQ(Execute(), DXTERR_UNINITIALIZED);
}

TEST_F(SetupTest, OnSetupSeesTheNewSurfaces)
{
    IDXSurface* seen = nullptr;
    m_transform->onSetup = [&](DWORD flags) {
        EXPECT_EQ(flags, 0U);
        seen = m_transform->InputSurface();
        return S_OK;
    };
    EXPECT_EQ(SetupBoth(), S_OK);
    EXPECT_EQ(seen, m_input.p);
}

TEST_F(SetupTest, WhatOnSetupWritesToTheOutputIsNoChange)
{
    m_transform->onSetup = [this](DWORD) {
        m_output->Touch();
        return S_OK;
    };
    SetupQuietly();
    ULONG id = 0;
    EXPECT_EQ(m_transform->GetGenerationId(&id), S_OK);
    EXPECT_FALSE(m_transform->IsTransformDirty());
}

// Knows only IUnknown.
class Stranger : public IUnknown
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** ppv) override
    {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
};

// Wraps any object in the surface that it was given, or fails.
class WrappingFactory : public IDXSurfaceFactory
{
public:
    explicit WrappingFactory(FakeSurface* surface) : m_surface(surface) {}
    // clang-format off
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE CreateSurface(IUnknown*, const DDSURFACEDESC*, const GUID*, const DXBNDS*, DWORD, IUnknown*, REFIID, void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LoadImage(const LPWSTR, IUnknown*, const DDSURFACEDESC*, const GUID*, REFIID, void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LoadImageFromStream(IStream*, IUnknown*, const DDSURFACEDESC*, const GUID*, REFIID, void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopySurfaceToNewFormat(IDXSurface*, IUnknown*, const DDSURFACEDESC*, const GUID*, IDXSurface**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CreateD3DRMTexture(IDXSurface*, IUnknown*, IUnknown*, REFIID, void**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE BitBlt(IDXSurface*, const DXVEC*, IDXSurface*, const DXBNDS*, DWORD) override { return E_NOTIMPL; }
    // clang-format on
    HRESULT STDMETHODCALLTYPE CreateFromDDSurface(IUnknown* object, const GUID*, DWORD, IUnknown*,
                                                  REFIID riid, void** ppv) override
    {
        wrapped = object;
        *ppv = nullptr;
        if (onCreate)
        {
            onCreate();
        }
        return SUCCEEDED(result) ? m_surface->QueryInterface(riid, ppv) : result;
    }

    IUnknown* wrapped = nullptr;
    HRESULT result = S_OK;
    std::function<void()> onCreate;
    ULONG references = 0;

private:
    Surface m_surface;
};

TEST_F(SetupTest, WrapsAnObjectThatIsNoSurfaceWhereThereIsAFactory)
{
    Stranger stranger;
    IUnknown* const input = &stranger;
    IUnknown* const output = UnknownOf(m_output);
    EXPECT_EQ(m_transform->Setup(&input, 1, &output, 1, 0), E_INVALIDARG);
    WrappingFactory factory(m_input);
    m_transform->m_cpSurfFact = &factory;
    EXPECT_EQ(m_transform->Setup(&input, 1, &output, 1, 0), S_OK);
    EXPECT_EQ(factory.wrapped, &stranger);
    EXPECT_EQ(m_transform->InputSurface(), m_input.p);
    factory.result = DXTERR_UNSUPPORTED_FORMAT;
    EXPECT_EQ(m_transform->Setup(&input, 1, &output, 1, 0), DXTERR_UNSUPPORTED_FORMAT);
    EXPECT_EQ(m_transform->InputSurface(), m_input.p);
    m_transform->m_cpSurfFact.Release();
}

TEST_F(SetupTest, AFactoryThatIsLetGoWhileItWorksLivesUntilItReturns)
{
    Stranger stranger;
    IUnknown* const input = &stranger;
    IUnknown* const output = UnknownOf(m_output);
    WrappingFactory factory(m_input);
    m_transform->m_cpSurfFact = &factory;
    ULONG left = 0;
    factory.onCreate = [&] {
        m_transform->m_cpSurfFact.Release(); // as another site does
        left = factory.references;
    };
    EXPECT_EQ(m_transform->Setup(&input, 1, &output, 1, 0), S_OK);
    EXPECT_EQ(left, 1U);
    EXPECT_EQ(factory.references, 0U);
}

// A surface that fails a query, and leaves in the place what is not the caller's.
class Misleading : public Stranger
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** ppv) override
    {
        *ppv = this;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE Release() override { return ++releases; }

    ULONG releases = 0;
};

TEST_F(SetupTest, WhatAFailedQueryLeavesIsNotReleased)
{
    Misleading misleading;
    IUnknown* const input = &misleading;
    IUnknown* const output = UnknownOf(m_output);
    EXPECT_EQ(m_transform->Setup(&input, 1, &output, 1, 0), E_INVALIDARG);
    EXPECT_EQ(misleading.releases, 0U);
}

TEST_F(SetupTest, OneThatIsClearedWhileTheOldSurfacesGoIsNotPrepared)
{
    auto old = FakeSurface::Make();
    old->onGone = [this] { EXPECT_EQ(m_transform->Setup(nullptr, 0, nullptr, 0, 0), S_OK); };
    ASSERT_EQ(SetupWith({old}, m_output), S_OK);
    old.Release();
    m_hooks.Clear();
    EXPECT_EQ(SetupBoth(), S_OK);
    EXPECT_TRUE(m_hooks.Calls().empty()) << "no OnSetup without surfaces";
    EXPECT_EQ(Execute(), DXTERR_UNINITIALIZED);
}

// Changes of the surfaces.

ULONG IdOf(OpenTransform* transform)
{
    ULONG id = 0;
    EXPECT_EQ(transform->GetGenerationId(&id), S_OK);
    return id;
}

TEST_F(SetupTest, AChangedSurfaceIsAChangeOfTheTransform)
{
    SetupQuietly();
    const ULONG before = IdOf(m_transform);
    EXPECT_EQ(IdOf(m_transform), before);
    m_input->Touch();
    EXPECT_EQ(IdOf(m_transform), before + 1);
    EXPECT_EQ(IdOf(m_transform), before + 1);
    m_output->Touch();
    EXPECT_EQ(IdOf(m_transform), before + 2);
    EXPECT_TRUE(m_transform->IsTransformDirty());
    EXPECT_EQ(m_transform->GetGenerationId(nullptr), E_POINTER);
}

TEST_F(SetupTest, RaisingTheGenerationIdOnlyRaisesIt)
{
    SetupQuietly();
    const ULONG before = IdOf(m_transform);
    EXPECT_EQ(m_transform->IncrementGenerationId(FALSE), S_OK);
    EXPECT_EQ(IdOf(m_transform), before + 1);
    EXPECT_TRUE(m_hooks.Calls().empty());
}

TEST_F(SetupTest, RefreshingGetsReadyAgainOnTheSameSurfaces)
{
    EXPECT_EQ(m_transform->IncrementGenerationId(TRUE), S_OK); // not set up: nothing to refresh
    EXPECT_TRUE(m_hooks.Calls().empty());
    SetupQuietly();
    const ULONG before = IdOf(m_transform);
    EXPECT_EQ(m_transform->IncrementGenerationId(TRUE), S_OK);
    EXPECT_EQ(m_hooks.Calls(), Calls{"OnSetup"});
    EXPECT_EQ(IdOf(m_transform), before + 1);
    EXPECT_FALSE(m_transform->IsTransformDirty());
    EXPECT_EQ(m_transform->InputSurface(), m_input.p);
}

} // namespace
