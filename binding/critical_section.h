// A Win32 critical section with a name of its own inside the renderer binding.
#pragma once

#include <windows.h>

namespace RendererAPI
{

class CriticalSection
{
public:
    CriticalSection() noexcept { ::InitializeCriticalSection(&m_section); }
    virtual ~CriticalSection() { ::DeleteCriticalSection(&m_section); }
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

private:
    CRITICAL_SECTION m_section;
};

} // namespace RendererAPI
