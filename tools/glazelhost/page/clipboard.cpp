#include "tools/glazelhost/page/clipboard.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/windows_text.h"

#include <cstring>
#include <memory>

namespace GlazelHost
{

namespace
{

struct GlobalMemoryDeleter
{
    void operator()(void* memory) const noexcept { ::GlobalFree(memory); }
};

[[noreturn]] void Throw()
{
    throw HostError("the clipboard", WindowsErrorText(::GetLastError()),
                    "another program may be using it; try again");
}

// The clipboard opened for as long as this lives.
class ClipboardScope
{
public:
    explicit ClipboardScope(HWND owner)
    {
        if (!::OpenClipboard(owner))
        {
            Throw();
        }
    }
    ~ClipboardScope() { ::CloseClipboard(); }
    ClipboardScope(const ClipboardScope&) = delete;
    ClipboardScope& operator=(const ClipboardScope&) = delete;
};

} // namespace

void PutOnClipboard(HWND owner, const std::wstring& text)
{
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    std::unique_ptr<void, GlobalMemoryDeleter> memory(::GlobalAlloc(GMEM_MOVEABLE, bytes));
    void* const place = memory ? ::GlobalLock(memory.get()) : nullptr;
    if (place == nullptr)
    {
        Throw();
    }
    std::memcpy(place, text.c_str(), bytes);
    ::GlobalUnlock(memory.get());
    const ClipboardScope clipboard(owner);
    if (!::EmptyClipboard() || ::SetClipboardData(CF_UNICODETEXT, memory.get()) == nullptr)
    {
        Throw();
    }
    [[maybe_unused]] void* const taken = memory.release(); // the clipboard's now
}

} // namespace GlazelHost
