#include "tools/glazelhost/commands/validate_options.h"

#include "tools/glazelhost/commands/shared_options.h"

#include <CLI/CLI.hpp>

#include <initializer_list>
#include <limits>

namespace GlazelHost
{

void AddValidateOptions(CLI::App& command, ValidateCommand& validate)
{
    ValidateOptions& options = validate.options;
    options.jobs = 0; // half of the processor's cores
    command.add_option("FILE", validate.file, "the plug-in or the renderer")->type_name("");
    const std::initializer_list<CLI::Option*> told{
        command
            .add_option("--level", options.level,
                        "how much to ask (default: 5, what a host can live with)")
            ->check(Undescribed(CLI::Range(kLowestLevel, kHighestLevel)))
            ->type_name("1-10"),
        command.add_option("--only", options.only, "groups to ask (default: all)")
            ->allow_extra_args(false)
            ->type_name("PATTERN"),
        command.add_option("--skip", options.skip, "groups not to ask")
            ->allow_extra_args(false)
            ->type_name("PATTERN"),
        command.add_option("--seed", options.seed, "other random numbers (default: 0)")
            ->check(Undescribed(CLI::Range(0U, std::numeric_limits<std::uint32_t>::max())))
            ->type_name("N"),
        command
            .add_option("--jobs", options.jobs,
                        "groups at a time (default: half of the processor's cores)")
            ->check(Undescribed(CLI::Range(1U, kMostJobs)))
            ->type_name("N"),
        command
            .add_option("--time-limit", options.timeLimit,
                        "seconds that a group may take (default: 60)")
            ->check(Undescribed(CLI::Range(1U, kLongestLimit)))
            ->type_name("SECONDS"),
    };
    AddToolOptions(command, validate.tools, false);
    CLI::Option* const list =
        command.add_flag("--list", validate.list, "name the groups and judge nothing");
    CLI::Option* const again =
        command.add_option("--again", validate.again, "repeat REPORT and tell where it differs")
            ->excludes(list)
            ->type_name("REPORT");
    for (CLI::Option* option : told)
    {
        again->excludes(option);
    }
    command.add_option("--json", validate.report, "where to put the report")->type_name("FILE");
    command.add_option("--junit", validate.junit, "where to put it as JUnit's XML")
        ->type_name("FILE");
    command.add_flag("--overwrite", validate.overwrite, "replace an output that exists");
    command.add_option("--run-group", validate.group)->group(""); // not for users
}

ValidateCommand FinishValidate(ValidateCommand validate)
{
    if (validate.file.empty() && !validate.list && !validate.again)
    {
        ThrowUsage("validate", "command line", "there is neither FILE nor --list nor --again");
    }
    if (validate.list && (!validate.file.empty() || validate.report || validate.junit))
    {
        ThrowUsage("validate", "--list", "it judges nothing, so there is no file and no report");
    }
    validate.options.rendererFolder = validate.tools.rendererFolder;
    return validate;
}

} // namespace GlazelHost
