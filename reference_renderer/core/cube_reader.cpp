#include "reference_renderer/core/cube_reader.h"

#include "reference_renderer/core/import_error.h"
#include "reference_renderer/core/text_scanning.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

constexpr std::size_t kMostWarnings = 8; // a file of nothing but unknown words stays readable

using Triple = std::array<float, 3>;

// A value of full range whose code in video range, 64 for black to 940 for white of 1023, is
// `value` of the whole scale of codes.
float FromVideoRange(float value) noexcept
{
    constexpr double kBlack = 64.0;
    constexpr double kWhite = 940.0;
    constexpr double kTop = 1023.0;
    const double full = (double{value} * kTop - kBlack) / (kWhite - kBlack);
    return static_cast<float>(std::clamp(full, -double{kLargestNumber}, double{kLargestNumber}));
}

bool IsKeyword(std::string_view word) noexcept
{
    const auto upper = [](char c) { return c >= 'A' && c <= 'Z'; };
    return !word.empty() && upper(word[0]) && std::all_of(word.begin(), word.end(), [&](char c) {
        return upper(c) || c == '_' || (c >= '0' && c <= '9');
    });
}

class CubeReader
{
public:
    CubeReader(std::string_view text, std::string_view path, std::vector<std::string>& warnings)
        : m_lines(text), m_path(path), m_warnings(warnings), m_mostEntries(text.size() / 6 + 1)
    {
    }

    Look Read()
    {
        std::string_view line;
        while (m_lines.Next(line))
        {
            ReadLine(line);
        }
        if (!m_tablesStarted)
        {
            StartTables();
        }
        if (m_entries < m_expected)
        {
            FailHere("the file ends after " + std::to_string(m_entries) + " of the " +
                     EntriesExpected() + "; export the LUT again");
        }
        if (m_videoOutput)
        {
            // What the last table gives.
            std::vector<float>& values = m_look.cube ? m_look.cube->nodes : m_look.curves->values;
            std::transform(values.begin(), values.end(), values.begin(), FromVideoRange);
        }
        if (m_look.cube)
        {
            m_look.cube->nodes.resize(m_look.cube->nodes.size() + kNodePadding);
        }
        return std::move(m_look);
    }

private:
    [[noreturn]] void FailHere(const std::string& cause) const
    {
        throw Malformed(m_path, m_lines.Number(), cause);
    }

    void ReadLine(std::string_view line)
    {
        std::string_view rest = line;
        const std::string_view word = TakeWord(rest);
        if (word.empty() || word[0] == '#')
        {
            return;
        }
        if (word == "TITLE")
        {
            ReadTitle(rest);
            return;
        }
        line = line.substr(0, line.find('#'));
        rest = line;
        TakeWord(rest);
        const std::optional<float> number = ParseNumber(word);
        if (number || m_tablesStarted || !IsKeyword(word) || word == "NAN" || word == "INF")
        {
            ReadEntry(line);
        }
        else
        {
            ReadKeyword(word, rest);
        }
    }

    void ReadTitle(std::string_view rest)
    {
        const std::size_t open = rest.find('"');
        const std::size_t close = rest.rfind('"');
        if (open != std::string_view::npos && close > open)
        {
            rest = rest.substr(open + 1, close - open - 1);
        }
        while (!rest.empty() && (rest.front() == ' ' || rest.front() == '\t'))
        {
            rest.remove_prefix(1);
        }
        m_look.title = CleanText(rest);
    }

    void ReadKeyword(std::string_view word, std::string_view rest)
    {
        if (word == "LUT_1D_SIZE")
        {
            ReadSize(m_curveSize, word, rest, kLargestCurve);
        }
        else if (word == "LUT_3D_SIZE")
        {
            ReadSize(m_cubeSize, word, rest, kLargestCube);
        }
        else if (word == "DOMAIN_MIN")
        {
            m_domainMin = ReadNumbers<3>(word, rest);
        }
        else if (word == "DOMAIN_MAX")
        {
            m_domainMax = ReadNumbers<3>(word, rest);
        }
        else if (word == "LUT_1D_INPUT_RANGE")
        {
            m_curveRange = ReadRange(word, rest);
        }
        else if (word == "LUT_3D_INPUT_RANGE")
        {
            m_cubeRange = ReadRange(word, rest);
        }
        else if (word == "LUT_IN_VIDEO_RANGE")
        {
            m_videoInput = true;
        }
        else if (word == "LUT_OUT_VIDEO_RANGE")
        {
            m_videoOutput = true;
        }
        else if (m_warnings.size() < kMostWarnings)
        {
            m_warnings.push_back("line " + std::to_string(m_lines.Number()) + ": " + Quoted(word) +
                                 " is not a known keyword and was ignored");
        }
    }

    void ReadSize(std::optional<std::uint32_t>& size, std::string_view word, std::string_view rest,
                  std::uint32_t largest) const
    {
        const std::string_view text = TakeWord(rest);
        const std::optional<std::uint32_t> value = ParseCount(text);
        if (size)
        {
            FailHere("states " + std::string(word) + " a second time; keep one of the two");
        }
        if (!value || *value < 2 || *value > largest || !TakeWord(rest).empty())
        {
            FailHere(std::string(word) + " " + Quoted(text) + " is not a size from 2 to " +
                     std::to_string(largest) + "; export the LUT with a size in that range");
        }
        size = value;
    }

    template <std::size_t Count>
    std::array<float, Count> ReadNumbers(std::string_view word, std::string_view rest) const
    {
        std::array<float, Count> numbers{};
        for (float& number : numbers)
        {
            const std::string_view text = TakeWord(rest);
            const std::optional<float> value = ParseNumber(text);
            if (!value)
            {
                FailHere(text.empty()
                             ? std::string(word) + " needs " + std::to_string(Count) +
                                   " numbers; add the missing ones"
                             : Quoted(text) + " is not a number that can be used; correct it");
            }
            number = *value;
        }
        if (!TakeWord(rest).empty())
        {
            FailHere(std::string(word) + " has more than " + std::to_string(Count) +
                     " numbers; remove the surplus");
        }
        return numbers;
    }

    Interval ReadRange(std::string_view word, std::string_view rest) const
    {
        const std::array<float, 2> ends = ReadNumbers<2>(word, rest);
        return CheckedInterval(ends[0], ends[1], std::string(word));
    }

    Interval CheckedInterval(float low, float high, const std::string& word) const
    {
        if (!(low < high))
        {
            FailHere(word + " does not rise from its minimum to its maximum; correct the two");
        }
        return {low, high};
    }

    void ReadEntry(std::string_view line)
    {
        if (!m_tablesStarted)
        {
            StartTables();
        }
        if (m_entries == m_expected)
        {
            FailHere("there are more entries than the " + EntriesExpected() +
                     "; correct the size or export the LUT again");
        }
        const Triple entry = ReadNumbers<3>("an entry", line);
        if (m_entries < CurveSize())
        {
            for (std::size_t channel = 0; channel < 3; ++channel)
            {
                m_look.curves->values[channel * CurveSize() + m_entries] = entry[channel];
            }
        }
        else
        {
            std::vector<float>& nodes = m_look.cube->nodes;
            nodes.insert(nodes.end(), entry.begin(), entry.end());
        }
        ++m_entries;
    }

    // The header is complete: checks it and makes room.
    void StartTables()
    {
        m_tablesStarted = true;
        if (!m_curveSize && !m_cubeSize)
        {
            FailHere("neither LUT_1D_SIZE nor LUT_3D_SIZE stands before the entries; export the "
                     "LUT again");
        }
        const bool hasDomain = m_domainMin || m_domainMax;
        if (hasDomain && ((m_curveSize && m_cubeSize) || m_curveRange || m_cubeRange))
        {
            FailHere("DOMAIN_MIN and DOMAIN_MAX do not go with two tables or with an INPUT_RANGE; "
                     "keep the keywords of one dialect");
        }
        Domain domain;
        for (std::size_t channel = 0; hasDomain && channel < 3; ++channel)
        {
            domain[channel] = CheckedInterval(m_domainMin ? (*m_domainMin)[channel] : 0.0F,
                                              m_domainMax ? (*m_domainMax)[channel] : 1.0F,
                                              "DOMAIN_MIN to DOMAIN_MAX");
        }
        if (m_curveSize)
        {
            const Domain range{m_curveRange.value_or(domain[0]), m_curveRange.value_or(domain[1]),
                               m_curveRange.value_or(domain[2])};
            m_look.curves =
                Curves{CurveSize(), range, std::vector<float>(std::size_t{3} * CurveSize())};
        }
        if (m_cubeSize)
        {
            const Domain range{m_cubeRange.value_or(domain[0]), m_cubeRange.value_or(domain[1]),
                               m_cubeRange.value_or(domain[2])};
            m_look.cube = Cube{*m_cubeSize, range, {}};
        }
        if (m_videoInput)
        {
            // What reaches the first table.
            TakeVideoRange(m_look.curves ? m_look.curves->domain : m_look.cube->domain);
        }
        const std::uint64_t side = m_cubeSize.value_or(0);
        m_expected = CurveSize() + side * side * side;
        if (m_look.cube)
        {
            m_look.cube->nodes.reserve(3U * std::min(m_expected, m_mostEntries) + kNodePadding);
        }
    }

    void TakeVideoRange(Domain& domain) const
    {
        for (Interval& interval : domain)
        {
            interval = CheckedInterval(FromVideoRange(interval.low), FromVideoRange(interval.high),
                                       "the domain in video range");
        }
    }

    std::uint32_t CurveSize() const noexcept { return m_curveSize.value_or(0); }

    std::string EntriesExpected() const
    {
        const std::string side = std::to_string(m_cubeSize.value_or(0));
        std::string text = std::to_string(m_expected) + " entries that ";
        if (m_curveSize)
        {
            text += "LUT_1D_SIZE " + std::to_string(CurveSize()) + (m_cubeSize ? " and " : "");
        }
        if (m_cubeSize)
        {
            text += "LUT_3D_SIZE " + side;
        }
        return text + (m_curveSize && m_cubeSize ? " ask for" : " asks for");
    }

    LineScanner m_lines;
    std::string_view m_path;
    std::vector<std::string>& m_warnings;
    std::uint64_t m_mostEntries; // that a text of this length can hold, at 6 bytes an entry
    Look m_look;
    std::optional<std::uint32_t> m_curveSize;
    std::optional<std::uint32_t> m_cubeSize;
    std::optional<Triple> m_domainMin;
    std::optional<Triple> m_domainMax;
    std::optional<Interval> m_curveRange;
    std::optional<Interval> m_cubeRange;
    bool m_videoInput = false;
    bool m_videoOutput = false;
    bool m_tablesStarted = false;
    std::uint64_t m_entries = 0;  // read so far, curves first
    std::uint64_t m_expected = 0; // that the sizes ask for
};

} // namespace

bool LooksLikeCube(std::string_view text) noexcept
{
    LineScanner lines(text);
    std::string_view line;
    while (lines.Next(line))
    {
        const std::string_view word = TakeWord(line);
        if (word == "LUT_1D_SIZE" || word == "LUT_3D_SIZE")
        {
            return true;
        }
    }
    return false;
}

Look ReadCube(std::string_view text, std::string_view path, std::vector<std::string>& warnings)
{
    return CubeReader(text, path, warnings).Read();
}

} // namespace ReferenceRenderer
