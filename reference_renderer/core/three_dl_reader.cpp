#include "reference_renderer/core/three_dl_reader.h"

#include "reference_renderer/core/chain_fitting.h"
#include "reference_renderer/core/cube_reader.h"
#include "reference_renderer/core/filled_lines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

// The largest codes of the depths that are customary where none is stated.
constexpr std::array kTopCodes{255U, 1023U, 4095U, 65535U};
constexpr std::uint32_t kLargestCode = 65536; // one more than the largest: as positions may end

// Below this share of its depth a largest value leaves open whether the depth is another one.
constexpr double kClearShare = 0.75;

std::uint32_t TopCodeFor(std::uint32_t largest) noexcept
{
    const auto* const top = std::lower_bound(kTopCodes.begin(), kTopCodes.end(), largest);
    return top == kTopCodes.end() ? kTopCodes.back() : *top;
}

// Whole numbers that rise; nothing when the line is something else.
std::optional<std::vector<std::uint32_t>> PositionsIn(std::string_view line)
{
    std::vector<std::uint32_t> positions;
    while (true)
    {
        const std::string_view word = TakeWord(line);
        if (word.empty() || word[0] == '#')
        {
            break;
        }
        const std::optional<std::uint32_t> position = ParseCount(word);
        if (!position || (!positions.empty() && *position <= positions.back()))
        {
            return {};
        }
        positions.push_back(*position);
    }
    return positions.size() < 2 ? std::nullopt : std::optional(std::move(positions));
}

class ThreeDlReader
{
public:
    ThreeDlReader(std::string_view text, std::string_view path)
        : m_lines(text, path), m_path(path), m_mostNodes(text.size() / 6 + 1)
    {
    }

    ReadLook Read()
    {
        std::string_view line = ReadHead();
        ReadPositions(line);
        ReadNodes();
        ReadTail();
        const double top = OutputTop();
        for (float& value : m_values)
        {
            value = static_cast<float>(value / top);
        }
        ColourChain chain;
        if (std::optional<CurveStep> positions = Shaper())
        {
            chain.emplace_back(*std::move(positions));
        }
        chain.emplace_back(CubeStep{MakeCube()});
        ReadLook read = LookOfChain(std::move(chain), m_path);
        read.warnings.insert(read.warnings.begin(), m_warnings.begin(), m_warnings.end());
        return read;
    }

private:
    // The line behind the lines of words.
    std::string_view ReadHead()
    {
        while (true)
        {
            std::string_view line = m_lines.Take("the positions of the nodes");
            std::string_view rest = line;
            const std::string_view word = TakeWord(rest);
            if (EqualIgnoringCase(word, "3DMESH"))
            {
                m_lines.CheckEnd(rest);
            }
            else if (EqualIgnoringCase(word, "Mesh"))
            {
                constexpr std::uint32_t kMostHalvings = 7;
                m_statedSize = (1U << m_lines.TakeCount(rest, 1, kMostHalvings)) + 1;
                m_statedTop = (1U << m_lines.TakeCount(rest, 8, 16)) - 1;
                m_lines.CheckEnd(rest);
            }
            else
            {
                return line;
            }
        }
    }

    void ReadPositions(std::string_view line)
    {
        const auto positions = PositionsIn(line);
        if (!positions)
        {
            m_lines.Fail("is not the list of the positions of the nodes, whole numbers that rise, "
                         "which belongs before the nodes; export the LUT again");
        }
        m_positions = *positions;
        if (m_positions.size() > kLargestCube || m_positions.back() > kLargestCode)
        {
            m_lines.Fail("the nodes have " + std::to_string(m_positions.size()) +
                         " positions up to " + std::to_string(m_positions.back()) +
                         "; export the LUT with at most " + std::to_string(kLargestCube) +
                         " and codes of at most 16 bits");
        }
        if (m_statedSize != 0 && m_statedSize != m_positions.size())
        {
            m_lines.Fail("there are " + std::to_string(m_positions.size()) +
                         " positions where Mesh asks for " + std::to_string(m_statedSize) +
                         "; export the LUT again");
        }
        m_inputTop = InputTop();
    }

    // Some programs let the last position be one more than the largest code.
    std::uint32_t InputTop() const
    {
        const std::uint32_t last = m_positions.back();
        const std::uint32_t top = TopCodeFor(last - 1);
        if (last == top + 1)
        {
            return last;
        }
        if (last < kClearShare * top)
        {
            m_lines.Fail("the positions of the nodes end at " + std::to_string(last) +
                         ", which leaves open for how many bits they are; export the LUT with "
                         "positions up to 255, 1023, 4095 or 65535");
        }
        return top;
    }

    void ReadNodes()
    {
        const std::size_t size = m_positions.size();
        const std::size_t nodes = size * size * size;
        if (nodes > m_mostNodes)
        {
            m_lines.Fail("the file ends before the last of " + std::to_string(nodes) +
                         " nodes; export the LUT again");
        }
        m_values.resize(3 * nodes);
        for (std::size_t i = 0; i < nodes; ++i)
        {
            std::string_view line = m_lines.Take("the last of " + std::to_string(nodes) + " nodes");
            // Blue is the fastest here, red in a look.
            const std::size_t place = (i % size * size + i / size % size) * size + i / size / size;
            for (std::size_t channel = 0; channel < 3; ++channel)
            {
                const std::uint32_t code =
                    m_lines.TakeCount(line, 0, m_statedTop != 0 ? m_statedTop : kTopCodes.back());
                m_largest = std::max(m_largest, code);
                m_values[3 * place + channel] = static_cast<float>(code);
            }
            m_lines.CheckEnd(line);
        }
    }

    // Some files say for which display they are; nothing of that is to be done.
    void ReadTail()
    {
        std::string_view line;
        while (m_lines.Next(line))
        {
            std::string_view rest = line;
            const std::string_view word = TakeWord(rest);
            if (EqualIgnoringCase(word, "gamma"))
            {
                if (m_lines.TakeNumber(rest) != 1.0F)
                {
                    m_lines.Fail("a gamma other than 1 behind the nodes is not applied; export the "
                                 "LUT without it");
                }
            }
            else if (!EqualIgnoringCase(word, "LUT8"))
            {
                m_lines.Fail("there is more than the " + std::to_string(m_values.size() / 3) +
                             " nodes that the positions ask for; export the LUT again");
            }
            m_lines.CheckEnd(rest);
        }
    }

    std::uint32_t OutputTop()
    {
        if (m_statedTop != 0)
        {
            return m_statedTop;
        }
        const std::uint32_t top = TopCodeFor(m_largest);
        if (m_largest < kClearShare * top)
        {
            m_warnings.push_back("does not say for how many bits its values are; " +
                                 std::to_string(top) + " counts as white, as the largest is " +
                                 std::to_string(m_largest));
        }
        return top;
    }

    // Where nodes are not at even steps, rounded to codes, the curve that makes them so.
    std::optional<CurveStep> Shaper() const
    {
        std::vector<CurvePoint> points;
        bool isEven = true;
        const double last = static_cast<double>(m_positions.size()) - 1.0;
        for (std::size_t i = 0; i < m_positions.size(); ++i)
        {
            const double share = static_cast<double>(i) / last;
            const double position = m_positions[i];
            isEven = isEven && std::abs(position - share * m_inputTop) <= 1.0;
            points.push_back({position / m_inputTop, share});
        }
        if (isEven && m_positions.front() == 0 && m_positions.back() == m_inputTop)
        {
            return {};
        }
        return CurveStep{{points, points, points}};
    }

    Cube MakeCube()
    {
        Cube cube{static_cast<std::uint32_t>(m_positions.size()), {}, std::move(m_values)};
        cube.nodes.resize(cube.nodes.size() + kNodePadding);
        return cube;
    }

    FilledLines m_lines;
    std::string_view m_path;
    std::size_t m_mostNodes; // that a text of this length can hold
    std::vector<std::string> m_warnings;
    std::uint32_t m_statedSize = 0; // by Mesh; 0 = not stated
    std::uint32_t m_statedTop = 0;
    std::vector<std::uint32_t> m_positions;
    std::uint32_t m_inputTop = 0;
    std::vector<float> m_values; // codes, then shares of the top one; red fastest
    std::uint32_t m_largest = 0;
};

} // namespace

bool LooksLike3dl(std::string_view text) noexcept
{
    FilledLines lines(text, {});
    std::string_view line;
    if (!lines.Next(line))
    {
        return false;
    }
    std::string_view rest = line;
    const std::string_view word = TakeWord(rest);
    return EqualIgnoringCase(word, "3DMESH") || EqualIgnoringCase(word, "Mesh") ||
           PositionsIn(line).has_value();
}

ReadLook Read3dl(std::string_view text, std::string_view path)
{
    return ThreeDlReader(text, path).Read();
}

} // namespace ReferenceRenderer
