// The editor's window: turns what the user does into changes of the look and shows them at once.
#pragma once

#include "reference_renderer/core/row_runner.h"
#include "reference_renderer/editor/editor_controls.h"
#include "reference_renderer/editor/editor_painting.h"
#include "reference_renderer/editor/editor_theme.h"
#include "reference_renderer/editor/look_draft.h"
#include "reference_renderer/editor/picture_window.h"
#include "reference_renderer/editor/preview_picture.h"
#include "reference_renderer/editor/window_object.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
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
    const std::vector<std::uint8_t>& Record() const noexcept { return m_record; }

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);

private:
    // Keyboard and dialog work before a message goes to its window. True when it is done with.
    bool Translate(MSG& message);
    bool TranslateNumberKey(std::size_t index, WPARAM key);
    void End(bool accepted) noexcept;
    void Accept();

    // What the user does.
    void OnCommand(int id, int what, HWND from);
    void OnSlider(std::size_t index, int what);
    void OnSliderMoved(std::size_t index);
    void OnNumber(std::size_t index, int what);
    void OnNumberTyped(std::size_t index);
    void OnDrop(WPARAM drop);
    void Reset(Control control);
    void ResetAll();
    void RemoveTables();
    void AskWhatToImport();
    void Import(const std::vector<std::wstring>& files);
    std::wstring ImportOne(const std::wstring& file); // what there is to say about it
    void SetCompare(Compare compare) noexcept;

    // What follows from it.
    void Changed();
    void PrepareLook();
    void TellPicture();
    void MarkNumbers(std::optional<std::size_t> focused, std::optional<std::size_t> wrong) noexcept;
    void Say(const std::wstring& text, bool wrong = false) noexcept;

    // What the system wants to know.
    void Lay() noexcept;
    void OnDpiChanged(int dpi, const RECT& place);
    void FocusNext(WPARAM what, bool isWindow) const noexcept;
    void OnActivate(bool active) noexcept;
    void OnGetLimits(MINMAXINFO& limits) const noexcept;
    void PlaceOn(HWND host) noexcept;
    void PaintGroundOf() const;
    void OnDrawItem(const DRAWITEMSTRUCT& item) const;
    LRESULT ColoursOf(HDC dc, HWND child) const noexcept;

    PreviewPicture m_preview;
    LookDraft m_draft;
    std::vector<std::uint8_t> m_record;
    PreparedLook m_look;
    std::optional<EditorTheme> m_theme;
    EditorControls m_controls;
    PictureWindow m_picture;
    EditorLayout m_layout;
    GroundTexts m_texts;
    StepNumbers m_beforeDrag{}; // of the slider that was dragged last
    bool m_statusIsWrong = false;
    HWND m_lastFocus = nullptr;
    bool m_done = false;
    bool m_accepted = false;
};

} // namespace ReferenceRenderer
