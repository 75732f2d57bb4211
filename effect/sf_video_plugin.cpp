#include "effect/sf_video_plugin.h"

#include "binding/session_data.h"
#include "platform/runtime/foreign_call.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <mutex>
#include <tuple>

template <typename Record>
CSFVideoPlugin<Record>::CSFVideoPlugin(Record* presets, HINSTANCE resourceInstance,
                                       std::uint32_t presetNameBase, std::int32_t presetCount,
                                       const CLSID* classId) noexcept
    : m_presets(presets), m_presetNameBase(presetNameBase), m_presetCount(presetCount),
      m_resourceInstance(resourceInstance), m_classId(classId)
{
    if (m_presetCount > 0)
    {
        std::ignore = CSFVideoPlugin::LoadPreset(0); // cannot fail
    }
    else
    {
        std::memset(static_cast<void*>(&m_current), 0, sizeof m_current);
    }
}

// IStaticFilterPreset

template <typename Record>
HRESULT CSFVideoPlugin<Record>::GetPresetCount(ULONG* count) noexcept
{
    *count = static_cast<ULONG>(m_presetCount);
    return S_OK;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::GetPresetName(LONG index, WCHAR* name, ULONG capacity) noexcept
{
    if (index < 0 || index >= m_presetCount)
    {
        return E_INVALIDARG;
    }
    char text[260];
    const UINT id = m_presetNameBase + static_cast<UINT>(index);
    if (::LoadStringA(m_resourceInstance, id, text, static_cast<int>(std::size(text))) > 0)
    {
        // In the current locale, and not terminated when the name fills the capacity: hosts count.
        // Into no buffer nothing is copied.
        std::mbstowcs(name, text, capacity);
        return S_OK;
    }
    if (name != nullptr && capacity > 0)
    {
        name[0] = L'\0';
    }
    return E_FAIL;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::ApplyPreset(LONG index) noexcept
{
    if (index < 0 || index >= m_presetCount)
    {
        return E_INVALIDARG;
    }
    const HRESULT result = LoadPreset(index);
    PostChange();
    CallChangeSink();
    return result;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::LoadPreset(LONG index) noexcept
{
    return CopyProps(&m_current, m_presets + index);
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::ReadProps(IStream* stream, Record* record) noexcept
{
    return ForeignResult([&] { return stream->Read(record, sizeof *record, nullptr); });
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::WriteProps(IStream* stream, Record* record) noexcept
{
    return ForeignResult([&] { return stream->Write(record, sizeof *record, nullptr); });
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::CopyProps(Record* destination, const Record* source) noexcept
{
    // A plain copy also of a record that owns memory: the constructor needs it for the empty
    // preset.
    std::memcpy(static_cast<void*>(destination), static_cast<const void*>(source),
                sizeof *destination);
    return S_OK;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::InterpolateProps(Record* output, Record* from, Record* /*to*/,
                                                 double /*fraction*/) noexcept
{
    return CopyProps(output, from);
}

// ISfVideoPluginExtension

template <typename Record>
HRESULT CSFVideoPlugin<Record>::GetExtensionInfo(void* buffer, ULONG size) noexcept
{
    if (buffer == nullptr)
    {
        return E_POINTER;
    }
    std::memcpy(buffer, &m_extensionInfo, std::min<std::size_t>(size, sizeof m_extensionInfo));
    return S_OK;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::SetExtensionValue(double value) noexcept
{
    m_extensionValue = value > 0.0 ? std::min(value, 1.0) : 0.0; // what is not a number becomes 0
    return S_OK;
}

// IDXTSfAutomation

template <typename Record>
HRESULT CSFVideoPlugin<Record>::SetAutomationActive(ULONG active) noexcept
{
    m_automated = active;
    return S_OK;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::SaveProps(IStream* output) noexcept
{
    const std::lock_guard guard(m_lock);
    return WriteProps(output, &m_current);
}

// Posts but does not call the sink: a host calls this for each keyframe that it visits, and would
// take the sink's call for a change of its own to record.
template <typename Record>
HRESULT CSFVideoPlugin<Record>::LoadProps(IStream* input) noexcept
{
    const std::lock_guard guard(m_lock);
    const HRESULT result = ReadProps(input, &m_current);
    if (FAILED(result))
    {
        std::ignore = LoadPreset(0); // the caller learns of the failed read
    }
    PostChange();
    m_dirty = 1;
    return result;
}

// Works on records of its own, so it needs no lock. A blend keeps the new record's option word,
// which is on, and writing stores it into the blended block: a blend made for the host always has
// the option on.
template <typename Record>
HRESULT CSFVideoPlugin<Record>::InterpolateStreams(IStream* output, IStream* earlier,
                                                   IStream* later, double fraction) noexcept
{
    Record earlierRecord;
    Record laterRecord;
    Record outputRecord;
    HRESULT result = ReadProps(earlier, &earlierRecord);
    if (SUCCEEDED(result))
    {
        result = ReadProps(later, &laterRecord);
    }
    if (SUCCEEDED(result))
    {
        std::ignore = InterpolateProps(&outputRecord, &earlierRecord, &laterRecord, fraction);
        result = WriteProps(output, &outputRecord);
    }
    return result;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::SetKeyframeProps(IStream* earlier, IStream* later) noexcept
{
    const std::lock_guard guard(m_lock);
    HRESULT result = ReadProps(earlier, &m_keyFrom);
    if (SUCCEEDED(result))
    {
        result = ReadProps(later, &m_keyTo);
    }
    if (FAILED(result))
    {
        // The current look stands in for both, so that frames go on with something whole.
        std::ignore = LoadPreset(0);
        std::ignore = CopyProps(&m_keyFrom, &m_current);
        std::ignore = CopyProps(&m_keyTo, &m_current);
    }
    return result;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::SetKeyframeFraction(double fraction) noexcept
{
    m_fraction = fraction;
    return S_OK;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::SetChangeSink(ISfChangeSink* sink) noexcept
{
    CComPtr<ISfChangeSink> old(sink); // released outside the lock: a last release runs host code
    const std::lock_guard guard(m_sinkLock);
    std::swap(m_changeSink.p, old.p);
    return S_OK;
}

// ISfExchangeProps

template <typename Record>
HRESULT CSFVideoPlugin<Record>::GetProps(Record* record) noexcept
{
    if (record == nullptr)
    {
        return E_FAIL;
    }
    const std::lock_guard guard(m_lock);
    return CopyProps(record, &m_current);
}

// Calls the sink but does not post: the page that sets a record knows of it.
template <typename Record>
HRESULT CSFVideoPlugin<Record>::SetProps(Record* record) noexcept
{
    if (record == nullptr)
    {
        return E_FAIL;
    }
    HRESULT result = S_OK;
    {
        const std::lock_guard guard(m_lock);
        result = CopyProps(&m_current, record);
        m_dirty = 1;
    }
    CallChangeSink();
    return result;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::SetNotifyWindow(HWND window, UINT command) noexcept
{
    m_notifyCommand = command;
    m_notifyWnd = window;
    return S_OK;
}

// IPersistStreamInit

template <typename Record>
HRESULT CSFVideoPlugin<Record>::GetClassID(CLSID* classId) noexcept
{
    if (classId == nullptr)
    {
        return E_POINTER;
    }
    *classId = *m_classId;
    return S_OK;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::IsDirty() noexcept
{
    return m_dirty != 0 ? S_OK : S_FALSE;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::Load(IStream* stream) noexcept
{
    HRESULT result = S_OK;
    {
        const std::lock_guard guard(m_lock);
        result = ReadProps(stream, &m_current);
        m_dirty = 1; // even when reading failed: the block may have been replaced
    }
    if (SUCCEEDED(result))
    {
        PostChange();
        CallChangeSink();
    }
    return result;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::Save(IStream* stream, BOOL clearDirty) noexcept
{
    const std::lock_guard guard(m_lock);
    const HRESULT result = WriteProps(stream, &m_current);
    if (SUCCEEDED(result))
    {
        m_dirty = clearDirty != FALSE ? 0 : 1;
        PostChange(); // writing may have refreshed the block, so the page re-reads it
    }
    return result;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::GetSizeMax(ULARGE_INTEGER* size) noexcept
{
    if (size == nullptr)
    {
        return E_INVALIDARG;
    }
    size->QuadPart = kMaxStoredBytes;
    return S_OK;
}

template <typename Record>
HRESULT CSFVideoPlugin<Record>::InitNew() noexcept
{
    std::ignore = LoadPreset(0); // cannot fail
    m_dirty = 1;
    PostChange();
    CallChangeSink();
    return S_OK;
}

// For the effect and the ways to tell of a change

template <typename Record>
void CSFVideoPlugin<Record>::RefreshFrameProps() noexcept
{
    const std::lock_guard guard(m_lock);
    // Blended anew for every frame, also when nothing changed: there is no cache to go stale.
    std::ignore = m_automated != 0 ? InterpolateProps(&m_frame, &m_keyFrom, &m_keyTo, m_fraction)
                                   : CopyProps(&m_frame, &m_current);
}

template <typename Record>
bool CSFVideoPlugin<Record>::MayUse(const Record* record) const noexcept
{
    const Record* const own[] = {&m_current, &m_keyFrom, &m_keyTo, &m_frame};
    return m_lock.IsHeld() || std::ranges::find(own, record) == std::end(own);
}

template <typename Record>
void CSFVideoPlugin<Record>::PostChange() const noexcept
{
    if (const HWND window = m_notifyWnd; window != nullptr)
    {
        ::PostMessageA(window, WM_COMMAND, m_notifyCommand, 0);
    }
}

template <typename Record>
void CSFVideoPlugin<Record>::CallChangeSink() noexcept
{
    CComPtr<ISfChangeSink> sink;
    {
        const std::lock_guard guard(m_sinkLock);
        sink = m_changeSink;
    }
    if (sink != nullptr)
    {
        // What the host makes of it is the host's business.
        TryForeign([&] { return sink->OnPropsChanged(); });
    }
}

template class CSFVideoPlugin<SessionData>;
