// Reads the head of a dialog template, in either of its two layouts: the size and the font. Of
// ours, for AtlGetDialogSize. Pure: no windows.h. Tests:
// tests/platform/atl/dialog_template_test.cpp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

struct DialogFont
{
    std::uint16_t points = 0;
    std::uint16_t weight = 0; // 0 = whatever the font has
    bool italic = false;
    std::uint8_t charset = 1; // 1 = the default one
    std::u16string face;
    bool operator==(const DialogFont&) const = default;
};

struct DialogMeasure
{
    int width = 0; // dialog units
    int height = 0;
    std::optional<DialogFont> font; // none: the system's own
    bool operator==(const DialogMeasure&) const = default;
};

// Nothing for bytes that are no whole template head.
std::optional<DialogMeasure> MeasureDialogTemplate(std::span<const std::byte> bytes);
