// Answers message boxes of the calling thread with OK and notes their texts.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// One at a time in a process. Boxes are real windows; they are ended as soon as they are activated.
class MessageBoxWatch
{
public:
    MessageBoxWatch();
    ~MessageBoxWatch();
    MessageBoxWatch(const MessageBoxWatch&) = delete;
    MessageBoxWatch& operator=(const MessageBoxWatch&) = delete;

    struct Box
    {
        std::string text;
        std::string caption;
        bool hasOwner;
        bool isPlain; // one button, OK, and no icon
    };
    std::vector<Box> boxes;

private:
    static LRESULT CALLBACK OnHook(int code, WPARAM wParam, LPARAM lParam);

    HHOOK m_hook;
};
