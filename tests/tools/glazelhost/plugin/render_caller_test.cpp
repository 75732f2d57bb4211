// Who calls the renderer for a picture: the plug-in alone, whatever the host does.
#include "tests/doubles/renderers/renderer_variant.h"
#include "tools/glazelhost/plugin/effect_session.h"
#include "tools/glazelhost/plugin/library_file.h"
#include "tools/glazelhost/project/keyframe_player.h"

#include <gtest/gtest.h>

namespace GlazelHost
{

namespace
{

std::string CallerOf(const RecordedCall& call)
{
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                             GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         static_cast<const wchar_t*>(call.caller), &module);
    return PathOfModule(module);
}

} // namespace

TEST(RenderCaller, IsThePlugInForEveryFrameOfTheHost)
{
    const Recording& recording = UseRenderer(L"complete");
    const PluginModule plugin(ProgramFolder() + "\\..\\" + kPluginFileName);
    EffectSession session(plugin);
    EffectControls controls(session.Effect(), session.Path());
    Image output;
    for (const SampleType type : {SampleType::Byte, SampleType::Float})
    {
        Image input{4, 3, type, false, {}};
        input.pixels.resize(input.RowBytes() * 3);
        session.Render(input, output, {});
        std::vector<Keyframe> keyframes{{{}, std::vector<std::byte>(64)}};
        KeyframePlayer player(session, controls, keyframes,
                              KeyframeTrack(keyframes, 25.0, Ease::Linear));
        player.Render(0, input, output, {});
        controls.SetAutomation(false);
    }
    int renders = 0;
    for (std::size_t i = 0; i < recording.count; ++i)
    {
        if (recording.calls[i].call == Call::RenderFrame)
        {
            ++renders;
            EXPECT_EQ(CallerOf(recording.calls[i]),
                      PathOfModule(::GetModuleHandleW(L"GlazelDX_x64")));
        }
    }
    EXPECT_EQ(renders, 4);
}

} // namespace GlazelHost
