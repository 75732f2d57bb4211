#include "reference_renderer/editor/display_scale.h"

#include "reference_renderer/editor/editor_layout.h"

#include <bit>

namespace ReferenceRenderer
{

namespace
{

template <typename Function>
Function* Find(HMODULE library, const char* name) noexcept
{
    return library != nullptr ? std::bit_cast<Function*>(::GetProcAddress(library, name)) : nullptr;
}

template <typename Function>
Function* InUser32(const char* name) noexcept
{
    return Find<Function>(::GetModuleHandleW(L"user32.dll"), name);
}

using SetAwareness = HANDLE WINAPI(HANDLE); // SetThreadDpiAwarenessContext

SetAwareness* FindSetAwareness() noexcept
{
    return InUser32<SetAwareness>("SetThreadDpiAwarenessContext");
}

// DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2, and the one before it.
HANDLE PerMonitor2() noexcept
{
    return reinterpret_cast<HANDLE>(INT_PTR{-4});
}

HANDLE PerMonitor() noexcept
{
    return reinterpret_cast<HANDLE>(INT_PTR{-3});
}

} // namespace

DisplayScaleScope::DisplayScaleScope() noexcept : m_before(nullptr)
{
    if (SetAwareness* const set = FindSetAwareness())
    {
        m_before = set(PerMonitor2());
        if (m_before == nullptr)
        {
            m_before = set(PerMonitor());
        }
    }
}

DisplayScaleScope::~DisplayScaleScope()
{
    if (m_before != nullptr)
    {
        FindSetAwareness()(m_before);
    }
}

int DpiOf(HWND window) noexcept
{
    if (auto* const dpiForWindow = InUser32<UINT WINAPI(HWND)>("GetDpiForWindow"))
    {
        const UINT dpi = dpiForWindow(window);
        return dpi != 0 ? static_cast<int>(dpi) : kUnscaledDpi;
    }
    const HDC screen = ::GetDC(nullptr);
    const int dpi = ::GetDeviceCaps(screen, LOGPIXELSX);
    ::ReleaseDC(nullptr, screen);
    return dpi > 0 ? dpi : kUnscaledDpi;
}

SIZE WindowSizeFor(HWND window, SIZE client, int dpi) noexcept
{
    const auto style = static_cast<DWORD>(::GetWindowLongPtrW(window, GWL_STYLE));
    const auto exStyle = static_cast<DWORD>(::GetWindowLongPtrW(window, GWL_EXSTYLE));
    RECT area{0, 0, client.cx, client.cy};
    using Adjust = BOOL WINAPI(RECT*, DWORD, BOOL, DWORD, UINT);
    if (auto* const adjust = InUser32<Adjust>("AdjustWindowRectExForDpi"))
    {
        adjust(&area, style, FALSE, exStyle, static_cast<UINT>(dpi));
    }
    else
    {
        ::AdjustWindowRectEx(&area, style, FALSE, exStyle);
    }
    return {area.right - area.left, area.bottom - area.top};
}

LOGFONTW MessageFont(int dpi) noexcept
{
    constexpr int kPoints = 9;
    constexpr int kPointsPerInch = 72;
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    LOGFONTW font{};
    if (::SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, metrics.cbSize, &metrics, 0))
    {
        font = metrics.lfMessageFont; // the face; its size is the main display's
    }
    font.lfHeight = -::MulDiv(kPoints, dpi, kPointsPerInch);
    font.lfWidth = 0;
    font.lfQuality = CLEARTYPE_QUALITY;
    return font;
}

void DarkenTitle(HWND window) noexcept
{
    constexpr DWORD kUseDarkTitle = 20; // DWMWA_USE_IMMERSIVE_DARK_MODE
    const HMODULE library = ::LoadLibraryExW(L"dwmapi.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    using SetAttribute = HRESULT WINAPI(HWND, DWORD, const void*, DWORD);
    if (auto* const set = Find<SetAttribute>(library, "DwmSetWindowAttribute"))
    {
        const BOOL dark = TRUE;
        set(window, kUseDarkTitle, &dark, sizeof dark); // older systems keep their light one
    }
    if (library != nullptr)
    {
        ::FreeLibrary(library);
    }
}

} // namespace ReferenceRenderer
