// ATL's window, message map and modeless dialog. Stands in for the platform's atlwin.h; windows of
// one's own classes, subclassing, modal dialogs, most of CWindow, alternate and notification maps
// are left out. The object is found through the window's own memory, not through a thunk.
// Tests: tests/platform/atl/dialog_test.cpp.
#pragma once

#include "platform/atl/atlbase.h"

#include <windows.h>

#include <utility>

// A window that somebody else owns. Window thread.
class CWindow
{
public:
    explicit CWindow(HWND window = nullptr) noexcept : m_hWnd(window) {}

    operator HWND() const noexcept { return m_hWnd; }
    BOOL IsWindow() const noexcept { return ::IsWindow(m_hWnd); }
    BOOL Invalidate(BOOL erase = TRUE) const noexcept
    {
        // A null window would stand for every window of the desktop.
        return m_hWnd != nullptr ? ::InvalidateRect(m_hWnd, nullptr, erase) : FALSE;
    }

    HWND m_hWnd; // null while there is none
};

// The macros are laid out by hand: they hold halves of functions. A handler is
// LRESULT Name(UINT message, WPARAM wParam, LPARAM lParam, BOOL& handled) noexcept, where `handled`
// comes as TRUE.
// clang-format off
#define BEGIN_MSG_MAP(theClass) \
public: \
    BOOL ProcessWindowMessage([[maybe_unused]] HWND hWnd, [[maybe_unused]] UINT uMsg, \
                              [[maybe_unused]] WPARAM wParam, [[maybe_unused]] LPARAM lParam, \
                              [[maybe_unused]] LRESULT& lResult) noexcept \
    { \
        [[maybe_unused]] BOOL bHandled = TRUE;

#define MESSAGE_HANDLER(msg, func) \
        if (uMsg == (msg)) \
        { \
            bHandled = TRUE; \
            lResult = func(uMsg, wParam, lParam, bHandled); \
            if (bHandled != FALSE) \
            { \
                return TRUE; \
            } \
        }

#define CHAIN_MSG_MAP(theChainClass) \
        if (theChainClass::ProcessWindowMessage(hWnd, uMsg, wParam, lParam, lResult) != FALSE) \
        { \
            return TRUE; \
        }

#define END_MSG_MAP() \
        return FALSE; \
    }
// clang-format on

// Where dialogs and strings are taken from: the module, or the program where there is none.
HINSTANCE AtlGetResourceInstance() noexcept;

// What a dialog procedure answers for a message that the map handled with `result`: either the
// result itself or, for most messages, TRUE after leaving the result with the window.
INT_PTR AtlDialogProcResult(HWND dialog, UINT message, LRESULT result) noexcept;

// Makes an object known to the calling thread, which is about to create its window: as in ATL the
// window takes the object at its first message, whatever that is, so that no message's parameters
// are ever taken for an object. What no window has taken when this ends is forgotten.
class _AtlCreateWndData
{
public:
    explicit _AtlCreateWndData(void* object) noexcept;
    ~_AtlCreateWndData();
    _AtlCreateWndData(const _AtlCreateWndData&) = delete;
    _AtlCreateWndData& operator=(const _AtlCreateWndData&) = delete;

    // The object that the calling thread made known last, once; null when there is none.
    static void* Extract() noexcept;

private:
    void* m_pThis; // null once taken
    DWORD m_dwThreadID = ::GetCurrentThreadId();
    _AtlCreateWndData* m_pNext = nullptr;
};

// The size in pixels that the dialog manager would give the client area of a dialog made from the
// module's template `id`. E_UNEXPECTED when there is no such template.
HRESULT AtlGetDialogSize(HINSTANCE module, UINT id, SIZE* size) noexcept;

// A modeless dialog made from the template T::IDD, whose messages go to T's message map. A map's
// handler may destroy the window; it must not let the object go unless it holds a reference of its
// own till it returns. Window thread.
template <typename T, typename TBase = CWindow>
class CDialogImpl : public TBase
{
public:
    CDialogImpl() noexcept = default;
    CDialogImpl(const CDialogImpl&) = delete;
    CDialogImpl& operator=(const CDialogImpl&) = delete;

    // Null, with the reason in GetLastError, when it cannot be made. There is one at a time.
    HWND Create(HWND parent, LPARAM initParam = 0) noexcept
    {
        const _AtlCreateWndData creation(static_cast<T*>(this));
        return ::CreateDialogParamW(AtlGetResourceInstance(), MAKEINTRESOURCEW(T::IDD), parent,
                                    StartDialogProc, initParam);
    }
    BOOL DestroyWindow() noexcept { return ::DestroyWindow(this->m_hWnd); }
    // The window stays, without an object.
    HWND Detach() noexcept
    {
        const HWND window = std::exchange(this->m_hWnd, nullptr);
        if (window != nullptr)
        {
            ::SetWindowLongPtrW(window, DWLP_USER, 0);
        }
        return window;
    }

    static INT_PTR CALLBACK DialogProc(HWND window, UINT message, WPARAM wParam,
                                       LPARAM lParam) noexcept
    {
        auto* const self = reinterpret_cast<T*>(::GetWindowLongPtrW(window, DWLP_USER));
        if (self == nullptr)
        {
            return FALSE;
        }
        LRESULT result = 0;
        const BOOL handled = self->ProcessWindowMessage(window, message, wParam, lParam, result);
        if (message == WM_NCDESTROY)
        {
            self->Detach();
        }
        // From here on the object may be gone.
        return handled != FALSE ? AtlDialogProcResult(window, message, result) : FALSE;
    }

protected:
    ~CDialogImpl() { Detach(); }

private:
    // Sees a window's first message only.
    static INT_PTR CALLBACK StartDialogProc(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam) noexcept
    {
        auto* const self = static_cast<T*>(_AtlCreateWndData::Extract());
        if (self == nullptr)
        {
            return FALSE;
        }
        self->m_hWnd = window;
        ::SetWindowLongPtrW(window, DWLP_USER, reinterpret_cast<LONG_PTR>(self));
        ::SetWindowLongPtrW(window, DWLP_DLGPROC, reinterpret_cast<LONG_PTR>(&T::DialogProc));
        return T::DialogProc(window, message, wParam, lParam);
    }
};
