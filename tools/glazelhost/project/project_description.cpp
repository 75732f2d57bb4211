#include "tools/glazelhost/project/project_description.h"

#include "support/crc32.h"
#include "tools/glazelhost/host_error.h"

#include <nlohmann/json.hpp>

namespace GlazelHost
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr char kFormat[] = "glazelhost project";
constexpr char kLinear[] = "linear";
constexpr char kSmooth[] = "smooth";
// Three are in use. What is nested without end cannot even be written out to check its seal: each
// level takes some of the stack.
constexpr int kMostLevels = 16;

std::uint32_t Crc32Of(const std::string& text) noexcept
{
    return Crc32(std::as_bytes(std::span(text)));
}

Json JsonOf(const RecordSeal& seal)
{
    return {{"bytes", seal.size}, {"crc32", seal.crc32}};
}

RecordSeal SealOf(const Json& json)
{
    return {json.at("bytes").get<std::uint64_t>(), json.at("crc32").get<std::uint32_t>()};
}

ProjectDescription DescriptionOf(const Json& json, const std::string& path)
{
    ProjectDescription description;
    const auto ease = json.at("ease").get<std::string>();
    description.ease = ease == kSmooth ? Ease::Smooth : Ease::Linear;
    description.look = SealOf(json.at("look"));
    for (const Json& key : json.at("keyframes"))
    {
        const auto time = ParseKeyTime(key.at("time").get<std::string>());
        if (!time || description.keys.size() == kMostKeyframes)
        {
            ThrowDamagedProject(path, "its list of keyframes");
        }
        description.keys.push_back({*time, SealOf(key)});
    }
    return description;
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

RecordSeal SealOf(std::span<const std::byte> record) noexcept
{
    return {record.size(), Crc32(record)};
}

std::string TextOf(const ProjectDescription& description)
{
    Json json{{"format", kFormat},
              {"version", kProjectVersion},
              {"ease", description.ease == Ease::Smooth ? kSmooth : kLinear},
              {"look", JsonOf(description.look)},
              {"keyframes", Json::array()}};
    for (const ProjectDescription::Key& key : description.keys)
    {
        Json row{{"time", TextOf(key.time)}};
        row.update(JsonOf(key.seal));
        json["keyframes"].push_back(std::move(row));
    }
    json["crc32"] = Crc32Of(json.dump()); // of the text as it is without this member
    return json.dump();
}

ProjectDescription ParseProjectDescription(std::string_view text, const std::string& path)
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
                ThrowDamagedProject(path, "its description");
            }
            return true;
        });
        // Before anything else is looked at: a newer form may have another seal.
        const auto version = json.at("version").get<std::int64_t>();
        if (version > kProjectVersion)
        {
            throw HostError(path,
                            "the project comes from a newer version of this program (form " +
                                std::to_string(version) + ", this one reads up to " +
                                std::to_string(kProjectVersion) + ")",
                            "use that version");
        }
        const auto stated = json.at("crc32").get<std::uint32_t>();
        json.erase("crc32");
        if (version < 1 || stated != Crc32Of(json.dump()))
        {
            ThrowDamagedProject(path, "its description");
        }
        return DescriptionOf(json, path);
    }
    catch (const Json::exception&)
    {
        ThrowDamagedProject(path, "its description");
    }
}

} // namespace GlazelHost
