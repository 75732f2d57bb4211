#include "tools/glazelhost/host/look.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>

namespace
{

// The option chunk: tag and length big-endian, the value little-endian.
constexpr std::size_t kChunkOffset = 8;
constexpr std::array kChunkHead{std::byte{'f'}, std::byte{'l'}, std::byte{'a'}, std::byte{'g'},
                                std::byte{0},   std::byte{0},   std::byte{0},   std::byte{4}};
constexpr std::size_t kValueOffset = kChunkOffset + kChunkHead.size();
constexpr std::size_t kValueBytes = 4;

bool HasOptionChunk(std::span<const std::byte> record) noexcept
{
    return record.size() >= kValueOffset + kValueBytes &&
           std::equal(kChunkHead.begin(), kChunkHead.end(), record.begin() + kChunkOffset);
}

std::string TextOf(const nlohmann::json& object, const char* key)
{
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

} // namespace

std::optional<bool> LinearOption(std::span<const std::byte> record) noexcept
{
    if (!HasOptionChunk(record))
    {
        return std::nullopt;
    }
    constexpr std::array kOn{std::byte{1}, std::byte{0}, std::byte{0}, std::byte{0}};
    return std::equal(kOn.begin(), kOn.end(), record.begin() + kValueOffset);
}

bool SetLinearOption(std::span<std::byte> record, bool on) noexcept
{
    if (!HasOptionChunk(record))
    {
        return false;
    }
    const auto value = record.subspan(kValueOffset, kValueBytes);
    std::fill(value.begin(), value.end(), std::byte{0});
    value[0] = on ? std::byte{1} : std::byte{0};
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
