#include "reference_renderer/editor/number_text.h"

#include "reference_renderer/core/text_scanning.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace ReferenceRenderer
{

std::string NumberText(float value)
{
    constexpr int kMostDecimals = 5;
    constexpr int kFewestDecimals = 3;
    std::array<char, 64> room{}; // the largest number of a look has 31 digits before its point
    const auto [end, error] =
        std::to_chars(room.data(), room.data() + room.size(), static_cast<double>(value),
                      std::chars_format::fixed, kMostDecimals);
    std::string text(room.data(), error == std::errc() ? end : room.data());
    for (int i = kFewestDecimals; i < kMostDecimals && text.ends_with('0'); ++i)
    {
        text.pop_back();
    }
    const bool onlyZeros = text.find_first_not_of("-.0") == std::string::npos;
    return onlyZeros && text.starts_with('-') ? text.substr(1) : text;
}

std::string ShortNumberText(float value)
{
    std::string text = NumberText(value);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.ends_with('.'))
    {
        text.pop_back();
    }
    return text;
}

std::optional<float> TypedNumber(std::string_view text)
{
    std::string_view rest = text;
    std::string word(TakeWord(rest));
    if (!TakeWord(rest).empty())
    {
        return {};
    }
    const bool oneComma = std::count(word.begin(), word.end(), ',') == 1;
    if (oneComma && word.find('.') == std::string::npos)
    {
        std::replace(word.begin(), word.end(), ',', '.');
    }
    return ParseNumber(word);
}

} // namespace ReferenceRenderer
