// A still picture as the effect grades it now. Tests:
// tests/tools/glazelhost/page/page_command_test.cpp.
#pragma once

#include "tools/glazelhost/page/display_picture.h"
#include "tools/glazelhost/plugin/effect_session.h"

#include <cstdint>
#include <span>
#include <vector>

namespace GlazelHost
{

// On the session's thread; the session outlives it.
class GradedPicture
{
public:
    GradedPicture(EffectSession& session, Image source, const FrameInformation& information);
    GradedPicture(const GradedPicture&) = delete;
    GradedPicture& operator=(const GradedPicture&) = delete;

    // Renders anew. Throws HostError; the picture before then stays.
    void Render();
    // Another picture from now on, of any size; rendered at once, as Render does.
    void Show(Image source);

    Geometry::Extent Size() const noexcept { return {m_source.width, m_source.height}; }
    double PixelAspect() const noexcept { return m_information.pixelAspect; }
    // As DisplayPixels gives them; none before the first Render.
    std::span<const std::uint32_t> Pixels() const noexcept { return m_pixels; }

private:
    EffectSession& m_session;
    Image m_source;
    FrameInformation m_information;
    Image m_graded;
    std::vector<std::uint32_t> m_pixels;
};

} // namespace GlazelHost
