// What the line below the picture says of the pixel under the pointer.
// Pure: no windows.h. Tests: tests/reference_renderer/editor/pixel_text_test.cpp.
#pragma once

#include "reference_renderer/editor/picture_view.h"
#include "reference_renderer/editor/preview_picture.h"

#include <string>

namespace ReferenceRenderer
{

// Of a pixel of the frame itself, which is never averaged with others as the picture that is shown
// is: its column and row, its 8-bit codes as they are shown, before and after the look, and the
// values of the renderer (PreviewPicture::ValueAt), before and after; red, green, blue each:
// "12, 7:  128 64 0 > 140 61 0   0.502 0.251 0.000 > 0.549 0.239 0.000" with arrows, in UTF-8.
std::string PixelText(const PreviewPicture& picture, const PicturePixel& pixel,
                      const PreparedLook& look);

} // namespace ReferenceRenderer
