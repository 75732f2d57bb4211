// COM for as long as an object lives.
#pragma once

#include <windows.h>

#include <ole2.h>

// On the thread that makes it. Only a thread that handles messages may be an apartment.
class ComScope
{
public:
    explicit ComScope(bool handlesMessages) noexcept
        : m_handlesMessages(handlesMessages),
          m_result(handlesMessages ? ::OleInitialize(nullptr)
                                   : ::CoInitializeEx(nullptr, COINIT_MULTITHREADED))
    {
    }
    ~ComScope()
    {
        if (FAILED(m_result))
        {
            return;
        }
        if (m_handlesMessages)
        {
            ::OleUninitialize();
        }
        else
        {
            ::CoUninitialize();
        }
    }
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;

private:
    bool m_handlesMessages;
    HRESULT m_result;
};
