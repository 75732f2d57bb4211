#include "samples/renderer/editor/look_editor.h"

#include "renderer/entry_points.h"
#include "samples/renderer/editor/display_scale.h"
#include "samples/renderer/editor/editor_window.h"
#include "samples/renderer/editor/window_classes.h"

#include <new>

namespace
{

// Disables a window for as long as this lives.
class DisabledScope
{
public:
    explicit DisabledScope(HWND window) noexcept
        : m_window(window != nullptr && ::IsWindowEnabled(window) ? window : nullptr)
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
            ::EnableWindow(m_window, TRUE); // of a window that is gone: harmless
        }
    }
    DisabledScope(const DisabledScope&) = delete;
    DisabledScope& operator=(const DisabledScope&) = delete;

private:
    HWND m_window;
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
        // Enabled again before the editor's window goes, so that the system gives it the focus.
        const DisabledScope disabled(active);
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
