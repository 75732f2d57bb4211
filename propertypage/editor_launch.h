// Runs the renderer's look editor on a look record. Tests:
// tests/propertypage/editor_launch_test.cpp.
#pragma once

#include "binding/session_data.h"
#include "propertypage/effect_exchange.h"

// Opens the editor on the frame that the effect last received and returns when the user has closed
// it; meanwhile the thread's messages are handled, so that anything may have happened to the
// caller's window. True when `record` is another look now; its option word is what it was before.
// Shows a message when there is no frame (or no effect) or the editor cannot be started. Throws
// what the renderer throws: then `record` may be anything.
// Window thread.
bool LaunchEditor(const EffectExchange& effect, SessionData& record);
