#include "tools/glazelhost/commands/commands.h"

#include "tools/glazelhost/commands/look_record.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/safe_output.h"
#include "tools/glazelhost/plugin/renderer_library.h"
#include "tools/glazelhost/project/look_formats.h"
#include "tools/glazelhost/ui/console.h"

#include <array>
#include <cstdio>

namespace GlazelHost
{

namespace
{

// The renderer started for as long as this lives.
class StartedRenderer
{
public:
    explicit StartedRenderer(RendererLibrary& renderer) : m_renderer(renderer)
    {
        m_renderer.Start();
    }
    ~StartedRenderer() { m_renderer.Shutdown(); }
    StartedRenderer(const StartedRenderer&) = delete;
    StartedRenderer& operator=(const StartedRenderer&) = delete;

private:
    RendererLibrary& m_renderer;
};

// Throws HostError (WrongUsage) for options that the file cannot have.
void CheckOptions(const LookCommand& command, const LookFormat& format)
{
    const auto refuse = [&](const char* option, const char* what) {
        throw HostError(option, command.output + " has no " + what, "leave it out",
                        ExitCode::WrongUsage);
    };
    if (command.linear && !format.isRecord)
    {
        refuse("--linear", "option \"assume linear gamma\"");
    }
    if (command.points && !format.isCube)
    {
        refuse("--points", "points");
    }
}

std::string TextOf(const LookCommand& command, const LookFormat& format, const RendererLook& look,
                   const WrittenLook& file)
{
    std::string text;
    const auto add = [&text](const char* name, const std::string& value) {
        if (!value.empty())
        {
            std::array<char, 32> label{};
            std::snprintf(label.data(), label.size(), "%-15s", name);
            text += label.data() + value + "\n";
        }
    };
    const LookDescription& description = look.description;
    add("look", command.input);
    add("kind", description.kind);
    add("title", description.title);
    add("contents", description.contents);
    if (const auto linear = LinearOption(look.record); linear && format.isRecord)
    {
        add("linear gamma", *linear ? "on" : "off");
    }
    if (description.largestError)
    {
        std::array<char, 32> error{};
        std::snprintf(error.data(), error.size(), "%.3g", *description.largestError);
        add("largest error", error.data());
    }
    for (const std::string& warning : description.warnings)
    {
        add("warning", warning);
    }
    for (const std::string& loss : file.losses)
    {
        add("warning", loss);
    }
    add(format.isRecord ? "record" : "written", command.output + ", " +
                                                    (format.isRecord ? "" : file.contents + ", ") +
                                                    std::to_string(file.bytes.size()) + " bytes");
    return text;
}

} // namespace

void RunCommand(const LookCommand& command, Reporter& /*reporter*/)
{
    const LookFormat& format = LookFormatOf(command.output);
    CheckOptions(command, format);
    CheckOutputTarget(command.output, command.overwrite);
    RendererLibrary renderer(command.tools.rendererFolder);
    renderer.Require();
    const StartedRenderer started(renderer);
    RendererLook look =
        renderer.ImportLook(command.input, command.unclamped ? RendererAPI::kImportUnclampedCdl
                                                             : RendererAPI::kImportRecord);
    SetLinear(look.record, command.linear, command.input);
    const WrittenLook file = format.make(
        {command.output, look.record, look.description.title, command.points,
         [&](std::span<ReferenceRenderer::Rgb> colours) { renderer.Grade(look.record, colours); },
         renderer.State().path});
    const auto output = OpenSafeOutput(command.output, command.overwrite);
    output->Write(reinterpret_cast<const std::byte*>(file.bytes.data()), file.bytes.size());
    output->Commit();
    WriteStandardOutput(TextOf(command, format, look, file));
}

} // namespace GlazelHost
