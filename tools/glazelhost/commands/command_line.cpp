#include "tools/glazelhost/commands/command_line.h"

#include "reference_renderer/core/look_export.h"
#include "tools/glazelhost/commands/compare_options.h"
#include "tools/glazelhost/commands/explain_options.h"
#include "tools/glazelhost/commands/help_texts.h"
#include "tools/glazelhost/commands/render_options.h"
#include "tools/glazelhost/commands/shared_options.h"
#include "tools/glazelhost/commands/validate_options.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/one_line.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <utility>

namespace GlazelHost
{

namespace
{

using namespace ReferenceRenderer;

// What CLI11 fills before it becomes a command.
struct PageWords
{
    std::string linear;
    std::string depth;
};

void AddPageOptions(CLI::App& command, PageCommand& page, PageWords& words)
{
    command.add_option("--image", page.image, "the picture to grade (default: a test chart)")
        ->type_name("FILE");
    AddFrame(command, page.frame);
    command.add_option("--look", page.look, "the look to begin with (default: none)")
        ->type_name("FILE");
    AddLookOptions(command, words.linear, page.unclamped);
    AddDepth(command, words.depth);
    command
        .add_option("--save-look", page.savedLook, "where to put the look when the window closes")
        ->type_name("FILE");
    command.add_flag("--overwrite", page.overwrite, "replace the FILE of --save-look that exists");
}

// Throws HostError (WrongUsage) when the options do not make sense together.
PageCommand FinishPage(PageCommand page, const PageWords& words)
{
    const auto refuse = [](const char* what, const char* why) {
        throw HostError(what, why, "see \"glazelhost page --help\"", ExitCode::WrongUsage);
    };
    if (!page.look && (page.unclamped || !words.linear.empty()))
    {
        refuse(page.unclamped ? "--unclamped" : "--linear",
               "it says how to read a look, and there is no --look");
    }
    if (page.overwrite && !page.savedLook)
    {
        refuse("--overwrite", "it is for --save-look, which is not there");
    }
    if (page.frame && !page.image)
    {
        refuse("--frame", "it is for --image, which is not there");
    }
    if (page.image == kStandardStream)
    {
        refuse("--image -", "the picture has to be a file");
    }
    if (page.savedLook == kStandardStream)
    {
        refuse("--save-look -", "the look goes to a file");
    }
    page.linear = SwitchOf(words.linear);
    page.depth = SampleTypeOf(words.depth);
    return page;
}

void AddBlendPlaces(CLI::App& command, BlendCommand& blend)
{
    command.add_option("A", blend.earlier, "the earlier look")->required()->type_name("");
    command.add_option("B", blend.later, "the later look")->required()->type_name("");
    command.add_option("FRACTION", blend.fraction, "how far from A to B")
        ->required()
        ->check(Undescribed(CLI::Range(0.0, 1.0)))
        ->type_name("");
    command.add_option("OUT.look", blend.output, "the record between them")
        ->required()
        ->type_name("");
    command.add_flag("--overwrite", blend.overwrite, "replace an output that exists");
    AddUnclamped(command, blend.unclamped);
}

// CLI11 would only say that a command is required.
void CheckCommandName(const std::vector<std::string>& arguments)
{
    constexpr std::array<std::string_view, 9> kNames{
        "render", "page", "look", "blend", "compare", "explain", "presets", "info", "validate"};
    const std::string first = arguments.empty() ? std::string() : arguments.front();
    if (first.empty() ||
        (first.front() != '-' && std::find(kNames.begin(), kNames.end(), first) == kNames.end()))
    {
        throw HostError(first.empty() ? "command line" : OneLine(first),
                        first.empty() ? "there is no command" : "there is no such command",
                        "use render, page, look, blend, compare, explain, presets, info or "
                        "validate, or see \"glazelhost --help\"",
                        ExitCode::WrongUsage);
    }
}

// CLI11 tells several things in several lines; the user gets one.
[[noreturn]] void ThrowParseError(const CLI::App& program, const CLI::ParseError& error)
{
    const auto chosen = program.get_subcommands();
    const std::string name = chosen.empty() ? "" : chosen.front()->get_name() + " ";
    throw HostError(chosen.empty() ? "command line" : chosen.front()->get_name(),
                    OneLine(error.what()), "see \"glazelhost " + name + "--help\"",
                    ExitCode::WrongUsage);
}

} // namespace

Command ParseCommandLine(const std::vector<std::string>& arguments)
{
    CLI::App program(kProgramHelp, "glazelhost");
    program.footer(kProgramFooter);
    program.set_version_flag("--version", std::string("glazelhost ") + GLAZEL_VERSION);
    program.require_subcommand(1);
    program.allow_windows_style_options(false); // "/folder/file" is a path
    program.get_formatter()->column_width(34);

    RenderCommand render;
    RenderWords words;
    CLI::App* const renderCommand =
        program.add_subcommand("render", "Render a picture, a sequence or a video with a look.");
    renderCommand->footer(kRenderFooter);
    AddRenderOptions(*renderCommand, render, words);

    PageCommand page;
    PageWords pageWords;
    CLI::App* const pageCommand = program.add_subcommand(
        "page", "Show the effect's property page under the picture that it grades.");
    pageCommand->footer(kPageFooter);
    AddPageOptions(*pageCommand, page, pageWords);
    AddToolOptions(*pageCommand, page.tools, true);

    LookCommand look;
    std::string lookLinear;
    CLI::App* const lookCommand = program.add_subcommand(
        "look", "Convert a look through the renderer and say what it holds.");
    lookCommand->footer(kLookFooter);
    lookCommand->add_option("IN", look.input, "the look to convert")->required()->type_name("");
    lookCommand->add_option("OUT", look.output, "a .look, .cube or .cc file of it")
        ->required()
        ->type_name("");
    lookCommand
        ->add_option("--points", look.points,
                     "points a side of a .cube (default: as exact as the look needs)")
        ->check(Undescribed(CLI::Range(kFewestPoints, kMostPoints)))
        ->type_name("2-65");
    lookCommand->add_flag("--overwrite", look.overwrite, "replace an output that exists");
    AddLookOptions(*lookCommand, lookLinear, look.unclamped);
    AddToolOptions(*lookCommand, look.tools, false);

    BlendCommand blend;
    CLI::App* const blendCommand = program.add_subcommand(
        "blend", "Blend two looks as between keyframes, through the effect.");
    blendCommand->footer(kBlendFooter);
    AddBlendPlaces(*blendCommand, blend);
    AddToolOptions(*blendCommand, blend.tools, true);

    CompareCommand compare;
    CompareWords compareWords;
    CLI::App* const compareCommand =
        program.add_subcommand("compare", "Tell how far apart two pictures or clips are.");
    compareCommand->footer(kCompareFooter);
    AddCompareOptions(*compareCommand, compare, compareWords);

    ExplainCommand explain;
    ExplainWords explainWords;
    CLI::App* const explainCommand = program.add_subcommand(
        "explain", "Tell what a look does to one pixel, step by step, in numbers.");
    explainCommand->footer(kExplainFooter);
    AddExplainOptions(*explainCommand, explain, explainWords);

    PresetsCommand presets;
    CLI::App* const presetsCommand =
        program.add_subcommand("presets", "List the presets of the effect.");
    presetsCommand->footer(kPresetsFooter);
    presetsCommand->add_flag("--json", presets.json, "as one JSON object");
    AddToolOptions(*presetsCommand, presets.tools, true);

    InfoCommand info;
    CLI::App* const infoCommand = program.add_subcommand(
        "info", "Tell versions, classes, interfaces and the state of the renderer.");
    infoCommand->footer(kInfoFooter);
    infoCommand->add_flag("--json", info.json, "as one JSON object");
    AddToolOptions(*infoCommand, info.tools, true);

    ValidateCommand validate;
    CLI::App* const validateCommand =
        program.add_subcommand("validate", "Judge a plug-in or a renderer by its contract.");
    validateCommand->footer(kValidateFooter);
    AddValidateOptions(*validateCommand, validate);

    CheckCommandName(arguments);
    try
    {
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
        program.parse(std::move(reversed));
    }
    catch (const CLI::CallForHelp&)
    {
        const auto chosen = program.get_subcommands();
        return TextCommand{chosen.empty() ? program.help() : chosen.front()->help("glazelhost")};
    }
    catch (const CLI::CallForVersion& version)
    {
        return TextCommand{std::string(version.what()) + "\n"};
    }
    catch (const CLI::ParseError& error)
    {
        ThrowParseError(program, error);
    }

    if (*renderCommand)
    {
        return FinishRender(std::move(render), words);
    }
    if (*pageCommand)
    {
        return FinishPage(std::move(page), pageWords);
    }
    if (*lookCommand)
    {
        look.linear = SwitchOf(lookLinear);
        return look;
    }
    if (*blendCommand)
    {
        if (std::isnan(blend.fraction)) // which is in every range for CLI11
        {
            throw HostError("FRACTION", "this is not a number", "see \"glazelhost blend --help\"",
                            ExitCode::WrongUsage);
        }
        return blend;
    }
    if (*compareCommand)
    {
        return FinishCompare(std::move(compare), compareWords);
    }
    if (*explainCommand)
    {
        return FinishExplain(std::move(explain), explainWords);
    }
    if (*presetsCommand)
    {
        return presets;
    }
    if (*validateCommand)
    {
        return FinishValidate(std::move(validate));
    }
    return info;
}

} // namespace GlazelHost
