// The object behind a lock: an effect reads and writes the locked area through it, and the lock
// ends with its last reference. Tests: tests/tools/glazelhost/surface/sample_pointer_test.cpp.
#pragma once

#include "tools/glazelhost/surface/host_surface.h"
#include "tools/glazelhost/surface/sample_cursor.h"

namespace GlazelHost
{

// What effects call the format.
DXSAMPLEFORMATENUM FormatNumber(SurfaceFormat format) noexcept;

// Starts with one reference and keeps the surface alive. Under a read lock it answers only the
// reading interface. One thread at a time.
class CSamplePointer final : public IDXARGBReadWritePtr
{
public:
    // The caller has entered the area; the destructor leaves it.
    CSamplePointer(CHostSurface& surface, const Area& area, bool forWriting) noexcept;
    CSamplePointer(const CSamplePointer&) = delete;
    CSamplePointer& operator=(const CSamplePointer&) = delete;

    // Every frame takes a lock or two: the memory of the last ones serves the next. Null when there
    // is none.
    static void* operator new(std::size_t size) noexcept;
    static void operator delete(void* block) noexcept;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    // IDXARGBReadPtr
    HRESULT STDMETHODCALLTYPE GetSurface(REFIID riid, void** surface) noexcept override;
    DXSAMPLEFORMATENUM STDMETHODCALLTYPE GetNativeType(DXNATIVETYPEINFO* info) noexcept override;
    void STDMETHODCALLTYPE Move(LONG samples) noexcept override;
    void STDMETHODCALLTYPE MoveToRow(ULONG y) noexcept override;
    void STDMETHODCALLTYPE MoveToXY(ULONG x, ULONG y) noexcept override;
    ULONG STDMETHODCALLTYPE MoveAndGetRunInfo(ULONG row, const DXRUNINFO** info) noexcept override;
    DXSAMPLE* STDMETHODCALLTYPE Unpack(DXSAMPLE* samples, ULONG count, BOOL move) noexcept override;
    DXPMSAMPLE* STDMETHODCALLTYPE UnpackPremult(DXPMSAMPLE* samples, ULONG count,
                                                BOOL move) noexcept override;
    void STDMETHODCALLTYPE UnpackRect(const DXPACKEDRECTDESC* rect) noexcept override;

    // IDXARGBReadWritePtr
    void STDMETHODCALLTYPE PackAndMove(const DXSAMPLE* samples, ULONG count) noexcept override;
    void STDMETHODCALLTYPE PackPremultAndMove(const DXPMSAMPLE* samples,
                                              ULONG count) noexcept override;
    void STDMETHODCALLTYPE PackRect(const DXPACKEDRECTDESC* rect) noexcept override;
    // The scratch buffers of these methods may be null: none is used.
    void STDMETHODCALLTYPE CopyAndMoveBoth(DXBASESAMPLE* scratch, IDXARGBReadPtr* source,
                                           ULONG count, BOOL isOpaque) noexcept override;
    void STDMETHODCALLTYPE CopyRect(DXBASESAMPLE* scratch, const RECT* destination,
                                    IDXARGBReadPtr* source, const POINT* sourceOrigin,
                                    BOOL isOpaque) noexcept override;
    void STDMETHODCALLTYPE FillAndMove(DXBASESAMPLE* scratch, DXPMSAMPLE value, ULONG count,
                                       BOOL over) noexcept override;
    void STDMETHODCALLTYPE FillRect(const RECT* rect, DXPMSAMPLE value,
                                    BOOL over) noexcept override;
    void STDMETHODCALLTYPE OverSample(const DXOVERSAMPLEDESC* over) noexcept override;
    void STDMETHODCALLTYPE OverArrayAndMove(DXBASESAMPLE* scratch, const DXPMSAMPLE* samples,
                                            ULONG count) noexcept override;

private:
    ~CSamplePointer();
    // Copies `count` samples from the source's position to this one's, moving both.
    void CopyRun(IDXARGBReadPtr& source, ULONG count) noexcept;
    // `wantPremultiplied` samples into `buffer`, or, when that is null and the format is exactly
    // the wanted one, the surface's own memory.
    void* ReadRun(void* buffer, ULONG count, bool wantPremultiplied, bool move) noexcept;
    void WriteRun(const void* samples, ULONG count, bool premultiplied) noexcept;

    std::atomic<ULONG> m_references{1};
    CHostSurface& m_surface; // holds a reference
    bool m_forWriting;
    SampleCursor m_cursor;
    DXRUNINFO m_wholeRow{}; // what MoveAndGetRunInfo hands out
};

} // namespace GlazelHost
