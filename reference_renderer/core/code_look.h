// A look on 8-bit codes: what comes before the cube is looked up for each code, and the cube is
// read in whole numbers with weights that are multiples of 1/32640, so that no rounding but the
// last shows, and every processor gives the same bytes. Pure: no windows.h. Tests:
// tests/reference_renderer/core/code_look_test.cpp.
#pragma once

#include "reference_renderer/core/code_rows.h"
#include "reference_renderer/core/look_record.h"
#include "reference_renderer/core/lut_sampling.h"

#include <array>
#include <cstddef>

namespace ReferenceRenderer
{

// Display values of all codes after the first steps of a look: red, green, blue.
using ValuesOfCodes = std::array<std::array<float, 256>, 3>;

class CodeLook
{
public:
    CodeLook(); // the only member that allocates

    const CodeCube& Cube() const noexcept { return m_cube; } // of the last look that had one

    // Makes it ready for a look and its views. False when the look mixes channels (a saturation
    // step) before curves, shows a cube in part where that is no cube again, or has nodes beyond -8
    // to 8: its codes then go another way.
    bool Prepare(const StoredLook& look, const ValuesOfCodes& values, const CurveView& curves,
                 const CubeView& cube) noexcept;

    // Renders `width` pixels of blue, green, red, alpha; source and target are the same memory or
    // do not overlap. Within 0.51 codes of exact arithmetic; alpha is copied.
    void RenderRow(const std::byte* source, std::byte* target, std::size_t width) const noexcept;

private:
    bool PrepareCube(const StoredLook& look, const ValuesOfCodes& values, const CurveView& curves,
                     const CubeView& cube) noexcept;
    bool PrepareNodes(const StoredLook& look, const ValuesOfCodes& values,
                      const CubeView& cube) noexcept;

    // From values to what a mixture adds up to: `ofZero` + value * `perValue`, from 0 to `last`.
    struct Scale
    {
        double perValue;
        double ofZero;
        double last;
    };
    void PrepareMixture(const StoredLook& look, const ValuesOfCodes& values,
                        const std::array<Scale, 3>& scales) noexcept; // red, green, blue

    bool m_hasCube = false;
    bool m_mixes = false;
    std::array<std::array<std::byte, 256>, 3> m_graded{}; // without a cube; red, green, blue
    CodeCube m_cube;
};

} // namespace ReferenceRenderer
