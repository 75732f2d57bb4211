// A transform whose hooks a test scripts and whose members it can see.
#pragma once

#include "platform/dxtransform/dxbasento1.h"
#include "tests/doubles/fake_surface.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

class OpenTransform : public CDXBaseNTo1
{
public:
    using CDXBaseNTo1::ClearDirty;
    using CDXBaseNTo1::InputSurface;
    using CDXBaseNTo1::IsTransformDirty;
    using CDXBaseNTo1::m_cpSurfFact;
    using CDXBaseNTo1::m_Duration;
    using CDXBaseNTo1::m_dwCleanGenId;
    using CDXBaseNTo1::m_dwGenerationId;
    using CDXBaseNTo1::m_dwMiscFlags;
    using CDXBaseNTo1::m_dwOptionFlags;
    using CDXBaseNTo1::m_fQuality;
    using CDXBaseNTo1::m_Progress;
    using CDXBaseNTo1::m_StepResolution;
    using CDXBaseNTo1::m_ulMaxInputs;
    using CDXBaseNTo1::m_ulNumInRequired;
    using CDXBaseNTo1::OutputSurface;
    using CDXBaseNTo1::SetDirty;

    // What each hook is to do; those left empty do what the base class does (WorkProc: S_OK).
    std::function<HRESULT(DWORD)> onSetup;
    std::function<HRESULT(const CDXTWorkInfoNTo1&, BOOL*)> workProc;
    bool useBaseWorkProc = false;
    CallLog* log = nullptr;

protected:
    HRESULT OnSetup(DWORD flags) override
    {
        Note("OnSetup");
        return onSetup ? onSetup(flags) : CDXBaseNTo1::OnSetup(flags);
    }
    HRESULT WorkProc(const CDXTWorkInfoNTo1& work, BOOL* continueProcessing) override
    {
        Note("WorkProc");
        return workProc          ? workProc(work, continueProcessing)
               : useBaseWorkProc ? CDXBaseNTo1::WorkProc(work, continueProcessing)
                                 : S_OK;
    }

private:
    void Note(const char* hook)
    {
        if (log != nullptr)
        {
            log->Add(hook);
        }
    }
};

using Surface = CComPtr<FakeSurface>;
using Calls = std::vector<std::string>;

inline IUnknown* UnknownOf(FakeSurface* surface)
{
    return static_cast<IDXSurface*>(surface);
}

// A transform and two surfaces of 4 x 3 samples, at first not set up. Afterwards no surface may be
// left alive.
class TransformTest : public ::testing::Test
{
protected:
    TransformTest()
    {
        CComObject<OpenTransform>* object = nullptr;
        CComObject<OpenTransform>::CreateInstance(&object);
        m_transform = object;
        m_transform->log = &m_hooks;
    }
    ~TransformTest() override
    {
        m_transform.Release();
        m_input.Release();
        m_output.Release();
        EXPECT_EQ(FakeSurface::LiveSurfaces(), 0);
    }
    TransformTest(const TransformTest&) = delete;
    TransformTest& operator=(const TransformTest&) = delete;

    // With these surfaces, where null stands for no input or an empty slot.
    HRESULT SetupWith(const std::vector<FakeSurface*>& inputs, FakeSurface* output)
    {
        std::vector<IUnknown*> unknowns;
        for (FakeSurface* const input : inputs)
        {
            unknowns.push_back(input != nullptr ? UnknownOf(input) : nullptr);
        }
        IUnknown* const outputs[] = {UnknownOf(output)};
        return m_transform->Setup(unknowns.data(), static_cast<ULONG>(unknowns.size()), outputs, 1,
                                  0);
    }
    HRESULT SetupBoth() { return SetupWith({m_input}, m_output); }
    HRESULT Execute() { return m_transform->Execute(nullptr, nullptr, nullptr); }
    // Set up and clean, with nothing noted.
    void SetupQuietly()
    {
        ASSERT_EQ(SetupBoth(), S_OK);
        m_hooks.Clear();
    }

    CallLog m_hooks;
    CComPtr<CComObject<OpenTransform>> m_transform;
    Surface m_input = FakeSurface::Make();
    Surface m_output = FakeSurface::Make();
};
