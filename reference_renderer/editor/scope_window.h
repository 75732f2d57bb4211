// A scope below the picture: shows what the look does to the frame's levels, soon after the picture
// shows it.
#pragma once

#include "reference_renderer/editor/editor_theme.h"
#include "reference_renderer/editor/scope_worker.h"
#include "reference_renderer/editor/window_object.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace ReferenceRenderer
{

// Window thread. What it is given is borrowed.
class ScopeWindow : public WindowObject<ScopeWindow>
{
public:
    // `record` is that of the look as it is whenever Follow is called.
    ScopeWindow(const PreviewPicture& picture, const std::vector<std::uint8_t>& record) noexcept
        : m_picture(picture), m_record(record), m_worker(picture)
    {
    }
    ~ScopeWindow() { Destroy(); }

    bool Create(HWND parent, const EditorTheme& theme, int id) noexcept;
    void SetTheme(const EditorTheme& theme) noexcept { m_theme = &theme; }

    // Another kind, or none; the one that is shown already is closed.
    void Toggle(ScopeKind kind);
    std::optional<ScopeKind> Shown() const noexcept { return m_kind; }
    // The look has changed. Returns at once.
    void Follow();

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);

private:
    void TakeAnswer();
    void Name();
    void Paint() const;
    void PaintLabels(HDC dc, Geometry::Extent size) const;

    const PreviewPicture& m_picture;
    const std::vector<std::uint8_t>& m_record;
    const EditorTheme* m_theme = nullptr;
    std::optional<ScopeKind> m_kind;
    ScopeAnswer m_answer; // the last one of this kind
    const wchar_t* m_trouble = nullptr;
    ScopeWorker m_worker; // ends before what it uses
};

} // namespace ReferenceRenderer
