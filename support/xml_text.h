// A text as an XML element's content or an attribute's value within double quotes.
// Pure: no windows.h. Tests: tests/support/xml_text_test.cpp.
#pragma once

#include <string>
#include <string_view>

inline std::string XmlEscaped(std::string_view text)
{
    std::string escaped;
    for (const char character : text)
    {
        switch (character)
        {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            // XML has no way to write other control characters.
            escaped += static_cast<unsigned char>(character) < ' ' ? ' ' : character;
        }
    }
    return escaped;
}
