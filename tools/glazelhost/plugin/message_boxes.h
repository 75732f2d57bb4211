// Keeps foreign modules from stopping a batch job with a message box: their calls end here, and the
// text is kept for the host to report. Tests: tests/tools/glazelhost/plugin/message_boxes_test.cpp.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace GlazelHost
{

// For a program with windows: from now on nothing is redirected, boxes appear. Called before
// modules are loaded.
void LetMessageBoxesAppear() noexcept;

// From now on the message boxes that `module` imports from the system are recorded instead of
// shown, and answered with the most careful of their buttons. Harmless when repeated. A box that a
// module looks up by name at run time is not caught.
void RedirectMessageBoxes(HMODULE module);

// Does that for every module of the process that is neither this program nor the system's: the
// plug-in, the renderer and whatever they bring along. Call it after each of them was loaded.
void RedirectMessageBoxesOfLoadedModules();

// The texts recorded since the last call, oldest first, each as one line of UTF-8. Any thread.
std::vector<std::string> TakeMessageBoxes();

// Throws HostError with the texts when message boxes were recorded since the last call. `what` is
// the file whose code wanted to show them.
void ThrowRecordedMessageBoxes(const std::string& what);

} // namespace GlazelHost
