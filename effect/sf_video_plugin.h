// The template base of the effect: implements the host's plug-in interfaces over a parameter record
// and owns the records, the lock that guards them and the ways to tell others of a change.
// Tests: tests/effect/automation_test.cpp, persistence_test.cpp, presets_test.cpp.
#pragma once

#include "contract/host_interfaces.h"
#include "platform/atl/atlcom.h"

#include <windows.h>

#include <ocidl.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

// What the host reads of the effect's capabilities; the meaning of the fields is the host's.
struct ExtensionInfo
{
    std::uint32_t version = 0;
    std::uint32_t padding = 0;
    double scale = 0.0;
    std::uint32_t maxInputs = 0;
    std::uint32_t requiredInputs = 0;
    std::uint32_t capabilities = 0;
    std::uint32_t reserved = 0;
};
static_assert(sizeof(ExtensionInfo) == 32);
static_assert(offsetof(ExtensionInfo, scale) == 8 && offsetof(ExtensionInfo, maxInputs) == 16);
static_assert(offsetof(ExtensionInfo, requiredInputs) == 20);
static_assert(offsetof(ExtensionInfo, capabilities) == 24);

// Largest record that is ever written to the host, in bytes.
inline constexpr std::uint32_t kMaxStoredBytes = 0x20000;

// Any thread, unless a member says otherwise. Every interface method is noexcept in effect.
template <typename Record>
class CSFVideoPlugin : public IStaticFilterPreset,
                       public ISfVideoPluginExtension,
                       public IDXTSfAutomation,
                       public ISfExchangeProps<Record>,
                       public IPersistStreamInit
{
public:
    // `presets` (`presetCount` of them) and `classId` must outlive the effect; the presets' names
    // are the string resources from `presetNameBase` on in `resourceInstance`. Applies preset 0
    // with the template's own plain CopyProps: no override is in force yet.
    CSFVideoPlugin(Record* presets, HINSTANCE resourceInstance, std::uint32_t presetNameBase,
                   std::int32_t presetCount, const CLSID* classId) noexcept;
    CSFVideoPlugin(const CSFVideoPlugin&) = delete;
    CSFVideoPlugin& operator=(const CSFVideoPlugin&) = delete;

    // IStaticFilterPreset
    HRESULT STDMETHODCALLTYPE GetPresetCount(ULONG* count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetPresetName(LONG index, WCHAR* name,
                                            ULONG capacity) noexcept override;
    HRESULT STDMETHODCALLTYPE ApplyPreset(LONG index) noexcept override;

    // The record operations. They follow IStaticFilterPreset's methods in its table, in this order:
    // it is the primary base, and these are the first new virtual functions. The bodies here suit a
    // record that is plain data; an effect whose record owns memory overrides all of them. Callers
    // hold m_lock where the record is one of the effect's, but for LoadPreset: see m_current.
    virtual HRESULT STDMETHODCALLTYPE LoadPreset(LONG index) noexcept;
    virtual HRESULT STDMETHODCALLTYPE ReadProps(IStream* stream, Record* record) noexcept;
    virtual HRESULT STDMETHODCALLTYPE WriteProps(IStream* stream, Record* record) noexcept;
    virtual HRESULT STDMETHODCALLTYPE CopyProps(Record* destination, const Record* source) noexcept;
    virtual HRESULT STDMETHODCALLTYPE InterpolateProps(Record* output, Record* from, Record* to,
                                                       double fraction) noexcept;

    // ISfVideoPluginExtension
    HRESULT STDMETHODCALLTYPE GetExtensionInfo(void* buffer, ULONG size) noexcept override;
    HRESULT STDMETHODCALLTYPE SetExtensionValue(double value) noexcept override;

    // IDXTSfAutomation
    HRESULT STDMETHODCALLTYPE SetAutomationActive(ULONG active) noexcept override;
    HRESULT STDMETHODCALLTYPE SaveProps(IStream* output) noexcept override;
    HRESULT STDMETHODCALLTYPE LoadProps(IStream* input) noexcept override;
    HRESULT STDMETHODCALLTYPE InterpolateStreams(IStream* output, IStream* earlier, IStream* later,
                                                 double fraction) noexcept override;
    HRESULT STDMETHODCALLTYPE SetKeyframeProps(IStream* earlier, IStream* later) noexcept override;
    HRESULT STDMETHODCALLTYPE SetKeyframeFraction(double fraction) noexcept override;
    HRESULT STDMETHODCALLTYPE SetChangeSink(ISfChangeSink* sink) noexcept override;

    // ISfExchangeProps; GetPreviewFrame is the effect's
    HRESULT STDMETHODCALLTYPE GetProps(Record* record) noexcept override;
    HRESULT STDMETHODCALLTYPE SetProps(Record* record) noexcept override;
    HRESULT STDMETHODCALLTYPE SetNotifyWindow(HWND window, UINT command) noexcept override;

    // IPersistStreamInit
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* classId) noexcept override;
    HRESULT STDMETHODCALLTYPE IsDirty() noexcept override;
    HRESULT STDMETHODCALLTYPE Load(IStream* stream) noexcept override;
    HRESULT STDMETHODCALLTYPE Save(IStream* stream, BOOL clearDirty) noexcept override;
    HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER* size) noexcept override;
    HRESULT STDMETHODCALLTYPE InitNew() noexcept override;

protected:
    ~CSFVideoPlugin() = default;

    // Makes m_frame the record of the frame about to be rendered: a copy of the current one, or the
    // blend of the keyframe pair while automation is on. Render thread; afterwards that thread
    // reads m_frame without the lock, because frames are processed one at a time.
    void RefreshFrameProps() noexcept;

    // The record is not one of the effect's, or the calling thread holds its lock. For assertions.
    bool MayUse(const Record* record) const noexcept;

    // Posts, never sends, so that nobody else's code runs inside the call.
    void PostChange() const noexcept;
    // Caller does not hold m_lock: the sink may call back into the effect, or wait for a thread
    // that does. The sink stays alive during its call even when it replaces itself.
    void CallChangeSink() noexcept;

    CComAutoCriticalSection m_sinkLock;         // held only while m_changeSink is swapped or copied
    CComPtr<ISfChangeSink> m_changeSink;        // guarded by m_sinkLock
    std::atomic<std::uint32_t> m_automated = 0; // non-zero: render from the keyframe pair
    std::atomic<double> m_fraction = 0.0;       // between m_keyFrom and m_keyTo, not limited
    Record m_keyFrom;                           // guarded by m_lock
    Record m_keyTo;                             // guarded by m_lock
    std::atomic<HWND> m_notifyWnd = nullptr;    // borrowed; null = nobody to post to
    std::atomic<UINT> m_notifyCommand = 0;
    std::atomic<std::uint32_t> m_dirty = 0; // non-zero: changed since it was last saved
    CComAutoCriticalSection m_lock;         // the record lock; recursive
    Record m_current; // guarded by m_lock, but for presets, which are applied without it
    Record m_frame;   // written under m_lock, read by the render thread

    Record* m_presets; // borrowed
    std::uint32_t m_presetNameBase;
    std::int32_t m_presetCount;
    HINSTANCE m_resourceInstance;
    const CLSID* m_classId; // borrowed
    ExtensionInfo m_extensionInfo{.version = 2, .scale = 1.0, .maxInputs = 1, .requiredInputs = 1};
    std::atomic<double> m_extensionValue = 1.0; // 0 to 1, set by the host, read by nobody
};
