// What the user does in the editor's window, and what follows from it: the look changes and shows
// at once.
#pragma once

#include "reference_renderer/core/row_runner.h"
#include "reference_renderer/editor/editor_controls.h"
#include "reference_renderer/editor/editor_painting.h"
#include "reference_renderer/editor/editor_theme.h"
#include "reference_renderer/editor/export_format.h"
#include "reference_renderer/editor/look_draft.h"
#include "reference_renderer/editor/look_history.h"
#include "reference_renderer/editor/picture_window.h"
#include "reference_renderer/editor/preview_picture.h"
#include "reference_renderer/editor/scope_controls.h"
#include "reference_renderer/editor/scope_window.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <shellapi.h>
#include <windows.h>

namespace ReferenceRenderer
{

// Whether a WM_COMMAND asks for what it names: a key's does, and a click's. A button that paints
// itself says the second of two quick clicks in its own way.
bool IsChosen(int what, HWND from) noexcept;

// Window thread, all of it. The window that it works in outlives it and owns its child windows.
class EditorActions
{
public:
    // Copies what it is given but `runner`, which is borrowed. Throws std::bad_alloc.
    EditorActions(const FrameBufferDesc* preview, std::span<const std::uint8_t> record, bool linear,
                  RowRunner& runner);
    EditorActions(const EditorActions&) = delete;
    EditorActions& operator=(const EditorActions&) = delete;

    // Makes the child windows. False when the system refuses one.
    bool Create(HWND window, const EditorTheme& theme);
    void ShowLook(); // as it was given
    void SetTheme(const EditorTheme& theme) noexcept;
    void Place(const EditorLayout& layout);
    bool IsOverPicture(POINT screen) const noexcept;
    HWND Picture() const noexcept { return m_picture.Window(); }

    void OnCommand(int id, int what, HWND from);
    void OnDrop(HDROP files);
    // A key that goes to a child window. True when it is done with.
    bool OnKey(HWND child, WPARAM key);
    // The left button goes down on a child window. True when it is done with: a box would put the
    // caret where the first click meets its number, and undo that all of it is selected.
    bool OnPress(HWND child) noexcept;
    // Whether the look can be accepted; says why not.
    bool CanAccept();

    // The record of the look as it is.
    const std::vector<std::uint8_t>& Record() const noexcept { return m_record; }
    const EditorControls& Controls() const noexcept { return m_controls; }
    const GroundTexts& Texts() const noexcept { return m_texts; }
    Compare Shown() const noexcept { return m_picture.Shown(); }
    // Opens a scope, or closes it; then it has or needs no place.
    void ToggleScope(ScopeKind kind);
    std::optional<ScopeKind> ShownScope() const noexcept { return m_scope.Shown(); }
    bool StatusIsWrong() const noexcept { return m_statusIsWrong; }

private:
    bool OnNumberKey(std::size_t index, WPARAM key);
    void TellPixel();
    bool OnCommandKey(WPARAM key, bool inNumber);
    void OnSlider(std::size_t index, int what);
    void OnSliderMoved(std::size_t index);
    void OnPad(std::size_t index, int what);
    void OnPadMoved(std::size_t index);
    void OnNumber(std::size_t index, int what);
    // Takes the number over. False when it is none that the look can have.
    bool OnNumberTyped(std::size_t index);
    void Reset(Control control);
    void ResetAll();
    void RemoveTables();
    void AskWhatToImport();
    void Import(const std::vector<std::wstring>& files);
    std::wstring ImportOne(const std::wstring& file); // what there is to say about it
    // Says so where memory is short.
    template <typename Action>
    void WithMemory(Action&& action);
    void Export();
    void ExportTo(const std::string& path, const ExportFormat& format);
    void ChooseRecent();
    void CopyLook();
    void PasteLook();
    void SetCompare(Compare compare) noexcept;

    void Undo();
    void Redo();
    // Typing that is not a number of the look yet, in the box that has the focus, is all that is
    // taken back. True when there was some.
    bool TakeBackTyping();
    void StoreState();
    void SwapState();

    // What follows from it.
    void Changed();
    void Did(std::string what, bool swapsMemory = false); // a whole gesture
    void DidInRun(Run::Kind kind, const ControlFacts& facts);
    void BringBack(const HistoryStep& step); // the look to where the history is
    void ShowMemory() noexcept;
    void PrepareLook();
    void TellPicture();
    void ShowNumbers();
    void MarkNumbers(std::optional<std::size_t> focused, std::optional<std::size_t> wrong) noexcept;
    void Say(const std::wstring& text, bool wrong = false) noexcept;

    HWND m_window = nullptr;
    PreviewPicture m_preview;
    LookDraft m_draft;
    LookHistory m_history;
    std::optional<LookState> m_memory; // the one of the two states that is not shown
    bool m_showsStored = false;        // and what is shown is the one that was stored
    std::vector<std::uint8_t> m_record;
    PreparedLook m_look;
    EditorControls m_controls;
    PictureWindow m_picture;
    ScopeControls m_scopeControls;
    ScopeWindow m_scope;
    EditorLayout m_layout;
    GroundTexts m_texts;
    GradeNumbers m_beforeDrag; // of the slider or pad that was dragged last
    bool m_draggedAll = false; // it took other channels along
    bool m_statusIsWrong = false;
};

} // namespace ReferenceRenderer
