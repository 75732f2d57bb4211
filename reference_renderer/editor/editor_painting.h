// Paints the ground of the editor's window and its buttons. Window thread.
#pragma once

#include "reference_renderer/editor/editor_layout.h"
#include "reference_renderer/editor/editor_theme.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include <windows.h>

namespace ReferenceRenderer
{

// What the ground shows besides fixed texts.
struct GroundTexts
{
    std::wstring tables;
    std::wstring picture;
    std::optional<std::size_t> focusedNumber; // its frame is marked
    std::optional<std::size_t> wrongNumber;
};

void PaintGround(HDC dc, SIZE client, const EditorLayout& layout, const EditorTheme& theme,
                 const GroundTexts& texts) noexcept;

// `chosen`: the button's choice is the current one.
void PaintButton(const DRAWITEMSTRUCT& item, const EditorTheme& theme, bool chosen);
// A static control that leaves its text to its parent.
void PaintStatus(const DRAWITEMSTRUCT& item, const EditorTheme& theme, bool wrong);
void PaintResetButton(const DRAWITEMSTRUCT& item, const EditorTheme& theme);

} // namespace ReferenceRenderer
