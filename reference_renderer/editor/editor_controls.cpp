#include "reference_renderer/editor/editor_controls.h"

#include "reference_renderer/editor/accessible_control.h"
#include "reference_renderer/editor/number_text.h"
#include "reference_renderer/editor/resource.h"
#include "reference_renderer/editor/window_object.h"
#include "support/win32/utf8.h"

#include <algorithm>
#include <new>

namespace ReferenceRenderer
{

namespace
{

// The letter that is underlined leads to the first control of the step. Letters are unique among
// what is shown at one time.
constexpr std::array<const wchar_t*, kStepCount> kHeadingTexts{
    L"Te&mperature", L"Ti&nt",       L"&Exposure",    L"&Contrast", L"&Pivot",
    L"Li&ft",        L"Ga&mma",      L"Gai&n",        L"S&lope",    L"O&ffset",
    L"&Power",       L"Sat&uration", L"LU&T strength"};
constexpr std::array<const wchar_t*, kViewCount> kViewTexts{L"Lig&ht", L"&Wheels", L"C&DL"};

constexpr int kLongestNumber = 24; // characters that can be typed

HWND Child(HWND parent, const wchar_t* className, const std::wstring& text, DWORD style,
           int id) noexcept
{
    const auto menu = reinterpret_cast<HMENU>(static_cast<INT_PTR>(id));
    return ::CreateWindowExW(0, className, text.c_str(), WS_CHILD | WS_VISIBLE | style, 0, 0, 0, 0,
                             parent, menu, ThisModule(), nullptr);
}

// An edit control that tells its name, which stands beside it in two parts.
LRESULT CALLBACK NumberProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept
{
    if (message == WM_GETOBJECT)
    {
        const auto index = static_cast<std::size_t>(::GetDlgCtrlID(window) - IDC_NUMBER);
        try
        {
            if (const auto answer = AnswerAccessible(window, wParam, lParam,
                                                     {Wide(kControls[index].name), {}, false}))
            {
                return *answer;
            }
        }
        catch (const std::bad_alloc&)
        {
            // The system's own answer has no name, but the text.
        }
    }
    const auto before = reinterpret_cast<WNDPROC>(::GetWindowLongPtrW(window, GWLP_USERDATA));
    return ::CallWindowProcW(before, window, message, wParam, lParam);
}

void NameNumber(HWND number) noexcept
{
    ::SetWindowLongPtrW(number, GWLP_USERDATA, ::GetWindowLongPtrW(number, GWLP_WNDPROC));
    ::SetWindowLongPtrW(number, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(NumberProcedure));
}

void Enable(HWND window, bool enabled) noexcept
{
    if ((::IsWindowEnabled(window) != FALSE) != enabled)
    {
        if (!enabled && ::GetFocus() == window)
        {
            // The keyboard must not stay with a window that takes no keys.
            ::SetFocus(::GetNextDlgTabItem(::GetParent(window), window, FALSE));
        }
        ::EnableWindow(window, enabled);
    }
}

} // namespace

bool EditorControls::Create(HWND parent, const EditorTheme& theme)
{
    if (!CreateViews(parent) || !CreateNumbers(parent, theme) || !CreateButtons(parent))
    {
        return false;
    }
    SetTheme(theme);
    return true;
}

bool EditorControls::CreateViews(HWND parent)
{
    for (std::size_t i = 0; i < kViewCount; ++i)
    {
        m_views[i] = Button(parent, kViewTexts[i], IDC_VIEW + static_cast<int>(i));
    }
    return std::find(m_views.begin(), m_views.end(), nullptr) == m_views.end();
}

bool EditorControls::CreateNumbers(HWND parent, const EditorTheme& theme)
{
    for (std::size_t i = 0; i < kControlCount; ++i)
    {
        const std::wstring name = Wide(kControls[i].name);
        const int offset = static_cast<int>(i);
        const auto step = static_cast<std::size_t>(kControls[i].step);
        HWND& heading = m_headings[step];
        if (heading == nullptr)
        {
            heading = Child(parent, L"STATIC", kHeadingTexts[step], SS_LEFT | SS_CENTERIMAGE, -1);
        }
        if (heading == nullptr ||
            !m_sliders[i].Create(parent, kControls[i], theme, IDC_SLIDER + offset))
        {
            return false;
        }
        m_numbers[i] = Child(parent, L"EDIT", L"", WS_TABSTOP | ES_RIGHT | ES_AUTOHSCROLL,
                             IDC_NUMBER + offset);
        // The mouse's way to reset; the keyboard's is Delete on the slider.
        m_resets[i] = Button(parent, (L"Reset " + name).c_str(), IDC_RESET + offset, 0);
        if (m_numbers[i] == nullptr || m_resets[i] == nullptr)
        {
            return false;
        }
        NameNumber(m_numbers[i]);
        ::SendMessageW(m_numbers[i], EM_LIMITTEXT, kLongestNumber, 0);
        if (!CreatePad(parent, kControls[i].control, theme))
        {
            return false;
        }
    }
    return true;
}

// The pad whose last channel the control is, where there is one: its sliders come first.
bool EditorControls::CreatePad(HWND parent, Control last, const EditorTheme& theme)
{
    for (std::size_t i = 0; i < kPadCount; ++i)
    {
        if (LastOf(kPads[i]) == last &&
            !m_pads[i].Create(parent, kPads[i], theme, IDC_PAD + static_cast<int>(i)))
        {
            return false;
        }
    }
    return true;
}

bool EditorControls::CreateButtons(HWND parent)
{
    m_import = Button(parent, L"&Import...", IDC_IMPORT);
    m_recent = Button(parent, L"&Recent", IDC_RECENT);
    m_export = Button(parent, L"E&xport...", IDC_EXPORT);
    m_removeTables = Button(parent, L"Remo&ve LUT", IDC_REMOVE_TABLES);
    m_compare = {Button(parent, L"&Graded", IDC_SHOW_GRADED),
                 Button(parent, L"&Split", IDC_SHOW_SPLIT),
                 Button(parent, L"&Original", IDC_SHOW_ORIGINAL)};
    m_storeState = Button(parent, L"Store A", IDC_STORE_STATE);
    m_swapState = Button(parent, L"", IDC_SWAP_STATE);
    m_resetAll = Button(parent, L"Reset &all", IDC_RESET_ALL);
    m_accept = Button(parent, L"OK", IDOK);
    m_cancel = Button(parent, L"Cancel", IDCANCEL);
    m_status = Child(parent, L"STATIC", L"", SS_OWNERDRAW | SS_NOPREFIX, IDC_STATUS);
    const std::array all{m_import,     m_recent,     m_export,     m_removeTables, m_compare[0],
                         m_compare[1], m_compare[2], m_storeState, m_swapState,    m_resetAll,
                         m_accept,     m_cancel,     m_status};
    return std::find(all.begin(), all.end(), nullptr) == all.end();
}

HWND EditorControls::Button(HWND parent, const wchar_t* text, int id, DWORD style) noexcept
{
    return Child(parent, L"BUTTON", text, BS_OWNERDRAW | style, id);
}

void EditorControls::Place(const EditorLayout& layout) noexcept
{
    for (std::size_t i = 0; i < kControlCount; ++i)
    {
        PlaceAt(m_sliders[i].Window(), layout.controls[i].slider);
        PlaceAt(m_numbers[i], layout.controls[i].number);
        PlaceAt(m_resets[i], layout.controls[i].reset);
    }
    for (std::size_t i = 0; i < kStepCount; ++i)
    {
        PlaceAt(m_headings[i], layout.headings[i]);
    }
    for (std::size_t i = 0; i < kPadCount; ++i)
    {
        PlaceAt(m_pads[i].Window(), layout.pads[i]);
    }
    for (std::size_t i = 0; i < kViewCount; ++i)
    {
        PlaceAt(m_views[i], layout.views[i]);
    }
    for (std::size_t i = 0; i < kCompareButtons; ++i)
    {
        PlaceAt(m_compare[i], layout.compare[i]);
    }
    PlaceAt(m_storeState, layout.storeState);
    PlaceAt(m_swapState, layout.swapState);
    PlaceAt(m_import, layout.importFile);
    PlaceAt(m_recent, layout.recentLooks);
    PlaceAt(m_export, layout.exportFile);
    PlaceAt(m_removeTables, layout.removeTables);
    PlaceAt(m_resetAll, layout.resetAll);
    PlaceAt(m_accept, layout.accept);
    PlaceAt(m_cancel, layout.cancel);
    PlaceAt(m_status, layout.status);
}

void EditorControls::SetTheme(const EditorTheme& theme) noexcept
{
    const auto font = reinterpret_cast<WPARAM>(theme.Text());
    for (std::size_t i = 0; i < kControlCount; ++i)
    {
        m_sliders[i].SetTheme(theme);
        ::SendMessageW(m_numbers[i], WM_SETFONT, font, TRUE);
        ::SendMessageW(m_numbers[i], EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, 0);
    }
    for (PadWindow& pad : m_pads)
    {
        pad.SetTheme(theme);
    }
    for (const HWND heading : m_headings)
    {
        ::SendMessageW(heading, WM_SETFONT, reinterpret_cast<WPARAM>(theme.Heading()), TRUE);
    }
}

void EditorControls::Show(const LookDraft& draft)
{
    for (std::size_t i = 0; i < kControlCount; ++i)
    {
        const Control control = kControls[i].control;
        const float value = draft.Value(control);
        const bool usable = control != Control::Strength || draft.HasTables();
        m_sliders[i].Show(value);
        if (::GetFocus() != m_numbers[i])
        {
            ShowText(control, value);
        }
        Enable(m_sliders[i].Window(), usable);
        Enable(m_numbers[i], usable);
        Enable(m_resets[i], !draft.IsNeutral(control));
    }
    for (std::size_t i = 0; i < kPadCount; ++i)
    {
        m_pads[i].Show(PadPointOf(draft.Numbers(), kPads[i]));
    }
    Enable(m_removeTables, draft.HasTables());
    Enable(m_resetAll, !draft.IsNeutral());
}

void EditorControls::ShowText(Control control, float value)
{
    const HWND number = m_numbers[IndexOf(control)];
    const std::string text = NumberText(value);
    if (NumberTyped(IndexOf(control)) != text)
    {
        m_writing = true;
        ::SetWindowTextW(number, Wide(text).c_str());
        m_writing = false;
    }
}

void EditorControls::ShowMemory(bool hasStored, bool showsStored) noexcept
{
    ::SetWindowTextW(m_swapState, !hasStored ? L"A / B" : showsStored ? L"Shows A" : L"Shows B");
    Enable(m_swapState, hasStored);
    ::InvalidateRect(m_swapState, nullptr, FALSE);
}

bool EditorControls::CancelDrag() noexcept
{
    const auto cancel = [](auto& window) { return window.CancelDrag(); };
    return std::any_of(m_sliders.begin(), m_sliders.end(), cancel) ||
           std::any_of(m_pads.begin(), m_pads.end(), cancel);
}

std::string EditorControls::NumberTyped(std::size_t index) const
{
    std::array<wchar_t, kLongestNumber + 8> text{};
    const int length =
        ::GetWindowTextW(m_numbers[index], text.data(), static_cast<int>(text.size()));
    return Utf8({text.data(), static_cast<std::size_t>(length)});
}

std::optional<std::size_t> EditorControls::NumberOf(HWND window) const noexcept
{
    const auto* const found = std::find(m_numbers.begin(), m_numbers.end(), window);
    const auto index = static_cast<std::size_t>(found - m_numbers.begin());
    return window != nullptr && found != m_numbers.end() ? std::optional(index) : std::nullopt;
}

bool EditorControls::IsHeading(HWND window) const noexcept
{
    return window != nullptr &&
           std::find(m_headings.begin(), m_headings.end(), window) != m_headings.end();
}

void EditorControls::Say(const std::wstring& status) noexcept
{
    ::SetWindowTextW(m_status, status.c_str());
    ::InvalidateRect(m_status, nullptr, FALSE);
}

} // namespace ReferenceRenderer
