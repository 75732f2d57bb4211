// Times for benchmarks: medians of many runs, because this kind of measurement is noisy.
#pragma once

#include <windows.h>

#include <algorithm>
#include <vector>

// The median of `runs` timings of `work`, in microseconds.
template <typename Work>
double MedianMicroseconds(int runs, Work&& work)
{
    LARGE_INTEGER frequency;
    ::QueryPerformanceFrequency(&frequency);
    std::vector<double> times;
    for (int run = 0; run < runs; ++run)
    {
        LARGE_INTEGER begin;
        LARGE_INTEGER end;
        ::QueryPerformanceCounter(&begin);
        work();
        ::QueryPerformanceCounter(&end);
        times.push_back(static_cast<double>(end.QuadPart - begin.QuadPart) * 1e6 /
                        static_cast<double>(frequency.QuadPart));
    }
    std::nth_element(times.begin(), times.begin() + runs / 2, times.end());
    return times[static_cast<std::size_t>(runs) / 2];
}
