// What "explain" tells: one pixel, each step of its look, and whether the plug-in rendered the
// same. docs/explain.md describes the JSON. Pure: no windows.h. Tests:
// tests/tools/glazelhost/commands/pixel_report_test.cpp.
#pragma once

#include "reference_renderer/core/look.h"
#include "reference_renderer/core/look_explanation.h"
#include "tools/glazelhost/media/frame_io.h"

#include <cstdint>
#include <optional>
#include <string>

namespace GlazelHost
{

// Red, green, blue and alpha; codes of 8 bits divided by 255.
struct Pixel
{
    ReferenceRenderer::Rgb colour;
    float alpha = 1.0F;
};

// Of a picture, column and row from 0 at its upper left.
Pixel PixelAt(const Image& image, int x, int y) noexcept;

struct PixelReport
{
    struct Place
    {
        std::string path;
        std::int64_t frame = 1;
        int x = 0;
        int y = 0;
    };

    std::optional<Place> place; // none: a colour that was given
    SampleType depth = SampleType::Byte;
    bool isLinear = false;
    std::string manner;   // "float, as linear light (...)"
    std::string look;     // its path
    std::string renderer; // its path
    Pixel input;
    Pixel rendered; // by the plug-in
    // What the record says; null when only its own renderer can read it.
    const ReferenceRenderer::StoredLook* stored = nullptr;
    std::optional<ReferenceRenderer::LookExplanation> steps; // of a record that says something
};

// The largest difference in any channel between what the steps give and what was rendered, beyond
// what rounding to codes explains.
double DifferenceOf(const PixelReport& report) noexcept;

// Whether rounding explains the difference. A report without steps agrees with everything.
bool Agrees(const PixelReport& report) noexcept;

std::string PixelText(const PixelReport& report);
std::string PixelJson(const PixelReport& report);

} // namespace GlazelHost
