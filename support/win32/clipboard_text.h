// Text on the system's clipboard, for all programs. On the thread of the owner's window.
#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include <windows.h>

// The clipboard is open for as long as this lives. One program at a time can have it, and some look
// into it at each change: a program that has it is given half a second to be done.
class ClipboardScope
{
public:
    explicit ClipboardScope(HWND owner) noexcept : m_open(::OpenClipboard(owner) != FALSE)
    {
        constexpr int kRetries = 10;
        constexpr DWORD kPauseMs = 50;
        for (int retry = 0; !m_open && retry < kRetries; ++retry)
        {
            ::Sleep(kPauseMs);
            m_open = ::OpenClipboard(owner) != FALSE;
        }
    }
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

// Memory as the clipboard takes it over.
struct GlobalMemoryDeleter
{
    void operator()(void* memory) const noexcept { ::GlobalFree(memory); }
};
using GlobalMemory = std::unique_ptr<void, GlobalMemoryDeleter>;

// GlobalLock for as long as this lives.
class GlobalLockScope
{
public:
    explicit GlobalLockScope(HGLOBAL memory) noexcept
        : m_memory(memory), m_place(memory != nullptr ? ::GlobalLock(memory) : nullptr)
    {
    }
    ~GlobalLockScope()
    {
        if (m_place != nullptr)
        {
            ::GlobalUnlock(m_memory);
        }
    }
    GlobalLockScope(const GlobalLockScope&) = delete;
    GlobalLockScope& operator=(const GlobalLockScope&) = delete;
    void* Place() const noexcept { return m_place; } // null when it cannot be locked

private:
    HGLOBAL m_memory;
    void* m_place;
};

// Replaces what the clipboard holds. Answers ERROR_SUCCESS or why the system refuses; another
// program may have the clipboard open.
inline DWORD PutOnClipboard(HWND owner, const std::wstring& text) noexcept
{
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    GlobalMemory memory(::GlobalAlloc(GMEM_MOVEABLE, bytes));
    {
        const GlobalLockScope lock(memory.get());
        if (lock.Place() == nullptr)
        {
            return ERROR_NOT_ENOUGH_MEMORY;
        }
        std::memcpy(lock.Place(), text.c_str(), bytes);
    }
    const ClipboardScope clipboard(owner);
    if (!clipboard.IsOpen() || !::EmptyClipboard() ||
        ::SetClipboardData(CF_UNICODETEXT, memory.get()) == nullptr)
    {
        return ::GetLastError();
    }
    [[maybe_unused]] void* const taken = memory.release(); // the clipboard's now
    return ERROR_SUCCESS;
}

// "" when there is no text, none when the system refuses.
inline std::optional<std::wstring> TextOnClipboard(HWND owner)
{
    const ClipboardScope clipboard(owner);
    if (!clipboard.IsOpen())
    {
        return {};
    }
    const HANDLE memory = ::GetClipboardData(CF_UNICODETEXT); // stays the clipboard's
    const GlobalLockScope lock(memory);
    const auto* const place = static_cast<const wchar_t*>(lock.Place());
    if (place == nullptr)
    {
        return L"";
    }
    // Another program's: its end may be missing.
    return std::wstring(place,
                        std::find(place, place + ::GlobalSize(memory) / sizeof(wchar_t), L'\0'));
}
