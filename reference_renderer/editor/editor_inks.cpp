#include "reference_renderer/editor/editor_inks.h"

namespace ReferenceRenderer
{

namespace
{

constexpr EditorInks kDark{
    .ground = Grey(0x26),
    .panelGround = Grey(0x2E),
    .line = Grey(0x16),
    .field = Grey(0x1E),
    .fieldEdge = Grey(0x48),
    .text = Grey(0xD6),
    .quietText = Grey(0x96),
    .faintText = Grey(0x7C),
    .disabledText = Grey(0x74),
    .disabledGlyph = Grey(0x40),
    .button = Grey(0x42),
    .buttonPressed = Grey(0x34),
    .buttonChosen = Grey(0x66),
    .buttonEdge = Grey(0x54),
    .buttonText = Grey(0xD6),
    .chosenText = Grey(0xD6),
    .track = Grey(0x17),
    .trackMark = Grey(0x62),
    .knob = Grey(0xA8),
    .knobBright = Grey(0xDC),
    .knobOff = Grey(0x50),
    .focus = RGB(0xC8, 0x96, 0x4A),
    .wrong = RGB(0xE8, 0x7A, 0x6C),
    .channels = {RGB(0xC6, 0x55, 0x50), RGB(0x5F, 0x9E, 0x55), RGB(0x55, 0x80, 0xCC)},
};

EditorInks SystemInks() noexcept
{
    const COLORREF ground = ::GetSysColor(COLOR_WINDOW);
    const COLORREF text = ::GetSysColor(COLOR_WINDOWTEXT);
    const COLORREF chosen = ::GetSysColor(COLOR_HIGHLIGHT);
    const COLORREF disabled = ::GetSysColor(COLOR_GRAYTEXT);
    return {
        .ground = ground,
        .panelGround = ground,
        .line = text,
        .field = ground,
        .fieldEdge = text,
        .text = text,
        .quietText = text,
        .faintText = text,
        .disabledText = disabled,
        .disabledGlyph = disabled,
        .button = ::GetSysColor(COLOR_BTNFACE),
        .buttonPressed = ::GetSysColor(COLOR_BTNFACE),
        .buttonChosen = chosen,
        .buttonEdge = ::GetSysColor(COLOR_BTNTEXT),
        .buttonText = ::GetSysColor(COLOR_BTNTEXT),
        .chosenText = ::GetSysColor(COLOR_HIGHLIGHTTEXT),
        .track = text,
        .trackMark = text,
        .knob = ground,
        .knobBright = chosen,
        .knobOff = disabled,
        .focus = chosen,
        .wrong = ::GetSysColor(COLOR_HOTLIGHT),
        .channels = {text, text, text},
    };
}

} // namespace

EditorInks InksFor(bool highContrast) noexcept
{
    return highContrast ? SystemInks() : kDark;
}

bool IsHighContrast() noexcept
{
    HIGHCONTRASTW wish{};
    wish.cbSize = sizeof wish;
    const BOOL asked = ::SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof wish, &wish, 0);
    return asked && (wish.dwFlags & HCF_HIGHCONTRASTON) != 0;
}

} // namespace ReferenceRenderer
