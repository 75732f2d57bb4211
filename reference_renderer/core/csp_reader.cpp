#include "reference_renderer/core/csp_reader.h"

#include "reference_renderer/core/chain_fitting.h"
#include "reference_renderer/core/cube_reader.h"
#include "reference_renderer/core/filled_lines.h"

#include <algorithm>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

constexpr std::string_view kFirstWord = "CSPLUTV100";

std::string_view FirstWord(std::string_view line) noexcept
{
    return TakeWord(line);
}

class CspReader
{
public:
    CspReader(std::string_view text, std::string_view path)
        : m_lines(text, path), m_path(path), m_mostEntries(text.size() / 6 + 1)
    {
    }

    ReadLook Read()
    {
        if (FirstWord(m_lines.Take("the first line")) != kFirstWord)
        {
            m_lines.Fail("the first line is not CSPLUTV100; export the LUT again");
        }
        const std::string_view kind = FirstWord(m_lines.Take("the kind, 1D or 3D"));
        if (kind != "1D" && kind != "3D")
        {
            m_lines.Fail(Quoted(kind) + " is not 1D or 3D; export the LUT as one of these");
        }
        std::string_view line = SkipMetadata();
        CurveStep curves;
        for (std::vector<CurvePoint>& channel : curves.channels)
        {
            channel = ReadPoints(line);
            line = m_lines.Take("the size of the table");
        }
        ColourChain chain{std::move(curves)};
        if (kind == "3D")
        {
            chain.emplace_back(CubeStep{ReadCube(line)});
        }
        else
        {
            chain.emplace_back(ReadCurves(line));
        }
        if (m_lines.Next(line))
        {
            m_lines.Fail("there are more entries than the size asks for; correct it or export the "
                         "LUT again");
        }
        return LookOfChain(std::move(chain), m_path);
    }

private:
    // The line behind the words that a file may hold about itself.
    std::string_view SkipMetadata()
    {
        std::string_view line = m_lines.Take("the curves in front");
        if (!EqualIgnoringCase(FirstWord(line), "BEGIN"))
        {
            return line;
        }
        while (!EqualIgnoringCase(FirstWord(line), "END"))
        {
            line = m_lines.Take("END METADATA");
        }
        return m_lines.Take("the curves in front");
    }

    std::vector<CurvePoint> ReadPoints(std::string_view line)
    {
        std::vector<CurvePoint> points(m_lines.TakeCount(line, 2, kLargestCurve));
        m_lines.CheckEnd(line);
        const auto read = [&](double CurvePoint::*part, const char* what) {
            std::string_view numbers = m_lines.Take(what);
            for (CurvePoint& point : points)
            {
                point.*part = m_lines.TakeNumber(numbers);
            }
            m_lines.CheckEnd(numbers);
        };
        read(&CurvePoint::input, "the inputs of a curve in front");
        const auto fall = [](const CurvePoint& a, const CurvePoint& b) {
            return a.input >= b.input;
        };
        if (std::adjacent_find(points.begin(), points.end(), fall) != points.end())
        {
            m_lines.Fail("the inputs of the curve do not rise; correct them");
        }
        read(&CurvePoint::output, "the outputs of a curve in front");
        return points;
    }

    void CheckRoom(std::size_t entries) const
    {
        if (entries > m_mostEntries)
        {
            m_lines.Fail("the file ends before the last of " + std::to_string(entries) +
                         " entries; export the LUT again");
        }
    }

    std::array<float, 3> ReadEntry()
    {
        std::string_view line = m_lines.Take("the last entry");
        const float red = m_lines.TakeNumber(line);
        const float green = m_lines.TakeNumber(line);
        const float blue = m_lines.TakeNumber(line);
        m_lines.CheckEnd(line);
        return {red, green, blue};
    }

    CurveStep ReadCurves(std::string_view line)
    {
        const std::uint32_t size = m_lines.TakeCount(line, 2, kLargestCurve);
        m_lines.CheckEnd(line);
        CheckRoom(size);
        CurveStep curves;
        for (std::uint32_t i = 0; i < size; ++i)
        {
            const std::array<float, 3> entry = ReadEntry();
            for (std::size_t channel = 0; channel < 3; ++channel)
            {
                curves.channels[channel].push_back(
                    {static_cast<double>(i) / (size - 1), entry[channel]});
            }
        }
        return curves;
    }

    Cube ReadCube(std::string_view line)
    {
        const std::uint32_t size = m_lines.TakeCount(line, 2, kLargestCube);
        for (int other = 0; other < 2; ++other)
        {
            if (m_lines.TakeCount(line, 2, kLargestCube) != size)
            {
                m_lines.Fail("the sizes of the cube differ; export it with the same number of "
                             "nodes along all sides");
            }
        }
        m_lines.CheckEnd(line);
        CheckRoom(NodeCount(size));
        Cube cube{size, {}, {}};
        cube.nodes.reserve(3 * NodeCount(size) + kNodePadding);
        for (std::size_t i = 0; i < NodeCount(size); ++i)
        {
            const std::array<float, 3> node = ReadEntry();
            cube.nodes.insert(cube.nodes.end(), node.begin(), node.end());
        }
        cube.nodes.resize(cube.nodes.size() + kNodePadding);
        return cube;
    }

    FilledLines m_lines;
    std::string_view m_path;
    std::size_t m_mostEntries; // that a text of this length can hold
};

} // namespace

bool LooksLikeCsp(std::string_view text) noexcept
{
    FilledLines lines(text, {});
    std::string_view line;
    return lines.Next(line) && FirstWord(line) == kFirstWord;
}

ReadLook ReadCsp(std::string_view text, std::string_view path)
{
    return CspReader(text, path).Read();
}

} // namespace ReferenceRenderer
