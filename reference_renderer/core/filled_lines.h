// The lines of a table file that hold something, and the numbers in them; what is wrong is refused
// with its line. Pure: no windows.h. Tests: tests/reference_renderer/core/spi_reader_test.cpp.
#pragma once

#include "reference_renderer/core/import_error.h"
#include "reference_renderer/core/text_scanning.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ReferenceRenderer
{

// Skips empty lines and comments, which begin with #. Text and path must outlive this.
class FilledLines
{
public:
    FilledLines(std::string_view text, std::string_view path) noexcept : m_lines(text), m_path(path)
    {
    }

    bool Next(std::string_view& line) noexcept
    {
        while (m_lines.Next(line))
        {
            std::string_view rest = line;
            const std::string_view word = TakeWord(rest);
            if (!word.empty() && word[0] != '#')
            {
                return true;
            }
        }
        return false;
    }

    // A line that must be there.
    std::string_view Take(std::string_view what)
    {
        std::string_view line;
        if (!Next(line))
        {
            Fail("the file ends before " + std::string(what) + "; export the LUT again");
        }
        return line;
    }

    [[noreturn]] void Fail(const std::string& cause) const
    {
        throw Malformed(m_path, m_lines.Number(), cause);
    }

    float TakeNumber(std::string_view& line) const
    {
        const std::string_view word = TakeWord(line);
        const std::optional<float> number = ParseNumber(word);
        if (!number)
        {
            Fail(word.empty() ? "a number is missing; export the LUT again"
                              : Quoted(word) + " is not a number that can be used; correct it");
        }
        return *number;
    }

    std::uint32_t TakeCount(std::string_view& line, std::uint32_t smallest,
                            std::uint32_t largest) const
    {
        const std::string_view word = TakeWord(line);
        const std::optional<std::uint32_t> count = ParseCount(word);
        if (!count || *count < smallest || *count > largest)
        {
            Fail(Quoted(word) + " is not a whole number from " + std::to_string(smallest) + " to " +
                 std::to_string(largest) + "; export the LUT with one in that range");
        }
        return *count;
    }

    void CheckEnd(std::string_view line) const
    {
        const std::string_view word = TakeWord(line);
        if (!word.empty() && word[0] != '#')
        {
            Fail(Quoted(word) + " is more than belongs here; remove it");
        }
    }

private:
    LineScanner m_lines;
    std::string_view m_path;
};

} // namespace ReferenceRenderer
