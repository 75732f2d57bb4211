#include "tools/glazelhost/validate/check_group.h"
#include "tools/glazelhost/validate/renderer_checks.h"

#include <array>

namespace GlazelHost
{

namespace
{

// A group that needs a look to ask with.
template <void (*Ask)(Check&, const JudgedRenderer&, const Record&)>
void WithLook(Check& check)
{
    StartedRenderer started(check);
    const Record look = started.isUsable ? started.renderer.LookOf(check) : Record();
    if (!look.empty())
    {
        Ask(check, started.renderer, look);
    }
}

// clang-format off
constexpr std::array kRendererGroups{
    CheckGroup{"renderer.exports", 1, "every required entry point is there", CheckRendererExports},
    CheckGroup{"renderer.start", 1, "it starts for every effect, and again after its end", CheckRendererStart},
    CheckGroup{"renderer.import", 2, "what was last produced is handed out whole or not at all", WithLook<CheckRendererImport>},
    CheckGroup{"renderer.record", 3, "a record goes to the host and back, with its option", WithLook<CheckRendererRecord>},
    CheckGroup{"renderer.blend", 3, "two records blend between their ends, with the option of the first", WithLook<CheckRendererBlend>},
    CheckGroup{"renderer.frames", 4, "a frame of any size is rendered and nothing beside it is touched", WithLook<CheckRendererFrames>},
    CheckGroup{"renderer.in_place", 4, "a frame comes out alike in place and apart", WithLook<CheckRendererInPlace>},
    CheckGroup{"renderer.thumbnail", 4, "a look has a thumbnail, and what is no look has none", WithLook<CheckRendererThumbnail>},
    CheckGroup{"renderer.determinism", 5, "a frame comes out alike every time and on every thread", WithLook<CheckRendererDeterminism>},
    CheckGroup{"renderer.frame_errors", 5, "a frame that cannot be rendered is refused and left alone", WithLook<CheckRendererFrameErrors>},
    CheckGroup{"renderer.import_errors", 6, "a file that is no look is refused and leaves nothing", CheckRendererImportErrors},
    CheckGroup{"renderer.unload", 6, "loads and unloads leave nothing in the process", CheckRendererUnload},
    CheckGroup{"renderer.hostile_records", 7, "a record may hold any bytes", CheckRendererHostileRecords},
    CheckGroup{"renderer.hostile_pixels", 7, "a picture may hold any numbers", WithLook<CheckRendererHostilePixels>},
    CheckGroup{"renderer.no_desktop", 8, "the editor refuses where no window can be made", CheckRendererNoDesktop},
    CheckGroup{"renderer.concurrency", 9, "frames may be rendered at the same time", WithLook<CheckRendererConcurrency>},
};
// clang-format on

} // namespace

std::span<const CheckGroup> RendererGroups() noexcept
{
    return kRendererGroups;
}

} // namespace GlazelHost
