#include "platform/dxtransform/surface_set.h"

#include <tuple>
#include <utility>

namespace
{

HRESULT SurfaceOf(IUnknown* object, IDXSurfaceFactory* factory,
                  CComPtr<IDXSurface>& surface) noexcept
{
    if (SUCCEEDED(ForeignResult([&] {
            return object->QueryInterface(IID_IDXSurface, reinterpret_cast<void**>(&surface));
        })))
    {
        return S_OK;
    }
    std::ignore = surface.Detach(); // whatever a failed query left there
    if (factory == nullptr)
    {
        return E_INVALIDARG;
    }
    return ForeignResult([&] {
        return factory->CreateFromDDSurface(object, nullptr, 0, nullptr, IID_IDXSurface,
                                            reinterpret_cast<void**>(&surface));
    });
}

} // namespace

HRESULT CDXTSurfaceSet::Replace(IUnknown* const* inputs, ULONG inputCount, IUnknown* output,
                                IDXSurfaceFactory* factory)
{
    std::vector<Slot> newInputs = std::move(m_spareInputs);
    Slot newOutput;
    newInputs.resize(inputCount);
    // The two change places; now, so that later calls allocate nothing.
    m_inputs.reserve(inputCount);
    HRESULT hr = S_OK;
    for (ULONG i = 0; i < inputCount && SUCCEEDED(hr); ++i)
    {
        hr = inputs[i] != nullptr ? SurfaceOf(inputs[i], factory, newInputs[i].surface) : S_OK;
    }
    if (SUCCEEDED(hr))
    {
        hr = SurfaceOf(output, factory, newOutput.surface);
    }
    if (SUCCEEDED(hr))
    {
        // From here on nothing of the old ones is needed; they go once the new ones are whole.
        std::swap(m_inputs, newInputs);
        std::swap(m_output, newOutput);
    }
    newInputs.clear();
    m_spareInputs = std::move(newInputs);
    return hr;
}

// The surfaces go last: that may run their own code, which finds everything in order.
void CDXTSurfaceSet::Clear() noexcept
{
    const std::vector<Slot> inputs = std::exchange(m_inputs, {});
    const Slot output = std::exchange(m_output, {});
}

ULONG CDXTSurfaceSet::NoteChanges() noexcept
{
    ULONG changes = 0;
    for (ULONG i = 0; i < m_inputs.size(); ++i)
    {
        changes += NoteChange(i) ? 1U : 0U;
    }
    return changes + (NoteChange(kOutputSlot) ? 1U : 0U);
}

// Null where there is none.
CDXTSurfaceSet::Slot* CDXTSurfaceSet::SlotAt(ULONG index) noexcept
{
    if (index == kOutputSlot)
    {
        return &m_output;
    }
    return index < m_inputs.size() ? &m_inputs[index] : nullptr;
}

bool CDXTSurfaceSet::NoteChange(ULONG index) noexcept
{
    const Slot* const asked = SlotAt(index);
    const CComPtr<IDXSurface> surface(asked != nullptr ? asked->surface.p : nullptr);
    ULONG id = 0;
    if (surface == nullptr || FAILED(ForeignResult([&] { return surface->GetGenerationId(&id); })))
    {
        return false;
    }
    Slot* const slot = SlotAt(index);
    return slot != nullptr && slot->surface.p == surface.p && std::exchange(slot->seenId, id) != id;
}
