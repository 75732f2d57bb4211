#include "tools/glazelhost/validate/report.h"

#include "tools/glazelhost/validate/report_text.h"

#include <nlohmann/json.hpp>

#include <exception>
#include <stdexcept>

namespace GlazelHost
{

namespace
{

using Json = nlohmann::ordered_json;

constexpr char kReportFormat[] = "glazelhost validate report";
constexpr int kReportVersion = 1;

Json OptionsJson(const ValidateOptions& options)
{
    return {{"level", options.level},
            {"only", options.only},
            {"skip", options.skip},
            {"seed", options.seed},
            {"jobs", options.jobs},
            {"timeLimit", options.timeLimit},
            {"renderer", options.rendererFolder}};
}

ValidateOptions OptionsFrom(const Json& json)
{
    ValidateOptions options;
    json.at("level").get_to(options.level);
    json.at("only").get_to(options.only);
    json.at("skip").get_to(options.skip);
    json.at("seed").get_to(options.seed);
    json.at("jobs").get_to(options.jobs);
    json.at("timeLimit").get_to(options.timeLimit);
    json.at("renderer").get_to(options.rendererFolder);
    if (options.level < kLowestLevel || options.level > kHighestLevel || options.jobs == 0 ||
        options.jobs > kMostJobs || options.timeLimit == 0 || options.timeLimit > kLongestLimit)
    {
        throw std::runtime_error("a number out of its range");
    }
    return options;
}

Json GroupJson(const GroupResult& group)
{
    return {{"name", group.name},           {"level", group.level},     {"asks", group.asks},
            {"state", NameOf(group.state)}, {"reasons", group.reasons}, {"seconds", group.seconds}};
}

GroupResult GroupFrom(const Json& json)
{
    GroupResult group;
    json.at("name").get_to(group.name);
    json.at("level").get_to(group.level);
    json.at("asks").get_to(group.asks);
    const auto state = StateCalled(json.at("state").get<std::string>());
    if (!state)
    {
        throw std::runtime_error("a state that is not known");
    }
    group.state = *state;
    json.at("reasons").get_to(group.reasons);
    json.at("seconds").get_to(group.seconds);
    return group;
}

ValidateReport ReportFrom(const Json& json)
{
    ValidateReport report;
    json.at("program").get_to(report.program);
    report.kind = json.at("kind").get<std::string>() == "renderer" ? SubjectKind::Renderer
                                                                   : SubjectKind::PlugIn;
    for (const Json& file : json.at("files").get_ref<const Json::array_t&>())
    {
        report.files.push_back(
            {file.at("role"), file.at("file"), file.at("version"), file.at("sha256")});
    }
    report.options = OptionsFrom(json.at("options"));
    const Json& machine = json.at("machine");
    report.machine = {machine.at("system"), machine.at("wine"), machine.at("processor"),
                      machine.at("processors"), machine.at("locale")};
    json.at("time").get_to(report.time);
    json.at("seconds").get_to(report.seconds);
    for (const Json& group : json.at("groups").get_ref<const Json::array_t&>())
    {
        report.groups.push_back(GroupFrom(group));
    }
    return report;
}

} // namespace

StateCounts CountsOf(const ValidateReport& report) noexcept
{
    StateCounts counts{};
    for (const GroupResult& group : report.groups)
    {
        ++counts[static_cast<std::size_t>(group.state)];
    }
    return counts;
}

std::string JsonOf(const ValidateReport& report)
{
    Json files = Json::array();
    for (const JudgedFile& file : report.files)
    {
        files.push_back({{"role", file.role},
                         {"file", file.file},
                         {"version", file.version},
                         {"sha256", file.sha256}});
    }
    Json groups = Json::array();
    for (const GroupResult& group : report.groups)
    {
        groups.push_back(GroupJson(group));
    }
    const StateCounts counts = CountsOf(report);
    Json summary;
    for (std::size_t state = 0; state < counts.size(); ++state)
    {
        summary[kStateNames[state]] = counts[state];
    }
    const MachineFacts& machine = report.machine;
    const Json json{{"format", kReportFormat},
                    {"version", kReportVersion},
                    {"program", report.program},
                    {"kind", NameOf(report.kind)},
                    {"files", files},
                    {"options", OptionsJson(report.options)},
                    {"machine",
                     {{"system", machine.system},
                      {"wine", machine.wine},
                      {"processor", machine.processor},
                      {"processors", machine.processors},
                      {"locale", machine.locale}}},
                    {"time", report.time},
                    {"seconds", report.seconds},
                    {"groups", groups},
                    {"summary", summary},
                    {"verdict", VerdictOf(report)}};
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::optional<ValidateReport> ParseReport(std::string_view json, std::string& why)
{
    const Json parsed = Json::parse(json, nullptr, false);
    if (!parsed.is_object() || !parsed.contains("format") || parsed["format"] != kReportFormat)
    {
        why = "it is no report of \"glazelhost validate\"";
        return std::nullopt;
    }
    if (!parsed.contains("version") || parsed["version"] != kReportVersion)
    {
        why = "it is a report of another version than " + std::to_string(kReportVersion);
        return std::nullopt;
    }
    try
    {
        ValidateReport report = ReportFrom(parsed);
        if (report.files.empty())
        {
            why = "it names no file";
            return std::nullopt;
        }
        return report;
    }
    catch (const std::exception&)
    {
        why = "a part of it is missing or damaged";
        return std::nullopt;
    }
}

} // namespace GlazelHost
