// Work on other threads.
#pragma once

#include <windows.h>

#include <functional>

namespace GlazelHost
{

// Calls `work` with 0 to `count` - 1, each on a thread of its own, all at once; returns when all
// are done. `work` throws nothing. Throws HostError when the system has no thread.
void OnThreads(unsigned count, const std::function<void(unsigned)>& work);

} // namespace GlazelHost
