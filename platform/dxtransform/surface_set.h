// The surfaces that a transform is set up with, and the change of each that it has seen. Private to
// CDXBaseNTo1. Tests: tests/platform/dxtransform/setup_test.cpp.
#pragma once

#include "platform/atl/atlcomcli.h"
#include "platform/dxtransform/dxtrans.h"

#include <windows.h>

#include <vector>

// A surface that handles messages while it is asked may let the thread in again that asks: each
// method that asks one holds a reference of its own, and looks at the set anew afterwards. Caller
// holds the object lock.
class CDXTSurfaceSet
{
public:
    CDXTSurfaceSet() noexcept = default;
    ~CDXTSurfaceSet() = default;
    CDXTSurfaceSet(const CDXTSurfaceSet&) = delete;
    CDXTSurfaceSet& operator=(const CDXTSurfaceSet&) = delete;

    // Takes the surfaces of these objects in place of the ones it has; an input may be null. What
    // is no surface is wrapped in one by `factory`, which may be null. Throws std::bad_alloc;
    // without success the old ones stay. Letting those go may run code that changes the set again.
    HRESULT Replace(IUnknown* const* inputs, ULONG inputCount, IUnknown* output,
                    IDXSurfaceFactory* factory);
    void Clear() noexcept;

    bool IsEmpty() const noexcept { return m_output.surface == nullptr; }
    ULONG InputCount() const noexcept { return static_cast<ULONG>(m_inputs.size()); }
    // Borrowed; null for an empty slot and for one that there is not.
    IDXSurface* Input(ULONG index) const noexcept
    {
        return index < m_inputs.size() ? m_inputs[index].surface.p : nullptr;
    }
    IDXSurface* Output() const noexcept { return m_output.surface; }

    // Looks at all of them: how many changed since the last look.
    ULONG NoteChanges() noexcept;
    void NoteOutput() noexcept { NoteChange(kOutputSlot); }

private:
    struct Slot
    {
        CComPtr<IDXSurface> surface;
        ULONG seenId = 0; // its generation id at the last look
    };

    static constexpr ULONG kOutputSlot = ~ULONG{0}; // beside the inputs' indices

    Slot* SlotAt(ULONG index) noexcept;
    bool NoteChange(ULONG index) noexcept;

    std::vector<Slot> m_inputs;
    Slot m_output;
    std::vector<Slot> m_spareInputs; // empty: its memory is for the next ones
};
