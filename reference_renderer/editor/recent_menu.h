// The menu of the looks that were used last. Window thread.
#pragma once

#include "reference_renderer/editor/gdi_objects.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include <windows.h>

namespace ReferenceRenderer
{

struct RecentLook
{
    std::wstring name;
    std::optional<PixelBitmap> picture; // none where the file cannot be read
};

// Shows the looks as a menu below `button`, with their pictures; those without one cannot be
// chosen. The one that was chosen, if any. Handles messages meanwhile.
std::optional<std::size_t> ChooseRecentLook(HWND owner, HWND button,
                                            std::span<const RecentLook> looks);

} // namespace ReferenceRenderer
