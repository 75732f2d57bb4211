// Text for other programs.
#pragma once

#include <windows.h>

#include <string>

namespace GlazelHost
{

// Replaces what the clipboard holds. `owner` is a window of this thread. Throws HostError.
void PutOnClipboard(HWND owner, const std::wstring& text);

} // namespace GlazelHost
