// What the renderer has to say goes to the debugger output, one line each.
#pragma once

#include "reference_renderer/core/look_record.h"

#include <string_view>

namespace ReferenceRenderer
{

// `message` is UTF-8. Any thread; what cannot be shown is dropped.
void TellDebugger(std::string_view message) noexcept;

// Why a record is not applied, said once per process and reason. Any thread.
void TellUnusableRecord(RecordState state) noexcept;
// The same for a look for which there is no memory.
void TellOutOfMemory() noexcept;

} // namespace ReferenceRenderer
