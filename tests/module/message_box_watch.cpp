#include "tests/module/message_box_watch.h"

#include <iterator>
#include <stdexcept>

namespace
{

MessageBoxWatch* g_watch = nullptr;

std::string ClassOf(HWND window)
{
    char name[64] = "";
    ::GetClassNameA(window, name, static_cast<int>(std::size(name)));
    return name;
}

std::string TextOf(HWND window)
{
    char text[1024] = "";
    ::GetWindowTextA(window, text, static_cast<int>(std::size(text)));
    return text;
}

// The static control with text, after the one that shows an icon if there is any.
BOOL CALLBACK FindText(HWND child, LPARAM found)
{
    if (ClassOf(child) == "Static" && !TextOf(child).empty())
    {
        *reinterpret_cast<std::string*>(found) = TextOf(child);
        return FALSE;
    }
    return TRUE;
}

struct Buttons
{
    int buttons = 0;
    int icons = 0;
};

BOOL CALLBACK CountParts(HWND child, LPARAM parts)
{
    auto& counted = *reinterpret_cast<Buttons*>(parts);
    const auto style = static_cast<DWORD>(::GetWindowLongPtrW(child, GWL_STYLE));
    const bool shown = (style & WS_VISIBLE) != 0;
    counted.buttons += shown && ClassOf(child) == "Button" ? 1 : 0;
    counted.icons +=
        shown && ClassOf(child) == "Static" && ::SendMessageW(child, STM_GETICON, 0, 0) != 0 ? 1
                                                                                             : 0;
    return TRUE;
}

} // namespace

MessageBoxWatch::MessageBoxWatch()
{
    g_watch = this;
    m_hook = ::SetWindowsHookExW(WH_CBT, OnHook, nullptr, ::GetCurrentThreadId());
    if (m_hook == nullptr)
    {
        throw std::runtime_error("cannot watch for message boxes");
    }
}

MessageBoxWatch::~MessageBoxWatch()
{
    ::UnhookWindowsHookEx(m_hook);
    g_watch = nullptr;
}

LRESULT CALLBACK MessageBoxWatch::OnHook(int code, WPARAM wParam, LPARAM lParam)
{
    const HWND window = reinterpret_cast<HWND>(wParam);
    if (code == HCBT_ACTIVATE && ClassOf(window) == "#32770")
    {
        std::string text;
        ::EnumChildWindows(window, FindText, reinterpret_cast<LPARAM>(&text));
        Buttons parts;
        ::EnumChildWindows(window, CountParts, reinterpret_cast<LPARAM>(&parts));
        g_watch->boxes.push_back({text, TextOf(window), ::GetWindow(window, GW_OWNER) != nullptr,
                                  parts.buttons == 1 && parts.icons == 0});
        ::PostMessageW(window, WM_COMMAND, IDOK, 0);
    }
    return ::CallNextHookEx(nullptr, code, wParam, lParam);
}
