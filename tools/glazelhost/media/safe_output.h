// Output files that appear under their name only when they are whole.
// Pure declarations: no windows.h.
#pragma once

#include "tools/glazelhost/media/byte_stream.h"

#include <memory>
#include <string>

namespace GlazelHost
{

// Throws HostError when the folder of `path` does not exist, when `path` is a folder, a device or a
// pipe, or when a file is there and `overwrite` is false. Creates nothing.
void CheckOutputTarget(const std::string& path, bool overwrite);

// Writes a file beside `path` under a temporary name; Commit renames it. A writer that is destroyed
// before, and the end of the process however it comes, remove the temporary file. Does what
// CheckOutputTarget does first. `path` is UTF-8.
std::unique_ptr<ByteWriter> OpenSafeOutput(const std::string& path, bool overwrite);

// Removes the temporary files of all writers and makes every later Commit fail: for a handler that
// runs when the user breaks the program off. Any thread, also while others write.
void DiscardUnfinishedOutputs() noexcept;

} // namespace GlazelHost
