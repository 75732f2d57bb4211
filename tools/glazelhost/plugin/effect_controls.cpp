#include "tools/glazelhost/plugin/effect_controls.h"

#include "support/win32/utf8.h"
#include "tools/glazelhost/media/memory_stream.h"
#include "tools/glazelhost/plugin/com_calls.h"

#include <array>
#include <utility>

namespace GlazelHost
{

EffectControls::EffectControls(IUnknown& effect, std::string path)
    : m_path(std::move(path)), m_effect(&effect)
{
}

void EffectControls::Check(HRESULT result, const char* what) const
{
    CheckEffectCall(result, m_path, what);
}

IPersistStreamInit& EffectControls::Stream()
{
    if (!m_stream)
    {
        m_stream = QueryEffect<IPersistStreamInit>(*m_effect, IID_IPersistStreamInit,
                                                   "IPersistStreamInit", m_path);
    }
    return *m_stream;
}

IDXTSfAutomation& EffectControls::Automation()
{
    if (!m_automation)
    {
        m_automation = QueryEffect<IDXTSfAutomation>(*m_effect, IID_IDXTSfAutomation,
                                                     "IDXTSfAutomation", m_path);
    }
    return *m_automation;
}

IStaticFilterPreset& EffectControls::Presets()
{
    if (!m_presets)
    {
        m_presets = QueryEffect<IStaticFilterPreset>(*m_effect, IID_IStaticFilterPreset,
                                                     "IStaticFilterPreset", m_path);
    }
    return *m_presets;
}

CLSID EffectControls::ClassId()
{
    CLSID classId{};
    Check(Stream().GetClassID(&classId), "the effect did not tell its class");
    return classId;
}

std::vector<std::byte> EffectControls::StoredLook()
{
    const CComPtr<CMemoryStream> stream = StreamOf();
    Check(Automation().SaveProps(stream), "the effect did not give its look");
    return stream->Bytes();
}

std::uint64_t EffectControls::LargestStored()
{
    ULARGE_INTEGER size{};
    Check(Stream().GetSizeMax(&size), "the effect did not say how much it stores");
    return size.QuadPart;
}

void EffectControls::LoadLook(std::span<const std::byte> record)
{
    Check(Stream().Load(StreamOf(record)), "the effect did not take the look");
}

void EffectControls::SetAutomation(bool active)
{
    Check(Automation().SetAutomationActive(active ? 1U : 0U), "the effect refused keyframes");
}

void EffectControls::SetKeyframes(IStream& earlier, IStream& later)
{
    Check(Automation().SetKeyframeProps(&earlier, &later), "the effect refused a keyframe");
}

void EffectControls::SetFraction(double fraction)
{
    Check(Automation().SetKeyframeFraction(fraction), "the effect refused a keyframe's fraction");
}

std::vector<std::byte> EffectControls::Blend(std::span<const std::byte> earlier,
                                             std::span<const std::byte> later, double fraction)
{
    const CComPtr<CMemoryStream> blend = StreamOf();
    const CComPtr<CMemoryStream> from = StreamOf(earlier);
    const CComPtr<CMemoryStream> to = StreamOf(later);
    Check(Automation().InterpolateStreams(blend, from, to, fraction),
          "the effect did not blend the looks");
    return blend->Bytes();
}

void EffectControls::SetChangeSink(ISfChangeSink* sink)
{
    Check(Automation().SetChangeSink(sink), "the effect refused to tell of changes");
}

std::vector<std::string> EffectControls::PresetNames()
{
    constexpr std::size_t kLongestName = 259;
    ULONG count = 0;
    Check(Presets().GetPresetCount(&count), "the effect did not count its presets");
    std::vector<std::string> names;
    for (ULONG index = 0; index < count; ++index)
    {
        std::array<WCHAR, kLongestName + 1> name{}; // a name that fills its room is not terminated
        Check(Presets().GetPresetName(static_cast<LONG>(index), name.data(), kLongestName),
              "the effect did not name a preset");
        names.push_back(Utf8(name.data()));
    }
    return names;
}

void EffectControls::ApplyPreset(std::size_t index)
{
    Check(Presets().ApplyPreset(static_cast<LONG>(index)), "the effect did not apply the preset");
}

} // namespace GlazelHost
