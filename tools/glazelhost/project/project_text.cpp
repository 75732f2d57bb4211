#include "tools/glazelhost/project/project_text.h"

#include "reference_renderer/core/base64.h"
#include "support/crc32.h"
#include "tools/glazelhost/host_error.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <span>
#include <utility>

namespace GlazelHost
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr char kFormat[] = "glazelhost project";
// The newest form that this program reads, and the one that it writes.
constexpr std::int64_t kVersion = 1;
constexpr char kLinear[] = "linear";
constexpr char kSmooth[] = "smooth";
// Three are in use. What is nested without end cannot even be written out to check its seal: each
// level takes some of the stack.
constexpr int kMostLevels = 16;

std::uint32_t SealOf(const Json& json)
{
    const std::string text = json.dump();
    return Crc32(std::as_bytes(std::span(text)));
}

// As it stands there: a float need not have a value as an integer.
const Json& WholeNumber(const Json& number, const std::string& path)
{
    if (!number.is_number_integer())
    {
        ThrowDamagedProject(path, "its text");
    }
    return number;
}

std::vector<std::byte> RecordOf(const Json& json, const std::string& path, const std::string& whose)
{
    auto record = ReferenceRenderer::ParseBase64(json.get_ref<const std::string&>());
    if (!record)
    {
        ThrowDamagedProject(path, whose);
    }
    return std::move(*record);
}

StoredProject ProjectOf(const Json& json, const std::string& path)
{
    StoredProject stored{json.at("effect").get<std::string>(),
                         RecordOf(json.at("look"), path, "the effect's look"),
                         {}};
    stored.project.ease =
        json.at("ease").get_ref<const std::string&>() == kSmooth ? Ease::Smooth : Ease::Linear;
    for (const Json& keyframe : json.at("keyframes"))
    {
        const auto text = keyframe.at("time").get<std::string>();
        const auto time = ParseKeyTime(text);
        if (!time || stored.project.keyframes.size() == kMostKeyframes)
        {
            ThrowDamagedProject(path, "its list of keyframes");
        }
        stored.project.keyframes.push_back(
            {*time, RecordOf(keyframe.at("look"), path, "the keyframe at " + text)});
    }
    return stored;
}

} // namespace

void ThrowNoProject(const std::string& path)
{
    throw HostError(path, "this is not a project", "name a file that --save-project wrote");
}

void ThrowDamagedProject(const std::string& path, const std::string& what)
{
    throw HostError(path, "the project is damaged: " + what + " cannot be trusted",
                    "restore the file from a copy");
}

std::string TextOf(const StoredProject& stored)
{
    Json json{{"format", kFormat},
              {"version", kVersion},
              {"effect", stored.effect},
              {"ease", stored.project.ease == Ease::Smooth ? kSmooth : kLinear},
              {"look", ReferenceRenderer::Base64Of(stored.look)},
              {"keyframes", Json::array()}};
    for (const Keyframe& keyframe : stored.project.keyframes)
    {
        json["keyframes"].push_back({{"time", TextOf(keyframe.time)},
                                     {"look", ReferenceRenderer::Base64Of(keyframe.record)}});
    }
    json["crc32"] = SealOf(json); // as it is without this member
    return json.dump(2) + '\n';
}

StoredProject ParseProject(std::string_view text, const std::string& path)
{
    if (text.find(kFormat) == std::string_view::npos)
    {
        ThrowNoProject(path);
    }
    try
    {
        Json json = Json::parse(text, [&path](int level, Json::parse_event_t, const Json&) {
            if (level > kMostLevels)
            {
                ThrowDamagedProject(path, "its text");
            }
            return true;
        });
        // Before anything else is looked at: a newer form may have another seal.
        const auto version = WholeNumber(json.at("version"), path).get<std::int64_t>();
        if (version > kVersion)
        {
            throw HostError(path,
                            "the project comes from a newer version of this program (form " +
                                std::to_string(version) + ", this one reads up to " +
                                std::to_string(kVersion) + ")",
                            "use that version");
        }
        const auto seal = WholeNumber(json.at("crc32"), path).get<std::uint64_t>();
        json.erase("crc32");
        if (version < 1 || seal != SealOf(json))
        {
            ThrowDamagedProject(path, "its text");
        }
        return ProjectOf(json, path);
    }
    catch (const Json::exception&)
    {
        ThrowDamagedProject(path, "its text");
    }
}

} // namespace GlazelHost
