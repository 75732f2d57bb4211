#include "tools/glazelhost/plugin/look.h"

#include "contract/option_chunk.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstring>

namespace GlazelHost
{

namespace
{

std::string TextOf(const nlohmann::json& object, const char* key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

} // namespace

std::optional<bool> LinearOption(std::span<const std::byte> record) noexcept
{
    if (!HasOptionChunk(record.data(), record.size()))
    {
        return std::nullopt;
    }
    std::uint32_t option = 0;
    std::memcpy(&option, record.data() + kOptionWord, sizeof option);
    return option == kAssumeLinearGamma;
}

bool SetLinearOption(std::span<std::byte> record, bool on) noexcept
{
    if (!HasOptionChunk(record.data(), record.size()))
    {
        return false;
    }
    const std::uint32_t option = on ? kAssumeLinearGamma : 0;
    std::memcpy(record.data() + kOptionWord, &option, sizeof option);
    return true;
}

std::optional<DescriptionText> ParseDescription(std::string_view json)
{
    const auto object = nlohmann::json::parse(json, nullptr, false);
    if (!object.is_object())
    {
        return std::nullopt;
    }
    DescriptionText text;
    text.error = TextOf(object, "error");
    text.description.kind = TextOf(object, "kind");
    text.description.title = TextOf(object, "title");
    text.description.contents = TextOf(object, "contents");
    if (const auto warnings = object.find("warnings");
        warnings != object.end() && warnings->is_array())
    {
        for (const auto& warning : *warnings)
        {
            if (warning.is_string())
            {
                text.description.warnings.push_back(warning.get<std::string>());
            }
        }
    }
    if (const auto error = object.find("largestError"); error != object.end() && error->is_number())
    {
        text.description.largestError = error->get<double>();
    }
    return text;
}

} // namespace GlazelHost
