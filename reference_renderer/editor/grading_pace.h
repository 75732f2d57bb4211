// Whether a picture can be graded whole between two steps of a slider, judged by how long the last
// one took. Pure: no windows.h. Tests: tests/reference_renderer/editor/grading_pace_test.cpp.
#pragma once

#include <cstddef>

namespace ReferenceRenderer
{

// With the time that painting takes, more than 30 updates a second.
inline constexpr double kGradingBudgetMs = 16.0;

class GradingPace
{
public:
    void Took(double ms, std::size_t pixels) noexcept
    {
        m_msPerPixel = ms / static_cast<double>(pixels); // pixels > 0
    }
    // True as well while nothing is known.
    bool Allows(std::size_t pixels) const noexcept
    {
        return m_msPerPixel * static_cast<double>(pixels) <= kGradingBudgetMs;
    }

private:
    double m_msPerPixel = 0.0;
};

} // namespace ReferenceRenderer
