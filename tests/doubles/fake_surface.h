// A surface in memory that notes what is done to it and fails where a test wants it to.
#pragma once

#include "contract/host_interfaces.h"
#include "platform/atl/atlbase.h"
#include "platform/atl/atlcomcli.h"
#include "platform/dxtransform/dxtrans.h"
#include "tests/doubles/foreign_exception.h"

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

// What was done to any of several surfaces, in order: "input.LockSurface", "input.Unlock". Shared
// by the surfaces of one test. Any thread.
class CallLog
{
public:
    void Add(const std::string& call);
    std::vector<std::string> Calls() const;
    // The same without queries for a format, bounds, ids or information.
    std::vector<std::string> LockCalls() const;
    void Clear();

private:
    mutable CComAutoCriticalSection m_lock;
    std::vector<std::string> m_calls;
};

struct FakeSurfaceSettings
{
    std::string name = "surface";
    LONG width = 4;
    LONG height = 3;
    DXSAMPLEFORMATENUM format = DXPF_ARGB32; // DXPF_NONSTANDARD: four floats, 16 bytes a sample
    bool bottomUp = false;                   // stored last row first: a negative pitch
    LONG rowPadding = 0;                     // bytes between the rows
    bool tellsLayer = true;                  // false: of z and t its bounds say 0 to 0
    bool hasMemory = true;                   // false: the native type says nothing
    CallLog* log = nullptr;                  // null: nothing is noted and nothing allocated for it
    std::optional<FrameInformation> frame = {}; // none: the surface lacks that interface
};

// Counts references like any COM object: hold it in a CComPtr<FakeSurface>. Any thread, but for the
// members that tests read and set while nobody else is at work.
class FakeSurface : public IDXSurface
{
public:
    static CComPtr<FakeSurface> Make(FakeSurfaceSettings settings = {});
    FakeSurface(const FakeSurface&) = delete;
    FakeSurface& operator=(const FakeSurface&) = delete;

    // The `nth` call from now on of a method ("LockSurface", "GetBounds", ...) fails with `result`.
    void FailCall(const std::string& method, HRESULT result, int nth = 1);
    // The same with an exception. Methods of the locks can do that too: "UnpackRect", "PackRect",
    // "GetNativeType" and "ReleaseLock".
    void ThrowFrom(const std::string& method, Throws what, int nth = 1);
    std::size_t FailuresLeft() const noexcept { return m_failures.size(); } // not yet due

    // First byte of a row, counted from the top of the picture.
    std::uint8_t* Row(LONG y) noexcept;
    std::size_t SampleBytes() const noexcept { return m_sampleBytes; }
    LONG Pitch() const noexcept { return m_settings.bottomUp ? -m_rowBytes : m_rowBytes; }
    const FakeSurfaceSettings& Settings() const noexcept { return m_settings; }
    // One sample as straight 8-bit ARGB, whatever the format.
    DXSAMPLE Sample(LONG x, LONG y) noexcept;
    void SetSample(LONG x, LONG y, DXSAMPLE sample) noexcept;
    void Fill(DXSAMPLE sample) noexcept;
    // Something changed the picture from outside.
    void Touch() noexcept { ++generationId; }

    struct LockNote
    {
        std::optional<DXBNDS> bounds; // none: the whole surface was asked for
        ULONG timeOutMs;
        DWORD flags;
        IID iid;
    };
    std::vector<LockNote> lockNotes;        // while there is a log
    std::vector<DXPACKEDRECTDESC> unpacked; // the descriptors of UnpackRect, while there is a log
    std::vector<DXPACKEDRECTDESC> packed;   // and of PackRect
    std::vector<ULONG> informationSizes;    // that GetFrameInformation was given, likewise
    HRESULT informationQueryResult = S_OK;  // of QueryInterface for the frame information
    std::function<void(const std::string& method)> onCall; // at each call that the log gets
    std::function<bool(const char* method)> fails; // asked at each call with a result; with E_FAIL
    std::function<void()> onGone;                  // when the last reference is given back
    LONG openReadLocks = 0;
    LONG openWriteLocks = 0;
    ULONG generationId = 1;

    LONG References() const noexcept { return m_references; }
    // Of all surfaces in the process.
    static LONG LiveSurfaces() noexcept;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // IDXBaseObject
    HRESULT STDMETHODCALLTYPE GetGenerationId(ULONG* id) override;
    HRESULT STDMETHODCALLTYPE IncrementGenerationId(BOOL refresh) override;
    HRESULT STDMETHODCALLTYPE GetObjectSize(ULONG* size) override;

    // IDXSurface. One writer or any number of readers; a lock that would have to wait times out at
    // once. Only the read or the read/write pointer that fits the flags is handed out.
    HRESULT STDMETHODCALLTYPE GetPixelFormat(GUID* formatId, DXSAMPLEFORMATENUM* format) override;
    HRESULT STDMETHODCALLTYPE GetBounds(DXBNDS* bounds) override;
    HRESULT STDMETHODCALLTYPE GetStatusFlags(DWORD* flags) override;
    HRESULT STDMETHODCALLTYPE SetStatusFlags(DWORD flags) override;
    HRESULT STDMETHODCALLTYPE LockSurface(const DXBNDS* bounds, ULONG timeOutMs, DWORD flags,
                                          REFIID riid, void** pointer, ULONG* lockId) override;
    HRESULT STDMETHODCALLTYPE GetDirectDrawSurface(REFIID riid, void** surface) override;
    HRESULT STDMETHODCALLTYPE GetColorKey(DXSAMPLE* key) override;
    HRESULT STDMETHODCALLTYPE SetColorKey(DXSAMPLE key) override;
    HRESULT STDMETHODCALLTYPE LockSurfaceDC(const DXBNDS* bounds, ULONG timeOutMs, DWORD flags,
                                            IDXDCLock** lock) override;
    HRESULT STDMETHODCALLTYPE SetAppData(DWORD_PTR data) override;
    HRESULT STDMETHODCALLTYPE GetAppData(DWORD_PTR* data) override;

    // For the lock objects.
    void Note(const char* method);
    HRESULT Due(const char* method); // gives or throws what is due

private:
    // The surface's frame information. References to it are counted apart, so that its last
    // release can be noted: as "GetFrameInformation.Release".
    class Information : public ISfFrameInformation
    {
    public:
        explicit Information(FakeSurface& surface) noexcept : m_surface(surface) {}

        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
        ULONG STDMETHODCALLTYPE AddRef() override;
        ULONG STDMETHODCALLTYPE Release() override;
        HRESULT STDMETHODCALLTYPE GetFrameInformation(FrameInformation* information,
                                                      ULONG size) override;

    private:
        FakeSurface& m_surface;
        LONG m_references = 0;
    };

    explicit FakeSurface(FakeSurfaceSettings settings);
    virtual ~FakeSurface();
    HRESULT Enter(const char* method); // notes the call too

    struct Failure
    {
        int callsToGo;
        HRESULT result;
        Throws throws;
    };

    Failure TakeFailure(const char* method);

    FakeSurfaceSettings m_settings;
    std::size_t m_sampleBytes;
    LONG m_rowBytes;
    std::vector<std::uint8_t> m_memory;
    std::map<std::string, Failure> m_failures;
    LONG m_references = 0;
    Information m_information{*this};
    CComAutoCriticalSection m_lock; // guards the notes and the open locks
};
