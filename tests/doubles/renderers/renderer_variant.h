// Puts one of the test renderers in the place of the real one. Each stands in a folder of its own
// under bin/renderers, and a library that is loaded already is found by its plain name.
#pragma once

#include "tests/doubles/renderers/recording.h"

#include <windows.h>

#include <string>

// Loads the variant, once in a process, and answers its recording; throws std::runtime_error when
// it is not there. `variant` is a folder's name: "complete", "without_optional",
// "without_GetSessionIcon" (and so on for each required name), "init_fails".
Recording& UseRenderer(const std::wstring& variant);

// How often the renderer has been loaded, UseRenderer's own time included: unloads it to tell. The
// last thing in a test: nobody may call the renderer afterwards.
int TakeLoads();

// The folder where all DLLs and programs stand.
std::wstring BinFolder();
