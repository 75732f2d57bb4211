// The lock object of a fake surface: ends the lock with its last reference.
#pragma once

#include "tests/doubles/fake_surface.h"

class FakeSamples : public IDXARGBReadWritePtr
{
public:
    // The lock is already counted in `surface`; `area` is inside it.
    FakeSamples(FakeSurface* surface, const RECT& area, bool writable);
    FakeSamples(const FakeSamples&) = delete;
    FakeSamples& operator=(const FakeSamples&) = delete;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() override;

    // IDXARGBReadPtr
    HRESULT STDMETHODCALLTYPE GetSurface(REFIID riid, void** surface) noexcept override;
    DXSAMPLEFORMATENUM STDMETHODCALLTYPE GetNativeType(DXNATIVETYPEINFO* info) override;
    void STDMETHODCALLTYPE Move(LONG samples) noexcept override;
    void STDMETHODCALLTYPE MoveToRow(ULONG y) noexcept override;
    void STDMETHODCALLTYPE MoveToXY(ULONG x, ULONG y) noexcept override;
    ULONG STDMETHODCALLTYPE MoveAndGetRunInfo(ULONG row, const DXRUNINFO** info) noexcept override;
    DXSAMPLE* STDMETHODCALLTYPE Unpack(DXSAMPLE* samples, ULONG count, BOOL move) noexcept override;
    DXPMSAMPLE* STDMETHODCALLTYPE UnpackPremult(DXPMSAMPLE* samples, ULONG count,
                                                BOOL move) noexcept override;
    void STDMETHODCALLTYPE UnpackRect(const DXPACKEDRECTDESC* desc) override;

    // IDXARGBReadWritePtr. Copying, filling and blending are not needed by anybody and do nothing.
    void STDMETHODCALLTYPE PackAndMove(const DXSAMPLE* samples, ULONG count) noexcept override;
    void STDMETHODCALLTYPE PackPremultAndMove(const DXPMSAMPLE* samples,
                                              ULONG count) noexcept override;
    void STDMETHODCALLTYPE PackRect(const DXPACKEDRECTDESC* desc) override;
    void STDMETHODCALLTYPE CopyAndMoveBoth(DXBASESAMPLE*, IDXARGBReadPtr*, ULONG,
                                           BOOL) noexcept override
    {
    }
    void STDMETHODCALLTYPE CopyRect(DXBASESAMPLE*, const RECT*, IDXARGBReadPtr*, const POINT*,
                                    BOOL) noexcept override
    {
    }
    void STDMETHODCALLTYPE FillAndMove(DXBASESAMPLE*, DXPMSAMPLE, ULONG, BOOL) noexcept override {}
    void STDMETHODCALLTYPE FillRect(const RECT*, DXPMSAMPLE, BOOL) noexcept override {}
    void STDMETHODCALLTYPE OverSample(const DXOVERSAMPLEDESC*) noexcept override {}
    void STDMETHODCALLTYPE OverArrayAndMove(DXBASESAMPLE*, const DXPMSAMPLE*,
                                            ULONG) noexcept override
    {
    }

private:
    virtual ~FakeSamples();

    CComPtr<FakeSurface> m_surface;
    RECT m_area;
    bool m_writable;
    POINT m_position{}; // relative to the area
    DXRUNINFO m_run{};
    LONG m_references = 0;
};

// Straight to premultiplied and back, rounded to nearest.
DXPMSAMPLE Premultiplied(DXSAMPLE sample) noexcept;
DXSAMPLE Straight(DXPMSAMPLE sample) noexcept;
