#include "reference_renderer/editor/look_editor.h"

#include "contract/entry_points.h"
#include "reference_renderer/editor/display_scale.h"
#include "reference_renderer/editor/editor_window.h"
#include "reference_renderer/editor/window_classes.h"

#include <new>

namespace ReferenceRenderer
{

namespace
{

// Disables the host's window for as long as this lives. The editor is not owned by that window, so
// the system would go on to whatever stands behind the editor: the host's is made active again.
class DisabledScope
{
public:
    DisabledScope(HWND host, const EditorWindow& editor) noexcept
        : m_window(host != nullptr && ::IsWindowEnabled(host) ? host : nullptr), m_editor(editor)
    {
        if (m_window != nullptr)
        {
            ::EnableWindow(m_window, FALSE);
        }
    }
    ~DisabledScope()
    {
        if (m_window != nullptr)
        {
            // Of a window that is gone: harmless, all of it.
            ::EnableWindow(m_window, TRUE);
            if (m_editor.Window() != nullptr && ::GetActiveWindow() == m_editor.Window())
            {
                ::SetActiveWindow(m_window);
            }
        }
    }
    DisabledScope(const DisabledScope&) = delete;
    DisabledScope& operator=(const DisabledScope&) = delete;

private:
    HWND m_window;
    const EditorWindow& m_editor;
};

// A service's windows are on a desktop that nobody sees: a modal one would stay open for ever.
bool HasVisibleDesktop() noexcept
{
    USEROBJECTFLAGS flags{};
    const BOOL known = ::GetUserObjectInformationW(::GetProcessWindowStation(), UOI_FLAGS, &flags,
                                                   sizeof flags, nullptr);
    return !known || (flags.dwFlags & WSF_VISIBLE) != 0;
}

} // namespace

std::int32_t RunLookEditor(const FrameBufferDesc* preview, std::span<const std::uint8_t> record,
                           bool linear, RowRunner& runner,
                           std::vector<std::uint8_t>& accepted) noexcept
{
    using namespace RendererAPI;
    try
    {
        if (!HasVisibleDesktop() || !RegisterEditorClasses())
        {
            return kEditorUnavailable;
        }
        const HWND active = ::GetActiveWindow();
        const DisplayScaleScope displayScale;
        EditorWindow window(preview, record, linear, runner);
        if (!window.Open(active))
        {
            return kEditorUnavailable;
        }
        // Enabled and active again before the editor's window goes.
        const DisabledScope disabled(active, window);
        if (!window.RunModal())
        {
            return kEditorCancelled;
        }
        accepted = window.Record();
        return kEditorAccepted;
    }
    catch (const std::bad_alloc&)
    {
        return kEditorUnavailable;
    }
}

} // namespace ReferenceRenderer
