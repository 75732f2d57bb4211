// The plug-in and the reference renderer as they are built, for tests of how the host drives them.
#pragma once

#include "tests/tools/glazelhost/media/scratch_folder.h"
#include "tools/glazelhost/plugin/effect_controls.h"
#include "tools/glazelhost/plugin/effect_session.h"
#include "tools/glazelhost/plugin/look.h"
#include "tools/glazelhost/plugin/renderer_library.h"

#include <gtest/gtest.h>

#include <cstring>
#include <optional>

namespace GlazelHost
{

using Record = std::vector<std::byte>;

// Bytes that no renderer knows, with an option chunk when there is room for one.
inline Record AnyRecord(std::size_t size, unsigned char first, bool option = true)
{
    Record record(size);
    for (std::size_t index = 0; index < size; ++index)
    {
        record[index] = static_cast<std::byte>(first + index * 31);
    }
    constexpr unsigned char kChunk[]{'f', 'l', 'a', 'g', 0, 0, 0, 4};
    if (size >= 20)
    {
        std::memcpy(record.data() + 8, kChunk, sizeof kChunk);
        SetLinearOption(record, option);
    }
    return record;
}

class RealEffect : public ::testing::Test
{
protected:
    // A look of the reference renderer that multiplies red by `slope`.
    Record LookOf(double slope, bool option = true)
    {
        m_folder.Put("look.cc",
                     "<ColorCorrection id=\"a\"><SOPNode><Slope>" + std::to_string(slope) +
                         " 1 1</Slope><Offset>0 0 0</Offset><Power>1 1 1</Power></SOPNode>"
                         "</ColorCorrection>");
        Record record =
            m_renderer.ImportLook(m_folder / "look.cc", RendererAPI::kImportRecord).record;
        EXPECT_TRUE(SetLinearOption(record, option));
        return record;
    }

    // One float pixel that shows the look and its option.
    static Image Grey()
    {
        Image image{1, 1, SampleType::Float, false, {}};
        const float channels[]{0.2F, 0.2F, 0.2F, 1.0F};
        image.pixels.resize(sizeof channels);
        std::memcpy(image.pixels.data(), channels, sizeof channels);
        return image;
    }

    // The picture that an effect of its own makes with this look alone.
    PixelBuffer PlainRender(const Record& look)
    {
        EffectSession session(m_plugin);
        EffectControls(session.Effect(), {}).LoadLook(look);
        Image output;
        session.Render(Grey(), output, {});
        return output.pixels;
    }

    ScratchFolder m_folder;
    RendererLibrary m_renderer{ProgramFolder()};
    PluginModule m_plugin{ProgramFolder() + "\\" + kPluginFileName};
    std::optional<EffectSession> m_session{std::in_place, m_plugin};
    EffectControls m_controls{m_session->Effect(), "the effect"};
};

} // namespace GlazelHost
