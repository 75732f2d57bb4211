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

} // namespace GlazelHost
