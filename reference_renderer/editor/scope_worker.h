// The thread that counts and draws what a scope shows, so that the picture never waits for it.
#pragma once

#include "reference_renderer/editor/scope_reader.h"
#include "support/win32/slim_lock.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <windows.h>

namespace ReferenceRenderer
{

struct ScopeRequest
{
    ScopeView view;
    std::vector<std::uint8_t> record; // of the look
};

struct ScopeAnswer
{
    ScopeView view;
    std::vector<std::uint32_t> pixels; // as DrawScope; empty when memory was short
    std::string clipped;               // as ClippedText
};

// Window thread, all of it.
class ScopeWorker
{
public:
    // `picture` is borrowed.
    explicit ScopeWorker(const PreviewPicture& picture) noexcept : m_picture(picture) {}
    ~ScopeWorker() { Stop(); }
    ScopeWorker(const ScopeWorker&) = delete;
    ScopeWorker& operator=(const ScopeWorker&) = delete;

    // Works on this from now on, and on what was asked before no more. `message` is posted to
    // `told` for each answer: soon for a part of the pixels, and for all of them once nothing else
    // was asked for a while. False when the system has no thread.
    bool Ask(ScopeRequest&& request, HWND told, UINT message);
    // The newest answer, once.
    std::optional<ScopeAnswer> Take() noexcept;
    // Returns when the thread has ended; nothing is posted afterwards.
    void Stop() noexcept;

private:
    static DWORD WINAPI Run(void* self) noexcept;
    void Work(ScopeReader& reader, PreparedLook& look);
    void Answer(const ScopeReader& reader, const ScopeView& view);
    void Publish(ScopeAnswer&& answer) noexcept;
    void Fail() noexcept; // gives up what was asked
    // Waits for a request, `milliseconds` at most. Nothing when none came or the work is to end.
    std::optional<ScopeRequest> Next(DWORD milliseconds) noexcept;
    void WaitForRequest(DWORD milliseconds) noexcept; // with m_lock

    const PreviewPicture& m_picture;
    HANDLE m_thread = nullptr;
    HWND m_told = nullptr; // does not change while there is a thread, nor does the message
    UINT m_message = 0;

    SlimLock m_lock; // of what follows
    CONDITION_VARIABLE m_asked = CONDITION_VARIABLE_INIT;
    std::optional<ScopeRequest> m_next;
    std::optional<ScopeAnswer> m_answer;
    std::atomic<bool> m_isOver = false;  // the work is to end
    std::atomic<bool> m_isStale = false; // so is a count of every pixel: there is something newer
};

} // namespace ReferenceRenderer
