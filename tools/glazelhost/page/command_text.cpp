#include "tools/glazelhost/page/command_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

namespace GlazelHost
{

namespace
{

bool IsPlain(char character)
{
    constexpr std::string_view kPlain = "-_.:\\/%+";
    // Bytes of letters beyond ASCII are nothing to a prompt.
    return static_cast<unsigned char>(character) >= 0x80 ||
           std::isalnum(static_cast<unsigned char>(character)) != 0 ||
           kPlain.find(character) != std::string_view::npos;
}

// As the system takes a command line apart: backslashes count only before a quotation mark.
std::string Quoted(const std::string& word)
{
    if (!word.empty() && std::all_of(word.begin(), word.end(), IsPlain))
    {
        return word;
    }
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char character : word)
    {
        if (character == '"')
        {
            quoted.append(backslashes + 1, '\\');
        }
        backslashes = character == '\\' ? backslashes + 1 : 0;
        quoted += character;
    }
    quoted.append(backslashes, '\\');
    return quoted + '"';
}

std::string ShellQuoted(const std::string& word)
{
    if (!word.empty() && word.find('\\') == std::string::npos &&
        std::all_of(word.begin(), word.end(), IsPlain))
    {
        return word;
    }
    std::string quoted = "'";
    for (const char character : word)
    {
        quoted += character == '\'' ? "'\\''" : std::string(1, character);
    }
    return quoted + '\'';
}

// The last separator or the start of the name; npos when there is no extension.
std::size_t ExtensionAt(const std::string& path)
{
    const std::size_t separator = path.find_last_of("\\/:");
    const std::size_t dot = path.find_last_of('.');
    const bool inName = dot != std::string::npos &&
                        (separator == std::string::npos || dot > separator + 1) && dot != 0;
    return inName ? dot : std::string::npos;
}

} // namespace

std::string CommandText(const RepeatedRender& render, const Prompt& prompt)
{
    const auto quoted = prompt.isUnixShell ? ShellQuoted : Quoted;
    std::string text = quoted(prompt.program) + " render";
    const auto add = [&](const std::string& word) { text += " " + quoted(word); };
    const auto addOption = [&add](const char* name, const std::string& value) {
        add(name);
        add(value);
    };
    add(render.image);
    add(render.output);
    addOption("--look", render.look.path);
    if (render.look.unclamped)
    {
        add("--unclamped");
    }
    if (render.look.linear)
    {
        addOption("--linear", *render.look.linear ? "on" : "off");
    }
    if (render.depth)
    {
        addOption("--depth", *render.depth == SampleType::Byte ? "8" : "float");
    }
    if (render.frame)
    {
        addOption("--frames", std::to_string(*render.frame));
    }
    if (!render.tools.rendererFolder.empty())
    {
        addOption("--renderer", render.tools.rendererFolder);
    }
    if (!render.tools.plugin.empty())
    {
        addOption("--plugin", render.tools.plugin);
    }
    return text;
}

std::string GradedNameOf(const std::string& image,
                         const std::function<bool(const std::string&)>& exists)
{
    constexpr std::array<std::string_view, 6> kWritten{".png", ".jpg",  ".jpeg",
                                                       ".tif", ".tiff", ".bmp"};
    constexpr int kMostTries = 1000; // then the render says that the file exists
    const std::size_t at = ExtensionAt(image);
    const std::string stem = image.substr(0, at);
    const std::string extension = at == std::string::npos ? "" : image.substr(at);
    std::string lower = extension;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const bool isWritten = std::find(kWritten.begin(), kWritten.end(), lower) != kWritten.end();
    const std::string ending = isWritten ? extension : ".png";
    const std::string start = stem + "_graded";
    std::string name = start + ending;
    for (int number = 2; number < kMostTries && exists(name); ++number)
    {
        name = start;
        name.append("_").append(std::to_string(number)).append(ending);
    }
    return name;
}

} // namespace GlazelHost
