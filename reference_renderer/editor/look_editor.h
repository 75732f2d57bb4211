// The look editor as one modal call.
#pragma once

#include "contract/frame_buffer_desc.h"
#include "reference_renderer/core/row_runner.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ReferenceRenderer
{

// What the user saw and did not accept.
inline constexpr std::int32_t kEditorCancelled = 0;

// Shows the editor on `preview`, starting from `record`, and returns when the user closes it. The
// active window of the calling thread is disabled meanwhile. `runner` grades the picture. Answers
// kEditorAccepted, with the new record in `accepted`; kEditorCancelled; or kEditorUnavailable when
// no window can be made or nobody could see it. Any thread that may wait for messages.
std::int32_t RunLookEditor(const FrameBufferDesc* preview, std::span<const std::uint8_t> record,
                           bool linear, RowRunner& runner,
                           std::vector<std::uint8_t>& accepted) noexcept;

} // namespace ReferenceRenderer
