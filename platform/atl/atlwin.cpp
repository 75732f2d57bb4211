#include "platform/atl/atlwin.h"

#include "platform/atl/dialog_template.h"

#include <cstddef>
#include <mutex>
#include <new>
#include <optional>
#include <span>
#include <utility>

namespace
{

// The screen's device context for as long as this lives.
class ScreenDc
{
public:
    ScreenDc() noexcept : m_dc(::GetDC(nullptr)) {}
    ~ScreenDc()
    {
        if (m_dc != nullptr)
        {
            ::ReleaseDC(nullptr, m_dc);
        }
    }
    ScreenDc(const ScreenDc&) = delete;
    ScreenDc& operator=(const ScreenDc&) = delete;
    HDC Get() const noexcept { return m_dc; }

private:
    HDC m_dc;
};

// A font, in the device context while this lives and deleted afterwards. Null is no font.
class SelectedFont
{
public:
    SelectedFont(HDC dc, HFONT font) noexcept
        : m_dc(dc), m_font(font), m_old(font != nullptr ? ::SelectObject(dc, font) : nullptr)
    {
    }
    ~SelectedFont()
    {
        if (m_font != nullptr)
        {
            ::SelectObject(m_dc, m_old);
            ::DeleteObject(m_font);
        }
    }
    SelectedFont(const SelectedFont&) = delete;
    SelectedFont& operator=(const SelectedFont&) = delete;
    bool IsSelected() const noexcept { return m_old != nullptr; }

private:
    HDC m_dc;
    HFONT m_font; // owned
    HGDIOBJ m_old;
};

HFONT MakeFont(HDC dc, const DialogFont& font) noexcept
{
    constexpr int pointsPerInch = 72;
    LOGFONTW wanted{};
    wanted.lfHeight = -::MulDiv(font.points, ::GetDeviceCaps(dc, LOGPIXELSY), pointsPerInch);
    wanted.lfWeight = font.weight;
    wanted.lfItalic = font.italic ? TRUE : FALSE;
    wanted.lfCharSet = font.charset;
    wanted.lfQuality = PROOF_QUALITY; // as the dialog manager asks for it
    font.face.copy(reinterpret_cast<char16_t*>(wanted.lfFaceName), LF_FACESIZE - 1);
    return ::CreateFontIndirectW(&wanted);
}

// A dialog's base units in pixels: the average width of a letter and the height of a line, as the
// dialog manager finds them.
std::optional<SIZE> BaseUnits(const DialogFont& font) noexcept
{
    constexpr WCHAR letters[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr int letterCount = 52;
    const ScreenDc screen;
    const SelectedFont selected(screen.Get(), MakeFont(screen.Get(), font));
    SIZE text{};
    TEXTMETRICW metrics{};
    if (!selected.IsSelected() ||
        ::GetTextExtentPointW(screen.Get(), letters, letterCount, &text) == FALSE ||
        ::GetTextMetricsW(screen.Get(), &metrics) == FALSE)
    {
        return std::nullopt;
    }
    return SIZE{(text.cx + letterCount / 2) / letterCount, metrics.tmHeight};
}

SIZE SystemBaseUnits() noexcept
{
    const LONG units = ::GetDialogBaseUnits();
    return {LOWORD(units), HIWORD(units)};
}

std::span<const std::byte> FindTemplate(HINSTANCE module, UINT id) noexcept
{
    auto* const resource = ::FindResourceW(module, MAKEINTRESOURCEW(id), RT_DIALOG);
    if (resource == nullptr)
    {
        return {};
    }
    auto* const loaded = ::LoadResource(module, resource);
    const void* const bytes = loaded != nullptr ? ::LockResource(loaded) : nullptr;
    if (bytes == nullptr)
    {
        return {};
    }
    return {static_cast<const std::byte*>(bytes), ::SizeofResource(module, resource)};
}

CComAutoCriticalSection g_creationLock;
_AtlCreateWndData* g_creations = nullptr; // the last one first, guarded by g_creationLock

} // namespace

_AtlCreateWndData::_AtlCreateWndData(void* object) noexcept : m_pThis(object)
{
    const std::lock_guard guard(g_creationLock);
    m_pNext = std::exchange(g_creations, this);
}

_AtlCreateWndData::~_AtlCreateWndData()
{
    const std::lock_guard guard(g_creationLock);
    _AtlCreateWndData** link = &g_creations;
    while (*link != this)
    {
        link = &(*link)->m_pNext;
    }
    *link = m_pNext;
}

void* _AtlCreateWndData::Extract() noexcept
{
    const std::lock_guard guard(g_creationLock);
    for (_AtlCreateWndData* data = g_creations; data != nullptr; data = data->m_pNext)
    {
        if (data->m_dwThreadID == ::GetCurrentThreadId() && data->m_pThis != nullptr)
        {
            return std::exchange(data->m_pThis, nullptr);
        }
    }
    return nullptr;
}

HINSTANCE AtlGetResourceInstance() noexcept
{
    return _pModule != nullptr ? _pModule->GetResourceInstance() : ::GetModuleHandleW(nullptr);
}

INT_PTR AtlDialogProcResult(HWND dialog, UINT message, LRESULT result) noexcept
{
    switch (message)
    {
    case WM_COMPAREITEM:
    case WM_VKEYTOITEM:
    case WM_CHARTOITEM:
    case WM_INITDIALOG:
    case WM_QUERYDRAGICON:
    case WM_CTLCOLORMSGBOX:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
    case WM_CTLCOLORBTN:
    case WM_CTLCOLORDLG:
    case WM_CTLCOLORSCROLLBAR:
    case WM_CTLCOLORSTATIC:
        return result;
    default:
        ::SetWindowLongPtrW(dialog, DWLP_MSGRESULT, result);
        return TRUE;
    }
}

HRESULT AtlGetDialogSize(HINSTANCE module, UINT id, SIZE* size) noexcept
try
{
    const std::optional<DialogMeasure> measure = MeasureDialogTemplate(FindTemplate(module, id));
    if (!measure)
    {
        return E_UNEXPECTED;
    }
    std::optional<SIZE> units;
    if (measure->font)
    {
        units = BaseUnits(*measure->font);
    }
    const SIZE base = units ? *units : SystemBaseUnits();
    *size = {::MulDiv(measure->width, base.cx, 4), ::MulDiv(measure->height, base.cy, 8)};
    return S_OK;
}
catch (const std::bad_alloc&)
{
    return E_OUTOFMEMORY;
}
