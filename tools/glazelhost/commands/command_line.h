// What the user asks for, out of the words of the command line.
// Pure: no windows.h. Tests: tests/tools/glazelhost/commands/command_line_test.cpp.
#pragma once

#include "tools/glazelhost/media/frame_io.h"
#include "tools/glazelhost/media/frame_list.h"
#include "tools/glazelhost/media/open_frames.h"
#include "tools/glazelhost/plugin/tool_paths.h"
#include "tools/glazelhost/project/keyframe_track.h"
#include "tools/glazelhost/validate/group_choice.h"

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace GlazelHost
{

// Texts are UTF-8; an empty path means the default.

enum class ProgressChoice
{
    Auto, // a bar on a console, else plain lines
    Bar,
    Plain,
    Json,
    None,
};

// A look at a time.
struct KeyLook
{
    KeyTime time;
    std::string look;
};

struct RenderCommand
{
    SourceOptions source;
    SinkOptions sink;
    // At most one of look, keys and project; none only with a preset.
    std::optional<std::string> look;
    std::vector<KeyLook> keys; // as they were given, in any order
    std::optional<std::string> project;
    std::optional<Ease> ease; // none: as the project says, else linear
    std::optional<std::string> preset;
    std::optional<std::string> savedProject; // where to keep what was rendered with
    std::optional<SampleType> depth;         // none: 8 bits for an 8-bit source, else float
    std::optional<bool> linear;              // none: as light_choice.h says
    bool unclamped = false;
    std::optional<FrameList> frames;            // numbers of files, or from 1; none: all
    std::optional<std::int64_t> expectedFrames; // of a source that does not say how many it has
    bool skipBadFrames = false;
    ProgressChoice progress = ProgressChoice::Auto;
    ToolPaths tools;
};

struct PageCommand
{
    std::optional<std::string> image;  // none: a test chart
    std::optional<std::int64_t> frame; // number in a sequence; none: the first
    std::optional<std::string> look;   // none: the effect has no look at first
    std::optional<bool> linear;        // none: as the look says
    bool unclamped = false;
    std::optional<SampleType> depth;      // none: as a render chooses it
    std::optional<std::string> savedLook; // where the look is kept when the window closes
    bool overwrite = false;
    ToolPaths tools;
};

struct LookCommand
{
    std::string input;
    std::string output;
    std::optional<bool> linear;
    std::optional<std::uint32_t> points; // of a cube; none: as suits the look
    bool unclamped = false;
    bool overwrite = false;
    ToolPaths tools;
};

struct BlendCommand
{
    std::string earlier;
    std::string later;
    double fraction = 0.0; // 0 to 1
    std::string output;
    bool unclamped = false;
    bool overwrite = false;
    ToolPaths tools;
};

struct CompareCommand
{
    SourceOptions first;
    SourceOptions second;
    double threshold = 1.0 / 255.0; // of a pixel that counts as different
    std::optional<double> warnOver; // the largest difference that is none
    std::optional<double> failOver;
    std::optional<std::string> picture; // of the differences
    double amplify = 16.0;              // their factor in it
    bool overwrite = false;
    bool json = false;
};

struct ExplainCommand
{
    RenderCommand render; // of which a source, a look, a depth, light and tools
    std::optional<std::array<float, 3>> colour; // red, green, blue; none: a pixel of the source
    int x = 0;
    int y = 0;
    std::optional<std::int64_t> frame; // none: the first
    bool json = false;
};

struct PresetsCommand
{
    bool json = false;
    ToolPaths tools;
};

struct InfoCommand
{
    bool json = false;
    ToolPaths tools;
};

struct ValidateCommand
{
    std::string file;                 // a plug-in or a renderer; empty with list or again
    ValidateOptions options;          // with again the report's count
    ToolPaths tools;                  // of which the renderer, with again where it is given
    bool list = false;                // name the groups and judge nothing
    std::optional<std::string> again; // a report to repeat
    std::optional<std::string> report;
    std::optional<std::string> junit;
    bool overwrite = false;
    std::string group; // to be run in this process, which another one has started for it
};

// Help or the version: to standard output, and nothing else to do.
struct TextCommand
{
    std::string text;
};

using Command =
    std::variant<RenderCommand, PageCommand, LookCommand, BlendCommand, CompareCommand,
                 ExplainCommand, PresetsCommand, InfoCommand, ValidateCommand, TextCommand>;

// `arguments` without the program's name. Throws HostError (WrongUsage) with one line.
Command ParseCommandLine(const std::vector<std::string>& arguments);

} // namespace GlazelHost
