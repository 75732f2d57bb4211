// How long a test waits for what must come.
#pragma once

#include <windows.h>

// What must come never takes as long, on however busy a machine. Less than CTest gives a test, so
// that the test itself says what did not come.
inline constexpr DWORD kDeadlineMs = 60000;
