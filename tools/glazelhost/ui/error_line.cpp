#include "tools/glazelhost/ui/error_line.h"

#include <algorithm>

namespace GlazelHost
{

namespace
{

constexpr std::string_view kJsonEnd = "\"}\n";
constexpr std::string_view kPlainEnd = "\n";

// Bytes of the character that begins with `first`.
std::size_t CharacterBytes(char first) noexcept
{
    const auto byte = static_cast<unsigned char>(first);
    return byte < 0xC0 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

} // namespace

ErrorLine::ErrorLine(ReportStyle style) noexcept : m_isJson(style == ReportStyle::Json)
{
    if (style == ReportStyle::Bar)
    {
        Append("\n"); // the bar may stand on the line
    }
    Append(m_isJson ? R"({"event":"error","text":")" : "glazelhost: ");
}

void ErrorLine::Add(std::string_view text) noexcept
{
    while (!text.empty() && !m_isFull)
    {
        const std::string_view character = text.substr(0, CharacterBytes(text.front()));
        text.remove_prefix(character.size());
        m_isFull = !AppendCharacter(character);
    }
}

bool ErrorLine::Append(std::string_view bytes) noexcept
{
    if (bytes.size() > m_bytes.size() - kJsonEnd.size() - m_length)
    {
        return false;
    }
    std::ranges::copy(bytes, m_bytes.data() + m_length);
    m_length += bytes.size();
    return true;
}

bool ErrorLine::AppendCharacter(std::string_view character) noexcept
{
    const auto byte = static_cast<unsigned char>(character.front());
    if (!m_isJson || (byte >= ' ' && byte != '"' && byte != '\\'))
    {
        return Append(character);
    }
    if (byte >= ' ')
    {
        const std::array escaped{'\\', character.front()};
        return Append({escaped.data(), escaped.size()});
    }
    constexpr std::string_view kDigits = "0123456789abcdef";
    const std::array escaped{'\\', 'u', '0', '0', kDigits[byte >> 4], kDigits[byte & 15]};
    return Append({escaped.data(), escaped.size()});
}

std::string_view ErrorLine::End() noexcept
{
    const std::string_view end = m_isJson ? kJsonEnd : kPlainEnd;
    std::ranges::copy(end, m_bytes.data() + m_length); // Append has kept room for it
    return {m_bytes.data(), m_length + end.size()};
}

} // namespace GlazelHost
