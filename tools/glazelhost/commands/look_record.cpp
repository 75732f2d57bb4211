#include "tools/glazelhost/commands/look_record.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/ui/reporter.h"

#include <utility>

namespace GlazelHost
{

std::vector<std::byte> ImportRecord(const RendererLibrary& renderer, const std::string& path,
                                    bool unclamped, std::optional<bool> linear, Reporter& reporter)
{
    RendererLook look = renderer.ImportLook(path, unclamped ? RendererAPI::kImportUnclampedCdl
                                                            : RendererAPI::kImportRecord);
    for (const std::string& warning : look.description.warnings)
    {
        reporter.Warn(std::string(path).append(": ").append(warning));
    }
    SetLinear(look.record, linear, path);
    return std::move(look.record);
}

void SetLinear(std::span<std::byte> record, std::optional<bool> linear, const std::string& look)
{
    if (linear && !SetLinearOption(record, *linear))
    {
        throw HostError(look, "the renderer's record has no linear option", "leave --linear out");
    }
}

} // namespace GlazelHost
