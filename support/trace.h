// The one place that every diagnostic goes to. Pure: no windows.h.
#pragma once

// Does nothing, and nothing switches it on: it is a real function out of line, so that every call
// and its text stay in the binary for whoever puts a breakpoint or a patch here. `level` is always
// 0; `format` is printf's. Not declared as a printf function: some of the fixed texts would not
// pass its checks. Any thread; never fails.
void Trace(int level, const char* format, ...) noexcept;
