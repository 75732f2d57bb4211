// The editor on a photograph, and pictures of its window.
#pragma once

#include "support/win32/com_scope.h"
#include "tests/reference_renderer/editor/editor_fixture.h"
#include "tools/glazelhost/media/frame_io.h"

#include <cstddef>
#include <string>

namespace ReferenceRenderer
{

class PhotographTest : public EditorTest
{
protected:
    // The preview is this file of samples/images.
    void Load(const std::string& file);
    // How many colours a window shows.
    static std::size_t CountColours(HWND window);
    // Writes what is shown of the editor, which must be more than an empty window, to a file of
    // that name among the pictures.
    static void Take(const OpenEditor& editor, const std::string& name);

    ComScope m_com{true}; // for the picture codecs
    GlazelHost::Image m_picture;
};

} // namespace ReferenceRenderer
