#include "tools/glazelhost/commands/commands.h"

#include "contract/entry_points.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/file_stream.h"
#include "tools/glazelhost/media/safe_output.h"
#include "tools/glazelhost/one_line.h"
#include "tools/glazelhost/plugin/message_boxes.h"
#include "tools/glazelhost/plugin/plugin_module.h"
#include "tools/glazelhost/plugin/renderer_library.h"
#include "tools/glazelhost/ui/console.h"
#include "tools/glazelhost/validate/check.h"
#include "tools/glazelhost/validate/machine_facts.h"
#include "tools/glazelhost/validate/report_text.h"
#include "tools/glazelhost/validate/run_groups.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <span>
#include <string_view>
#include <utility>

namespace GlazelHost
{

namespace
{

// By what its file exports. What it does when it is loaded, it does to the processes of the groups.
SubjectKind KindOf(const std::string& path)
{
    LibraryState state;
    const std::vector<std::string> exports = ExportsOfFile(path, state);
    if (state.problem != LibraryProblem::None)
    {
        throw HostError(path, state.why, state.remedy);
    }
    const auto has = [&exports](std::string_view name) {
        return std::ranges::find(exports, name) != exports.end();
    };
    if (has("DllGetClassObject"))
    {
        return SubjectKind::PlugIn;
    }
    if (std::ranges::any_of(RendererAPI::kEntryPoints, has, &RendererAPI::EntryPointName::name))
    {
        return SubjectKind::Renderer;
    }
    throw HostError(path, "it is neither a plug-in nor a renderer by what it exports",
                    "name the DLL of one of them");
}

void List(const ValidateOptions& options)
{
    std::string text;
    for (const SubjectKind kind : {SubjectKind::Renderer, SubjectKind::PlugIn})
    {
        for (const CheckGroup& group : GroupsOf(kind))
        {
            if (IsChosen(group, options))
            {
                text += std::string(group.name) + " (level " + std::to_string(group.level) +
                        "): " + group.asks + "\n";
            }
        }
    }
    WriteStandardOutput(text);
}

// The process of one group: what it finds goes to standard output.
void RunGroup(const ValidateCommand& command)
{
    Findings findings([](const std::string& line) { WriteStandardOutput(line); });
    for (const SubjectKind kind : {SubjectKind::Renderer, SubjectKind::PlugIn})
    {
        for (const CheckGroup& group : GroupsOf(kind))
        {
            if (command.group == group.name)
            {
                Check check(FullPath(command.file), group.name, command.options, findings);
                findings.Begin();
                try
                {
                    group.run(check);
                }
                catch (const HostError& error)
                {
                    findings.Fail(error.what());
                }
                for (const std::string& text : TakeMessageBoxes())
                {
                    findings.Fail("it wants to show a message box: " + text);
                }
                findings.Finish();
                return;
            }
        }
    }
    throw HostError(command.group, "there is no such group", "see \"glazelhost validate --list\"",
                    ExitCode::WrongUsage);
}

ValidateReport ReadReport(const std::string& path)
{
    const std::vector<std::byte> bytes = ReadWholeFile(path);
    std::string why;
    auto report = ParseReport({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, why);
    if (!report)
    {
        throw HostError(path, why,
                        "name what \"glazelhost validate --json\" of this version wrote");
    }
    return std::move(*report);
}

void WriteFile(const std::string& path, bool overwrite, const std::string& text)
{
    const auto output = OpenSafeOutput(path, overwrite);
    output->Write(reinterpret_cast<const std::byte*>(text.data()), text.size());
    output->Commit();
}

unsigned UsualJobs() noexcept
{
    SYSTEM_INFO system{};
    ::GetSystemInfo(&system);
    return std::clamp<unsigned>(system.dwNumberOfProcessors / 2, 1, kMostJobs);
}

ValidateReport Judge(const std::string& path, const ValidateOptions& options)
{
    ValidateReport report;
    report.program = GLAZEL_VERSION;
    report.options = options;
    report.options.jobs = options.jobs != 0 ? options.jobs : UsualJobs();
    report.kind = KindOf(path);
    report.files.push_back(FactsOfFile(NameOf(report.kind), path));
    if (report.kind == SubjectKind::PlugIn)
    {
        const RendererState renderer = StateOfRendererFile(options.rendererFolder);
        RequireRenderer(renderer);
        report.files.push_back(FactsOfFile("renderer", renderer.path));
    }
    report.machine = FactsOfThisMachine();
    report.time = TimeText();

    std::vector<const CheckGroup*> groups;
    for (const CheckGroup& group : GroupsOf(report.kind))
    {
        if (IsChosen(group, options))
        {
            groups.push_back(&group);
        }
    }
    if (groups.empty())
    {
        throw HostError("--only and --skip", "they leave nothing to ask of this file",
                        "see \"glazelhost validate --list\"", ExitCode::WrongUsage);
    }
    const double begin = SecondsNow();
    report.groups = RunGroups(path, groups, report.options, [](const GroupResult& result) {
        WriteStandardOutput(TextOf(result));
    });
    report.seconds = SecondsNow() - begin;
    return report;
}

} // namespace

void RunCommand(const ValidateCommand& command, Reporter& /*reporter*/)
{
    if (command.list)
    {
        return List(command.options);
    }
    if (!command.group.empty())
    {
        return RunGroup(command);
    }
    for (const auto& output : {command.report, command.junit})
    {
        if (output)
        {
            CheckOutputTarget(*output, command.overwrite);
        }
    }
    std::optional<ValidateReport> earlier;
    std::string file = command.file;
    ValidateOptions options = command.options;
    if (command.again)
    {
        earlier = ReadReport(*command.again);
        file = file.empty() ? earlier->files.front().file : file;
        options = earlier->options;
        if (!command.tools.rendererFolder.empty())
        {
            options.rendererFolder = command.tools.rendererFolder;
        }
    }
    const ValidateReport report = Judge(file, options);
    if (command.report)
    {
        WriteFile(*command.report, command.overwrite, JsonOf(report));
    }
    if (command.junit)
    {
        WriteFile(*command.junit, command.overwrite, JUnitOf(report));
    }
    ExitCode code = ExitCodeOf(report);
    if (earlier)
    {
        const std::vector<std::string> differences = DifferencesOf(*earlier, report);
        for (const std::string& difference : differences)
        {
            WriteStandardOutput("differs: " + OneLine(difference) + "\n");
        }
        WriteStandardOutput(differences.empty() ? "the same as " + *command.again + "\n" : "");
        if (code == ExitCode::Done && !differences.empty())
        {
            code = ExitCode::OverWarning;
        }
    }
    WriteStandardOutput("verdict: " + VerdictOf(report) + "\n");
    if (code != ExitCode::Done)
    {
        throw HostError(file, VerdictOf(report), "see the lines above", code);
    }
}

} // namespace GlazelHost
