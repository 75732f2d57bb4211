#include "reference_renderer/core/xml_depth.h"

#include <algorithm>

namespace ReferenceRenderer
{

namespace
{

// Removes everything up to and including `end`; the whole text when it is not there.
void SkipPast(std::string_view& text, std::string_view end) noexcept
{
    const std::size_t found = text.find(end);
    text.remove_prefix(found == std::string_view::npos ? text.size() : found + end.size());
}

// Removes the rest of a start tag and answers whether it closed itself. The parser takes quotes as
// part of a name, so only one behind '=' opens a value, in which '>' ends no tag.
bool SkipStartTag(std::string_view& text) noexcept
{
    text.remove_prefix(std::min(text.find_first_of(" \t\r\n/>?"), text.size()));
    char previous = 0; // last character that is no white space
    while (!text.empty())
    {
        const char c = text.front();
        text.remove_prefix(1);
        if ((c == '"' || c == '\'') && previous == '=')
        {
            SkipPast(text, std::string_view(&c, 1));
        }
        else if (c == '>')
        {
            return previous == '/';
        }
        if (std::string_view(" \t\r\n").find(c) == std::string_view::npos)
        {
            previous = c;
        }
    }
    return false;
}

} // namespace

std::size_t DeepestElement(std::string_view text) noexcept
{
    std::size_t depth = 0;
    std::size_t deepest = 0;
    while (true)
    {
        SkipPast(text, "<");
        if (text.empty())
        {
            return deepest;
        }
        if (text.substr(0, 3) == "!--")
        {
            text.remove_prefix(3);
            SkipPast(text, "-->");
        }
        else if (text.substr(0, 8) == "![CDATA[")
        {
            SkipPast(text, "]]>");
        }
        else if (text.front() == '?')
        {
            SkipPast(text, "?>");
        }
        else if (text.front() == '/')
        {
            depth -= depth > 0 ? 1U : 0U;
        }
        else if (text.front() == '!')
        {
            return kNotCountable;
        }
        else
        {
            ++depth;
            deepest = std::max(deepest, depth);
            depth -= SkipStartTag(text) ? 1U : 0U;
        }
    }
}

} // namespace ReferenceRenderer
