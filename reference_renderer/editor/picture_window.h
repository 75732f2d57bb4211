// The picture in the editor: graded, as it was, or both beside each other with a line between that
// can be dragged, or moved with the arrow keys. The wheel zooms about the pointer; a picture that
// is larger than its window is dragged.
#pragma once

#include "reference_renderer/core/row_runner.h"
#include "reference_renderer/editor/editor_theme.h"
#include "reference_renderer/editor/gdi_objects.h"
#include "reference_renderer/editor/grading_pace.h"
#include "reference_renderer/editor/picture_view.h"
#include "reference_renderer/editor/preview_picture.h"
#include "reference_renderer/editor/window_object.h"

namespace ReferenceRenderer
{

enum class Compare
{
    Graded,
    Split, // the original at the left
    Original,
};

// Tells its parent with WM_COMMAND when the view changes, and where the pointer is. Window thread.
// What it is given is borrowed.
class PictureWindow : public WindowObject<PictureWindow>
{
public:
    PictureWindow(PreviewPicture& picture, const PreparedLook& look, RowRunner& runner) noexcept
        : m_picture(picture), m_look(look), m_runner(runner),
          m_view(picture.IsEmpty()
                     ? PictureView(1.0, 1.0)
                     : PictureView(picture.Shape(), static_cast<double>(picture.Size().height)))
    {
    }
    ~PictureWindow() { Destroy(); }

    bool Create(HWND parent, const EditorTheme& theme, int id) noexcept;
    void SetTheme(const EditorTheme& theme) noexcept { m_theme = &theme; }

    // Shows the picture through the look as it is now, before this returns: in less detail for the
    // moment when all of it would take too long.
    void Regrade() noexcept;
    void SetCompare(Compare compare) noexcept;
    Compare Shown() const noexcept { return m_compare; }
    // Pixels shown for each of the picture's, vertically.
    double Zoom() const noexcept;
    void Fit() noexcept;
    // Of the caller's picture, under the pointer.
    std::optional<PicturePixel> PixelPointedAt() const noexcept;
    void ShowOwnSize() noexcept; // a pixel shown for each of the picture's

    // Ends a drag of the line or of the picture and takes it back. False when there is none.
    bool CancelDrag() noexcept;

    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);

private:
    enum class Drag
    {
        None,
        Split,
        Picture,
    };

    void Resize() noexcept;
    void Scale() noexcept; // to what the view shows
    void Viewed() noexcept;
    void OnWheel(WPARAM wParam, POINT screen) noexcept;
    void Press(POINT point, bool middle) noexcept;
    void Move(POINT point) noexcept;
    void Pointed(std::optional<Geometry::Point> at) noexcept;
    void TellParent(int what) const noexcept;
    void Grade(Detail detail) noexcept;
    void Sharpen() noexcept;
    RECT Area() const noexcept; // of the picture within the window
    LONG SplitColumn() const noexcept;
    void SplitAt(double share) noexcept;
    void DragSplit(int pixel) noexcept;
    bool OnKey(WPARAM key) noexcept;
    bool IsOnSplit(POINT point) const noexcept;
    void Paint() const noexcept;
    void PaintPart(HDC dc, const PixelBitmap& bitmap, PixelSize size, LONG from,
                   LONG to) const noexcept;
    void PaintSplit(HDC dc) const noexcept;
    void Say(HDC dc, const wchar_t* text) const noexcept;

    PreviewPicture& m_picture;
    const PreparedLook& m_look;
    RowRunner& m_runner;
    const EditorTheme* m_theme = nullptr;
    Compare m_compare = Compare::Graded;
    PictureView m_view;
    double m_split = 0.5; // share of what is shown of the picture's width
    Drag m_drag = Drag::None;
    double m_splitBefore = 0.0; // when the drag began
    PictureView m_viewBefore = m_view;
    POINT m_last{}; // of the mouse, while the picture is dragged
    std::optional<Geometry::Point> m_pointer;
    bool m_hasPixels = false; // the bitmaps are of the size that the picture is scaled to
    PixelBitmap m_original;
    PixelBitmap m_graded;
    PixelBitmap m_coarse;          // graded too; none when the fine picture is as small
    Detail m_shown = Detail::Fine; // which of both is up to date
    GradingPace m_pace;
};

} // namespace ReferenceRenderer
