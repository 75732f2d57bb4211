// Makes chains shorter without changing what they do.
// Pure: no windows.h. Tests: tests/reference_renderer/core/chain_folding_test.cpp.
#pragma once

#include "reference_renderer/core/colour_chain.h"

namespace ReferenceRenderer
{

// The same transform in fewer steps: neutral ones are left out, and neighbours that are one step in
// exact arithmetic become one. Rounding to float is all that this may cost.
ColourChain Folded(ColourChain chain);

} // namespace ReferenceRenderer
