// A lattice on which any two looks with tables can both be sampled. Pure: no windows.h.
// Tests: tests/reference_renderer/core/look_blend_test.cpp.
#pragma once

#include "reference_renderer/core/prepared_look.h"

#include <array>

namespace ReferenceRenderer
{

// The smallest domain that holds those of both looks' tables.
Domain CommonDomain(const StoredLook& a, const StoredLook& b) noexcept;

class CommonLattice
{
public:
    // Writes size and domain of the cube into `blend`, and curves in front of it where evenly
    // spaced nodes would not do.
    CommonLattice(const PreparedLook& a, const PreparedLook& b, StoredLook& blend) noexcept;

    // What reaches the tables of both looks at a node.
    Rgb InputOf(std::uint32_t red, std::uint32_t green, std::uint32_t blue) const noexcept
    {
        return {m_inputs[0][red], m_inputs[1][green], m_inputs[2][blue]};
    }

private:
    std::array<std::array<float, kStoredCubeSize>, 3> m_inputs{};
};

} // namespace ReferenceRenderer
