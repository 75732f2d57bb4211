// The child windows of the editor: makes them, places them and shows values in them.
#pragma once

#include "reference_renderer/editor/editor_layout.h"
#include "reference_renderer/editor/editor_theme.h"
#include "reference_renderer/editor/look_draft.h"
#include "reference_renderer/editor/pad_window.h"
#include "reference_renderer/editor/slider_window.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include <windows.h>

namespace ReferenceRenderer
{

// Window thread. The windows are their parent's children and go with it.
class EditorControls
{
public:
    EditorControls() noexcept = default;
    EditorControls(const EditorControls&) = delete;
    EditorControls& operator=(const EditorControls&) = delete;

    // All but the picture, in the order of the Tab key. False when the system refuses a window.
    bool Create(HWND parent, const EditorTheme& theme);
    // Hides what has no place.
    void Place(const EditorLayout& layout) noexcept;
    void SetTheme(const EditorTheme& theme) noexcept;

    // Shows all numbers of the look, and what can be done with it. The text of a number that has
    // the focus is left alone: it may be half typed.
    void Show(const LookDraft& draft);
    // Shows the number as text even while it has the focus.
    void ShowText(Control control, float value);

    // What the button beside the picture says of the two states: that there is no stored one yet,
    // or which of both is shown.
    void ShowMemory(bool hasStored, bool showsStored) noexcept;

    float SliderValue(std::size_t index) const noexcept { return m_sliders[index].Value(); }
    bool SliderMovesAll(std::size_t index) const noexcept { return m_sliders[index].MovesAll(); }
    bool IsSliderDragged(std::size_t index) const noexcept { return m_sliders[index].IsDragged(); }
    PadPoint PadValue(std::size_t index) const noexcept { return m_pads[index].Value(); }
    bool IsPadDragged(std::size_t index) const noexcept { return m_pads[index].IsDragged(); }
    // Takes back a drag of any slider or pad. False when there is none.
    bool CancelDrag() noexcept;

    HWND Slider(std::size_t index) const noexcept { return m_sliders[index].Window(); }
    HWND Number(std::size_t index) const noexcept { return m_numbers[index]; }
    std::string NumberTyped(std::size_t index) const;
    // The control whose number `window` shows.
    std::optional<std::size_t> NumberOf(HWND window) const noexcept;

    void Say(const std::wstring& status) noexcept;
    bool IsHeading(HWND window) const noexcept;
    // True while a text is being set here, not typed.
    bool IsWriting() const noexcept { return m_writing; }

private:
    bool CreateNumbers(HWND parent, const EditorTheme& theme);
    bool CreateButtons(HWND parent);
    bool CreateViews(HWND parent);
    bool CreatePad(HWND parent, Control last, const EditorTheme& theme);
    HWND Button(HWND parent, const wchar_t* text, int id, DWORD style = WS_TABSTOP) noexcept;

    std::array<HWND, kViewCount> m_views{};
    std::array<HWND, kStepCount> m_headings{};
    std::array<PadWindow, kPadCount> m_pads;
    std::array<SliderWindow, kControlCount> m_sliders;
    std::array<HWND, kControlCount> m_numbers{};
    std::array<HWND, kControlCount> m_resets{};
    std::array<HWND, kCompareButtons> m_compare{};
    HWND m_storeState = nullptr;
    HWND m_swapState = nullptr;
    HWND m_import = nullptr;
    HWND m_recent = nullptr;
    HWND m_export = nullptr;
    HWND m_removeTables = nullptr;
    HWND m_resetAll = nullptr;
    HWND m_accept = nullptr;
    HWND m_cancel = nullptr;
    HWND m_status = nullptr;
    bool m_writing = false;
};

} // namespace ReferenceRenderer
