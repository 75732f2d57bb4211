#include "reference_renderer/editor/clipboard_text.h"

#include "support/win32/utf8.h"

#include <algorithm>
#include <cstring>

namespace ReferenceRenderer
{

namespace
{

// The clipboard is open for as long as this lives.
class ClipboardScope
{
public:
    explicit ClipboardScope(HWND owner) noexcept : m_open(::OpenClipboard(owner) != FALSE) {}
    ~ClipboardScope()
    {
        if (m_open)
        {
            ::CloseClipboard();
        }
    }
    ClipboardScope(const ClipboardScope&) = delete;
    ClipboardScope& operator=(const ClipboardScope&) = delete;
    bool IsOpen() const noexcept { return m_open; }

private:
    bool m_open;
};

} // namespace

bool PutOnClipboard(HWND owner, const std::string& text)
{
    const std::wstring wide = Wide(text);
    const std::size_t bytes = (wide.size() + 1) * sizeof(wchar_t);
    const ClipboardScope clipboard(owner);
    if (!clipboard.IsOpen() || !::EmptyClipboard())
    {
        return false;
    }
    const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, bytes);
    void* const place = memory != nullptr ? ::GlobalLock(memory) : nullptr;
    if (place == nullptr)
    {
        ::GlobalFree(memory); // of none: harmless
        return false;
    }
    std::memcpy(place, wide.c_str(), bytes);
    ::GlobalUnlock(memory);
    if (::SetClipboardData(CF_UNICODETEXT, memory) == nullptr)
    {
        ::GlobalFree(memory); // else it is the system's
        return false;
    }
    return true;
}

std::optional<std::string> TextOnClipboard(HWND owner)
{
    const ClipboardScope clipboard(owner);
    if (!clipboard.IsOpen())
    {
        return {};
    }
    const HANDLE memory = ::GetClipboardData(CF_UNICODETEXT);
    const auto* const place =
        memory != nullptr ? static_cast<const wchar_t*>(::GlobalLock(memory)) : nullptr;
    if (place == nullptr)
    {
        return "";
    }
    // Another program's: its end may be missing.
    const wchar_t* const end = place + ::GlobalSize(memory) / sizeof(wchar_t);
    std::wstring wide;
    try
    {
        wide.assign(place, std::find(place, end, L'\0'));
    }
    catch (...)
    {
        ::GlobalUnlock(memory);
        throw;
    }
    ::GlobalUnlock(memory);
    return Utf8(wide);
}

} // namespace ReferenceRenderer
