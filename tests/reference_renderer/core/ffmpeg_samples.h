// Pictures from ffmpeg, for tests that run natively.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace ReferenceRenderer
{

struct PipeCloser
{
    void operator()(std::FILE* pipe) const { ::pclose(pipe); }
};

// Everything that ffmpeg writes for these arguments. Throws when that is nothing.
template <typename Sample>
std::vector<Sample> SamplesFrom(const std::string& arguments)
{
    const std::string command = "ffmpeg -v error -nostdin " + arguments + " -f rawvideo -";
    const std::unique_ptr<std::FILE, PipeCloser> pipe(::popen(command.c_str(), "r"));
    std::vector<std::uint8_t> bytes;
    std::array<std::uint8_t, 65536> block{};
    while (const std::size_t got = std::fread(block.data(), 1, block.size(), pipe.get()))
    {
        bytes.insert(bytes.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(got));
    }
    if (bytes.empty() || bytes.size() % sizeof(Sample) != 0)
    {
        throw std::runtime_error("no picture from: " + command);
    }
    std::vector<Sample> samples(bytes.size() / sizeof(Sample));
    std::memcpy(samples.data(), bytes.data(), bytes.size());
    return samples;
}

} // namespace ReferenceRenderer
