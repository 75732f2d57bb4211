// Draws the parts of the panel on a window. What cannot be drawn for want of memory is left out.
// Window thread. Tests: tests/propertypage/panel_paint_test.cpp.
#pragma once

#include "contract/frame_buffer_desc.h"
#include "propertypage/panel_layout.h"
#include "propertypage/window_context.h"

// The black frame, and the grey ground inside it.
void DrawGround(const WindowContext& context, Geometry::Extent page) noexcept;
void DrawControl(const WindowContext& context, PanelControl control, bool on) noexcept;
// Nothing when the renderer gave no pixels.
void DrawThumbnail(const WindowContext& context, const FrameBufferDesc& thumbnail,
                   Geometry::Extent page) noexcept;
