#include "reference_renderer/editor/window_classes.h"

#include "reference_renderer/editor/editor_window.h"
#include "reference_renderer/editor/pad_window.h"
#include "reference_renderer/editor/picture_window.h"
#include "reference_renderer/editor/resource.h"
#include "reference_renderer/editor/scope_window.h"
#include "reference_renderer/editor/slider_window.h"
#include "support/win32/slim_lock.h"

#include <array>
#include <cstddef>
#include <mutex>

namespace ReferenceRenderer
{

extern "C" IMAGE_DOS_HEADER __ImageBase; // the linker's name for the start of this library

namespace
{

struct ClassFacts
{
    const wchar_t* name;
    WNDPROC procedure;
    UINT style;
    const wchar_t* cursor;
};

// clang-format off
const std::array<ClassFacts, 5> kClasses{{
    {EDITOR_CLASS,         EditorWindow::Procedure,  CS_HREDRAW | CS_VREDRAW, IDC_ARROW},
    {EDITOR_SLIDER_CLASS,  SliderWindow::Procedure,  CS_DBLCLKS,              IDC_ARROW},
    {EDITOR_PAD_CLASS,     PadWindow::Procedure,     CS_DBLCLKS,              IDC_ARROW},
    {EDITOR_PICTURE_CLASS, PictureWindow::Procedure, 0,                       IDC_ARROW},
    {EDITOR_SCOPE_CLASS,   ScopeWindow::Procedure,   0,                       IDC_ARROW},
}};
// clang-format on

constinit SlimLock g_lock;
constinit std::size_t g_registered = 0; // how many, from the front

bool Register(const ClassFacts& facts) noexcept
{
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof windowClass;
    windowClass.style = facts.style;
    windowClass.lpfnWndProc = facts.procedure;
    windowClass.hInstance = ThisModule();
    windowClass.hCursor = ::LoadCursorW(nullptr, facts.cursor);
    windowClass.lpszClassName = facts.name;
    return ::RegisterClassExW(&windowClass) != 0;
}

} // namespace

HINSTANCE ThisModule() noexcept
{
    return reinterpret_cast<HINSTANCE>(&__ImageBase);
}

bool RegisterEditorClasses() noexcept
{
    const std::lock_guard guard(g_lock);
    while (g_registered < kClasses.size() && Register(kClasses[g_registered]))
    {
        ++g_registered;
    }
    return g_registered == kClasses.size();
}

void UnregisterEditorClasses() noexcept
{
    const std::lock_guard guard(g_lock);
    while (g_registered > 0)
    {
        --g_registered;
        ::UnregisterClassW(kClasses[g_registered].name, ThisModule());
    }
}

} // namespace ReferenceRenderer
