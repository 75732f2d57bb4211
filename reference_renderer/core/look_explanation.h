// One pixel through a look, step by step, in the very arithmetic that grades rows.
// Pure: no windows.h. Tests: tests/reference_renderer/core/look_explanation_test.cpp.
#pragma once

#include "reference_renderer/core/lut_sampling.h"
#include "reference_renderer/core/pixel_kind.h"
#include "reference_renderer/core/prepared_look.h"

#include <array>
#include <cstdint>
#include <optional>

namespace ReferenceRenderer
{

// What each step of a correction leaves.
struct CdlSteps
{
    Rgb slope;
    Rgb offset;
    Rgb limited; // as offset where the correction does not clamp
    Rgb power;
    float luma = 0.0F; // of `power`
    Rgb saturation;
    Rgb result; // `saturation`, clamped where the correction clamps
};

struct CurveSteps
{
    std::array<CurvePlace, 3> places; // of red, green, blue
    Rgb result;
};

// A node of a cube and its part of a colour.
struct CubeCorner
{
    std::array<std::uint32_t, 3> node{}; // its numbers in red, green, blue
    Rgb value;
    float weight = 0.0F;
};

struct CubeSteps
{
    CubePlace place;
    std::array<CubeCorner, 4> corners;
    Rgb result;
};

struct LookExplanation
{
    Rgb input;                   // without NaN and infinities; of 8 bits: code / 255
    std::optional<Rgb> encoded;  // linear light as display values, by the sRGB curve
    std::optional<CdlSteps> cdl; // the following: where the look has them
    std::optional<CurveSteps> curves;
    std::optional<CubeSteps> cube;
    std::optional<Rgb> mixed;   // curves and cube at the strength of the look
    std::optional<Rgb> decoded; // back to linear light
    Rgb result;                 // finite; of 8 bits: before it is rounded
    // The result in 8 bits; 8 bits are rendered in whole numbers, which brings them within 0.52
    // codes of the result.
    std::array<std::uint32_t, 3> codes{};
};

// Of an `input` of 8 bits: codes divided by 255.
LookExplanation Explain(const PreparedLook& look, PixelKind kind, const Rgb& input) noexcept;

} // namespace ReferenceRenderer
