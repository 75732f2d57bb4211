// Listens to what is said on the debugger output of this process.
#pragma once

#include <windows.h>

#include <string>

namespace ReferenceRenderer
{

// From construction to destruction. One at a time in a process.
class DebuggerWatch
{
public:
    DebuggerWatch();
    ~DebuggerWatch();
    DebuggerWatch(const DebuggerWatch&) = delete;
    DebuggerWatch& operator=(const DebuggerWatch&) = delete;

    // How many messages so far hold these words.
    std::size_t CountOf(const std::string& words) const;

private:
    void* m_handler;
};

} // namespace ReferenceRenderer
