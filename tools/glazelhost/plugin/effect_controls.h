// What a host tells an effect besides frames: its look, its keyframes and its presets, through the
// interfaces that the effect has for them.
// Tests: tests/tools/glazelhost/plugin/effect_controls_test.cpp.
#pragma once

#include "contract/host_interfaces.h"
#include "platform/atl/atlcomcli.h"

#include <windows.h>

#include <ocidl.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace GlazelHost
{

// On the thread that renders with the effect. Every call throws HostError when the effect lacks the
// interface, fails, or wants to show a message box.
class EffectControls
{
public:
    // `path` is the plug-in's, for the lines of errors.
    EffectControls(IUnknown& effect, std::string path);
    EffectControls(const EffectControls&) = delete;
    EffectControls& operator=(const EffectControls&) = delete;

    const std::string& Path() const noexcept { return m_path; }
    CLSID ClassId();

    // The current look as the effect stores it. Empty when there is none, and also when it is
    // larger than LargestStored: the effect then stores nothing and says so to nobody.
    std::vector<std::byte> StoredLook();
    std::uint64_t LargestStored(); // bytes
    // The stored form of a look is its record's bytes; an empty one changes nothing.
    void LoadLook(std::span<const std::byte> record);

    // While automation is on, frames show the keyframe pair at the fraction, else the current look.
    // The streams stand at their beginnings and hold one record each.
    void SetAutomation(bool active);
    void SetKeyframes(IStream& earlier, IStream& later);
    void SetFraction(double fraction);
    // The record between two. Its option "assume linear gamma" is on whatever theirs are, unless
    // the fraction names one of them.
    std::vector<std::byte> Blend(std::span<const std::byte> earlier,
                                 std::span<const std::byte> later, double fraction);

    // `sink` hears of changes that the host did not make itself; null ends it.
    void SetChangeSink(ISfChangeSink* sink);

    std::vector<std::string> PresetNames(); // UTF-8
    void ApplyPreset(std::size_t index);

private:
    IPersistStreamInit& Stream();
    IDXTSfAutomation& Automation();
    IStaticFilterPreset& Presets();
    void Check(HRESULT result, const char* what) const;

    std::string m_path;
    CComPtr<IUnknown> m_effect;
    // Asked for when they are first needed: what nobody uses an effect may lack.
    CComPtr<IPersistStreamInit> m_stream;
    CComPtr<IDXTSfAutomation> m_automation;
    CComPtr<IStaticFilterPreset> m_presets;
};

} // namespace GlazelHost
