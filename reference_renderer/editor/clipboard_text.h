// Text on the system's clipboard. Window thread.
#pragma once

#include <optional>
#include <string>

#include <windows.h>

namespace ReferenceRenderer
{

// False when the system refuses; another program may have the clipboard open.
bool PutOnClipboard(HWND owner, const std::string& text);

// UTF-8; "" when there is no text, none when the system refuses.
std::optional<std::string> TextOnClipboard(HWND owner);

} // namespace ReferenceRenderer
