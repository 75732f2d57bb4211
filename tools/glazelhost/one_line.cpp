#include "tools/glazelhost/one_line.h"

namespace GlazelHost
{

std::string OneLine(std::string_view text)
{
    std::string line;
    bool pendingSpace = false;
    for (const char character : text)
    {
        // As unsigned: the bytes of other scripts are above the control characters.
        if (static_cast<unsigned char>(character) <= ' ' || character == '\x7F')
        {
            pendingSpace = !line.empty();
            continue;
        }
        if (pendingSpace)
        {
            line += ' ';
            pendingSpace = false;
        }
        line += character;
    }
    return line;
}

std::string Joined(const std::vector<std::string>& names)
{
    std::string list;
    for (const std::string& name : names)
    {
        list += (list.empty() ? "" : ", ") + name;
    }
    return list;
}

} // namespace GlazelHost
