// The files of a numbered sequence that exist.
#pragma once

#include "tools/glazelhost/media/sequence_pattern.h"

#include <cstdint>
#include <vector>

namespace GlazelHost
{

// The numbers of the files, ascending; none where the folder does not exist. Throws HostError when
// the folder cannot be listed.
std::vector<std::int64_t> NumbersOfFiles(const SequencePattern& pattern);

} // namespace GlazelHost
