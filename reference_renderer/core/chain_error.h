// How far a look is from the chain that it stands for.
// Pure: no windows.h. Tests: tests/reference_renderer/core/chain_fitting_test.cpp.
#pragma once

#include "reference_renderer/core/colour_chain.h"

namespace ReferenceRenderer
{

struct ChainError
{
    double size =
        0.0;   // the largest difference in any channel; infinite where the chain has no number
    Rgb input; // where it is
};

// Compares at 65537 greys over `domain`; where curves lead, at and between their points; and where
// channels mix, at as many colours besides, evenly strewn.
ChainError LargestChainError(const ColourChain& chain, const Look& look, const Domain& domain,
                             bool mixes);

} // namespace ReferenceRenderer
