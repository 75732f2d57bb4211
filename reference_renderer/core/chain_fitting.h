// Makes looks of chains: exactly where a look has the same steps, else sampled into its tables,
// with the error measured. Pure: no windows.h. Tests:
// tests/reference_renderer/core/chain_fitting_test.cpp.
#pragma once

#include "reference_renderer/core/colour_chain.h"
#include "reference_renderer/core/read_look.h"

#include <string_view>

namespace ReferenceRenderer
{

// The look nearest to the chain. `path` is for messages. Says in its warnings what is lost when
// that exceeds one 8-bit code, and when values beyond 0..1 are limited. Throws ImportError when the
// chain gives numbers that no look holds.
ReadLook LookOfChain(ColourChain chain, std::string_view path);

} // namespace ReferenceRenderer
