// Files and the standard streams as byte streams.
#pragma once

#include "tools/glazelhost/media/byte_stream.h"

#include <memory>
#include <string>
#include <vector>

namespace GlazelHost
{

// `path` is UTF-8. Others may read, replace or delete the file meanwhile, not write to it. Throws
// HostError for what is not there, is a folder or must not be read.
std::unique_ptr<ByteReader> OpenFileReader(const std::string& path);

// The bytes of the process's standard streams, which stay open; never in text mode. Throw HostError
// when there is none, or when it is a terminal. A pipe whose other end went away is the end of what
// is read, and an error for what is written.
std::unique_ptr<ByteReader> OpenStandardInput();
std::unique_ptr<ByteWriter> OpenStandardOutput();

// At most `longest` bytes from the beginning: for a look at what a file holds.
std::vector<std::byte> ReadFirstBytes(const std::string& path, std::size_t longest);
// A whole file of less than 4 GB.
std::vector<std::byte> ReadWholeFile(const std::string& path);

} // namespace GlazelHost
