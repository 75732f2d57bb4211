// Which instructions of the processor the kernels use. Every kernel gives the same bits with each.
// Pure: no windows.h. Tests: tests/reference_renderer/core/code_look_test.cpp.
#pragma once

namespace ReferenceRenderer
{

enum class InstructionSet
{
    Baseline, // what every x64 processor has
    Avx2,
    Avx512, // registers as wide as those of AVX2, but 32 of them
};

// A function for Avx512 in a file that is built with AVX2, which takes in all that it calls.
#define GLAZEL_AVX512 __attribute__((flatten, target("avx512vl,avx512bw,avx512dq")))

// The best that processor and system offer, but nothing beyond what the environment variable
// GLAZEL_INSTRUCTIONS says: "baseline" or "avx2". Asked once; any thread.
InstructionSet UsedInstructionSet() noexcept;

} // namespace ReferenceRenderer
