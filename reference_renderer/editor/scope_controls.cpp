#include "reference_renderer/editor/scope_controls.h"

#include "reference_renderer/editor/resource.h"
#include "reference_renderer/editor/scope_picture.h"
#include "reference_renderer/editor/window_object.h"
#include "support/win32/utf8.h"

#include <algorithm>

#include <commctrl.h>

namespace ReferenceRenderer
{

namespace
{

constexpr std::array<const wchar_t*, kScopeKinds> kButtonTexts{L"Parade", L"Waveform", L"Vectors",
                                                               L"Histogram"};

} // namespace

std::optional<ScopeKind> ScopeOfCommand(int id) noexcept
{
    const int kind = id - IDC_SCOPE_BUTTON;
    return kind >= 0 && kind < static_cast<int>(kScopeKinds)
               ? std::optional(static_cast<ScopeKind>(kind))
               : std::nullopt;
}

bool ScopeControls::Create(HWND parent, const EditorTheme& theme)
{
    for (std::size_t i = 0; i < kScopeKinds; ++i)
    {
        // The mouse's way; the keyboard's are the keys.
        m_buttons[i] = Child(parent, L"BUTTON", kButtonTexts[i], BS_OWNERDRAW,
                             IDC_SCOPE_BUTTON + static_cast<int>(i));
        if (m_buttons[i] == nullptr)
        {
            return false;
        }
    }
    m_pixel = Child(parent, L"STATIC", L"", SS_OWNERDRAW | SS_NOPREFIX, IDC_PIXEL);
    if (m_pixel == nullptr || !CreateTips(parent))
    {
        return false;
    }
    SetTheme(theme);
    return true;
}

HWND ScopeControls::Child(HWND parent, const wchar_t* className, const wchar_t* text, DWORD style,
                          int id) noexcept
{
    const auto menu = reinterpret_cast<HMENU>(static_cast<INT_PTR>(id));
    return ::CreateWindowExW(0, className, text, WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0, parent,
                             menu, ThisModule(), nullptr);
}

bool ScopeControls::CreateTips(HWND parent)
{
    const INITCOMMONCONTROLSEX wanted{sizeof wanted, ICC_BAR_CLASSES};
    ::InitCommonControlsEx(&wanted);
    m_tips = ::CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX, 0,
                               0, 0, 0, parent, nullptr, ThisModule(), nullptr);
    if (m_tips == nullptr)
    {
        return false;
    }
    for (std::size_t i = 0; i < kScopeKinds; ++i)
    {
        std::wstring text =
            Wide(kScopeNames[i]) + L" (F" + std::to_wstring(kFirstScopeKey - VK_F1 + 1 + i) + L")";
        TTTOOLINFOW tool{};
        tool.cbSize = TTTOOLINFOW_V1_SIZE; // whichever version of the controls the program has
        tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
        tool.hwnd = parent;
        tool.uId = reinterpret_cast<UINT_PTR>(m_buttons[i]);
        tool.lpszText = text.data();
        ::SendMessageW(m_tips, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    }
    return true;
}

void ScopeControls::Place(const EditorLayout& layout) noexcept
{
    for (std::size_t i = 0; i < kScopeKinds; ++i)
    {
        PlaceAt(m_buttons[i], layout.scopeButtons[i]);
    }
    PlaceAt(m_pixel, layout.pixel);
}

void ScopeControls::SetTheme(const EditorTheme& theme) noexcept
{
    ::SendMessageW(m_tips, WM_SETFONT, reinterpret_cast<WPARAM>(theme.Text()), TRUE);
    ::SendMessageW(m_tips, TTM_SETTIPBKCOLOR, theme.Inks().field, 0);
    ::SendMessageW(m_tips, TTM_SETTIPTEXTCOLOR, theme.Inks().text, 0);
}

void ScopeControls::ShowChosen() noexcept
{
    for (const HWND button : m_buttons)
    {
        ::InvalidateRect(button, nullptr, FALSE);
    }
}

void ScopeControls::ShowPixel(const std::wstring& text)
{
    if (m_pixelText != text)
    {
        m_pixelText = text;
        ::SetWindowTextW(m_pixel, text.c_str());
        ::InvalidateRect(m_pixel, nullptr, FALSE);
    }
}

} // namespace ReferenceRenderer
