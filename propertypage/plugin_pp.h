// CPluginPP: the effect's property page. Everything on it is painted and hit-tested by the page
// itself; every change goes to the effect at once.
#pragma once

#include "binding/session_data.h"
#include "contract/class_ids.h"
#include "platform/atl/atlcom.h"
#include "platform/atl/atlpropertypage.h"
#include "platform/atl/atlwin.h"
#include "propertypage/press_tracker.h"

#include <windows.h>

// Posted to the page by the effect when its record has changed.
// NOLINTNEXTLINE(readability-identifier-naming): written as command ids are
inline constexpr UINT ID_PROPS_CHANGED = 0x7F00;

// Window thread. The effect is object 0 of those that the host sets, asked for its exchange
// interface anew for every call.
class CPluginPP : public IPropertyPageImpl<CPluginPP>,
                  public CDialogImpl<CPluginPP>,
                  public CComObjectRootEx<CComMultiThreadModel>,
                  public CComCoClass<CPluginPP, &CLSID_PluginPP>
{
public:
    // The dialog template, without controls.
    // NOLINTNEXTLINE(readability-identifier-naming): CDialogImpl's name for it
    static constexpr UINT IDD = 106;

    CPluginPP() noexcept;

    // A page that the host lets go while it is active takes its window along.
    void FinalRelease() noexcept { Deactivate(); }

    BEGIN_COM_MAP(CPluginPP)
    COM_INTERFACE_ENTRY(IPropertyPage)
    END_COM_MAP()

    BEGIN_MSG_MAP(CPluginPP)
    CHAIN_MSG_MAP(IPropertyPageImpl<CPluginPP>)
    MESSAGE_HANDLER(WM_INITDIALOG, OnInitDialog)
    MESSAGE_HANDLER(WM_DESTROY, OnDestroy)
    MESSAGE_HANDLER(WM_COMMAND, OnCommand)
    MESSAGE_HANDLER(WM_PAINT, OnPaint)
    MESSAGE_HANDLER(WM_ERASEBKGND, OnEraseBackground)
    MESSAGE_HANDLER(WM_LBUTTONDOWN, OnLButtonDown)
    MESSAGE_HANDLER(WM_LBUTTONDBLCLK, OnLButtonDown)
    MESSAGE_HANDLER(WM_LBUTTONUP, OnLButtonUp)
    MESSAGE_HANDLER(WM_MOUSEMOVE, OnMouseMove)
    END_MSG_MAP()

    // IPropertyPage. Hands the page's record to the effect; S_OK whatever the effect answers. Hosts
    // set an object first: without one nothing is applied and the answer is E_UNEXPECTED, with one
    // that has no exchange interface it is the query's.
    HRESULT STDMETHODCALLTYPE Apply() noexcept override;

private:
    LRESULT OnInitDialog(UINT, WPARAM, LPARAM, BOOL&) noexcept;
    LRESULT OnDestroy(UINT, WPARAM, LPARAM, BOOL&) noexcept;
    LRESULT OnCommand(UINT, WPARAM wParam, LPARAM, BOOL&) noexcept;
    LRESULT OnPaint(UINT, WPARAM, LPARAM, BOOL&) noexcept;
    LRESULT OnEraseBackground(UINT, WPARAM, LPARAM, BOOL&) noexcept;
    LRESULT OnLButtonDown(UINT, WPARAM, LPARAM, BOOL&) noexcept;
    LRESULT OnLButtonUp(UINT, WPARAM, LPARAM, BOOL&) noexcept;
    LRESULT OnMouseMove(UINT, WPARAM, LPARAM, BOOL&) noexcept;

    IUnknown* FirstObject() const noexcept; // borrowed; null when there is none
    void Notify(UINT command) noexcept;
    // Takes the effect's record over; when that fails the page keeps its own. Repaints.
    void Refresh() noexcept;
    // Ends a press whose capture is gone, to another window or by the system: its release never
    // comes here.
    void EndLostPress() noexcept;
    void FollowPointer() noexcept;
    bool IsOn(PanelControl control) noexcept; // pressed or checked
    void Act(PanelControl control) noexcept;
    void ToggleLinearGamma() noexcept;
    void Edit() noexcept;

    SessionData m_record; // the page's own copy of the look
    PressTracker m_press;
    bool m_editing = false; // the editor is open
};
