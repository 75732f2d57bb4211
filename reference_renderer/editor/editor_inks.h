// Colours of the look editor. Greys are neutral, so that nothing near the picture tints the eye.
// Any thread. Tests: tests/reference_renderer/editor/editor_inks_test.cpp.
#pragma once

#include <array>
#include <cstdint>

#include <windows.h>

namespace ReferenceRenderer
{

constexpr COLORREF Grey(std::uint32_t level) noexcept
{
    return level | level << 8 | level << 16;
}

// What the editor is painted with, but the picture and what lies on it.
struct EditorInks
{
    COLORREF ground;
    COLORREF panelGround;
    COLORREF line;
    COLORREF field;
    COLORREF fieldEdge;
    COLORREF text;
    COLORREF quietText;
    COLORREF faintText;
    COLORREF disabledText;
    COLORREF disabledGlyph;
    COLORREF button;
    COLORREF buttonPressed;
    COLORREF buttonChosen;
    COLORREF buttonEdge;
    COLORREF buttonText;
    COLORREF chosenText;
    COLORREF track;
    COLORREF trackMark;
    COLORREF knob;
    COLORREF knobBright;
    COLORREF knobOff;
    COLORREF focus;
    COLORREF wrong;
    std::array<COLORREF, 3> channels; // red, green, blue
};

// The system's own colours, for those who asked it for high contrast, or dark greys.
EditorInks InksFor(bool highContrast) noexcept;
bool IsHighContrast() noexcept; // as the user asked the system

// On the picture and the scopes, which are measured against the same dark grey in any case.
inline constexpr COLORREF kPictureGround = Grey(0x1B);
inline constexpr COLORREF kPictureText = Grey(0xD6);
inline constexpr COLORREF kPictureQuietText = Grey(0x96);
inline constexpr COLORREF kPictureFaintText = Grey(0x74);

} // namespace ReferenceRenderer
