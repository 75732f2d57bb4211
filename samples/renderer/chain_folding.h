// Makes chains shorter without changing what they do.
// Pure: no windows.h. Tests: tests/samples/renderer/chain_folding_test.cpp.
#pragma once

#include "samples/renderer/colour_chain.h"

// The same transform in fewer steps: neutral ones are left out, and neighbours that are one step in
// exact arithmetic become one. Rounding to float is all that this may cost.
ColourChain Folded(ColourChain chain);
