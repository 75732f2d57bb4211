#include "reference_renderer/core/base64.h"

#include <algorithm>
#include <cstdint>

namespace ReferenceRenderer
{

namespace
{

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPadding = '=';
constexpr unsigned kDigitBits = 6;

} // namespace

std::string Base64Of(std::span<const std::byte> bytes)
{
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (; !bytes.empty(); bytes = bytes.subspan(std::min<std::size_t>(bytes.size(), 3)))
    {
        const std::size_t count = std::min<std::size_t>(bytes.size(), 3);
        std::uint32_t group = 0; // three bytes, the first one highest
        for (std::size_t index = 0; index < 3; ++index)
        {
            group = group << 8 | (index < count ? std::to_integer<std::uint32_t>(bytes[index]) : 0);
        }
        for (unsigned digit = 0; digit < 4; ++digit)
        {
            text += digit <= count ? kAlphabet[group >> (3 - digit) * kDigitBits & 63] : kPadding;
        }
    }
    return text;
}

std::optional<std::vector<std::byte>> ParseBase64(std::string_view text)
{
    std::vector<std::byte> bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t group = 0;
    unsigned bits = 0;
    for (const char character : text.substr(0, text.find(kPadding)))
    {
        const std::size_t digit = kAlphabet.find(character);
        if (digit == std::string_view::npos)
        {
            return std::nullopt;
        }
        group = group << kDigitBits | static_cast<std::uint32_t>(digit);
        bits += kDigitBits;
        if (bits >= 8)
        {
            bits -= 8;
            bytes.push_back(static_cast<std::byte>(group >> bits));
        }
    }
    // Written again, because padding and spare bits are told apart by nothing else.
    return Base64Of(bytes) == text ? std::optional(std::move(bytes)) : std::nullopt;
}

} // namespace ReferenceRenderer
