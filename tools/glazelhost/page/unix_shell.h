// The shell that this program was started from, where Wine runs it.
// Tests: tests/tools/glazelhost/page/page_command_test.cpp.
#pragma once

#include <optional>
#include <string>

namespace GlazelHost
{

// The command that stands for this program there, as GLAZEL_COMMAND names it; none on Windows, and
// where this program was started by itself.
std::optional<std::string> UnixCommand();

} // namespace GlazelHost
