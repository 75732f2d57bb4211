// UTF-8 to the system's wide strings.
#pragma once

#include <string>
#include <string_view>

// Nothing but valid UTF-8 is converted: the answer for anything else, and for "", is empty. Throws
// std::bad_alloc.
std::wstring Widen(std::string_view text);
std::string Narrow(std::wstring_view text);
