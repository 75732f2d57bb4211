#include "propertypage/plugin_pp.h"

#include "binding/record_bytes.h"
#include "binding/renderer_binding.h"
#include "propertypage/editor_launch.h"
#include "propertypage/effect_exchange.h"
#include "propertypage/panel_painter.h"
#include "support/exception_info.h"
#include "support/win32/window_glue.h"

#include <tuple>

namespace
{

// String resources.
constexpr UINT kTitleId = 102;
constexpr UINT kHelpFileId = 103;
constexpr UINT kDocStringId = 104;

template <typename Visit>
void ForEach(const PanelControls& controls, Visit&& visit) noexcept
{
    for (std::size_t index = 0; index < controls.size(); ++index)
    {
        if (controls[index])
        {
            visit(static_cast<PanelControl>(index));
        }
    }
}

} // namespace

CPluginPP::CPluginPP() noexcept
{
    m_dwTitleID = kTitleId;
    m_dwHelpFileID = kHelpFileId;
    m_dwDocStringID = kDocStringId;
}

HRESULT STDMETHODCALLTYPE CPluginPP::Apply() noexcept
{
    const EffectExchange effect(FirstObject());
    if (FAILED(effect.Result()))
    {
        return effect.Result();
    }
    std::ignore = effect.SetProps(m_record); // the page has done its part: it is not dirty
    m_bDirty = FALSE;
    return S_OK;
}

LRESULT CPluginPP::OnInitDialog(UINT, WPARAM, LPARAM, BOOL&) noexcept
{
    Notify(ID_PROPS_CHANGED);
    Refresh();
    return 0;
}

LRESULT CPluginPP::OnDestroy(UINT, WPARAM, LPARAM, BOOL&) noexcept
{
    Notify(0);
    m_press = {}; // a press that this window began ends with it
    return 0;
}

LRESULT CPluginPP::OnCommand(UINT, WPARAM wParam, LPARAM, BOOL&) noexcept
{
    if (LOWORD(wParam) == ID_PROPS_CHANGED)
    {
        Refresh();
    }
    return 0;
}

LRESULT CPluginPP::OnPaint(UINT, WPARAM, LPARAM, BOOL&) noexcept
{
    EndLostPress();
    const Geometry::Extent page = ClientSize(m_hWnd);
    const PaintScope paint(m_hWnd);
    if (paint.Dc() == nullptr)
    {
        return 0;
    }
    const WindowContext context(m_hWnd, {}, paint.Dc());
    DrawGround(context, page);
    ForEach(~PanelControls(),
            [&](PanelControl control) { DrawControl(context, control, IsOn(control)); });
    if (m_record.data != nullptr && m_record.size != 0)
    {
        // Asked for anew with every paint: the pixels stay the renderer's. Whether there are any is
        // the answer: renderers do not agree on what the result of this call means.
        const RecordBytes bytes(m_record);
        RunSteps([&] {
            FrameBufferDesc thumbnail{};
            std::ignore =
                RendererAPI::Binding().GetSessionIcon(bytes.Data(), bytes.Size(), &thumbnail);
            DrawThumbnail(context, thumbnail, page);
        });
    }
    return 0;
}

LRESULT CPluginPP::OnEraseBackground(UINT, WPARAM, LPARAM, BOOL&) noexcept
{
    return 0; // the paint covers the whole client area
}

LRESULT CPluginPP::OnLButtonDown(UINT, WPARAM, LPARAM, BOOL&) noexcept
{
    EndLostPress();
    ::SetCapture(m_hWnd);
    m_press.Press();
    FollowPointer();
    return 0;
}

LRESULT CPluginPP::OnLButtonUp(UINT, WPARAM, LPARAM, BOOL&) noexcept
{
    EndLostPress();
    const PressTracker::Release release = m_press.ReleaseButton();
    if (release.wasPressed)
    {
        ::ReleaseCapture();
    }
    ForEach(release.act, [this](PanelControl control) {
        DrawControl(WindowContext(m_hWnd), control, false);
        Act(control);
    });
    return 0;
}

LRESULT CPluginPP::OnMouseMove(UINT, WPARAM, LPARAM, BOOL&) noexcept
{
    FollowPointer();
    return 0;
}

IUnknown* CPluginPP::FirstObject() const noexcept
{
    return m_nObjects > 0 ? m_ppUnk[0].p : nullptr;
}

void CPluginPP::Notify(UINT command) noexcept
{
    // When it fails the page does not follow the effect.
    std::ignore = EffectExchange(FirstObject()).SetNotifyWindow(m_hWnd, command);
}

void CPluginPP::Refresh() noexcept
{
    const CComPtr<IUnknown> self = GetUnknown(); // the object may let the page go when it is asked
    // When it fails the page keeps what it has.
    std::ignore = EffectExchange(FirstObject()).GetProps(m_record);
    Invalidate();
}

void CPluginPP::EndLostPress() noexcept
{
    if (!m_press.IsTracking() || ::GetCapture() == m_hWnd)
    {
        return;
    }
    ForEach(m_press.ReleaseButton().act,
            [this](PanelControl control) { DrawControl(WindowContext(m_hWnd), control, false); });
}

// One step of a press. The message's own position is not used: it is where the pointer was when the
// message was made.
void CPluginPP::FollowPointer() noexcept
{
    EndLostPress();
    POINT pointer{};
    if (!m_press.IsTracking() || ::GetCursorPos(&pointer) == FALSE)
    {
        return;
    }
    ::ScreenToClient(m_hWnd, &pointer);
    const PressTracker::Move move =
        m_press.MoveTo({static_cast<int>(pointer.x), static_cast<int>(pointer.y)});
    ForEach(move.redraw, [this](PanelControl control) {
        DrawControl(WindowContext(m_hWnd), control, IsOn(control));
    });
    ForEach(move.act, [this](PanelControl control) { Act(control); });
}

bool CPluginPP::IsOn(PanelControl control) noexcept
{
    return control == PanelControl::LinearGamma ? m_record.GetFlag() == kAssumeLinearGamma
                                                : m_press.IsPressed(control);
}

void CPluginPP::Act(PanelControl control) noexcept
{
    switch (control)
    {
    case PanelControl::Edit:
        return Edit();
    case PanelControl::LinearGamma:
        return ToggleLinearGamma();
    }
}

void CPluginPP::ToggleLinearGamma() noexcept
{
    const CComPtr<IUnknown> self = GetUnknown(); // the host may let the page go when it is told
    const std::uint32_t option = m_record.GetFlag() ^ kAssumeLinearGamma;
    m_record.SetFlag(option);
    DrawControl(WindowContext(m_hWnd), PanelControl::LinearGamma, option == kAssumeLinearGamma);
    std::ignore = Apply(); // the user sees the picture; there is nobody else to tell
}

void CPluginPP::Edit() noexcept
{
    if (m_editing)
    {
        return; // an editor that does not block the page's frame: one at a time
    }
    const CComPtr<IUnknown> self = GetUnknown(); // the host may let the page go meanwhile
    const EffectExchange effect(FirstObject());  // the same one until the session is over
    bool accepted = false;
    m_editing = true;
    const bool ended = RunSteps([&] { accepted = LaunchEditor(effect, m_record); });
    m_editing = false;
    if (accepted)
    {
        std::ignore = Apply(); // as for the check box
        Invalidate();
    }
    else if (!ended)
    {
        Refresh(); // the renderer threw, perhaps with half a look in the page's record
    }
}
