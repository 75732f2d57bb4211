#include "reference_renderer/editor/editor_layout.h"

#include <algorithm>

namespace ReferenceRenderer
{

namespace
{

// All lengths are for 96 dots per inch.
constexpr Geometry::Extent kSmallest{820, 560};
constexpr Geometry::Extent kOpening{1200, 720};

constexpr int kMargin = 16;
constexpr int kGap = 8;
constexpr int kFooter = 56;
constexpr int kButtonHeight = 28;
constexpr int kButtonWidth = 92;
constexpr int kCompareWidth = 68;
constexpr int kStoreWidth = 60;
constexpr int kSwapWidth = 72;

constexpr int kScopeButtonWidth = 72;
constexpr int kFactsWidth = 160;  // beside the buttons, or they have a row of their own
constexpr int kScopePercent = 42; // of the picture's height without a scope
constexpr int kLowestScope = 170;
constexpr int kHighestScope = 380;

constexpr int kPanelPercent = 29; // of the window's width
constexpr int kNarrowestPanel = 330;
constexpr int kWidestPanel = 460;

constexpr int kHeadingHeight = 20;
constexpr int kRowHeight = 24;
constexpr int kStepGap = 12;       // below the last row of a step, at least
constexpr int kWidestStepGap = 24; // in a window with room to spare
constexpr int kTextHeight = 18;
constexpr int kLetterWidth = 16;
constexpr int kNumberWidth = 66;
constexpr int kNumberHeight = 22;
constexpr int kNumberInset = 3; // of the edit control inside its frame, top and bottom
constexpr int kNumberIndent = 7;
constexpr int kResetSize = 22;
constexpr int kHintLines = 3;
constexpr int kStatusLines = 2;

// Places the parts of one window. Positions run in pixels.
class Placing
{
public:
    Placing(Geometry::Extent client, int dpi) noexcept : m_dpi(dpi)
    {
        const Geometry::Extent smallest = SmallestClient(dpi);
        m_width = std::max(client.width, smallest.width);
        m_height = std::max(client.height, smallest.height);
    }

    EditorLayout Layout(bool hasScope) noexcept
    {
        PlaceFooter();
        PlacePanel();
        PlacePicture(hasScope);
        return m_layout;
    }

private:
    int Px(int length) const noexcept { return Scaled(length, m_dpi); }

    void PlaceFooter() noexcept
    {
        m_layout.footerTop = m_height - Px(kFooter);
        const int top = m_layout.footerTop + (Px(kFooter) - Px(kButtonHeight)) / 2;
        int right = m_width - Px(kMargin);
        for (Geometry::Rect* button : {&m_layout.cancel, &m_layout.accept, &m_layout.resetAll})
        {
            *button = {right - Px(kButtonWidth), top, Px(kButtonWidth), Px(kButtonHeight)};
            right = button->left - Px(kGap);
        }
        const int textHeight = kStatusLines * Px(kTextHeight);
        const int textTop = m_layout.footerTop + (Px(kFooter) - textHeight) / 2;
        m_layout.status = {Px(kMargin), textTop, right - Px(kGap) - Px(kMargin), textHeight};
    }

    void PlacePanel() noexcept
    {
        const int width =
            std::clamp(m_width * kPanelPercent / 100, Px(kNarrowestPanel), Px(kWidestPanel));
        m_layout.panel = {m_width - width, 0, width, m_layout.footerTop};
        m_left = m_layout.panel.left + Px(kMargin);
        m_right = m_layout.panel.Right() - Px(kMargin);
        const int spare = m_height - SmallestClient(m_dpi).height;
        const int stepGap =
            std::min(Px(kStepGap) + spare / static_cast<int>(kHeadings - 1), Px(kWidestStepGap));
        int top = Px(kMargin) - Px(kGap) / 2;
        std::size_t control = 0;
        for (std::size_t step = 0; step < kHeadings; ++step)
        {
            m_layout.headings[step] = {m_left, top, m_right - m_left, Px(kHeadingHeight)};
            top += Px(kHeadingHeight);
            if (static_cast<Step>(step) == Step::Strength)
            {
                m_layout.tables = {m_left, top, m_right - m_left, Px(kTextHeight)};
                top += Px(kTextHeight) + Px(kGap) / 2;
            }
            while (control < kControlCount && kControls[control].step == static_cast<Step>(step))
            {
                PlaceControl(control, top);
                top += Px(kRowHeight);
                ++control;
            }
            top += stepGap;
        }
        PlaceTableButtons(top - stepGap + Px(kGap));
    }

    void PlaceControl(std::size_t index, int top) noexcept
    {
        const int height = Px(kRowHeight);
        const auto centred = [&](int length) { return top + (height - length) / 2; };
        ControlBoxes& boxes = m_layout.controls[index];
        const Step step = kControls[index].step;
        const int left = m_left + Px(kLetterWidth); // all sliders stand in one line
        if (step != Step::Saturation && step != Step::Strength)
        {
            boxes.letter = {m_left, centred(Px(kTextHeight)), Px(kLetterWidth), Px(kTextHeight)};
        }
        boxes.reset = {m_right - Px(kResetSize), centred(Px(kResetSize)), Px(kResetSize),
                       Px(kResetSize)};
        boxes.frame = {boxes.reset.left - Px(kGap) / 2 - Px(kNumberWidth),
                       centred(Px(kNumberHeight)), Px(kNumberWidth), Px(kNumberHeight)};
        boxes.number = {boxes.frame.left + Px(kNumberIndent), boxes.frame.top + Px(kNumberInset),
                        boxes.frame.width - 2 * Px(kNumberIndent),
                        boxes.frame.height - 2 * Px(kNumberInset)};
        boxes.slider = {left, top, boxes.frame.left - Px(kGap) - left, height};
    }

    void PlaceTableButtons(int top) noexcept
    {
        const int width = (m_right - m_left - Px(kGap)) / 2;
        m_layout.importFile = {m_left, top, width, Px(kButtonHeight)};
        m_layout.removeTables = {m_right - width, top, width, Px(kButtonHeight)};
        const int hintHeight = kHintLines * Px(kTextHeight);
        const int hintTop = m_layout.footerTop - Px(kMargin) - hintHeight;
        if (hintTop >= m_layout.removeTables.Bottom() + Px(kMargin))
        {
            m_layout.hints = {m_left, hintTop, m_right - m_left, hintHeight};
        }
    }

    void PlacePicture(bool hasScope) noexcept
    {
        const int left = Px(kMargin);
        const int right = m_layout.panel.left - Px(kMargin);
        const int scopes = static_cast<int>(kScopeKinds) * Px(kScopeButtonWidth);
        const int compares = static_cast<int>(kCompareButtons) * Px(kCompareWidth) + Px(kGap) +
                             Px(kStoreWidth) + Px(kSwapWidth) + Px(kGap);
        const bool isOneRow = right - left >= compares + scopes + Px(kGap) + Px(kFactsWidth);
        const int lowest = m_layout.footerTop - Px(kMargin) - Px(kButtonHeight);
        const int top = isOneRow ? lowest : lowest - Px(kGap) - Px(kButtonHeight);
        int next = left;
        for (Geometry::Rect& button : m_layout.compare)
        {
            button = {next, top, Px(kCompareWidth), Px(kButtonHeight)};
            next = button.Right();
        }
        next += Px(kGap);
        m_layout.storeState = {next, top, Px(kStoreWidth), Px(kButtonHeight)};
        m_layout.swapState = {m_layout.storeState.Right(), top, Px(kSwapWidth), Px(kButtonHeight)};
        next = isOneRow ? m_layout.swapState.Right() + Px(kGap) : left;
        for (Geometry::Rect& button : m_layout.scopeButtons)
        {
            button = {next, lowest, Px(kScopeButtonWidth), Px(kButtonHeight)};
            next = button.Right();
        }
        next += Px(kGap);
        m_layout.pictureFacts = {next, lowest + (Px(kButtonHeight) - Px(kTextHeight)) / 2,
                                 right - next, Px(kTextHeight)};
        m_layout.pixel = {left, top - Px(kGap) / 2 - Px(kTextHeight), right - left,
                          Px(kTextHeight)};
        const int height = m_layout.pixel.top - Px(kGap) / 2 - Px(kMargin);
        m_layout.picture = {left, Px(kMargin), right - left, height};
        if (hasScope)
        {
            const int scope =
                std::clamp(height * kScopePercent / 100, Px(kLowestScope), Px(kHighestScope));
            m_layout.picture.height -= scope + Px(kGap);
            m_layout.scope = {left, m_layout.picture.Bottom() + Px(kGap), right - left, scope};
        }
    }

    int m_dpi;
    int m_width = 0;
    int m_height = 0;
    int m_left = 0; // of the panel's contents
    int m_right = 0;
    EditorLayout m_layout;
};

} // namespace

Geometry::Extent SmallestClient(int dpi) noexcept
{
    return {Scaled(kSmallest.width, dpi), Scaled(kSmallest.height, dpi)};
}

Geometry::Extent OpeningClient(int dpi) noexcept
{
    return {Scaled(kOpening.width, dpi), Scaled(kOpening.height, dpi)};
}

EditorLayout LayoutOf(Geometry::Extent client, int dpi, bool hasScope) noexcept
{
    return Placing(client, dpi).Layout(hasScope);
}

EditorLayout PictureAloneIn(Geometry::Extent client) noexcept
{
    EditorLayout layout;
    layout.picture = {0, 0, client.width, client.height};
    layout.panel = {client.width, 0, 0, client.height};
    layout.footerTop = client.height;
    return layout;
}

} // namespace ReferenceRenderer
