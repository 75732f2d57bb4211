#include "reference_renderer/core/spi_reader.h"

#include "reference_renderer/core/cube_reader.h"
#include "reference_renderer/core/filled_lines.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace ReferenceRenderer
{

namespace
{

std::string_view FirstWord(std::string_view line) noexcept
{
    return TakeWord(line);
}

// What stands before the entries of a .spi1d file.
struct Spi1dHead
{
    Interval domain;
    std::uint32_t size = 0;
    std::uint32_t components = 0; // 1 = one curve for all channels
};

Spi1dHead ReadSpi1dHead(FilledLines& lines, std::vector<std::string>& warnings)
{
    Spi1dHead head;
    while (true)
    {
        std::string_view line = lines.Take("the '{' before the entries");
        const std::string_view word = TakeWord(line);
        if (word == "{")
        {
            break;
        }
        if (word == "Version")
        {
            lines.TakeCount(line, 1, 1);
        }
        else if (word == "From")
        {
            head.domain.low = lines.TakeNumber(line);
            head.domain.high = lines.TakeNumber(line);
            if (!(head.domain.low < head.domain.high))
            {
                lines.Fail("From does not rise; correct its two numbers");
            }
        }
        else if (word == "Length")
        {
            head.size = lines.TakeCount(line, 2, kLargestCurve);
        }
        else if (word == "Components")
        {
            head.components = lines.TakeCount(line, 1, 3);
        }
        else
        {
            warnings.push_back(Quoted(word) + " is not a known keyword and was ignored");
        }
    }
    if (head.size == 0 || (head.components != 1 && head.components != 3))
    {
        lines.Fail("Length and Components, 1 or 3, do not stand before the entries; export the LUT "
                   "again");
    }
    return head;
}

} // namespace

bool LooksLikeSpi1d(std::string_view text) noexcept
{
    FilledLines lines(text, {});
    std::string_view line;
    return lines.Next(line) && FirstWord(line) == "Version" && text.find('{') != text.npos;
}

Look ReadSpi1d(std::string_view text, std::string_view path, std::vector<std::string>& warnings)
{
    FilledLines lines(text, path);
    const Spi1dHead head = ReadSpi1dHead(lines, warnings);
    Curves curves{head.size, {head.domain, head.domain, head.domain}, {}};
    curves.values.resize(std::size_t{3} * head.size);
    for (std::uint32_t i = 0; i < head.size; ++i)
    {
        std::string_view line = lines.Take("the last entry");
        for (std::uint32_t channel = 0; channel < 3; ++channel)
        {
            curves.values[std::size_t{channel} * head.size + i] =
                channel < head.components ? lines.TakeNumber(line) : curves.values[i];
        }
        lines.CheckEnd(line);
    }
    if (FirstWord(lines.Take("the '}' behind the entries")) != "}")
    {
        lines.Fail("there are more entries than Length says; correct it or export the LUT again");
    }
    Look look;
    look.curves = std::move(curves);
    return look;
}

bool LooksLikeSpi3d(std::string_view text) noexcept
{
    FilledLines lines(text, {});
    std::string_view line;
    return lines.Next(line) && FirstWord(line) == "SPILUT";
}

Look ReadSpi3d(std::string_view text, std::string_view path, std::vector<std::string>&)
{
    FilledLines lines(text, path);
    std::string_view line = lines.Take("the first line");
    TakeWord(line);
    if (TakeWord(line) != "1.0")
    {
        lines.Fail("only version 1.0 is known; export the LUT as that");
    }
    line = lines.Take("the numbers of channels");
    lines.TakeCount(line, 3, 3);
    lines.TakeCount(line, 3, 3);
    line = lines.Take("the size");
    const std::uint32_t size = lines.TakeCount(line, 2, kLargestCube);
    lines.TakeCount(line, size, size);
    lines.TakeCount(line, size, size);

    // A node takes at least 12 bytes: what cannot be there needs no memory.
    const std::size_t nodes = NodeCount(size);
    if (nodes > text.size() / 12)
    {
        lines.Fail("the file ends before the last of " + std::to_string(nodes) +
                   " nodes; export the LUT again");
    }
    Cube cube{size, {}, std::vector<float>(3 * nodes + kNodePadding)};
    std::vector<bool> isThere(nodes);
    for (std::size_t i = 0; i < nodes; ++i)
    {
        line = lines.Take("the last node");
        const std::uint32_t red = lines.TakeCount(line, 0, size - 1);
        const std::uint32_t green = lines.TakeCount(line, 0, size - 1);
        const std::uint32_t blue = lines.TakeCount(line, 0, size - 1);
        const std::size_t node = (std::size_t{blue} * size + green) * size + red;
        if (isThere[node])
        {
            lines.Fail("the node was given before; export the LUT again");
        }
        isThere[node] = true;
        for (std::size_t channel = 0; channel < 3; ++channel)
        {
            cube.nodes[3 * node + channel] = lines.TakeNumber(line);
        }
        lines.CheckEnd(line);
    }
    if (lines.Next(line))
    {
        lines.Fail("there are more nodes than the size asks for; correct it or export the LUT "
                   "again");
    }
    Look look;
    look.cube = std::move(cube);
    return look;
}

} // namespace ReferenceRenderer
