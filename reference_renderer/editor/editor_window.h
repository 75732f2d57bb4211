// The editor's window: its place, its looks and its messages.
#pragma once

#include "reference_renderer/core/row_runner.h"
#include "reference_renderer/editor/editor_actions.h"
#include "reference_renderer/editor/editor_layout.h"
#include "reference_renderer/editor/editor_theme.h"
#include "reference_renderer/editor/window_object.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include <windows.h>

namespace ReferenceRenderer
{

// Window thread, all of it.
class EditorWindow : public WindowObject<EditorWindow>
{
public:
    // Copies what it is given but `runner`, which is borrowed. Throws std::bad_alloc.
    EditorWindow(const FrameBufferDesc* preview, std::span<const std::uint8_t> record, bool linear,
                 RowRunner& runner);
    ~EditorWindow() { Destroy(); }

    // Makes the window, hidden, on the display of `host`. False when the system refuses.
    bool Open(HWND host);
    // Shows the window until the user is done with it. True when the look was accepted.
    bool RunModal() noexcept;
    // The record of the look as it is.
    const std::vector<std::uint8_t>& Record() const noexcept { return m_actions.Record(); }

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);

private:
    // Keyboard and dialog work before a message goes to its window. True when it is done with.
    bool Translate(MSG& message);
    void OnCommand(int id, int what, HWND from);
    void ShowView(View view);
    void ShowPictureAlone(bool alone);
    void End(bool accepted) noexcept;

    // What the system wants to know.
    void Lay();
    void ChangeTheme(int dpi);
    void OnColoursChanged();
    void OnDpiChanged(int dpi, const RECT& place);
    void FocusNext(WPARAM what, bool isWindow) const noexcept;
    void OnActivate(bool active) noexcept;
    void OnGetLimits(MINMAXINFO& limits) const noexcept;
    void PlaceOn(HWND host) noexcept;
    void PaintGroundOf() const;
    void OnDrawItem(const DRAWITEMSTRUCT& item) const;
    LRESULT ColoursOf(HDC dc, HWND child) const noexcept;

    std::optional<EditorTheme> m_theme;
    EditorActions m_actions;
    EditorLayout m_layout;
    HWND m_lastFocus = nullptr;
    View m_view;
    bool m_pictureAlone = false;
    HWND m_focusBefore = nullptr; // when that began
    bool m_done = false;
    bool m_accepted = false;
};

} // namespace ReferenceRenderer
