#include "tools/glazelhost/page/graded_picture.h"

#include <utility>

namespace GlazelHost
{

GradedPicture::GradedPicture(EffectSession& session, Image source,
                             const FrameInformation& information)
    : m_session(session), m_source(std::move(source)), m_information(information)
{
}

void GradedPicture::Render()
{
    m_session.Render(m_source, m_graded, m_information);
    m_pixels = DisplayPixels(m_graded);
}

void GradedPicture::Show(Image source)
{
    std::swap(m_source, source);
    try
    {
        Render();
    }
    catch (...)
    {
        std::swap(m_source, source);
        throw;
    }
}

} // namespace GlazelHost
