// A DLL's own C++ exception state; called from its DllMain only. What is left of it goes with the
// DLL's global objects, after all of them.
#pragma once

// Process attach. False when the system had no slot left: then nothing may be thrown.
bool HasExceptionState() noexcept;
// Thread detach: frees the calling thread's state.
void EndThreadExceptionState() noexcept;
