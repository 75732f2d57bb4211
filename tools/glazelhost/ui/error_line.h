// The line of a failure for a handler that ends the program at once, when nothing may be allocated
// any more: the very line that Reporter writes for it.
// Pure: no windows.h. Tests: tests/tools/glazelhost/ui/error_line_test.cpp.
#pragma once

#include "tools/glazelhost/ui/reporter.h"

#include <array>
#include <cstddef>
#include <string_view>

namespace GlazelHost
{

// Put together from parts, then ended, once.
class ErrorLine
{
public:
    explicit ErrorLine(ReportStyle style) noexcept;

    // UTF-8. What does not fit is left out, and so is everything behind it.
    void Add(std::string_view text) noexcept;
    // The whole line with its line feed; lives as long as this.
    std::string_view End() noexcept;

private:
    // Whole or not at all.
    bool Append(std::string_view bytes) noexcept;
    bool AppendCharacter(std::string_view character) noexcept;

    // A path of 260 UTF-16 units, three bytes each at most, also when escaped, and a sentence. On
    // the stack of a program that may have little left of it.
    static constexpr std::size_t kMaxBytes = 3 * 260 + 244;

    bool m_isJson;
    bool m_isFull = false;
    std::size_t m_length = 0;
    std::array<char, kMaxBytes> m_bytes{};
};

} // namespace GlazelHost
