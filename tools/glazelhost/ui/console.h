// Standard output and standard error of this program, for text.
#pragma once

#include <string_view>

namespace GlazelHost
{

// UTF-8, shown right on a console whatever its code page; allocates for a console alone. Nothing
// can be done about a failure.
void WriteStandardError(std::string_view text) noexcept;
// Throws HostError when it cannot be written.
void WriteStandardOutput(std::string_view text);

// Whether standard error is a console: a window that can redraw a line, not a file or a pipe.
bool StandardErrorIsConsole() noexcept;
// Columns of that console; 80 when it does not say.
int StandardErrorColumns() noexcept;

// A clock that only goes forward.
double SecondsNow() noexcept;

} // namespace GlazelHost
