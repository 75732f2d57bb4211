// What a report says of the machine and of the files.
#pragma once

#include "tools/glazelhost/validate/report.h"

#include <string>

namespace GlazelHost
{

MachineFacts FactsOfThisMachine();

// `path` is UTF-8 and becomes absolute. Throws HostError when the file cannot be read.
JudgedFile FactsOfFile(const char* role, const std::string& path);

// Now, ISO 8601 in UTC: "2026-03-01T12:00:00Z".
std::string TimeText();

} // namespace GlazelHost
