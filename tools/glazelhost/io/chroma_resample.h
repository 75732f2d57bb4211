// Chroma planes of half width or height: linear interpolation up, box or tent filter down.
// Pure: no windows.h. Tests: tests/tools/glazelhost/io/chroma_resample_test.cpp.
#pragma once

// Where sample k of a half-size plane is among the samples 0, 1, 2, ... of the full-size plane.
enum class ChromaSite
{
    Between, // at 2 k + 1/2
    OnEven,  // at 2 k
    OnOdd,   // at 2 k + 1
};

// A sample at `position` of full size is lower * (1 - upperWeight) + upper * upperWeight of the
// half-size samples with these indices. Beyond the ends the outermost sample continues.
struct UpsampleTaps
{
    int lower;
    int upper;
    float upperWeight;
};
UpsampleTaps UpsampleTapsAt(ChromaSite site, int position, int halfCount) noexcept;

// Half-size sample k is the weighted sum of three full-size samples.
struct DownsampleTaps
{
    int index[3];
    float weight[3];
};
DownsampleTaps DownsampleTapsAt(ChromaSite site, int halfPosition, int fullCount) noexcept;

// A whole row, Between or OnEven. `half` has (width + 1) / 2 samples, `full` has `width`.
void UpsampleRow(ChromaSite site, const float* half, int width, float* full) noexcept;
void DownsampleRow(ChromaSite site, const float* full, int width, float* half) noexcept;
