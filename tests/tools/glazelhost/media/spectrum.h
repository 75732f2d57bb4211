// How much of a square of numbers is slow waves, for tests of noise.
#pragma once

#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

namespace GlazelHost
{

// The energy of the waves of less than `cycles` along each side, without the mean. `square` has
// side * side numbers, row by row.
inline double SlowEnergy(const std::vector<double>& square, int side, int cycles)
{
    double energy = 0.0;
    for (int v = 0; v < cycles; ++v)
    {
        for (int u = 1 - cycles; u < cycles; ++u)
        {
            if (v == 0 && u <= 0)
            {
                continue; // the mean, and waves that are counted with the opposite sign
            }
            double real = 0.0;
            double imaginary = 0.0;
            for (int y = 0; y < side; ++y)
            {
                for (int x = 0; x < side; ++x)
                {
                    const double turn = 2.0 * std::numbers::pi * (u * x + v * y) / side;
                    const double value = square[static_cast<std::size_t>(y * side + x)];
                    real += value * std::cos(turn);
                    imaginary += value * std::sin(turn);
                }
            }
            energy += real * real + imaginary * imaginary;
        }
    }
    return energy;
}

} // namespace GlazelHost
